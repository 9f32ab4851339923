#pragma once
// Main thread. The spare keycodes, which are lent to symbols that no key of the map types.
//
// Programs fetch the map when they come to a key event, long after it was sent, so a spare keycode keeps its
// symbol until its reader has had the time: the one whose last use is oldest is lent next, and none is lent
// again before its last use has been read (daDoc) or lies too far back to wait for (datHan).

#include <optional>
#include <vector>

#include "BanPhimLinux.hpp"

namespace tovira {

class OTrongLinux {
  public:
    // Seconds after which a use counts as read: by a program that cannot be asked, and by one that can be but
    // does not answer. A busy toolkit needs some 0.2 s for the map changes of one round.
    static constexpr double hanKhongHoi = 0.75;
    static constexpr double hanCoHoi = 3;

    explicit OTrongLinux(xcb_connection_t* c) : c_(c) {}

    // Takes note of a map just read: who else took a spare keycode, which are new.
    void capNhat(const BanPhimLinux& ban);

    // All spare keycodes, lent or not.
    [[nodiscard]] const TapPhimX& ma() const { return ma_; }

    // The keycode that types `chu` from now on, used at time `luc`. 0: none is free before readers have
    // caught up. What it changes reaches the server with guiBan.
    [[nodiscard]] xcb_keycode_t muon(char32_t chu, double luc);
    void guiBan();

    // Uses so far; what daDoc is told.
    [[nodiscard]] std::uint64_t luot() const { return luot_; }
    // The reader has read everything up to use `luot`.
    void daDoc(std::uint64_t luot) { daDoc_ = std::max(daDoc_, luot); }
    // Which of the two limits holds from now on.
    void datHan(double giay) { han_ = giay; }
    // Has everything been read, as far as can be told at time `luc`?
    [[nodiscard]] bool docHet(double luc) const;
    // When the last symbol was typed; absent while none is lent.
    [[nodiscard]] std::optional<double> lucCuoi() const { return lucCuoi_; }

    // Takes every symbol off the map again.
    void traHet();

  private:
    struct O {
        xcb_keycode_t ma = 0;
        std::uint32_t kyHieu = 0;  // 0: free
        std::uint64_t luot = 0;    // of its last use
        double luc = 0;            // likewise, seconds
        bool canGui = false;       // the server does not know yet
    };
    [[nodiscard]] bool coTheLay(const O& o, double luc) const {
        return o.luot <= daDoc_ || o.luc + han_ <= luc;
    }

    xcb_connection_t* c_;
    std::vector<O> o_;  // by keycode
    TapPhimX ma_;
    std::uint64_t luot_ = 0;
    std::uint64_t daDoc_ = 0;
    double han_ = hanKhongHoi;
    std::optional<double> lucCuoi_;
};

}  // namespace tovira

#pragma once
// Main thread (any single thread in tests): a pure state machine. Follows the rendezvous server by probes,
// debounces failures and says what the page is to be told; it neither probes nor tells anything itself.

#include <cstdint>
#include <optional>

namespace tovira {

// What the web view really shows, apart from the flags.
enum class DangHien : std::uint8_t { chuaGi, mayChu, giaoDienKem, trangKhongKetNoi };

class TheoDoiMayChu {
  public:
    static constexpr double chuKy = 5.0;             // seconds between ticks
    static constexpr double choNhip = 4.0;           // time limit of a tick's probe
    static constexpr double choNap = 1.5;            // time limit of a probe that decides what to load
    static constexpr std::int64_t nhipMoiLanDo = 4;  // a healthy server is probed on every 4th tick

    enum class Do : std::uint8_t { khong, co };

    // What is to be done once a tick's probe has answered, in this order.
    struct Viec {
        std::optional<bool> matKetNoi;  // tell the page: lost (true) or back (false)
        bool songLai = false;           // tell the packaged interface that the server is back
        bool napLai = false;            // probe again with choNap and let the answer decide what to load
        friend bool operator==(const Viec&, const Viec&) = default;
    };

    // One tick. Says whether to probe now.
    [[nodiscard]] Do nhip();
    // That probe's answer.
    [[nodiscard]] Viec traLoi(bool song);

    // The three switches.
    void sangMayChu();
    // The server counts as unreachable; the packaged interface is about to be shown.
    void matMayChu();
    void sangGiaoDienKem();
    void sangTrangKhongKetNoi();

    [[nodiscard]] DangHien dangHien() const { return dangHien_; }
    [[nodiscard]] bool dangDungGiaoDienKem() const { return dangDungGiaoDienKem_; }
    [[nodiscard]] bool dangMatKetNoi() const { return dangMatKetNoi_; }
    [[nodiscard]] std::optional<bool> mayChuSongTruoc() const { return mayChuSongTruoc_; }
    [[nodiscard]] std::int64_t demNhipDo() const { return demNhipDo_; }
    [[nodiscard]] std::int64_t demChetLienTiep() const { return demChetLienTiep_; }

  private:
    DangHien dangHien_ = DangHien::chuaGi;
    bool dangDungGiaoDienKem_ = false;
    bool dangMatKetNoi_ = false;
    std::optional<bool> mayChuSongTruoc_;
    std::int64_t demNhipDo_ = 0;
    std::int64_t demChetLienTiep_ = 0;
};

}  // namespace tovira

#pragma once
// Main thread. Asks the program that has the keyboard whether it has come to the end of the events sent so
// far: it answers _NET_WM_PING, which every toolkit knows, in the order of its events.

#include <cstdint>
#include <optional>

#include "XcbLinux.hpp"

namespace tovira {

class HoiDocLinux {
  public:
    explicit HoiDocLinux(const ManX& x);

    // Asks; `luot` is what the answer will say. False when the program does not know the
    // question, or claims to but left the last one unanswered.
    [[nodiscard]] bool hoi(std::uint64_t luot);
    // The `luot` of the question that this event answers.
    [[nodiscard]] std::optional<std::uint64_t> dapAn(const xcb_generic_event_t& suKien);
    // Stops listening for answers.
    void thoi();

  private:
    [[nodiscard]] xcb_window_t timCuaSo() const;
    [[nodiscard]] bool bietPing(xcb_window_t cuaSo) const;
    void nghe(std::uint32_t matNa);

    const ManX& x_;
    xcb_atom_t giaoThuc_;
    xcb_atom_t ping_;
    std::uint32_t so_;        // number of the last question
    std::uint64_t luot_ = 0;  // what it asked about
    xcb_window_t cuaSo_ = 0;  // whom
    bool dangCho_ = false;    // it has not answered yet
    xcb_window_t cam_ = 0;    // a window that never did
    bool dangNghe_ = false;
};

}  // namespace tovira

#pragma once
// Main thread. Types text as symbols: those that the map has with their own keys, the others with spare
// keycodes.

#include <string_view>

#include "BamPhimLinux.hpp"
#include "OTrongLinux.hpp"

namespace tovira {

class GoChuLinux {
  public:
    // All outlive this.
    GoChuLinux(xcb_connection_t* c, BanPhimLinux& ban, OTrongLinux& oTrong, BamPhimLinux& bam)
        : c_(c), ban_(ban), oTrong_(oTrong), bam_(bam) {}

    // Types `chu` as far as spare keycodes last and gives the number of code points done: fewer than all
    // means that readers must catch up first. Modifiers and locks are lifted meanwhile and back when it
    // returns. `luc` is the clock in seconds. Return is '\n', '\r' or both; other control characters are no
    // text.
    std::size_t go(std::u32string_view chu, double luc);

  private:
    // What the keyboard's state would do to text.
    struct TrangThai {
        std::uint32_t nhom = 0;  // layout
        std::uint8_t khoa = 0;   // real modifiers locked
        std::uint8_t chot = 0;   // and latched
    };
    [[nodiscard]] TrangThai docTrangThai() const;
    void datKhoa(std::uint8_t muc, std::uint8_t khoa, std::uint8_t boChot);

    xcb_connection_t* c_;
    BanPhimLinux& ban_;
    OTrongLinux& oTrong_;
    BamPhimLinux& bam_;
};

}  // namespace tovira

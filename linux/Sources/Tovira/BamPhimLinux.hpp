#pragma once
// Main thread. Presses and releases keys through XTEST, and sets modifiers to what a moment needs and back.

#include <vector>

#include "BanPhimLinux.hpp"

namespace tovira {

class BamPhimLinux {
  public:
    // Both outlive this.
    BamPhimLinux(xcb_connection_t* c, const BanPhimLinux& ban) : c_(c), ban_(ban) {}

    // Asks the server which keys are down, whoever holds them. False when it is gone.
    bool docDangXuong();
    // As docDangXuong last found and the calls since have made it.
    [[nodiscard]] bool dangXuong(xcb_keycode_t ma) const { return xuong_[ma]; }

    // A press arrives even where our device already has the key down, which the server would drop.
    void nhan(xcb_keycode_t ma);
    void nha(xcb_keycode_t ma);
    void go(xcb_keycode_t ma) {
        nhan(ma);
        nha(ma);
    }

    // While it lives, exactly the modifiers `co` (key command flags) are held, whoever held which before;
    // then what was held is held again. Key `tru` is left alone. docDangXuong comes first.
    class BoTro {
      public:
        BoTro(BamPhimLinux& bam, std::uint64_t co, xcb_keycode_t tru);
        ~BoTro();
        BoTro(const BoTro&) = delete;
        BoTro& operator=(const BoTro&) = delete;

      private:
        struct Nhac {
            xcb_keycode_t ma;
            bool muon;  // the local user's
        };
        BamPhimLinux& bam_;
        std::vector<Nhac> nhac_;           // lifted
        std::vector<xcb_keycode_t> them_;  // added
    };

  private:
    void gui(std::uint8_t loai, xcb_keycode_t ma);

    xcb_connection_t* c_;
    const BanPhimLinux& ban_;
    TapPhimX xuong_;  // down on the master keyboard: what everyone sees
    TapPhimX cuaTa_;  // down on the XTEST keyboard
    TapPhimX muon_;   // of these, put back for the local user, whose own keyboard will let them go
};

}  // namespace tovira

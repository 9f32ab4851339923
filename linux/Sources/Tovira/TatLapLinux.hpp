#pragma once
// Main thread. Keeps the server from repeating keys that the remote side holds: the remote side sends its own
// repeats. Only the XTEST keyboard is changed, and put back when this goes.
//
// The server's master keyboard, which does the repeating and which every program sees, takes over a device's
// map and controls when that device begins to speak. So ours reach it with our first key and would stay until
// a real key is pressed: nghi() hands it back, and theoDoi() mends what a new layout meanwhile copied from
// it.

#include "ThietBiLinux.hpp"
#include "XkbLinux.hpp"

namespace tovira {

class TatLapLinux {
  public:
    TatLapLinux(xcb_connection_t* c, const ThietBiPhim& thietBi);
    ~TatLapLinux();
    TatLapLinux(const TatLapLinux&) = delete;
    TatLapLinux& operator=(const TatLapLinux&) = delete;

    // The server's word that repeating was switched on the master keyboard.
    void nhanTin(const xcb_xkb_controls_notify_event_t& tin);
    // Holds repeating off on our keyboard and as its owner wants it on the others. Asks the server only where
    // something has changed; `coBanMoi`: a keyboard has.
    void theoDoi(bool coBanMoi);
    // Our keys rest: a real keyboard speaks for the master again.
    void nghi();

  private:
    struct BanPhim {
        int ma;
        bool lap;  // repeats by its owner's will
    };

    xcb_connection_t* c_;
    BanPhim xtest_;
    std::vector<BanPhim> khac_;
    bool lapDoi_ = true;  // repeating was switched by someone else
};

}  // namespace tovira

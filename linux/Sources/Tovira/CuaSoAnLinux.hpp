#pragma once
// Made and destroyed on the main thread; captures read it on theirs. A window of this program that stands on
// the screen and in no captured picture: captures put together what is below it instead.

#include <xcb/xcb.h>

#include <cstdint>
#include <memory>
#include <mutex>
#include <vector>

#include "DemAnhLinux.hpp"

namespace tovira {

class CuaSoAnLinux {
  public:
    // What a capture has to know.
    struct Tin {
        xcb_window_t cuaSo = XCB_NONE;
        OAnh oCuaSo;  // on the root window, border included
        // The part of the root window that it changes: where it stands, and a compositor's shadow around.
        OAnh o;
        // A compositor draws the desktop: what stands in the windows is not yet what is on the screen.
        bool coBoGhep = false;
        // The part `o` of the screen as it was before, rows without padding; only with a compositor, which
        // may keep the desktop's background to itself.
        std::vector<std::uint8_t> truocDo;
    };

    // Holds off windows that come and go, for as long as a capture reads the screen. Waiting for it is
    // waiting for one reading.
    class Giu {
      public:
        Giu();
        [[nodiscard]] const std::shared_ptr<const Tin>& tin() const;

      private:
        std::lock_guard<std::mutex> khoa_;
    };

    // `cuaSo` stands at its place on `goc` but has not been shown yet: from here on it can be, and no picture
    // will have it. `c` must outlive this. The newest of several is the one that captures leave out.
    CuaSoAnLinux(xcb_connection_t* c, xcb_window_t goc, xcb_window_t cuaSo);
    // Not before the window is off the screen.
    ~CuaSoAnLinux();
    CuaSoAnLinux(const CuaSoAnLinux&) = delete;
    CuaSoAnLinux& operator=(const CuaSoAnLinux&) = delete;

  private:
    xcb_connection_t* c_;
    xcb_window_t goc_;
    std::shared_ptr<const Tin> tin_;
};

// Does a compositor draw the desktop of screen 0?
[[nodiscard]] bool coBoGhepX(xcb_connection_t* c);

}  // namespace tovira

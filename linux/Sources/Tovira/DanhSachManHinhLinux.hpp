#pragma once
// Any thread, on the caller's connection. The monitors of an X screen.

#include <xcb/randr.h>

#include <string>
#include <utility>
#include <vector>

#include "ManHinh.hpp"
#include "XcbLinux.hpp"

namespace tovira {

// Why the source failed, other than by a display that changed (ManHinh::maManHinhDoi).
[[nodiscard]] inline Loi loiNguonX(std::string moTa) {
    constexpr int maLoi = 2;
    return {ManHinh::mienNguon, maLoi, std::move(moTa)};
}

// One question for the monitors, sent at once and answered later, so that it can travel with others.
class HoiManHinhX {
  public:
    // `coRandr`: what coRandr15 said about this connection.
    HoiManHinhX(const ManX& x, bool coRandr);
    // The monitors in the server's order, names empty; the whole screen as one display without RandR.
    // Empty when the connection is gone.
    [[nodiscard]] std::vector<ManHinh::Nguon> dapAn() const;

  private:
    const ManX& x_;
    bool coRandr_;
    xcb_randr_get_monitors_cookie_t phieuRandr_{};
    xcb_get_geometry_cookie_t phieuGoc_{};
};

// True when the server speaks RandR 1.5, which knows monitors.
[[nodiscard]] bool coRandr15(const ManX& x);

// The monitors with their names.
[[nodiscard]] std::vector<ManHinh::Nguon> lietKeManHinhX(const ManX& x);

}  // namespace tovira

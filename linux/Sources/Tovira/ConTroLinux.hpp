#pragma once
// Frame queue. The pointer's picture and how it is drawn into a frame.

#include <xcb/xfixes.h>

#include <cstdint>
#include <vector>

#include "DemAnhLinux.hpp"

namespace tovira {

// The pointer: its image (B, G, R, A, colours already multiplied by A) and where it stands on the root
// window.
class ConTro {
  public:
    void datAnh(const xcb_xfixes_get_cursor_image_reply_t& anh);
    // The hotspot's place.
    void datViTri(int x, int y);

    // The rectangle of the root window that it covers.
    [[nodiscard]] OAnh o() const { return {x_ - nongX_, y_ - nongY_, rong_, cao_}; }
    // Draws what of it lies on these rows of `dem`, whose top-left corner is at (goc.x, goc.y) on the root.
    void ve(DemAnh& dem, const OAnh& goc, const DoanHang& hang) const;

  private:
    std::vector<std::uint32_t> diem_;
    int x_ = 0;
    int y_ = 0;
    int nongX_ = 0;
    int nongY_ = 0;
    int rong_ = 0;
    int cao_ = 0;
};

}  // namespace tovira

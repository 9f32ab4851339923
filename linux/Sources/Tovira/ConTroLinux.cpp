#include "ConTroLinux.hpp"

#include <libyuv.h>

#include <algorithm>

namespace tovira {

void ConTro::datAnh(const xcb_xfixes_get_cursor_image_reply_t& anh) {
    const auto* diem = xcb_xfixes_get_cursor_image_cursor_image(&anh);
    diem_.assign(diem, diem + xcb_xfixes_get_cursor_image_cursor_image_length(&anh));
    nongX_ = anh.xhot;
    nongY_ = anh.yhot;
    rong_ = anh.width;
    cao_ = anh.height;
}

void ConTro::datViTri(int x, int y) {
    x_ = x;
    y_ = y;
}

void ConTro::ve(DemAnh& dem, const OAnh& goc, const DoanHang& hang) const {
    const OAnh c = o();
    const int trai = std::max(c.x - goc.x, 0);
    const int phai = std::min(c.x - goc.x + c.rong, dem.rong());
    const int tren = std::max(c.y - goc.y, hang.tu);
    const int duoi = std::min(c.y - goc.y + c.cao, hang.den);
    if (trai >= phai || tren >= duoi) return;
    const auto hangAnh = static_cast<std::ptrdiff_t>(tren + goc.y - c.y);
    const auto* nguon =
        reinterpret_cast<const std::uint8_t*>(diem_.data() + hangAnh * c.rong + (trai + goc.x - c.x));
    auto* dich = dem.hang(tren) + static_cast<std::ptrdiff_t>(trai) * 4;
    libyuv::ARGBBlend(nguon, c.rong * 4, dich, dem.buoc(), dich, dem.buoc(), phai - trai, duoi - tren);
}

}  // namespace tovira

#include "CuaSoAnLinux.hpp"

#include <xcb/composite.h>

#include <algorithm>

#include "ThietBiLinux.hpp"

namespace tovira {

namespace {

constexpr int rongBong = 40;  // pixels that a compositor's shadow may reach beyond a window

struct So {
    std::mutex khoa;
    std::vector<std::shared_ptr<const CuaSoAnLinux::Tin>> cac;
    std::shared_ptr<const CuaSoAnLinux::Tin> hienTai;
};

So& so() {
    static So mot;
    return mot;
}

OAnh cat(const OAnh& o, int rong, int cao) {
    const int trai = std::clamp(o.x, 0, rong);
    const int tren = std::clamp(o.y, 0, cao);
    return {trai, tren, std::clamp(o.x + o.rong, trai, rong) - trai,
            std::clamp(o.y + o.cao, tren, cao) - tren};
}

std::vector<std::uint8_t> docManHinh(xcb_connection_t* c, xcb_window_t goc, const OAnh& o) {
    const auto phieu = xcb_get_image(c, XCB_IMAGE_FORMAT_Z_PIXMAP, goc, static_cast<std::int16_t>(o.x),
                                     static_cast<std::int16_t>(o.y), static_cast<std::uint16_t>(o.rong),
                                     static_cast<std::uint16_t>(o.cao), ~0U);
    const PhanXcb<xcb_get_image_reply_t> anh(xcb_get_image_reply(c, phieu, nullptr));
    if (!anh) return {};
    const auto* dau = xcb_get_image_data(anh.get());
    return {dau, dau + xcb_get_image_data_length(anh.get())};
}

}  // namespace

bool coBoGhepX(xcb_connection_t* c) {
    const PhanXcb<xcb_get_selection_owner_reply_t> chu(
        xcb_get_selection_owner_reply(c, xcb_get_selection_owner(c, nguyenTuX(c, "_NET_WM_CM_S0")), nullptr));
    return chu && chu->owner != XCB_NONE;
}

CuaSoAnLinux::Giu::Giu() : khoa_(so().khoa) {}

const std::shared_ptr<const CuaSoAnLinux::Tin>& CuaSoAnLinux::Giu::tin() const {
    return so().hienTai;
}

CuaSoAnLinux::CuaSoAnLinux(xcb_connection_t* c, xcb_window_t goc, xcb_window_t cuaSo) : c_(c), goc_(goc) {
    auto tin = std::make_shared<Tin>();
    tin->cuaSo = cuaSo;
    tin->coBoGhep = coBoGhepX(c);
    const PhanXcb<xcb_get_geometry_reply_t> cho(
        xcb_get_geometry_reply(c, xcb_get_geometry(c, cuaSo), nullptr));
    const PhanXcb<xcb_get_geometry_reply_t> man(xcb_get_geometry_reply(c, xcb_get_geometry(c, goc), nullptr));
    if (cho && man) {
        const int le = tin->coBoGhep ? rongBong : 0;
        const int vien = 2 * (le + cho->border_width);
        tin->oCuaSo = {cho->x, cho->y, cho->width + 2 * cho->border_width,
                       cho->height + 2 * cho->border_width};
        tin->o =
            cat({cho->x - le, cho->y - le, cho->width + vien, cho->height + vien}, man->width, man->height);
    }
    if (coMoRong(c, &xcb_composite_id)) {
        PhanXcb<void>(xcb_composite_query_version_reply(c, xcb_composite_query_version(c, 0, 4), nullptr));
        // Every window keeps all of its pixels from now on, wherever it goes and whatever covers it.
        static_cast<void>(
            daLam(c, xcb_composite_redirect_subwindows_checked(c, goc, XCB_COMPOSITE_REDIRECT_AUTOMATIC)));
    }
    if (tin->coBoGhep && tin->o.rong > 0 && tin->o.cao > 0) tin->truocDo = docManHinh(c, goc, tin->o);
    tin_ = std::move(tin);
    const std::lock_guard khoa(so().khoa);
    so().cac.push_back(tin_);
    so().hienTai = tin_;
}

CuaSoAnLinux::~CuaSoAnLinux() {
    {
        const std::lock_guard khoa(so().khoa);
        auto& cac = so().cac;
        cac.erase(std::remove(cac.begin(), cac.end(), tin_), cac.end());
        so().hienTai = cac.empty() ? nullptr : cac.back();
    }
    if (coMoRong(c_, &xcb_composite_id)) {
        xcb_composite_unredirect_subwindows(c_, goc_, XCB_COMPOSITE_REDIRECT_AUTOMATIC);
        xcb_flush(c_);
    }
}

}  // namespace tovira

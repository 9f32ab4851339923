#include "DanhSachManHinhLinux.hpp"

#include <algorithm>

namespace tovira {

namespace {

ManHinh::Nguon nguonTu(std::uint32_t ma, int x, int y, int rong, int cao, bool chinh) {
    ManHinh::Nguon n;
    n.ma = ma;
    n.rong = rong;
    n.cao = cao;
    n.diemAnh = {rong, cao};
    n.khung = {static_cast<double>(x), static_cast<double>(y), static_cast<double>(rong),
               static_cast<double>(cao)};
    n.chinh = chinh;
    return n;
}

}  // namespace

bool coRandr15(const ManX& x) {
    if (!coMoRong(x.c(), &xcb_randr_id)) return false;
    const PhanXcb<xcb_randr_query_version_reply_t> phien(
        xcb_randr_query_version_reply(x.c(), xcb_randr_query_version(x.c(), 1, 5), nullptr));
    return phien && (phien->major_version > 1 || phien->minor_version >= 5);
}

HoiManHinhX::HoiManHinhX(const ManX& x, bool coRandr) : x_(x), coRandr_(coRandr) {
    if (coRandr_)
        phieuRandr_ = xcb_randr_get_monitors(x.c(), x.goc(), 1);
    else
        phieuGoc_ = xcb_get_geometry(x.c(), x.goc());
}

std::vector<ManHinh::Nguon> HoiManHinhX::dapAn() const {
    std::vector<ManHinh::Nguon> ra;
    if (!coRandr_) {
        const PhanXcb<xcb_get_geometry_reply_t> g(xcb_get_geometry_reply(x_.c(), phieuGoc_, nullptr));
        if (g) ra.push_back(nguonTu(0, 0, 0, g->width, g->height, true));
        return ra;
    }
    const PhanXcb<xcb_randr_get_monitors_reply_t> d(
        xcb_randr_get_monitors_reply(x_.c(), phieuRandr_, nullptr));
    if (!d) return ra;
    for (auto it = xcb_randr_get_monitors_monitors_iterator(d.get()); it.rem > 0;
         xcb_randr_monitor_info_next(&it)) {
        const auto& m = *it.data;
        ra.push_back(nguonTu(m.name, m.x, m.y, m.width, m.height, m.primary != 0));
    }
    const bool coChinh = std::any_of(ra.begin(), ra.end(), [](const auto& n) { return n.chinh; });
    if (!ra.empty() && !coChinh) ra.front().chinh = true;
    return ra;
}

std::vector<ManHinh::Nguon> lietKeManHinhX(const ManX& x) {
    auto ra = HoiManHinhX(x, coRandr15(x)).dapAn();
    for (auto& n : ra) {
        if (n.ma == 0) continue;
        const PhanXcb<xcb_get_atom_name_reply_t> ten(
            xcb_get_atom_name_reply(x.c(), xcb_get_atom_name(x.c(), n.ma), nullptr));
        if (!ten) continue;
        const auto dai = static_cast<std::size_t>(xcb_get_atom_name_name_length(ten.get()));
        n.ten.assign(xcb_get_atom_name_name(ten.get()), dai);
    }
    return ra;
}

}  // namespace tovira

#include "DaiCheLinux.hpp"

#include <algorithm>
#include <cstring>
#include <utility>

#include "ThietBiLinux.hpp"

namespace tovira {

namespace {

OAnh giao(const OAnh& a, const OAnh& b) {
    const int trai = std::max(a.x, b.x);
    const int tren = std::max(a.y, b.y);
    const int rong = std::min(a.x + a.rong, b.x + b.rong) - trai;
    const int cao = std::min(a.y + a.cao, b.y + b.cao) - tren;
    return rong > 0 && cao > 0 ? OAnh{trai, tren, rong, cao} : OAnh{};
}

xcb_rectangle_t oX(const OAnh& o) {
    return {static_cast<std::int16_t>(o.x), static_cast<std::int16_t>(o.y),
            static_cast<std::uint16_t>(o.rong), static_cast<std::uint16_t>(o.cao)};
}

// How much redder than anything else the covering window's own colour is, and how many such pixels another
// window must share with it before that is no accident.
constexpr int doLechMau = 60;
constexpr int giongToiThieu = 16;

std::int16_t so16(int so) {
    return static_cast<std::int16_t>(so);
}

}  // namespace

void DaiChe::batDau(const ManX& x, const OAnh& man, std::uint32_t matNa) {
    x_ = &x;
    man_ = man;
    matNa_ = matNa;
    duMoRong_.reset();
}

// The connection takes with it what the server keeps for it.
void DaiChe::dong() {
    x_ = nullptr;
    tin_ = nullptr;
    o_ = {};
    cac_.clear();
    canh_.clear();
    kieu_.clear();
    anh_ = nen_ = XCB_NONE;
    daVe_ = doiCay_ = doiNen_ = false;
}

void DaiChe::boHet() {
    if (x_ != nullptr && dung()) boTheo();
}

bool DaiChe::moRong() {
    if (duMoRong_) return *duMoRong_;
    auto* c = x_->c();
    duMoRong_ = coMoRong(c, &xcb_composite_id) && coMoRong(c, &xcb_render_id);
    if (!*duMoRong_) return false;
    const auto p1 = xcb_composite_query_version(c, 0, 4);
    const auto p2 = xcb_render_query_version(c, 0, 11);
    const PhanXcb<void> r1(xcb_composite_query_version_reply(c, p1, nullptr));
    const PhanXcb<void> r2(xcb_render_query_version_reply(c, p2, nullptr));
    hoiKieu();
    return *(duMoRong_ = r1 && r2 && kieu_.count(x_->man->root_visual) != 0);
}

void DaiChe::hoiKieu() {
    const PhanXcb<xcb_render_query_pict_formats_reply_t> dap(
        xcb_render_query_pict_formats_reply(x_->c(), xcb_render_query_pict_formats(x_->c()), nullptr));
    if (!dap) return;
    for (auto s = xcb_render_query_pict_formats_screens_iterator(dap.get()); s.rem > 0;
         xcb_render_pictscreen_next(&s))
        for (auto d = xcb_render_pictscreen_depths_iterator(s.data); d.rem > 0; xcb_render_pictdepth_next(&d))
            for (auto v = xcb_render_pictdepth_visuals_iterator(d.data); v.rem > 0;
                 xcb_render_pictvisual_next(&v))
                kieu_[v.data->visual] = v.data->format;
}

bool DaiChe::theo(const Tin& tin) {
    const auto moi = tin && giao(tin->o, man_) != OAnh{} ? tin : nullptr;
    if (moi == tin_) return false;
    if (dung()) boTheo();
    tin_ = moi;
    o_ = moi ? giao(moi->o, man_) : OAnh{};
    if (moi && moRong()) batDauTheo();
    return true;
}

void DaiChe::batDauTheo() {
    auto* c = x_->c();
    const auto o = oX(o_);
    for (auto* vung : {&vungO_, &vungMot_, &vungTong_})
        xcb_xfixes_create_region(c, *vung = xcb_generate_id(c), vung == &vungO_ ? 1 : 0, &o);
    xcb_create_pixmap(c, x_->man->root_depth, anh_ = xcb_generate_id(c), x_->goc(), o.width, o.height);
    const std::uint32_t gom = XCB_SUBWINDOW_MODE_INCLUDE_INFERIORS;
    xcb_render_create_picture(c, hinh_ = xcb_generate_id(c), anh_, kieu_[x_->man->root_visual], 0, nullptr);
    xcb_create_gc(c, but_ = xcb_generate_id(c), anh_, XCB_GC_SUBWINDOW_MODE, &gom);
    tenNen_ = nguyenTuX(c, "_XROOTPMAP_ID");
    if (!tin_->coBoGhep) taoNen();
    const std::uint32_t matNa = matNa_ | XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY | XCB_EVENT_MASK_PROPERTY_CHANGE;
    xcb_change_window_attributes(c, x_->goc(), XCB_CW_EVENT_MASK, &matNa);
    doiCay_ = true;
}

// What a window's background is can be asked of nobody, but another window can have the same one: this one
// lies below all others.
void DaiChe::taoNen() {
    auto* c = x_->c();
    nen_ = xcb_generate_id(c);
    const auto o = oX(o_);
    const std::uint32_t giaTri[] = {XCB_BACK_PIXMAP_PARENT_RELATIVE, 1};
    xcb_create_window(c, XCB_COPY_FROM_PARENT, nen_, x_->goc(), o.x, o.y, o.width, o.height, 0,
                      XCB_WINDOW_CLASS_INPUT_OUTPUT, XCB_COPY_FROM_PARENT,
                      XCB_CW_BACK_PIXMAP | XCB_CW_OVERRIDE_REDIRECT, giaTri);
    const std::uint32_t duoi = XCB_STACK_MODE_BELOW;
    xcb_configure_window(c, nen_, XCB_CONFIG_WINDOW_STACK_MODE, &duoi);
    xcb_map_window(c, nen_);
}

void DaiChe::boTheo() {
    auto* c = x_->c();
    if (anh_ != XCB_NONE) {
        xcb_change_window_attributes(c, x_->goc(), XCB_CW_EVENT_MASK, &matNa_);
        for (const auto& [cua, canh] : canh_)
            xcb_damage_destroy(c, canh.ma);
        if (nen_ != XCB_NONE) xcb_destroy_window(c, nen_);
        xcb_free_gc(c, but_);
        xcb_render_free_picture(c, hinh_);
        xcb_free_pixmap(c, anh_);
        for (const auto vung : {vungO_, vungMot_, vungTong_})
            xcb_xfixes_destroy_region(c, vung);
    }
    anh_ = nen_ = XCB_NONE;
    tin_ = nullptr;
    o_ = {};
    cac_.clear();
    canh_.clear();
    daVe_ = doiCay_ = doiNen_ = false;
}

bool DaiChe::nhan(const xcb_generic_event_t& suKien) {
    const int loai = suKien.response_type & 0x7f;
    if (loai == xcb_get_extension_data(x_->c(), &xcb_damage_id)->first_event + XCB_DAMAGE_NOTIFY) {
        const auto& ve = reinterpret_cast<const xcb_damage_notify_event_t&>(suKien);
        const auto canh = canh_.find(ve.drawable);
        if (canh == canh_.end() || canh->second.ma != ve.damage) return false;
        daVe_ = canh->second.daVe = true;
        return true;
    }
    if (loai == XCB_PROPERTY_NOTIFY) {
        doiNen_ |=
            anh_ != XCB_NONE && reinterpret_cast<const xcb_property_notify_event_t&>(suKien).atom == tenNen_;
        return true;
    }
    if (loai < XCB_CREATE_NOTIFY || loai > XCB_CIRCULATE_NOTIFY) return false;
    // All of them begin with the window that reports and the one that it is about.
    const auto& cay = reinterpret_cast<const xcb_map_notify_event_t&>(suKien);
    if (cay.event == cay.window) return false;  // the root window itself
    if (loai == XCB_MAP_NOTIFY || loai == XCB_CONFIGURE_NOTIFY)
        if (const auto canh = canh_.find(cay.window); canh != canh_.end()) canh->second.nghi = true;
    doiCay_ |= anh_ != XCB_NONE;
    return true;
}

void DaiChe::botVung(xcb_xfixes_region_t vung) const {
    if (anh_ != XCB_NONE) xcb_xfixes_subtract_region(x_->c(), vung, vungO_, vung);
}

std::optional<xcb_xfixes_fetch_region_cookie_t> DaiChe::hoiThayDoi() {
    if (!std::exchange(daVe_, false)) return {};
    auto* c = x_->c();
    xcb_xfixes_set_region(c, vungTong_, 0, nullptr);
    for (const auto& cua : cac_) {
        auto& canh = canh_[cua.ma];
        if (!std::exchange(canh.daVe, false)) continue;
        xcb_damage_subtract(c, canh.ma, XCB_NONE, vungMot_);
        xcb_xfixes_translate_region(c, vungMot_, so16(cua.o.x + cua.vien), so16(cua.o.y + cua.vien));
        xcb_xfixes_union_region(c, vungTong_, vungMot_, vungTong_);
    }
    xcb_xfixes_intersect_region(c, vungTong_, vungO_, vungTong_);
    return xcb_xfixes_fetch_region(c, vungTong_);
}

bool DaiChe::thayDoi(std::optional<xcb_xfixes_fetch_region_cookie_t> phieu) {
    bool doi = std::exchange(doiNen_, false);
    if (phieu) {
        const PhanXcb<xcb_xfixes_fetch_region_reply_t> v(
            xcb_xfixes_fetch_region_reply(x_->c(), *phieu, nullptr));
        doi |= v && xcb_xfixes_fetch_region_rectangles_length(v.get()) > 0;
    }
    if (std::exchange(doiCay_, false)) doi |= capNhatCay();
    return doi;
}

std::vector<DaiChe::Cua> DaiChe::docCay() {
    auto* c = x_->c();
    const PhanXcb<xcb_query_tree_reply_t> cay(xcb_query_tree_reply(c, xcb_query_tree(c, x_->goc()), nullptr));
    if (!cay) return {};
    const auto* con = xcb_query_tree_children(cay.get());
    struct Hoi {
        xcb_window_t ma;
        xcb_get_window_attributes_cookie_t thuoc;
        xcb_get_geometry_cookie_t cho;
    };
    std::vector<Hoi> hoi;
    for (int i = 0; i < xcb_query_tree_children_length(cay.get()); ++i)
        if (con[i] != tin_->cuaSo)
            hoi.push_back({con[i], xcb_get_window_attributes(c, con[i]), xcb_get_geometry(c, con[i])});
    std::vector<Cua> ra;
    for (const auto& h : hoi) {
        const PhanXcb<xcb_get_window_attributes_reply_t> t(
            xcb_get_window_attributes_reply(c, h.thuoc, nullptr));
        const PhanXcb<xcb_get_geometry_reply_t> g(xcb_get_geometry_reply(c, h.cho, nullptr));
        if (!t || !g || t->map_state != XCB_MAP_STATE_VIEWABLE || t->_class != XCB_WINDOW_CLASS_INPUT_OUTPUT)
            continue;
        const int vien = g->border_width;
        const Cua cua{h.ma, {g->x, g->y, g->width + 2 * vien, g->height + 2 * vien}, vien, t->visual};
        if (giao(cua.o, o_) != OAnh{}) ra.push_back(cua);
    }
    // Behind everything, whoever may have gone below it by now.
    const auto nen = std::find_if(ra.begin(), ra.end(), [this](const Cua& cua) { return cua.ma == nen_; });
    if (nen != ra.end()) std::rotate(ra.begin(), nen, nen + 1);
    return ra;
}

// True when other windows stand in the strip than before, or otherwise.
bool DaiChe::capNhatCay() {
    auto* c = x_->c();
    auto moi = docCay();
    if (moi == cac_) return false;
    std::unordered_map<xcb_window_t, Canh> canh;
    for (const auto& cua : moi) {
        if (auto cu = canh_.extract(cua.ma)) {
            cu.mapped().nghi = true;
            canh.insert(std::move(cu));
            continue;
        }
        if (cua.ma == nen_) continue;
        auto& k = canh[cua.ma];
        k.ma = xcb_generate_id(c);
        xcb_damage_create(c, k.ma, cua.ma, XCB_DAMAGE_REPORT_LEVEL_NON_EMPTY);
    }
    for (const auto& [cua, k] : canh_)
        xcb_damage_destroy(c, k.ma);
    canh_ = std::move(canh);
    cac_ = std::move(moi);
    return true;
}

bool DaiChe::trong(const std::vector<DoanHang>& cac) const {
    const int tren = o_.y - man_.y;
    return dung() && std::any_of(cac.begin(), cac.end(),
                                 [&](const DoanHang& d) { return d.tu < tren + o_.cao && d.den > tren; });
}

void DaiChe::ghep(DemAnh& dem, const std::vector<DoanHang>& cac) {
    if (anh_ != XCB_NONE) {
        doiCay_ = false;
        capNhatCay();
        veNen();
        for (const auto& cua : cac_)
            if (!conThanh(cua)) veCua(cua);
    }
    chepVao(dem, cac);
}

// A window that comes, or becomes larger, shows what stood there before until its program has painted it.
bool DaiChe::conThanh(const Cua& cua) {
    const auto canh = canh_.find(cua.ma);
    if (canh == canh_.end() || !canh->second.nghi) return false;
    const OAnh o = giao(giao(cua.o, tin_->oCuaSo), o_);
    canh->second.nghi = false;
    if (o == OAnh{}) return false;
    const auto thanh = docCua(tin_->cuaSo, tin_->oCuaSo, o);
    const auto no = docCua(cua.ma, cua.o, o);
    const auto so = static_cast<std::size_t>(o.rong) * static_cast<std::size_t>(o.cao) * 4;
    if (!thanh || !no || static_cast<std::size_t>(xcb_get_image_data_length(thanh.get())) < so ||
        static_cast<std::size_t>(xcb_get_image_data_length(no.get())) < so)
        return false;
    const auto* a = xcb_get_image_data(thanh.get());
    const auto* b = xcb_get_image_data(no.get());
    int giong = 0;
    for (std::size_t i = 0; i < so; i += 4) {
        // Only its own colour: everybody has white.
        const bool mauRieng = a[i + 2] > std::max(a[i], a[i + 1]) + doLechMau;
        giong += mauRieng && a[i] == b[i] && a[i + 1] == b[i + 1] && a[i + 2] == b[i + 2];
    }
    canh->second.nghi = giong >= giongToiThieu;
    return canh->second.nghi;
}

// The pixels that `cua`, which stands at `cuaO`, has for the part `o` of the root window.
PhanXcb<xcb_get_image_reply_t> DaiChe::docCua(xcb_window_t cua, const OAnh& cuaO, const OAnh& o) const {
    auto* c = x_->c();
    const auto diem = xcb_generate_id(c);
    xcb_composite_name_window_pixmap(c, cua, diem);
    const auto phieu =
        xcb_get_image(c, XCB_IMAGE_FORMAT_Z_PIXMAP, diem, so16(o.x - cuaO.x), so16(o.y - cuaO.y),
                      static_cast<std::uint16_t>(o.rong), static_cast<std::uint16_t>(o.cao), ~0U);
    xcb_free_pixmap(c, diem);
    return PhanXcb<xcb_get_image_reply_t>(xcb_get_image_reply(c, phieu, nullptr));
}

void DaiChe::veNen() {
    auto* c = x_->c();
    if (nen_ != XCB_NONE) {
        xcb_clear_area(c, 0, nen_, 0, 0, 0, 0);
        return;  // one of the windows
    }
    const auto o = oX(o_);
    const auto phieu = xcb_get_property(c, 0, x_->goc(), tenNen_, XCB_ATOM_PIXMAP, 0, 1);
    const PhanXcb<xcb_get_property_reply_t> dap(xcb_get_property_reply(c, phieu, nullptr));
    if (dap && xcb_get_property_value_length(dap.get()) == 4) {
        const std::uint32_t gach[] = {XCB_FILL_STYLE_TILED,
                                      *static_cast<const std::uint32_t*>(xcb_get_property_value(dap.get())),
                                      static_cast<std::uint32_t>(-o.x), static_cast<std::uint32_t>(-o.y)};
        const auto but = xcb_generate_id(c);
        xcb_create_gc(
            c, but, anh_,
            XCB_GC_FILL_STYLE | XCB_GC_TILE | XCB_GC_TILE_STIPPLE_ORIGIN_X | XCB_GC_TILE_STIPPLE_ORIGIN_Y,
            gach);
        const xcb_rectangle_t het{0, 0, o.width, o.height};
        xcb_poly_fill_rectangle(c, anh_, but, 1, &het);
        xcb_free_gc(c, but);
    } else if (const auto buoc = static_cast<std::size_t>(tin_->o.rong) * 4;
               tin_->truocDo.size() >= buoc * static_cast<std::size_t>(tin_->o.cao)) {
        // The compositor paints a background that no window has: what was there before has to do.
        xcb_put_image(c, XCB_IMAGE_FORMAT_Z_PIXMAP, anh_, but_, static_cast<std::uint16_t>(tin_->o.rong),
                      static_cast<std::uint16_t>(tin_->o.cao), so16(tin_->o.x - o_.x), so16(tin_->o.y - o_.y),
                      0, x_->man->root_depth, static_cast<std::uint32_t>(tin_->truocDo.size()),
                      tin_->truocDo.data());
    }
}

// The server keeps a window's pixels apart from the screen's; a window that has just gone draws nothing.
void DaiChe::veCua(const Cua& cua) {
    auto* c = x_->c();
    const auto kieu = kieu_.find(cua.kieu);
    if (kieu == kieu_.end()) return;
    const auto diem = xcb_generate_id(c);
    const auto nguon = xcb_generate_id(c);
    const int x = cua.o.x - o_.x;
    const int y = cua.o.y - o_.y;
    xcb_composite_name_window_pixmap(c, cua.ma, diem);
    xcb_render_create_picture(c, nguon, diem, kieu->second, 0, nullptr);
    const auto hinhDang = xcb_generate_id(c);
    xcb_xfixes_create_region_from_window(c, hinhDang, cua.ma, XCB_SHAPE_SK_BOUNDING);
    xcb_xfixes_set_picture_clip_region(c, hinh_, hinhDang, so16(x + cua.vien), so16(y + cua.vien));
    // See-through pixels show what is below only where a compositor makes them.
    xcb_render_composite(c, tin_->coBoGhep ? XCB_RENDER_PICT_OP_OVER : XCB_RENDER_PICT_OP_SRC, nguon,
                         XCB_NONE, hinh_, 0, 0, 0, 0, so16(x), so16(y),
                         static_cast<std::uint16_t>(cua.o.rong), static_cast<std::uint16_t>(cua.o.cao));
    xcb_xfixes_destroy_region(c, hinhDang);
    xcb_render_free_picture(c, nguon);
    xcb_free_pixmap(c, diem);
}

// Where nothing could be put together the strip is black: anything but the covering window.
void DaiChe::chepVao(DemAnh& dem, const std::vector<DoanHang>& cac) {
    PhanXcb<xcb_get_image_reply_t> anh;
    const auto buoc = static_cast<std::size_t>(o_.rong) * 4;
    if (anh_ != XCB_NONE) {
        const auto phieu =
            xcb_get_image(x_->c(), XCB_IMAGE_FORMAT_Z_PIXMAP, anh_, 0, 0, static_cast<std::uint16_t>(o_.rong),
                          static_cast<std::uint16_t>(o_.cao), ~0U);
        anh.reset(xcb_get_image_reply(x_->c(), phieu, nullptr));
        if (anh && static_cast<std::size_t>(xcb_get_image_data_length(anh.get())) <
                       buoc * static_cast<std::size_t>(o_.cao))
            anh.reset();
    }
    const std::size_t trai = static_cast<std::size_t>(o_.x - man_.x) * 4;
    const int tren = o_.y - man_.y;
    for (const auto& d : cac)
        for (int y = std::max(d.tu, tren); y < std::min(d.den, tren + o_.cao); ++y) {
            auto* dich = dem.hang(y) + trai;
            if (anh)
                std::memcpy(dich, xcb_get_image_data(anh.get()) + static_cast<std::size_t>(y - tren) * buoc,
                            buoc);
            else
                std::memset(dich, 0, buoc);
        }
}

}  // namespace tovira

#include "TheoDoiManHinhLinux.hpp"

#include <xcb/randr.h>
#include <xcb/xfixes.h>

#include <cstddef>
#include <string_view>

#include "DanhSachManHinhLinux.hpp"

namespace tovira {

namespace {

// How long the pointer must rest before it counts as still. A little more than the time between two frames,
// so that a steady movement is one movement.
constexpr std::uint32_t nghiMiligiay = 100;

Loi thieu(const char* moRong) {
    return loiNguonX(std::string("Máy chủ X thiếu phần mở rộng ") + moRong);
}

int suKienDau(xcb_connection_t* c, xcb_extension_t* mo) {
    return xcb_get_extension_data(c, mo)->first_event;
}

// The name lies right behind the 14 bytes of the counter on the wire, where sizeof would add padding.
std::string_view tenBoDem(const xcb_sync_systemcounter_t& b) {
    const auto* dau = reinterpret_cast<const char*>(&b) + offsetof(xcb_sync_systemcounter_t, name_len) + 2;
    return {dau, b.name_len};
}

// The counter of milliseconds since the core pointer (always device 2) was last moved, by hand or by a
// program; on servers without it, since any input.
std::uint32_t timBoDemNghi(xcb_connection_t* c) {
    const PhanXcb<xcb_sync_list_system_counters_reply_t> ds(
        xcb_sync_list_system_counters_reply(c, xcb_sync_list_system_counters(c), nullptr));
    if (!ds) return 0;
    std::uint32_t moiThu = 0;
    for (auto it = xcb_sync_list_system_counters_counters_iterator(ds.get()); it.rem > 0;
         xcb_sync_systemcounter_next(&it)) {
        if (tenBoDem(*it.data) == "DEVICEIDLETIME 2") return it.data->counter;
        if (tenBoDem(*it.data) == "IDLETIME") moiThu = it.data->counter;
    }
    return moiThu;
}

}  // namespace

KetQua<void> TheoDoiManHinh::batDau(const ManX& x) {
    x_ = &x;
    auto* c = x.c();
    if (auto kq = hoiMoRong(); !kq) return kq;
    veLai_ = xcb_generate_id(c);
    vung_ = xcb_generate_id(c);
    xcb_xfixes_create_region(c, vung_, 0, nullptr);
    if (!daLam(c, xcb_damage_create_checked(c, veLai_, x.goc(), XCB_DAMAGE_REPORT_LEVEL_NON_EMPTY)))
        return thieu("DAMAGE");
    xcb_xfixes_select_cursor_input(c, x.goc(), XCB_XFIXES_CURSOR_NOTIFY_MASK_DISPLAY_CURSOR);
    xcb_change_window_attributes(c, x.goc(), XCB_CW_EVENT_MASK, &matNaGoc);
    if (coMoRong(c, &xcb_randr_id))
        xcb_randr_select_input(c, x.goc(),
                               XCB_RANDR_NOTIFY_MASK_SCREEN_CHANGE | XCB_RANDR_NOTIFY_MASK_CRTC_CHANGE |
                                   XCB_RANDR_NOTIFY_MASK_OUTPUT_CHANGE);
    if (coMoRong(c, &xcb_sync_id)) theoDoiConTro();
    return {};
}

// A client has to name the version that it speaks before an extension serves it.
KetQua<void> TheoDoiManHinh::hoiMoRong() {
    auto* c = x_->c();
    if (!coMoRong(c, &xcb_xfixes_id)) return thieu("XFIXES");
    if (!coMoRong(c, &xcb_damage_id)) return thieu("DAMAGE");
    const auto p1 = xcb_xfixes_query_version(c, 2, 0);
    const auto p2 = xcb_damage_query_version(c, 1, 1);
    const PhanXcb<xcb_xfixes_query_version_reply_t> r1(xcb_xfixes_query_version_reply(c, p1, nullptr));
    const PhanXcb<xcb_damage_query_version_reply_t> r2(xcb_damage_query_version_reply(c, p2, nullptr));
    if (!r1 || r1->major_version < 2) return thieu("XFIXES");
    if (!r2) return thieu("DAMAGE");
    return {};
}

// There is no event for "the pointer has moved" that every movement causes: a window may swallow motion, and
// raw motion does not tell of programs that place the pointer. All of them reset the idle time.
void TheoDoiManHinh::theoDoiConTro() {
    auto* c = x_->c();
    const PhanXcb<xcb_sync_initialize_reply_t> phien(
        xcb_sync_initialize_reply(c, xcb_sync_initialize(c, 3, 1), nullptr));
    const std::uint32_t boDem = phien ? timBoDemNghi(c) : 0;
    if (boDem == 0) return;
    baoDong_ = xcb_generate_id(c);
    baoYen_ = xcb_generate_id(c);
    taoBaoThuc(boDem, XCB_SYNC_TESTTYPE_NEGATIVE_TRANSITION, baoDong_);
    taoBaoThuc(boDem, XCB_SYNC_TESTTYPE_POSITIVE_TRANSITION, baoYen_);
}

void TheoDoiManHinh::taoBaoThuc(std::uint32_t boDem, std::uint32_t kieu, xcb_sync_alarm_t ma) {
    xcb_sync_create_alarm_value_list_t v{};
    v.counter = boDem;
    v.valueType = XCB_SYNC_VALUETYPE_ABSOLUTE;
    v.value = {0, nghiMiligiay};
    v.testType = kieu;
    v.events = 1;
    constexpr std::uint32_t nao = XCB_SYNC_CA_COUNTER | XCB_SYNC_CA_VALUE_TYPE | XCB_SYNC_CA_VALUE |
                                  XCB_SYNC_CA_TEST_TYPE | XCB_SYNC_CA_DELTA | XCB_SYNC_CA_EVENTS;
    xcb_sync_create_alarm_aux(x_->c(), ma, nao, &v);
}

bool TheoDoiManHinh::docSuKien(DaiChe& dai) {
    while (const PhanXcb<xcb_generic_event_t> sk{xcb_poll_for_event(x_->c())})
        if (!dai.nhan(*sk)) xet(*sk);
    return xcb_connection_has_error(x_->c()) == 0;
}

void TheoDoiManHinh::xet(const xcb_generic_event_t& suKien) {
    auto* c = x_->c();
    const int loai = suKien.response_type & 0x7f;
    if (loai == 0) return;  // a request failed: what matters was asked with its answer
    if (loai == suKienDau(c, &xcb_damage_id) + XCB_DAMAGE_NOTIFY) {
        daVe = true;
    } else if (loai == suKienDau(c, &xcb_xfixes_id) + XCB_XFIXES_CURSOR_NOTIFY) {
        conTroDoiAnh = true;
    } else if (baoDong_ != XCB_NONE && loai == suKienDau(c, &xcb_sync_id) + XCB_SYNC_ALARM_NOTIFY) {
        const auto& bao = reinterpret_cast<const xcb_sync_alarm_notify_event_t&>(suKien);
        conTroDong = bao.alarm == baoDong_;
        conTroVuaDung = true;
    } else {
        // RandR's notifications, or the root window's own: the one that monitors defined by hand cause.
        manDoi = true;
    }
}

xcb_xfixes_fetch_region_cookie_t TheoDoiManHinh::hoiVungVe(const DaiChe& dai) {
    daVe = false;
    xcb_damage_subtract(x_->c(), veLai_, XCB_NONE, vung_);
    dai.botVung(vung_);
    return xcb_xfixes_fetch_region(x_->c(), vung_);
}

std::vector<OAnh> TheoDoiManHinh::layVungVe(xcb_xfixes_fetch_region_cookie_t phieu) {
    std::vector<OAnh> ra;
    const PhanXcb<xcb_xfixes_fetch_region_reply_t> v(xcb_xfixes_fetch_region_reply(x_->c(), phieu, nullptr));
    if (!v) return ra;
    const auto* o = xcb_xfixes_fetch_region_rectangles(v.get());
    const int n = xcb_xfixes_fetch_region_rectangles_length(v.get());
    ra.reserve(static_cast<std::size_t>(n));
    for (int i = 0; i < n; ++i)
        ra.push_back({o[i].x, o[i].y, o[i].width, o[i].height});
    return ra;
}

}  // namespace tovira

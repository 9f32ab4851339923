#include "TatLapLinux.hpp"

#include <xcb/xinput.h>
#include <xcb/xtest.h>

#include <array>
#include <utility>

namespace tovira {

namespace {

constexpr std::uint32_t coDatBatTat = 1U << 31U;  // XkbControlsEnabledMask

void datLap(xcb_connection_t* c, int thietBi, bool lap) {
    const std::array<std::uint8_t, 32> tungPhim{};
    xcb_xkb_set_controls(c, static_cast<xcb_xkb_device_spec_t>(thietBi), 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0,
                         XCB_XKB_BOOL_CTRL_REPEAT_KEYS, lap ? XCB_XKB_BOOL_CTRL_REPEAT_KEYS : 0,
                         coDatBatTat,  //
                         0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, tungPhim.data());
}

bool dangLap(xcb_connection_t* c, int thietBi) {
    const PhanXcb<xcb_xkb_get_controls_reply_t> dap(xcb_xkb_get_controls_reply(
        c, xcb_xkb_get_controls(c, static_cast<xcb_xkb_device_spec_t>(thietBi)), nullptr));
    return dap && (dap->enabledControls & XCB_XKB_BOOL_CTRL_REPEAT_KEYS) != 0;
}

}  // namespace

TatLapLinux::TatLapLinux(xcb_connection_t* c, const ThietBiPhim& thietBi)
    : c_(c), xtest_{thietBi.xtest, false} {
    for (const int ma : thietBi.banKhac)
        khac_.push_back({ma, false});
    theoDoi(true);
    nghi();  // the master may be speaking for our device already, with what it copied before
}

TatLapLinux::~TatLapLinux() {
    if (xtest_.lap) datLap(c_, xtest_.ma, true);
    nghi();
    // Alone under its master, our keyboard has nobody to hand it to.
    if (khac_.empty() && xtest_.lap) datLap(c_, XCB_XKB_ID_USE_CORE_KBD, true);
}

void TatLapLinux::nhanTin(const xcb_xkb_controls_notify_event_t& tin) {
    // What we set for lack of another keyboard comes back this way.
    const auto* xkb = xcb_get_extension_data(c_, &xcb_xkb_id);
    const bool cuaTa = xkb != nullptr && tin.requestMajor == xkb->major_opcode && khac_.empty();
    if (!cuaTa) lapDoi_ = true;
}

void TatLapLinux::theoDoi(bool coBanMoi) {
    const bool doi = std::exchange(lapDoi_, false);
    if (!doi && !coBanMoi) return;
    const bool dangBat = dangLap(c_, xtest_.ma);
    if (dangBat || doi) xtest_.lap = dangBat;
    if (dangBat) {
        datLap(c_, xtest_.ma, false);
        if (khac_.empty()) datLap(c_, XCB_XKB_ID_USE_CORE_KBD, false);
    }
    for (auto& b : khac_) {
        const bool bat = dangLap(c_, b.ma);
        if (doi)
            b.lap = bat;
        else if (b.lap && !bat)
            datLap(c_, b.ma, true);
    }
}

void TatLapLinux::nghi() {
    const auto* xi = xcb_get_extension_data(c_, &xcb_input_id);
    const auto* may = xcb_get_setup(c_);
    if (khac_.empty() || xi == nullptr || may == nullptr) return;
    // The release of a key that is not down is an event that nobody sees.
    const auto loai = xi->first_event + XCB_INPUT_DEVICE_KEY_RELEASE;
    xcb_test_fake_input(c_, static_cast<std::uint8_t>(loai), may->min_keycode, XCB_CURRENT_TIME, XCB_NONE, 0,
                        0, static_cast<std::uint8_t>(khac_.front().ma));
}

}  // namespace tovira

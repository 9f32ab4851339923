#include "ChuotLinux.hpp"

#include <xcb/xtest.h>

#include <algorithm>
#include <cmath>

namespace tovira {

namespace {

constexpr int diemMotNac = 120;    // wheel pixels of one notch
constexpr int nacNhieuNhat = 100;  // notches of one event; nobody's hand does more

// X buttons of the wheel.
constexpr std::uint8_t cuonLen = 4;
constexpr std::uint8_t cuonXuong = 5;
constexpr std::uint8_t cuonTrai = 6;
constexpr std::uint8_t cuonPhai = 7;

std::uint8_t nutX(NutChuot nut) {
    switch (nut) {
        case NutChuot::trai:
            return 1;
        case NutChuot::giua:
            return 2;
        case NutChuot::phai:
            return 3;
    }
    return 1;
}

// The pixel of a point, as far as the protocol can say it; the server keeps the pointer within its screens.
std::int16_t diemX(double v) {
    return static_cast<std::int16_t>(std::clamp(std::round(v), -32768.0, 32767.0));
}

}  // namespace

void ChuotLinux::gui(std::uint8_t loai, std::uint8_t chiTiet, Diem diem) {
    xcb_test_fake_input(x_.c(), loai, chiTiet, XCB_CURRENT_TIME,
                        loai == XCB_MOTION_NOTIFY ? x_.goc() : XCB_NONE, diemX(diem.x), diemX(diem.y), 0);
}

void ChuotLinux::lam(const SuKienChuot& e) {
    gui(XCB_MOTION_NOTIFY, 0, e.viTri);
    if (e.loai == LoaiChuot::xuong) gui(XCB_BUTTON_PRESS, nutX(e.nut));
    if (e.loai == LoaiChuot::len) gui(XCB_BUTTON_RELEASE, nutX(e.nut));
}

void ChuotLinux::lam(const SuKienCuon& e) {
    lan(duDoc_, e.doc, cuonLen, cuonXuong);
    lan(duNgang_, e.ngang, cuonTrai, cuonPhai);
}

void ChuotLinux::lan(int& du, std::int32_t them, std::uint8_t duong, std::uint8_t am) {
    const auto tong = std::int64_t{du} + them;
    du = static_cast<int>(tong % diemMotNac);
    const auto nac = std::clamp<std::int64_t>(tong / diemMotNac, -nacNhieuNhat, nacNhieuNhat);
    for (std::int64_t i = 0; i < std::abs(nac); ++i) {
        gui(XCB_BUTTON_PRESS, nac > 0 ? duong : am);
        gui(XCB_BUTTON_RELEASE, nac > 0 ? duong : am);
    }
}

}  // namespace tovira

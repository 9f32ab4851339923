#if !__has_feature(objc_arc)
#error "This file needs automatic reference counting."
#endif

#import <AppKit/AppKit.h>
#import <ApplicationServices/ApplicationServices.h>
#import <Carbon/Carbon.h>

#include <algorithm>
#include <array>

#include "DieuKhien.hpp"
#include "DieuKhienNen.hpp"
#include "GiuCf.h"
#include "KyTu.hpp"
#include "PhimMac.hpp"

namespace tovira {

namespace {

// The portable numbers are the system's own.
static_assert(static_cast<CGMouseButton>(NutChuot::trai) == kCGMouseButtonLeft);
static_assert(static_cast<CGMouseButton>(NutChuot::phai) == kCGMouseButtonRight);
static_assert(static_cast<CGMouseButton>(NutChuot::giua) == kCGMouseButtonCenter);
static_assert(PhimMac::coVietHoa == kCGEventFlagMaskAlphaShift);
static_assert(PhimMac::coShift == kCGEventFlagMaskShift);
static_assert(PhimMac::coControl == kCGEventFlagMaskControl);
static_assert(PhimMac::coAlt == kCGEventFlagMaskAlternate);
static_assert(PhimMac::coCommand == kCGEventFlagMaskCommand);

constexpr std::array<PhimMac::Muc, PhimMac::bang.size()> phimCarbon{{
    {"AltLeft", kVK_Option},
    {"AltRight", kVK_RightOption},
    {"ArrowDown", kVK_DownArrow},
    {"ArrowLeft", kVK_LeftArrow},
    {"ArrowRight", kVK_RightArrow},
    {"ArrowUp", kVK_UpArrow},
    {"Backquote", kVK_ANSI_Grave},
    {"Backslash", kVK_ANSI_Backslash},
    {"Backspace", kVK_Delete},
    {"BracketLeft", kVK_ANSI_LeftBracket},
    {"BracketRight", kVK_ANSI_RightBracket},
    {"CapsLock", kVK_CapsLock},
    {"Comma", kVK_ANSI_Comma},
    {"ControlLeft", kVK_Control},
    {"ControlRight", kVK_RightControl},
    {"Delete", kVK_ForwardDelete},
    {"Digit0", kVK_ANSI_0},
    {"Digit1", kVK_ANSI_1},
    {"Digit2", kVK_ANSI_2},
    {"Digit3", kVK_ANSI_3},
    {"Digit4", kVK_ANSI_4},
    {"Digit5", kVK_ANSI_5},
    {"Digit6", kVK_ANSI_6},
    {"Digit7", kVK_ANSI_7},
    {"Digit8", kVK_ANSI_8},
    {"Digit9", kVK_ANSI_9},
    {"End", kVK_End},
    {"Enter", kVK_Return},
    {"Equal", kVK_ANSI_Equal},
    {"Escape", kVK_Escape},
    {"F1", kVK_F1},
    {"F10", kVK_F10},
    {"F11", kVK_F11},
    {"F12", kVK_F12},
    {"F2", kVK_F2},
    {"F3", kVK_F3},
    {"F4", kVK_F4},
    {"F5", kVK_F5},
    {"F6", kVK_F6},
    {"F7", kVK_F7},
    {"F8", kVK_F8},
    {"F9", kVK_F9},
    {"Home", kVK_Home},
    {"Insert", kVK_Help},
    {"KeyA", kVK_ANSI_A},
    {"KeyB", kVK_ANSI_B},
    {"KeyC", kVK_ANSI_C},
    {"KeyD", kVK_ANSI_D},
    {"KeyE", kVK_ANSI_E},
    {"KeyF", kVK_ANSI_F},
    {"KeyG", kVK_ANSI_G},
    {"KeyH", kVK_ANSI_H},
    {"KeyI", kVK_ANSI_I},
    {"KeyJ", kVK_ANSI_J},
    {"KeyK", kVK_ANSI_K},
    {"KeyL", kVK_ANSI_L},
    {"KeyM", kVK_ANSI_M},
    {"KeyN", kVK_ANSI_N},
    {"KeyO", kVK_ANSI_O},
    {"KeyP", kVK_ANSI_P},
    {"KeyQ", kVK_ANSI_Q},
    {"KeyR", kVK_ANSI_R},
    {"KeyS", kVK_ANSI_S},
    {"KeyT", kVK_ANSI_T},
    {"KeyU", kVK_ANSI_U},
    {"KeyV", kVK_ANSI_V},
    {"KeyW", kVK_ANSI_W},
    {"KeyX", kVK_ANSI_X},
    {"KeyY", kVK_ANSI_Y},
    {"KeyZ", kVK_ANSI_Z},
    {"MetaLeft", kVK_Command},
    {"MetaRight", kVK_RightCommand},
    {"Minus", kVK_ANSI_Minus},
    {"NumLock", kVK_ANSI_KeypadClear},
    {"Numpad0", kVK_ANSI_Keypad0},
    {"Numpad1", kVK_ANSI_Keypad1},
    {"Numpad2", kVK_ANSI_Keypad2},
    {"Numpad3", kVK_ANSI_Keypad3},
    {"Numpad4", kVK_ANSI_Keypad4},
    {"Numpad5", kVK_ANSI_Keypad5},
    {"Numpad6", kVK_ANSI_Keypad6},
    {"Numpad7", kVK_ANSI_Keypad7},
    {"Numpad8", kVK_ANSI_Keypad8},
    {"Numpad9", kVK_ANSI_Keypad9},
    {"NumpadAdd", kVK_ANSI_KeypadPlus},
    {"NumpadDecimal", kVK_ANSI_KeypadDecimal},
    {"NumpadDivide", kVK_ANSI_KeypadDivide},
    {"NumpadEnter", kVK_ANSI_KeypadEnter},
    {"NumpadEqual", kVK_ANSI_KeypadEquals},
    {"NumpadMultiply", kVK_ANSI_KeypadMultiply},
    {"NumpadSubtract", kVK_ANSI_KeypadMinus},
    {"PageDown", kVK_PageDown},
    {"PageUp", kVK_PageUp},
    {"Period", kVK_ANSI_Period},
    {"Quote", kVK_ANSI_Quote},
    {"Semicolon", kVK_ANSI_Semicolon},
    {"ShiftLeft", kVK_Shift},
    {"ShiftRight", kVK_RightShift},
    {"Slash", kVK_ANSI_Slash},
    {"Space", kVK_Space},
    {"Tab", kVK_Tab},
}};
static_assert(std::all_of(phimCarbon.begin(), phimCarbon.end(),
                          [](const PhimMac::Muc& muc) { return PhimMac::maPhim(muc.ma) == muc.phim; }));

// CGEventKeyboardSetUnicodeString keeps this many code units of what it is given.
constexpr std::size_t donViToiDa = 20;

class NenDieuKhienMac final : public DieuKhien::Nen {
   public:
    NenDieuKhienMac() : nguon_(CGEventSourceCreate(kCGEventSourceStateHIDSystemState)) {
        // The person at this machine keeps mouse and keyboard while the remote side uses them.
        if (nguon_) CGEventSourceSetLocalEventsSuppressionInterval(nguon_.get(), 0);
    }

    bool duocPhep() override { return AXIsProcessTrusted(); }

    KhungHinh khungManHinhChinh() override {
        const CGRect khung = CGDisplayBounds(CGMainDisplayID());
        return {khung.origin.x, khung.origin.y, khung.size.width, khung.size.height};
    }

    double khoangBamDup() override { return NSEvent.doubleClickInterval; }

    bool dang(const SuKien& suKien) override {
        return std::visit([this](const auto& mot) { return dangMot(mot); }, suKien);
    }

    void batDauChu() override {}
    void ketThucChu() override {}

    void moCaiDatTroNang() override {
        NSString* trang = @"x-apple.systempreferences:com.apple.preference.security?Privacy_Accessibility";
        [NSWorkspace.sharedWorkspace openURL:[NSURL URLWithString:trang]];
    }

   private:
    bool dangMot(const SuKienChuot& sk) {
        GiuCf<CGEventRef> suKien(CGEventCreateMouseEvent(
            nguon_.get(), loai(sk), CGPointMake(sk.viTri.x, sk.viTri.y), static_cast<CGMouseButton>(sk.nut)));
        if (!suKien) return false;
        if (sk.soLanBam) CGEventSetIntegerValueField(suKien.get(), kCGMouseEventClickState, *sk.soLanBam);
        return dangRa(suKien);
    }

    bool dangMot(const SuKienCuon& sk) {
        GiuCf<CGEventRef> suKien(
            CGEventCreateScrollWheelEvent2(nguon_.get(), kCGScrollEventUnitPixel, 2, sk.doc, sk.ngang, 0));
        return suKien && dangRa(suKien);
    }

    bool dangMot(const SuKienPhim& sk) {
        GiuCf<CGEventRef> suKien(CGEventCreateKeyboardEvent(nguon_.get(), sk.phim, sk.xuong));
        if (!suKien) return false;
        if (sk.loai == LoaiPhim::doiCo) CGEventSetType(suKien.get(), kCGEventFlagsChanged);
        if (sk.co) CGEventSetFlags(suKien.get(), *sk.co);
        return dangRa(suKien);
    }

    // A character longer than an event holds goes as several presses; its own press and release are the last
    // one's.
    bool dangMot(const SuKienChu& sk) {
        std::u16string_view conLai = sk.donVi;
        while (conLai.size() > donViToiDa) {
            const auto doan = conLai.substr(0, daiDoanUtf16(conLai, donViToiDa));
            if (sk.xuong && !(dangDoan(doan, true) && dangDoan(doan, false))) return false;
            conLai.remove_prefix(doan.size());
        }
        return dangDoan(conLai, sk.xuong);
    }

    bool dangDoan(std::u16string_view donVi, bool xuong) {
        GiuCf<CGEventRef> suKien(CGEventCreateKeyboardEvent(nguon_.get(), 0, xuong));
        if (!suKien) return false;
        CGEventKeyboardSetUnicodeString(suKien.get(), donVi.size(),
                                        reinterpret_cast<const UniChar*>(donVi.data()));
        return dangRa(suKien);
    }

    static bool dangRa(const GiuCf<CGEventRef>& suKien) {
        CGEventPost(kCGHIDEventTap, suKien.get());
        return true;
    }

    static CGEventType loai(const SuKienChuot& sk) {
        // By NutChuot: left, right, center.
        static constexpr std::array<CGEventType, 3> keo{kCGEventLeftMouseDragged, kCGEventRightMouseDragged,
                                                        kCGEventOtherMouseDragged};
        static constexpr std::array<CGEventType, 3> xuong{kCGEventLeftMouseDown, kCGEventRightMouseDown,
                                                          kCGEventOtherMouseDown};
        static constexpr std::array<CGEventType, 3> len{kCGEventLeftMouseUp, kCGEventRightMouseUp,
                                                        kCGEventOtherMouseUp};
        const auto nut = static_cast<std::size_t>(sk.nut);
        switch (sk.loai) {
            case LoaiChuot::diChuyen:
                return kCGEventMouseMoved;
            case LoaiChuot::keo:
                return keo.at(nut);
            case LoaiChuot::xuong:
                return xuong.at(nut);
            case LoaiChuot::len:
                return len.at(nut);
        }
    }

    GiuCf<CGEventSourceRef> nguon_;
};

}  // namespace

std::unique_ptr<DieuKhien::Nen> taoNenDieuKhien(VongLap&) { return std::make_unique<NenDieuKhienMac>(); }

}  // namespace tovira

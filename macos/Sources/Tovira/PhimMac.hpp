#pragma once
// Any thread: pure tables. W3C KeyboardEvent.code names as macOS virtual key codes (Carbon HIToolbox, ANSI
// layout), and modifiers as CGEventFlags bits. Constant expressions, so that each platform can pin them at
// compile time.

#include <algorithm>
#include <array>
#include <cstdint>
#include <optional>
#include <string_view>

namespace tovira::PhimMac {

struct Muc {
    std::string_view ma;
    std::uint16_t phim;
};

// Sorted by name (ASCII), for the binary search below.
inline constexpr std::array<Muc, 101> bang{{
    {"AltLeft", 58},
    {"AltRight", 61},
    {"ArrowDown", 125},
    {"ArrowLeft", 123},
    {"ArrowRight", 124},
    {"ArrowUp", 126},
    {"Backquote", 50},
    {"Backslash", 42},
    {"Backspace", 51},
    {"BracketLeft", 33},
    {"BracketRight", 30},
    {"CapsLock", 57},
    {"Comma", 43},
    {"ControlLeft", 59},
    {"ControlRight", 62},
    {"Delete", 117},
    {"Digit0", 29},
    {"Digit1", 18},
    {"Digit2", 19},
    {"Digit3", 20},
    {"Digit4", 21},
    {"Digit5", 23},
    {"Digit6", 22},
    {"Digit7", 26},
    {"Digit8", 28},
    {"Digit9", 25},
    {"End", 119},
    {"Enter", 36},
    {"Equal", 24},
    {"Escape", 53},
    {"F1", 122},
    {"F10", 109},
    {"F11", 103},
    {"F12", 111},
    {"F2", 120},
    {"F3", 99},
    {"F4", 118},
    {"F5", 96},
    {"F6", 97},
    {"F7", 98},
    {"F8", 100},
    {"F9", 101},
    {"Home", 115},
    {"Insert", 114},
    {"KeyA", 0},
    {"KeyB", 11},
    {"KeyC", 8},
    {"KeyD", 2},
    {"KeyE", 14},
    {"KeyF", 3},
    {"KeyG", 5},
    {"KeyH", 4},
    {"KeyI", 34},
    {"KeyJ", 38},
    {"KeyK", 40},
    {"KeyL", 37},
    {"KeyM", 46},
    {"KeyN", 45},
    {"KeyO", 31},
    {"KeyP", 35},
    {"KeyQ", 12},
    {"KeyR", 15},
    {"KeyS", 1},
    {"KeyT", 17},
    {"KeyU", 32},
    {"KeyV", 9},
    {"KeyW", 13},
    {"KeyX", 7},
    {"KeyY", 16},
    {"KeyZ", 6},
    {"MetaLeft", 55},
    {"MetaRight", 54},
    {"Minus", 27},
    {"NumLock", 71},
    {"Numpad0", 82},
    {"Numpad1", 83},
    {"Numpad2", 84},
    {"Numpad3", 85},
    {"Numpad4", 86},
    {"Numpad5", 87},
    {"Numpad6", 88},
    {"Numpad7", 89},
    {"Numpad8", 91},
    {"Numpad9", 92},
    {"NumpadAdd", 69},
    {"NumpadDecimal", 65},
    {"NumpadDivide", 75},
    {"NumpadEnter", 76},
    {"NumpadEqual", 81},
    {"NumpadMultiply", 67},
    {"NumpadSubtract", 78},
    {"PageDown", 121},
    {"PageUp", 116},
    {"Period", 47},
    {"Quote", 39},
    {"Semicolon", 41},
    {"ShiftLeft", 56},
    {"ShiftRight", 60},
    {"Slash", 44},
    {"Space", 49},
    {"Tab", 48},
}};

namespace chiTiet {
constexpr bool truoc(const Muc& a, const Muc& b) {
    return a.ma < b.ma;
}
}  // namespace chiTiet
static_assert(std::is_sorted(bang.begin(), bang.end(), chiTiet::truoc));

// The virtual key code of `ma`; absent for every name that is not in the table. Exact and case-sensitive.
[[nodiscard]] constexpr std::optional<std::uint16_t> maPhim(std::string_view ma) {
    const auto* muc = std::lower_bound(bang.begin(), bang.end(), Muc{ma, 0}, chiTiet::truoc);
    if (muc == bang.end() || muc->ma != ma) return std::nullopt;
    return muc->phim;
}

// CGEventFlags masks.
inline constexpr std::uint64_t coVietHoa = 0x10000;
inline constexpr std::uint64_t coShift = 0x20000;
inline constexpr std::uint64_t coControl = 0x40000;
inline constexpr std::uint64_t coAlt = 0x80000;
inline constexpr std::uint64_t coCommand = 0x100000;

// The flag that the modifier key `ma` stands for; 0 when `ma` is no modifier key.
[[nodiscard]] constexpr std::uint64_t coCuaPhim(std::string_view ma) {
    if (ma == "ShiftLeft" || ma == "ShiftRight") return coShift;
    if (ma == "ControlLeft" || ma == "ControlRight") return coControl;
    if (ma == "AltLeft" || ma == "AltRight") return coAlt;
    if (ma == "MetaLeft" || ma == "MetaRight") return coCommand;
    if (ma == "CapsLock") return coVietHoa;
    return 0;
}

// The flag of a word of a command's "modifiers"; 0 for unknown words.
[[nodiscard]] constexpr std::uint64_t coCuaTu(std::string_view tu) {
    if (tu == "shift") return coShift;
    if (tu == "ctrl") return coControl;
    if (tu == "alt") return coAlt;
    if (tu == "meta") return coCommand;
    return 0;
}

// Is `ma` one of the nine modifier keys?
[[nodiscard]] constexpr bool laPhimBoTro(std::string_view ma) {
    return coCuaPhim(ma) != 0;
}

}  // namespace tovira::PhimMac

#pragma once
// Any thread. Where a Mac's keys sit on an X server: the same physical key by its XKB name, and by its number
// in the kernel's evdev table for servers whose keyboard names nothing.

#include <array>
#include <cstdint>

namespace tovira {

struct HangPhimX {
    std::uint16_t phim;  // macOS virtual key code, what PhimMac gives
    const char* ten;     // XKB key name
    std::uint8_t evdev;  // linux/input-event-codes.h
};

// evdev numbers begin at X keycode 8.
inline constexpr int evdevThanhX = 8;

inline constexpr std::array<HangPhimX, 101> bangPhimX{{
    // letters
    {0, "AC01", 30},
    {11, "AB05", 48},
    {8, "AB03", 46},
    {2, "AC03", 32},
    {14, "AD03", 18},
    {3, "AC04", 33},
    {5, "AC05", 34},
    {4, "AC06", 35},
    {34, "AD08", 23},
    {38, "AC07", 36},
    {40, "AC08", 37},
    {37, "AC09", 38},
    {46, "AB07", 50},
    {45, "AB06", 49},
    {31, "AD09", 24},
    {35, "AD10", 25},
    {12, "AD01", 16},
    {15, "AD04", 19},
    {1, "AC02", 31},
    {17, "AD05", 20},
    {32, "AD07", 22},
    {9, "AB04", 47},
    {13, "AD02", 17},
    {7, "AB02", 45},
    {16, "AD06", 21},
    {6, "AB01", 44},
    // digits; 5 and 6 run against their virtual codes
    {18, "AE01", 2},
    {19, "AE02", 3},
    {20, "AE03", 4},
    {21, "AE04", 5},
    {23, "AE05", 6},
    {22, "AE06", 7},
    {26, "AE07", 8},
    {28, "AE08", 9},
    {25, "AE09", 10},
    {29, "AE10", 11},
    // punctuation and editing
    {36, "RTRN", 28},
    {53, "ESC", 1},
    {51, "BKSP", 14},
    {117, "DELE", 111},
    {48, "TAB", 15},
    {49, "SPCE", 57},
    {27, "AE11", 12},
    {24, "AE12", 13},
    {33, "AD11", 26},
    {30, "AD12", 27},
    {42, "BKSL", 43},
    {41, "AC10", 39},
    {39, "AC11", 40},
    {50, "TLDE", 41},
    {43, "AB08", 51},
    {47, "AB09", 52},
    {44, "AB10", 53},
    // modifiers
    {57, "CAPS", 58},
    {56, "LFSH", 42},
    {60, "RTSH", 54},
    {59, "LCTL", 29},
    {62, "RCTL", 97},
    {58, "LALT", 56},
    {61, "RALT", 100},
    {55, "LWIN", 125},
    {54, "RWIN", 126},
    // function keys
    {122, "FK01", 59},
    {120, "FK02", 60},
    {99, "FK03", 61},
    {118, "FK04", 62},
    {96, "FK05", 63},
    {97, "FK06", 64},
    {98, "FK07", 65},
    {100, "FK08", 66},
    {101, "FK09", 67},
    {109, "FK10", 68},
    {103, "FK11", 87},
    {111, "FK12", 88},
    // moving about
    {126, "UP", 103},
    {125, "DOWN", 108},
    {123, "LEFT", 105},
    {124, "RGHT", 106},
    {115, "HOME", 102},
    {119, "END", 107},
    {116, "PGUP", 104},
    {121, "PGDN", 109},
    {114, "INS", 110},
    // keypad
    {82, "KP0", 82},
    {83, "KP1", 79},
    {84, "KP2", 80},
    {85, "KP3", 81},
    {86, "KP4", 75},
    {87, "KP5", 76},
    {88, "KP6", 77},
    {89, "KP7", 71},
    {91, "KP8", 72},
    {92, "KP9", 73},
    {65, "KPDL", 83},
    {67, "KPMU", 55},
    {69, "KPAD", 78},
    {78, "KPSU", 74},
    {75, "KPDV", 98},
    {76, "KPEN", 96},
    {81, "KPEQ", 117},
    {71, "NMLK", 69},
}};

}  // namespace tovira

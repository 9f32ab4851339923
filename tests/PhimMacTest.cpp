#include "PhimMac.hpp"

#include <gtest/gtest.h>

#include <set>
#include <string>

namespace tovira {
namespace {

TEST(PhimMac, EveryKeyHasACodeOfItsOwn) {
    std::set<std::uint16_t> phim;
    for (const auto& muc : PhimMac::bang) {
        EXPECT_EQ(PhimMac::maPhim(muc.ma), muc.phim) << muc.ma;
        EXPECT_TRUE(phim.insert(muc.phim).second) << muc.ma;
    }
    for (char c = 'A'; c <= 'Z'; ++c)
        EXPECT_TRUE(PhimMac::maPhim(std::string("Key") + c)) << c;
    for (char c = '0'; c <= '9'; ++c) {
        EXPECT_TRUE(PhimMac::maPhim(std::string("Digit") + c)) << c;
        EXPECT_TRUE(PhimMac::maPhim(std::string("Numpad") + c)) << c;
    }
    for (int i = 1; i <= 12; ++i)
        EXPECT_TRUE(PhimMac::maPhim("F" + std::to_string(i))) << i;
}

TEST(PhimMac, RowsThatAreEasyToGetWrong) {
    struct {
        const char* ma;
        std::optional<std::uint16_t> phim;
    } constexpr bang[] = {
        {"KeyA", 0},
        {"KeyZ", 6},
        {"Backspace", 51},
        {"Delete", 117},
        {"Enter", 36},
        {"NumpadEnter", 76},
        {"Digit5", 23},
        {"Digit6", 22},
        {"Digit7", 26},
        {"Digit8", 28},
        {"Digit9", 25},
        {"Digit0", 29},
        {"Numpad7", 89},
        {"Numpad8", 91},
        {"Insert", 114},
        {"NumLock", 71},
        {"Backquote", 50},
        {"Quote", 39},
        {"ShiftLeft", 56},
        {"ShiftRight", 60},
        {"ControlLeft", 59},
        {"ControlRight", 62},
        {"AltLeft", 58},
        {"AltRight", 61},
        {"MetaLeft", 55},
        {"MetaRight", 54},
        {"F3", 99},
        {"F5", 96},
        {"F10", 109},
        {"F12", 111},
        // Names that other keyboards know, other spellings, nothing at all.
        {"IntlBackslash", {}},
        {"ContextMenu", {}},
        {"PrintScreen", {}},
        {"Fn", {}},
        {"F13", {}},
        {"F", {}},
        {"NumpadComma", {}},
        {"KEYA", {}},
        {"keya", {}},
        {"KeyA ", {}},
        {"Key", {}},
        {"", {}},
        {"AAA", {}},
        {"Zzz", {}},
    };
    for (const auto& dong : bang)
        EXPECT_EQ(PhimMac::maPhim(dong.ma), dong.phim) << dong.ma;
}

TEST(PhimMac, NineModifiersAndTheirFlags) {
    struct {
        const char* ma;
        std::uint64_t co;
    } constexpr bang[] = {
        {"ShiftLeft", 0x20000},    {"ShiftRight", 0x20000}, {"ControlLeft", 0x40000},
        {"ControlRight", 0x40000}, {"AltLeft", 0x80000},    {"AltRight", 0x80000},
        {"MetaLeft", 0x100000},    {"MetaRight", 0x100000}, {"CapsLock", 0x10000},
    };
    for (const auto& dong : bang)
        EXPECT_EQ(PhimMac::coCuaPhim(dong.ma), dong.co) << dong.ma;
    int dem = 0;
    for (const auto& muc : PhimMac::bang)
        dem += PhimMac::laPhimBoTro(muc.ma);
    EXPECT_EQ(dem, 9);
    for (const auto* ma : {"KeyA", "Enter", "NumLock", "Shift", ""})
        EXPECT_FALSE(PhimMac::laPhimBoTro(ma)) << ma;

    EXPECT_EQ(PhimMac::coCuaTu("shift"), 0x20000U);
    EXPECT_EQ(PhimMac::coCuaTu("ctrl"), 0x40000U);
    EXPECT_EQ(PhimMac::coCuaTu("alt"), 0x80000U);
    EXPECT_EQ(PhimMac::coCuaTu("meta"), 0x100000U);
    for (const auto* tu : {"Shift", "capslock", "command", ""})
        EXPECT_EQ(PhimMac::coCuaTu(tu), 0U) << tu;
}

}  // namespace
}  // namespace tovira

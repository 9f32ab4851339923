#pragma once
// Any thread: constant data. The main menu, the same on every platform.

#include <array>
#include <cstdint>
#include <span>

namespace tovira {

// What a menu item does. The edit actions go to whatever has the keyboard focus.
enum class LenhMenu : std::uint8_t {
    ngan,  // a separator
    gioiThieu,
    an,
    thoat,
    hoanTac,
    lamLai,
    cat,
    saoChep,
    dan,
    chonTatCa,
    huongDan,
};

struct MucMenu {
    LenhMenu lenh = LenhMenu::ngan;
    const char* ten = "";
    // The key that goes with Command (Ctrl on a desktop without that key); an upper-case letter implies
    // Shift; 0 for none.
    char phim = 0;
};

struct MenuCon {
    const char* ten;  // empty: the application menu, which the system titles itself
    std::span<const MucMenu> muc;
};

namespace menu_chinh {

inline constexpr std::array mucUngDung{
    MucMenu{LenhMenu::gioiThieu, "Giới thiệu Tovira"}, MucMenu{},
    MucMenu{LenhMenu::an, "Ẩn Tovira", 'h'},           MucMenu{},
    MucMenu{LenhMenu::thoat, "Thoát Tovira", 'q'},
};
inline constexpr std::array mucSua{
    MucMenu{LenhMenu::hoanTac, "Hoàn tác", 'z'},
    MucMenu{LenhMenu::lamLai, "Làm lại", 'Z'},
    MucMenu{},
    MucMenu{LenhMenu::cat, "Cắt", 'x'},
    MucMenu{LenhMenu::saoChep, "Sao chép", 'c'},
    MucMenu{LenhMenu::dan, "Dán", 'v'},
    MucMenu{LenhMenu::chonTatCa, "Chọn tất cả", 'a'},
};
inline constexpr std::array mucTroGiup{
    MucMenu{LenhMenu::huongDan, "Hướng dẫn Tovira", '?'},
};

}  // namespace menu_chinh

// The menus from left to right; the last one is the help menu.
inline constexpr std::array<MenuCon, 3> menuChinh{{
    {"", menu_chinh::mucUngDung},
    {"Sửa", menu_chinh::mucSua},
    {"Trợ giúp", menu_chinh::mucTroGiup},
}};

}  // namespace tovira

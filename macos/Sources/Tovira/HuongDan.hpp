#pragma once
// Any thread: constant data. The user's guide, block by block, and how each kind of block looks.

#include <array>
#include <cstdint>
#include <string>

namespace tovira {

enum class KieuKhoi : std::uint8_t { tieuDe, dan, muc, doan, so, cham, ghiChu };

struct KhoiHuongDan {
    KieuKhoi kieu;
    int so;  // the number of a numbered item, 0 otherwise
    const char* chu;
};

enum class MauChu : std::uint8_t { chinh, phu, nhan };  // label, secondary label, accent

// Sizes and spacings in points. Line spacing is 4 everywhere.
struct KieuChuKhoi {
    double co;
    bool dam;
    MauChu mau;
    double gianChu;  // letter spacing
    double truoc;
    double sau;
    double thut;  // hanging indent and its tab stop, 0 for none
};

struct HuongDan {
    static constexpr int rong = 660;
    static constexpr int cao = 620;
    static constexpr int rongToiThieu = 460;
    static constexpr int caoToiThieu = 380;
    static constexpr int leNgang = 34;
    static constexpr int leDoc = 30;
    static constexpr double gianDong = 4;
    static constexpr const char* tieuDeCuaSo = "Hướng dẫn sử dụng";

    static const std::array<KhoiHuongDan, 33> cacKhoi;

    [[nodiscard]] static KieuChuKhoi kieuChu(KieuKhoi kieu);
    // What stands bold before the tab of a hanging block ("1." or nothing for the bullet's "•"), and the text
    // as it is shown: a section heading in upper case.
    [[nodiscard]] static std::string dauDong(const KhoiHuongDan& khoi);
    [[nodiscard]] static std::string chuHien(const KhoiHuongDan& khoi);
};

}  // namespace tovira

#include "Khay.hpp"

#include <gtest/gtest.h>

using namespace tovira;

namespace {

std::string veMenu(const Khay::TrangThai& tt) {
    std::string kq;
    for (const MucKhay& muc : Khay::lapMenu(tt)) {
        if (muc.laNgan()) {
            kq += "---\n";
            continue;
        }
        kq += std::string(muc.batDuoc ? "" : "(tắt) ") + (muc.danhDau ? "[x] " : "") + muc.ten;
        if (muc.phim != 0) kq += std::string(" {") + muc.phim + "}";
        kq += "\n";
    }
    return kq;
}

constexpr const char* phanDuoi =
    "---\nChạy cùng macOS\n(tắt) Hỗ trợ màn hình khoá\n---\nHướng dẫn\nGiới thiệu\n---\n"
    "(tắt) Máy chủ: https://a\nThoát Tovira {q}\n";

}  // namespace

TEST(Khay, menuTheoTrangThai) {
    Khay::TrangThai tt;
    tt.mayChu = "https://a";
    tt.ghiManHinh = tt.troNang = true;
    EXPECT_EQ(veMenu(tt), std::string("Mở Tovira\n---\n✓  Ghi màn hình\n✓  Trợ năng\n") + phanDuoi);

    for (const bool ghi : {false, true}) {
        for (const bool troNang : {false, true}) {
            tt.ghiManHinh = ghi;
            tt.troNang = troNang;
            const bool thieu = !ghi || !troNang;
            EXPECT_EQ(veMenu(tt), std::string("Mở Tovira\n---\n") + (ghi ? "✓" : "✗") + "  Ghi màn hình\n" +
                                      (troNang ? "✓" : "✗") + "  Trợ năng\n" +
                                      (thieu ? "↻  Bật rồi mà vẫn ✗ — Mở lại Tovira\n" : "") + phanDuoi);
        }
    }

    tt.dangPhat = tt.tuKhoiDong = true;
    const std::string menu = veMenu(tt);
    EXPECT_EQ(menu.rfind("(tắt) ● Đang bị điều khiển\nDừng chia sẻ màn hình\n---\nMở Tovira\n", 0), 0U);
    EXPECT_NE(menu.find("[x] Chạy cùng macOS"), std::string::npos);
}

TEST(Khay, moiMucMotLenhVaMeo) {
    Khay::TrangThai tt;
    tt.dangPhat = true;
    tt.troNang = true;
    int soLenh = 0;
    for (const MucKhay& muc : Khay::lapMenu(tt)) {
        EXPECT_EQ(muc.lenh != LenhKhay::khongCo, muc.batDuoc && !muc.laNgan()) << muc.ten;
        soLenh += muc.lenh != LenhKhay::khongCo;
        if (muc.lenh == LenhKhay::bamTroNang) {
            EXPECT_EQ(muc.meo, "Đã cấp. Bấm để mở Cài đặt hệ thống.");
        }
        if (muc.lenh == LenhKhay::bamGhiManHinh) {
            EXPECT_EQ(muc.meo,
                      "Chưa cấp — hoặc vừa cấp mà chưa mở lại ứng dụng. Bấm để mở Cài đặt hệ thống.");
        }
    }
    EXPECT_EQ(soLenh, 9);
}

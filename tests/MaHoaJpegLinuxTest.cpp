#include "MaHoaJpegLinux.hpp"

#include <gtest/gtest.h>

#include <random>

#include "KhungLinux.hpp"
#include "x11/AnhJpeg.hpp"

using namespace tovira;
using tovira::thu::AnhJpeg;

namespace {

struct Tranh {
    int rong;
    int cao;
    std::vector<std::uint8_t> diem;
    PhienBan phienBan;

    Tranh(int r, int c)
        : rong(r),
          cao(c),
          diem(static_cast<std::size_t>(r) * static_cast<std::size_t>(c) * 4),
          phienBan(static_cast<std::size_t>(soBang(c)), 1) {}

    [[nodiscard]] MaHoaJpeg::Anh anh() const { return {diem.data(), rong * 4, rong, cao, &phienBan}; }

    // Noise over one band.
    void nhieu(int bang, std::mt19937& nguon) {
        const auto tu = static_cast<std::size_t>(bang) * caoBang * static_cast<std::size_t>(rong) * 4;
        const auto den = std::min(diem.size(), tu + caoBang * static_cast<std::size_t>(rong) * 4);
        for (auto i = tu; i < den; ++i)
            diem[i] = static_cast<std::uint8_t>(nguon());
        ++phienBan[static_cast<std::size_t>(bang)];
    }
};

std::vector<std::byte> maHoaMoi(const Tranh& t, int chatLuong) {
    MaHoaJpeg moi;
    std::vector<std::byte> ra;
    EXPECT_TRUE(moi.maHoa(t.anh(), chatLuong, ra));
    return ra;
}

}  // namespace

TEST(MaHoaJpeg, anhGhepTuBangCuVaMoiGiongHetAnhMaHoaMotLan) {
    std::mt19937 nguon(7);
    for (const auto& [rong, cao] : {std::pair{333, 217}, {16, 16}, {1, 1}, {64, 15}, {640, 17 * 16 + 1}}) {
        SCOPED_TRACE(testing::Message() << rong << "x" << cao);
        Tranh t(rong, cao);
        MaHoaJpeg quen;
        for (int luot = 0; luot < 12; ++luot) {
            for (int b = 0; b < soBang(cao); ++b)
                if (luot == 0 || nguon() % 3 == 0) t.nhieu(b, nguon);
            std::vector<std::byte> ra{std::byte{1}, std::byte{2}};
            const int chatLuong = luot == 9 ? 60 : 95;
            ASSERT_TRUE(quen.maHoa(t.anh(), chatLuong, ra));
            EXPECT_EQ(ra[1], std::byte{2});  // what stood in the buffer stays
            ra.erase(ra.begin(), ra.begin() + 2);
            ASSERT_EQ(ra, maHoaMoi(t, chatLuong));
            const AnhJpeg giai(ra);
            ASSERT_EQ(std::pair(giai.rong, giai.cao), std::pair(rong, cao));
        }
    }
}

TEST(MaHoaJpeg, bangKhongDoiKhongDuocMaHoaLai) {
    std::mt19937 nguon(8);
    Tranh t(64, 64);
    for (int b = 0; b < 4; ++b)
        t.nhieu(b, nguon);
    MaHoaJpeg may;
    std::vector<std::byte> dau;
    ASSERT_TRUE(may.maHoa(t.anh(), 95, dau));
    std::fill(t.diem.begin(), t.diem.end(), 0);  // changed behind the versions' back: must go unseen
    std::vector<std::byte> sau;
    ASSERT_TRUE(may.maHoa(t.anh(), 95, sau));
    EXPECT_EQ(dau, sau);
    // A size that libjpeg cannot write leaves the buffer as it was, and the encoder usable.
    Tranh rongQua(70000, 16);
    EXPECT_FALSE(may.maHoa(rongQua.anh(), 95, sau));
    EXPECT_EQ(dau, sau);
    std::vector<std::byte> cuoi;
    ASSERT_TRUE(may.maHoa(t.anh(), 95, cuoi));
    EXPECT_EQ(AnhJpeg(cuoi).tai(32, 32), thu::Mau{0});
}

TEST(PhienBan, doanKhacGopCacBangLienNhau) {
    const PhienBan cu{1, 1, 1, 1, 1};
    EXPECT_EQ(doanKhac(cu, {1, 1, 1, 1, 1}, 70), std::vector<DoanHang>{});
    EXPECT_EQ(doanKhac(cu, {2, 1, 2, 2, 3}, 70), (std::vector<DoanHang>{{0, 16}, {32, 70}}));
}

TEST(PhienBan, bangCuaAnhThuPhongMoiNhuHangMoiNhatCuaNo) {
    // 64 rows → 32: each new band covers two old ones and a margin.
    EXPECT_EQ(phienBanThuPhong({1, 5, 2, 9}, 64, 32), (PhienBan{5, 9}));
    EXPECT_EQ(phienBanThuPhong({1, 5}, 32, 64), (PhienBan{1, 5, 5, 5}));
    EXPECT_EQ(phienBanThuPhong({7, 1, 1, 1}, 64, 64), (PhienBan{7, 7, 1, 1}));
}

#include "TheoDoiMayChu.hpp"

#include <gtest/gtest.h>

#include <random>

using namespace tovira;
using Do = TheoDoiMayChu::Do;
using Viec = TheoDoiMayChu::Viec;

namespace {

constexpr Viec khong{};
constexpr Viec baoMat{true, false, false};
constexpr Viec baoVe{false, false, false};
constexpr Viec baoSongLai{std::nullopt, true, false};
constexpr Viec napLai{std::nullopt, false, true};

// The ticks out of `so` on which it probes.
std::vector<int> nhipDo(TheoDoiMayChu& t, int so) {
    std::vector<int> ra;
    for (int i = 1; i <= so; ++i) {
        if (t.nhip() == Do::co) ra.push_back(i);
    }
    return ra;
}

}  // namespace

TEST(TheoDoiMayChu, khoeThiDoMoiNhipThuTu) {
    TheoDoiMayChu chuaBiet;
    EXPECT_EQ(nhipDo(chuaBiet, 12), (std::vector{4, 8, 12}));
    TheoDoiMayChu t;
    t.sangMayChu();
    EXPECT_EQ(nhipDo(t, 9), (std::vector{4, 8}));
    EXPECT_EQ(t.traLoi(true), khong);
    EXPECT_EQ(t.traLoi(false), khong) << "one failure changes nothing";
    EXPECT_EQ(t.mayChuSongTruoc(), true);
    EXPECT_EQ(nhipDo(t, 2), (std::vector{1, 2})) << "but it is watched closely";
    EXPECT_EQ(t.traLoi(true), khong) << "and forgotten silently";
    EXPECT_EQ(t.demChetLienTiep(), 0);
}

TEST(TheoDoiMayChu, dangHienMayChuThiBaoMatMotLanVaVeMotLan) {
    TheoDoiMayChu t;
    t.sangMayChu();
    const std::pair<bool, Viec> chuoi[] = {{false, khong}, {false, baoMat}, {false, khong}, {false, khong},
                                           {true, baoVe},  {true, khong},   {false, khong}, {true, khong}};
    for (const auto& [song, mong] : chuoi) {
        EXPECT_EQ(t.traLoi(song), mong);
        EXPECT_FALSE(t.dangMatKetNoi()) << "the page itself decides what to show meanwhile";
    }
}

TEST(TheoDoiMayChu, chuaBietThiLanDauCungLaDoi) {
    TheoDoiMayChu t;
    EXPECT_EQ(t.traLoi(true), baoVe);
    TheoDoiMayChu u;
    EXPECT_EQ(u.traLoi(false), khong);
    EXPECT_EQ(u.traLoi(false), baoMat);
}

TEST(TheoDoiMayChu, giaoDienKemChiDuocBaoSongLai) {
    TheoDoiMayChu t;
    t.sangGiaoDienKem();
    EXPECT_EQ(nhipDo(t, 3), (std::vector{1, 2, 3}));
    const std::pair<bool, Viec> chuoi[] = {{true, baoSongLai}, {true, khong},  {false, khong},
                                           {false, khong},     {false, khong}, {true, baoSongLai}};
    for (const auto& [song, mong] : chuoi) {
        EXPECT_EQ(t.traLoi(song), mong);
        EXPECT_TRUE(t.dangDungGiaoDienKem());
        EXPECT_TRUE(t.dangMatKetNoi());
    }
    EXPECT_EQ(nhipDo(t, 2), (std::vector{1, 2})) << "alive, but still not the server's page";
}

TEST(TheoDoiMayChu, trangMatKetNoiTuQuayLai) {
    TheoDoiMayChu t;
    t.sangTrangKhongKetNoi();
    EXPECT_FALSE(t.dangDungGiaoDienKem());
    EXPECT_EQ(t.traLoi(false), khong);
    EXPECT_EQ(t.traLoi(false), khong);
    EXPECT_EQ(t.traLoi(true), (Viec{false, false, true}));
    EXPECT_EQ(t.traLoi(true), napLai) << "until one of the answers leads somewhere";
}

TEST(TheoDoiMayChu, trangMatKetNoiSauGiaoDienKemKhongPhaiNgoCut) {
    TheoDoiMayChu t;
    t.sangGiaoDienKem();
    t.sangTrangKhongKetNoi();
    EXPECT_TRUE(t.dangDungGiaoDienKem()) << "the flags stay as they are";
    EXPECT_EQ(t.dangHien(), DangHien::trangKhongKetNoi) << "what is shown does not";
    EXPECT_EQ(t.traLoi(true), (Viec{std::nullopt, true, true}));
    t.sangMayChu();
    EXPECT_FALSE(t.dangDungGiaoDienKem());
    EXPECT_EQ(t.dangHien(), DangHien::mayChu);
}

// Any order of ticks, answers and switches, against what must hold whatever happened before.
TEST(TheoDoiMayChu, batBienQuaTramNghinChuoiNgauNhien) {
    std::mt19937 so(20240607);
    for (int chuoi = 0; chuoi < 100'000; ++chuoi) {
        TheoDoiMayChu t;
        std::optional<bool> daBao;  // what the page now shown was last told
        int chet = 0;
        for (int buoc = 0; buoc < 24; ++buoc) {
            const bool kem = t.dangDungGiaoDienKem();
            const auto truoc = t.mayChuSongTruoc();
            switch (so() % 8) {
                case 0: {
                    const bool binhYen = !t.dangMatKetNoi() && chet == 0 && truoc != false;
                    const bool coDo = t.nhip() == Do::co;
                    ASSERT_EQ(coDo, !binhYen || t.demNhipDo() % 4 == 0);
                    break;
                }
                case 1:
                    t.sangMayChu();
                    chet = 0;
                    daBao.reset();
                    ASSERT_TRUE(!t.dangMatKetNoi() && !t.dangDungGiaoDienKem() &&
                                t.mayChuSongTruoc() == true);
                    break;
                case 2:
                    t.sangGiaoDienKem();
                    daBao.reset();
                    break;
                case 3:
                    t.sangTrangKhongKetNoi();
                    daBao.reset();
                    ASSERT_EQ(t.dangDungGiaoDienKem(), kem);
                    break;
                default: {
                    const bool song = so() % 2 == 0;
                    const auto viec = t.traLoi(song);
                    chet = song ? 0 : chet + 1;
                    if (!song && chet < 2) {
                        ASSERT_EQ(viec, khong);
                        ASSERT_EQ(t.mayChuSongTruoc(), truoc);
                        break;
                    }
                    ASSERT_EQ(t.mayChuSongTruoc(), song);
                    ASSERT_EQ(viec.matKetNoi.has_value(), !kem && truoc != song);
                    ASSERT_EQ(viec.songLai, kem && song && truoc != true);
                    ASSERT_EQ(viec.napLai, song && t.dangHien() == DangHien::trangKhongKetNoi)
                        << "exactly the static page needs the host to act";
                    if (viec.matKetNoi) {
                        ASSERT_EQ(*viec.matKetNoi, !song);
                        ASSERT_NE(daBao, viec.matKetNoi) << "never told the same thing twice";
                        daBao = viec.matKetNoi;
                    }
                }
            }
            ASSERT_EQ(t.demChetLienTiep(), chet);
            ASSERT_EQ(t.dangMatKetNoi(),
                      t.dangHien() == DangHien::giaoDienKem || t.dangHien() == DangHien::trangKhongKetNoi);
            ASSERT_TRUE(t.dangHien() != DangHien::giaoDienKem || t.dangDungGiaoDienKem());
            ASSERT_TRUE(t.dangHien() != DangHien::mayChu || !t.dangDungGiaoDienKem());
        }
    }
}

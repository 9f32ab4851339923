#include "TuKhoiDongLinux.hpp"

#include <gtest/gtest.h>

#include <fstream>

#include "gia/ThuMucTam.hpp"

using namespace tovira;

namespace {

class TuKhoiDongTest : public testing::Test {
  protected:
    [[nodiscard]] std::string doc() const { return gia::docTep(goc / "autostart/tovira.desktop"); }
    [[nodiscard]] std::size_t soTep() const { return gia::lietKe(goc / "autostart").size(); }

    gia::ThuMucTam goc;
};

}  // namespace

TEST_F(TuKhoiDongTest, batTatRoiDocLai) {
    TuKhoiDongXdg t(goc / "autostart", "/opt/tovira");
    EXPECT_FALSE(t.dangBat());
    EXPECT_EQ(t.dat(false), std::nullopt);
    EXPECT_EQ(t.dat(true), std::nullopt);
    EXPECT_TRUE(t.dangBat());
    EXPECT_NE(doc().find("\nExec=\"/opt/tovira\" --ngam\n"), std::string::npos);
    EXPECT_EQ(t.dat(true), std::nullopt);
    EXPECT_EQ(soTep(), 1U) << "nothing temporary is left";
    EXPECT_EQ(t.dat(false), std::nullopt);
    EXPECT_FALSE(t.dangBat());
    EXPECT_EQ(soTep(), 0U);
}

TEST_F(TuKhoiDongTest, mucBiTatTrongCaiDatLaTat) {
    TuKhoiDongXdg t(goc / "autostart", "/opt/tovira");
    for (const char* dong : {"Hidden=true", "X-GNOME-Autostart-enabled=false"}) {
        ASSERT_EQ(t.dat(true), std::nullopt);
        std::ofstream(goc / "autostart/tovira.desktop", std::ios::app) << dong << "\n";
        EXPECT_FALSE(t.dangBat()) << dong;
    }
}

TEST_F(TuKhoiDongTest, duongDanKyLaDuocTrichDan) {
    const auto exec = [](const char* duong) {
        const std::string muc = TuKhoiDongXdg::lapMuc(duong);
        const auto dau = muc.find("Exec=") + 5;
        return muc.substr(dau, muc.find('\n', dau) - dau);
    };
    EXPECT_EQ(exec("/a b/tô"), R"("/a b/tô" --ngam)");
    EXPECT_EQ(exec("/100%/t"), R"("/100%%/t" --ngam)");
    EXPECT_EQ(exec("/$x`\"/t"), R"("/\\$x\\`\\"/t" --ngam)");
    EXPECT_EQ(exec("/a\\b"), R"("/a\\\\b" --ngam)");
    EXPECT_EQ(exec("/a\nb"), R"("/a\nb" --ngam)");
}

TEST_F(TuKhoiDongTest, banDaNangCapVanCoTen) {
    const auto tro = [this](const std::string& dich) {
        std::filesystem::remove(goc / "exe");
        std::filesystem::create_symlink(dich, goc / "exe");
        return TuKhoiDongXdg::chuongTrinhNay(goc / "exe");
    };
    EXPECT_EQ(tro("/opt/tovira"), "/opt/tovira");
    EXPECT_EQ(tro("/opt/tovira (deleted)"), "/opt/tovira");
    const auto tenLa = (goc / "tovira (deleted)").string();
    gia::ghiTep(tenLa, "x");
    EXPECT_EQ(tro(tenLa), tenLa) << "somebody's real name";
    EXPECT_EQ(TuKhoiDongXdg::chuongTrinhNay(goc / "khong-co"), "tovira");
    EXPECT_EQ(TuKhoiDongXdg::chuongTrinhNay("/proc/self/exe"),
              std::filesystem::canonical("/proc/self/exe").string());
}

TEST_F(TuKhoiDongTest, khongGhiDuocThiNoiLyDo) {
    std::ofstream(goc / "autostart") << "a file where the folder should be";
    TuKhoiDongXdg t(goc / "autostart", "/opt/tovira");
    const auto loi = t.dat(true);
    ASSERT_TRUE(loi.has_value());
    EXPECT_NE(loi->find("Không ghi được"), std::string::npos);
    EXPECT_FALSE(t.dangBat());
}

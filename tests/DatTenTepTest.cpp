#include <gtest/gtest.h>

#include <set>

#include "TaiXuong.hpp"
#include "gia/CaiDatGia.hpp"
#include "gia/ThuMucTam.hpp"

using namespace tovira;
namespace fs = std::filesystem;

namespace {

struct TepGia final : TepNguoiDung {
    std::optional<std::string> taiXuong;
    std::optional<std::string> thuMucTaiXuong() const override { return taiXuong; }
    void hien(const std::string&) override {}
};

std::string datTen(const char* goiY, const std::set<std::string>& coSan = {}) {
    TaiXuong t;
    return t.chon(1, "/luu", goiY, [&](const std::string& duong) { return coSan.contains(duong); });
}

}  // namespace

TEST(DatTenTep, duoiNhuHeThongHieu) {
    const std::pair<const char*, const char*> bang[] = {
        {"a.txt", "txt"},    {"a.tar.gz", "gz"}, {".bashrc", ""}, {"a.", ""},     {"README", ""},
        {"..a.b", ""},       {".a.b", "b"},      {"a.b c", ""},   {"a b.c", "c"}, {"ảnh.jpeg", "jpeg"},
        {"a.\u202egnp", ""}, {".", ""},          {"", ""},
    };
    for (const auto& [ten, duoi] : bang)
        EXPECT_EQ(duoiTep(ten), duoi) << ten;
}

TEST(DatTenTep, tenGoiYKhongLeoRaNgoai) {
    const std::pair<const char*, const char*> bang[] = {
        {"../../a.txt", "/luu/a.txt"},  {"a.txt", "/luu/a.txt"},       {"", "/luu/tep-nhan-duoc"},
        {".", "/luu/tep-nhan-duoc"},    {"..", "/luu/tep-nhan-duoc"},  {"../..", "/luu/tep-nhan-duoc"},
        {"/", "/luu/tep-nhan-duoc"},    {"///", "/luu/tep-nhan-duoc"}, {"a/b/", "/luu/b"},
        {"/etc/passwd", "/luu/passwd"},
    };
    for (const auto& [goiY, mong] : bang)
        EXPECT_EQ(datTen(goiY), mong) << goiY;
}

TEST(DatTenTep, danhSoTuHai) {
    EXPECT_EQ(datTen("a.txt", {"/luu/a.txt"}), "/luu/a (2).txt");
    EXPECT_EQ(datTen("a.txt", {"/luu/a.txt", "/luu/a (2).txt"}), "/luu/a (3).txt");
    EXPECT_EQ(datTen("a.txt", {"/luu/a (2).txt"}), "/luu/a.txt");
    EXPECT_EQ(datTen("README", {"/luu/README"}), "/luu/README (2)");
    EXPECT_EQ(datTen(".bashrc", {"/luu/.bashrc"}), "/luu/.bashrc (2)");
    EXPECT_EQ(datTen("a.", {"/luu/a."}), "/luu/a. (2)");
    EXPECT_EQ(datTen("a.tar.gz", {"/luu/a.tar.gz"}), "/luu/a.tar (2).gz");
}

TEST(DatTenTep, hetSoThiTenDau) {
    int hoi = 0;
    TaiXuong t;
    const auto duong = t.chon(
        1, "/luu", "a.txt", [&hoi](const std::string& d) { return ++hoi < 999 || d == "/luu/a (999).txt"; });
    EXPECT_EQ(duong, "/luu/a.txt");
    EXPECT_EQ(hoi, 999) << "the plain name and the numbers from 2 to 999";
    hoi = 0;
    const auto cuoi = t.chon(2, "/luu", "b.txt", [&hoi](const std::string&) { return ++hoi < 999; });
    EXPECT_EQ(cuoi, "/luu/b (999).txt");
}

TEST(DatTenTep, haiLuotCungLucKhongTrungTen) {
    TaiXuong t;
    const auto trong = [](const std::string&) { return false; };
    EXPECT_EQ(t.chon(1, "/luu/", "a.txt", trong), "/luu/a.txt");
    EXPECT_EQ(t.chon(2, "/luu", "a.txt", trong), "/luu/a (2).txt");
    EXPECT_EQ(t.lay(1), "/luu/a.txt");
    EXPECT_EQ(t.lay(1), std::nullopt) << "it has ended once";
    EXPECT_EQ(t.chon(3, "/luu", "a.txt", trong), "/luu/a.txt") << "the place is free again";
    EXPECT_EQ(t.lay(9), std::nullopt);
    EXPECT_EQ(t.chon(4, "/luu", "A.TXT", trong), "/luu/A (3).TXT") << "one file where case does not count";
    EXPECT_EQ(t.chon(5, "/luu", "hỏng\xff", trong), "/luu/hỏng\xff");
    EXPECT_EQ(t.chon(6, "/luu", "hỏng\xff", trong), "/luu/hỏng\xff (2)");
}

TEST(DatTenTep, thuMucLuuConSongThiDung) {
    const gia::ThuMucTam goc;
    gia::CaiDatGia caiDat;
    TepGia tep;
    EXPECT_EQ(TaiXuong::thuMucLuu(caiDat, tep), fs::temp_directory_path().string());
    tep.taiXuong = "/nha/Downloads";
    for (const std::string& gia : {std::string(), (goc / "da-xoa").string(), (goc / "tep").string()}) {
        gia::ghiTep(goc / "tep", "x");
        caiDat.kho["thuMucLuuTep"] = gia;
        EXPECT_EQ(TaiXuong::thuMucLuu(caiDat, tep), "/nha/Downloads") << gia;
    }
    caiDat.kho["thuMucLuuTep"] = goc.duong().string();
    EXPECT_EQ(TaiXuong::thuMucLuu(caiDat, tep), goc.duong().string());

    EXPECT_TRUE(coTep((goc / "tep").string()));
    EXPECT_FALSE(coTep((goc / "khong").string()));
    fs::create_symlink("khong", goc / "lien-ket-dut");
    EXPECT_TRUE(coTep((goc / "lien-ket-dut").string())) << "a download must not be written through it";
}

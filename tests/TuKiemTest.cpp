#include "TuKiem.hpp"

#include <gtest/gtest.h>

#include "gia/ThuMucTam.hpp"

using namespace tovira;

namespace {

struct NenTuKiemGia final : TuKiem::Nen {
    std::string giaoDien = TOVIRA_GIAO_DIEN;
    std::string khongManHinh, khongDieuKhien, khongGhi;
    std::vector<ManHinh::Nguon> man{ManHinh::Nguon{}};
    int soLanHoiMan = 0;

    std::string thuMucGiaoDien() override { return giaoDien; }
    std::string loaiPhien() override { return "phiên thử"; }
    std::string phienBanWeb() override { return "web 1"; }
    std::string lyDoKhongManHinh() override { return khongManHinh; }
    std::string lyDoKhongDieuKhien() override {
        ++soLanHoiMan;
        return khongDieuKhien;
    }
    std::string lyDoKhongGhi() override {
        ++soLanHoiMan;
        return khongGhi;
    }
    std::vector<ManHinh::Nguon> cacManHinh() override {
        ++soLanHoiMan;
        return man;
    }
    std::optional<std::vector<std::uint32_t>> phimDangGiu() override {
        ++soLanHoiMan;
        return std::vector<std::uint32_t>{37, 50};
    }
};

struct TuKiemTest : testing::Test {
    TuKiemTest() { ::setenv("TMPDIR", tam.duong().c_str(), 1); }
    ~TuKiemTest() override { ::unsetenv("TMPDIR"); }

    TuKiem::TongKet chay() {
        ra.clear();
        loi.clear();
        return TuKiem::chay(
            nen, [this](const auto& dong) { ra += dong + "\n"; },
            [this](const auto& dong) { loi += dong + "\n"; });
    }
    [[nodiscard]] bool daIn(const char* chu) const { return ra.find(chu) != std::string::npos; }

    gia::ThuMucTam tam;
    NenTuKiemGia nen;
    std::string ra, loi;
};

}  // namespace

TEST_F(TuKiemTest, mayLanhThiDatHet) {
    const auto tong = chay();
    EXPECT_EQ(loi, "");
    EXPECT_EQ(tong.hong, 0);
    EXPECT_EQ(tong.boQua, 0);
    EXPECT_GE(tong.dat, 40);
    EXPECT_EQ(tong.trangThai(), 0);
    EXPECT_TRUE(ra.ends_with("\n" + std::to_string(tong.dat) + " đạt, 0 hỏng, 0 bỏ qua\n"));
    EXPECT_TRUE(daIn("Phiên làm việc : phiên thử\n"));
    EXPECT_TRUE(daIn("Phím đang giữ  : mã 37, 50\n"));
    EXPECT_EQ(gia::lietKe(tam.duong()), std::set<std::string>{}) << "nothing is left behind";
}

TEST_F(TuKiemTest, khongManHinhThiBoQuaVaKhongHoiGiVeNo) {
    nen.khongManHinh = "không có DISPLAY";
    const auto tong = chay();
    EXPECT_EQ(tong.trangThai(), 0) << loi;
    EXPECT_EQ(tong.boQua, 3);
    EXPECT_EQ(nen.soLanHoiMan, 0);
    EXPECT_TRUE(daIn("– hệ thống: ghi được màn hình (bỏ qua: không có DISPLAY)\n"));
}

TEST_F(TuKiemTest, mayHongThiNoiVaKetThucMot) {
    nen.khongGhi = "thiếu quyền";
    nen.man.clear();
    auto tong = chay();
    EXPECT_EQ(tong.hong, 2);
    EXPECT_EQ(tong.trangThai(), 1);
    EXPECT_EQ(loi.rfind("✗ hệ thống: ghi được màn hình: thiếu quyền\n", 0), 0U) << loi;

    nen = {};
    nen.giaoDien = (tam / "giao-dien").string();
    tong = chay();
    EXPECT_EQ(tong.hong, 9) << "all that the packaged interface has\n" << loi;

    nen = {};
    ::setenv("TMPDIR", (tam / "khong-co").c_str(), 1);
    tong = chay();
    EXPECT_EQ(tong.hong, 12) << "receiving, and the folder itself\n" << loi;
}

#include "UngDung.hpp"

#include <gtest/gtest.h>

#include "ChiBao.hpp"
#include "Khay.hpp"
#include "KiemQuyen.hpp"
#include "gia/WebGia.hpp"

using namespace tovira;
using Cac = std::vector<std::string>;

namespace {

const std::string bamNutDung =
    "(function(){ var b = document.getElementById('bc-stop'); if (b) b.click(); })();";

struct NenUngDungGia final : UngDung::Nen {
    Cac viec;
    std::function<void(std::optional<std::string>)> xongMoLai;

    void datBieuTuong() override { viec.emplace_back("icon"); }
    void datKieu(UngDung::Kieu kieu) override {
        viec.emplace_back(kieu == UngDung::Kieu::phu ? "phụ" : "thường");
    }
    void moBanMoi(std::function<void(std::optional<std::string>)> xong) override {
        viec.emplace_back("bản mới");
        xongMoLai = std::move(xong);
    }
    void ketThuc() override { viec.emplace_back("kết thúc"); }
    void moGioiThieu() override { viec.emplace_back("giới thiệu"); }
    void moHuongDan() override { viec.emplace_back("hướng dẫn"); }
};

struct NenKhayGia final : Khay::Nen {
    Cac meo;
    void dungMuc(Khay&, const VeKhay& ve, const char*) override { meo.emplace_back(ve.meo); }
    void doiVe(const VeKhay& ve) override { meo.emplace_back(ve.meo); }
    bool coCho = true;
    bool coChoDat() override { return coCho; }
    void moHuongDan() override {}
    void moGioiThieu() override {}
};

struct NenThanhGia final : ChiBao::Nen {
    int soLanDung = 0;
    int soLanGo = 0;
    std::optional<ChiBao::ManChinh> manChinh() override {
        return ChiBao::ManChinh{{0, 0, 1920, 1080}, {0, 0, 1920, 1080}};
    }
    void dungThanh(const KhungHinh&, std::function<void()>) override { ++soLanDung; }
    void goThanh() override { ++soLanGo; }
};

class UngDungTest : public testing::Test, public gia::PhongWeb {
  protected:
    NenUngDungGia nen;
    NenKhayGia nenKhay;
    NenThanhGia nenThanh;
    KiemQuyen kiemQuyen{khac, nenNhap, nenMan};
    Khay khay{{nenKhay, kiemQuyen, [this] { return manHinh.dangPhat(); }, khac, khac, thamSo}};
    ChiBao chiBao{nenThanh};
    UngDung ung{{nen, vong, khac, cuaSo, khay, chiBao, manHinh, dieuKhien}};

    void khoiDong(UngDung::KhoiDong cach = UngDung::KhoiDong::hienCuaSo) {
        ung.khiKhoiDongXong(cach);
        cua.lay();
        nen.viec.clear();
    }
    void giuPhimA() { ASSERT_TRUE(dieuKhien.lam(R"({"t":"key_down","code":"KeyA"})")); }
};

}  // namespace

TEST_F(UngDungTest, khoiDongTheoThuTu) {
    ung.khiKhoiDongXong(UngDung::KhoiDong::hienCuaSo);
    EXPECT_EQ(nen.viec, (Cac{"icon", "thường"}));
    EXPECT_EQ(cua.lay(), (Cac{"dung", "hien"}));
    EXPECT_EQ(nenKhay.meo, Cac{"Tovira — máy này có thể được điều khiển từ xa"});
}

TEST_F(UngDungTest, khoiDongNgamThiKhongHienMaVanMoDuoc) {
    ung.khiKhoiDongXong(UngDung::KhoiDong::ngam);
    EXPECT_EQ(nen.viec, (Cac{"icon", "phụ"}));
    EXPECT_EQ(cua.lay(), Cac{"dung"});
    khay.bam(LenhKhay::bamMo);
    EXPECT_EQ(cua.lay(), Cac{"hien"});
    ung.khiMoLaiUngDung(UngDung::CoCuaSoHien::co);
    EXPECT_EQ(cua.lay(), Cac{});
    ung.khiMoLaiUngDung(UngDung::CoCuaSoHien::khong);
    EXPECT_EQ(cua.lay(), Cac{"hien"});
}

TEST_F(UngDungTest, khoiDongNgamMaKhongCoKhayThiThuNho) {
    nenKhay.coCho = false;
    ung.khiKhoiDongXong(UngDung::KhoiDong::ngam);
    EXPECT_EQ(nen.viec, (Cac{"icon", "phụ"}));
    EXPECT_EQ(cua.lay(), (Cac{"dung", "hienThuNho"}));
}

TEST_F(UngDungTest, theoDoiChiaSeMoiGiay) {
    khoiDong(UngDung::KhoiDong::ngam);
    phat();
    vong.tien(0.9);
    EXPECT_EQ(nenThanh.soLanDung, 0);
    vong.tien(0.2);
    EXPECT_EQ(nenThanh.soLanDung, 1);
    EXPECT_EQ(nenKhay.meo.back(), "Tovira — máy này ĐANG BỊ ĐIỀU KHIỂN");
    EXPECT_EQ(cua.lay(), (Cac{"choThuNho", "doXa", "raTruoc"})) << "the hidden page is kept rendering";
    vong.tien(5);
    EXPECT_EQ(nenThanh.soLanDung, 1);
    EXPECT_EQ(nenKhay.meo.size(), 2U);
    manHinh.dung();
    vong.tien(1);
    EXPECT_EQ(nenThanh.soLanGo, 1);
    EXPECT_EQ(nenKhay.meo.back(), "Tovira — máy này có thể được điều khiển từ xa");
}

TEST_F(UngDungTest, moLaiUngDungDuaCuaSoDangDoVe) {
    khoiDong(UngDung::KhoiDong::ngam);
    phat();
    vong.tien(1);
    cua.lay();
    ung.khiMoLaiUngDung(UngDung::CoCuaSoHien::co);
    const auto viec = cua.lay();
    ASSERT_FALSE(viec.empty());
    EXPECT_EQ(viec.back(), "hien");
}

TEST_F(UngDungTest, nutDungLamTheoTrangRoiChacChan) {
    khoiDong();
    phat();
    vong.tien(1);
    giuPhimA();
    js();
    for (const bool tuThanh : {true, false}) {
        if (tuThanh)
            chiBao.bamDung();
        else
            khay.bam(LenhKhay::bamDungChiaSe);
        const auto chay = js();
        EXPECT_NE(std::find(chay.begin(), chay.end(), bamNutDung), chay.end());
        EXPECT_FALSE(manHinh.dangPhat());
        EXPECT_EQ(dieuKhien.dangGiu(), 0U);
        EXPECT_FALSE(chiBao.dangHien());
    }
}

TEST_F(UngDungTest, tuDungThiThaPhimVaTraCuaSo) {
    khoiDong(UngDung::KhoiDong::ngam);
    phat();
    vong.tien(1);
    giuPhimA();
    cua.lay();
    manHinh.khiTuDung();
    EXPECT_EQ(dieuKhien.dangGiu(), 0U);
    EXPECT_EQ(cua.lay(), (Cac{"veCho", "an"}));
}

TEST_F(UngDungTest, moLaiThiBanCuDiSauKhiBanMoiChay) {
    khoiDong();
    giuPhimA();
    khay.bam(LenhKhay::bamMoLai);
    EXPECT_EQ(nen.viec, Cac{"bản mới"});
    EXPECT_EQ(dieuKhien.dangGiu(), 1U);
    nen.xongMoLai("Không tìm thấy tệp");
    EXPECT_EQ(khac.lay(), Cac{}) << "not on the thread that answers";
    vong.xa();
    EXPECT_EQ(khac.lay(), Cac{"canhBao Không mở lại được Tovira|"
                              "Không tìm thấy tệp\n\nHãy thoát rồi tự mở lại từ thư mục Ứng dụng."});
    EXPECT_EQ(dieuKhien.dangGiu(), 1U) << "the old one stays as it is";

    khay.bam(LenhKhay::bamMoLai);
    nen.xongMoLai(std::nullopt);
    vong.xa();
    EXPECT_EQ(dieuKhien.dangGiu(), 0U);
    EXPECT_EQ(nen.viec, (Cac{"bản mới", "bản mới", "kết thúc"}));
}

TEST_F(UngDungTest, thoatVaBiKetThucDeuThaHet) {
    khoiDong();
    phat();
    giuPhimA();
    khay.bam(LenhKhay::bamThoat);
    EXPECT_EQ(dieuKhien.dangGiu(), 0U);
    EXPECT_FALSE(manHinh.dangPhat());
    EXPECT_EQ(nen.viec, Cac{"kết thúc"});
    giuPhimA();
    ung.khiSapKetThuc();
    EXPECT_EQ(dieuKhien.dangGiu(), 0U);
}

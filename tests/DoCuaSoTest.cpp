#include "DoCuaSo.hpp"

#include <gtest/gtest.h>

#include "CuaSoTach.hpp"
#include "QuyTacSap.hpp"
#include "gia/NenCuaGia.hpp"
#include "gia/NenTachGia.hpp"

using namespace tovira;
using Viec = std::vector<std::string>;

namespace {

class DoCuaSoTest : public testing::Test {
  protected:
    gia::NenCuaGia nen;
    DoCuaSo d{nen};
    const KhungHinh choThat = nen.cua.khung;
};

}  // namespace

TEST_F(DoCuaSoTest, khongPhatThiDongLaAnVaKhongDo) {
    nen.cua.hienRa = true;
    d.khiThuNho(false);
    d.khiChe(false);
    d.damBaoDangVe(false);
    EXPECT_EQ(nen.lay(), Viec{});
    d.khiXinDong(false);
    EXPECT_EQ(nen.lay(), Viec{"an"});
    d.boDo();
    EXPECT_EQ(nen.lay(), Viec{}) << "it is not parked";
    EXPECT_EQ(d.choCu(), std::nullopt);
}

TEST_F(DoCuaSoTest, dangPhatThiDongLaDoMotLan) {
    nen.cua.hienRa = true;
    d.khiXinDong(true);
    EXPECT_EQ(nen.lay(), Viec{"doXa"});
    EXPECT_EQ(d.choCu(), choThat);
    d.khiXinDong(true);
    d.khiChe(true);
    EXPECT_EQ(nen.lay(), Viec{});
    EXPECT_EQ(d.choCu(), choThat) << "the parked place is never remembered";
    d.hien();
    EXPECT_EQ(nen.lay(), (Viec{"veCho", "hien"}));
    EXPECT_EQ(nen.cua.khung, choThat);
    d.hien();
    EXPECT_EQ(nen.lay(), Viec{"hien"});
}

TEST_F(DoCuaSoTest, thuNhoKhiPhatBiHuyNgay) {
    nen.cua = {choThat, true, true};
    d.khiThuNho(true);
    EXPECT_EQ(nen.lay(), (Viec{"raTruoc", "doXa"}));
    d.khiThuNho(true);
    EXPECT_EQ(nen.lay(), Viec{"raTruoc"}) << "parked already";
    d.boDo();
    EXPECT_EQ(nen.lay(), (Viec{"veCho", "an"}));
    EXPECT_EQ(nen.cua.khung, choThat);
}

TEST_F(DoCuaSoTest, batDauPhatKhiCuaSoAnHoacThuNho) {
    nen.cua.hienRa = true;
    d.damBaoDangVe(true);
    EXPECT_EQ(nen.lay(), Viec{}) << "visible: left alone";
    for (const auto& [hienRa, thuNho] :
         {std::pair(false, false), std::pair(true, true), std::pair(false, true)}) {
        nen.cua = {choThat, hienRa, thuNho};
        d.damBaoDangVe(true);
        EXPECT_EQ(nen.lay(), (Viec{"doXa", "raTruoc"}));
        EXPECT_EQ(d.choCu(), choThat);
        d.boDo();
        nen.lay();
    }
}

TEST_F(DoCuaSoTest, biCheKhiPhatThiDo) {
    nen.cua.hienRa = true;
    d.khiChe(true);
    EXPECT_EQ(nen.lay(), Viec{"doXa"});
}

TEST(CuaSoTach, moiLucMotCuaSo) {
    gia::NenTachGia nen;
    CuaSoTach t(nen);
    const auto a = t.mo({}, {});
    EXPECT_EQ(a.rong, 980);
    EXPECT_EQ(a.cao, 640);
    EXPECT_TRUE(nen.viec.empty());
    const auto b = t.mo(300, 200.5);
    EXPECT_NE(b.ma, a.ma);
    EXPECT_EQ(b.rong, 300);
    EXPECT_EQ(b.cao, 200.5);
    EXPECT_EQ(std::exchange(nen.viec, {}), Viec{"dong " + std::to_string(a.ma)});
    t.khiTuDong(a.ma);
    EXPECT_TRUE(nen.viec.empty()) << "the first one is no longer ours";
    t.khiTuDong(b.ma);
    t.khiTuDong(b.ma);
    EXPECT_EQ(std::exchange(nen.viec, {}), Viec{"an " + std::to_string(b.ma)});
    t.khiSapDong(b.ma);
    EXPECT_EQ(nen.viec, Viec{std::to_string(b.ma) + ": window.close()"});
}

TEST(CuaSoTach, diaChiThatRaNgoaiVaKichCoVoLyThanhMacDinh) {
    EXPECT_FALSE(CuaSoTach::moNgoai(""));
    EXPECT_FALSE(CuaSoTach::moNgoai("about:blank"));
    EXPECT_TRUE(CuaSoTach::moNgoai("about:blank#x"));
    EXPECT_TRUE(CuaSoTach::moNgoai("https://vi.du/"));
    gia::NenTachGia nen;
    CuaSoTach t(nen);
    for (const double xau : {0.0, -5.0, 1e30, std::numeric_limits<double>::quiet_NaN()}) {
        EXPECT_EQ(t.mo(xau, {}).rong, 980) << xau;
    }
}

TEST(QuyTacSap, lanHaiTrongMotPhutLaBoCuoc) {
    QuyTacSap q;
    EXPECT_EQ(q.khiSap(10), QuyTacSap::Viec::taiLai);
    EXPECT_EQ(q.khiSap(70), QuyTacSap::Viec::taiLai) << "a minute has passed";
    EXPECT_EQ(q.khiSap(129.9), QuyTacSap::Viec::boCuoc);
}

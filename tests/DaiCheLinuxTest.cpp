// A window that stands on the screen and in no picture of it.

#include "DaiCheLinux.hpp"

#include "x11/CuaMau.hpp"
#include "x11/PhongManHinh.hpp"

using namespace tovira;
using namespace tovira::thu;

namespace {

constexpr std::uint32_t mauThanh = 0xFF3B30;
constexpr OAnh oThanh{450, 8, 380, 40};

class DaiCheX11 : public ManHinhX11 {
  protected:
    void SetUp() override {
        ManHinhX11::SetUp();
        datNenGoc(0x203040);
    }

    // The root window's background, as a desktop sets it.
    void datNenGoc(std::uint32_t mau) {
        xcb_change_window_attributes(x.c(), x.goc(), XCB_CW_BACK_PIXEL, &mau);
        xcb_clear_area(x.c(), 0, x.goc(), 0, 0, 0, 0);
        x.dongBo();
    }

    static bool coMauThanh(const AnhJpeg& anh) {
        for (int y = oThanh.y - 8; y < oThanh.y + oThanh.cao + 8; ++y)
            for (int cx = oThanh.x - 8; cx < oThanh.x + oThanh.rong + 8; ++cx)
                if (anh.tai(cx, y) == Mau{mauThanh}) return true;
        return false;
    }
    // Frames until one shows all of these; none on the way shows the bar.
    struct Diem {
        std::uint32_t mau;
        int x, y;
    };
    ::testing::AssertionResult choThay(const std::vector<Diem>& cac) {
        const auto het = DongHo::now() + hanCho;
        std::string sao = "no frame";
        while (DongHo::now() < het) {
            auto m = nhan.lay(std::chrono::seconds(3));
            if (!m) break;
            const auto anh = giai(*m->khung);
            tra(std::move(m->khung));
            if (coMauThanh(anh)) return ::testing::AssertionFailure() << "the bar is in a picture";
            sao.clear();
            for (const auto& d : cac)
                if (!(anh.tai(d.x, d.y) == Mau{d.mau}))
                    sao += std::to_string(d.x) + "," + std::to_string(d.y) + " is not what it should be; ";
            if (sao.empty()) return ::testing::AssertionSuccess();
        }
        return ::testing::AssertionFailure() << sao;
    }

    ManX khac = moManX();  // the program that has the bar
};

}  // namespace

TEST_F(DaiCheX11, tuHienDenAnKhongKhungNaoCoThanh) {
    const CuaMau trai(x.c(), x.goc(), 0x0000C0, {300, 0, 250, 300});
    const CuaMau vien(x.c(), x.goc(), 0x00A000, {600, 20, 60, 200}, CuaMau::Hien::co, 4, 0xC0C000);
    mo();
    ASSERT_TRUE(choThay({{0x0000C0, 500, 28}, {0x00A000, 630, 30}}));
    choYen();

    const CuaMau thanh(khac.c(), khac.goc(), mauThanh, oThanh, CuaMau::Hien::chua);
    std::optional<CuaSoAnLinux> an(std::in_place, khac.c(), khac.goc(), thanh.ma());
    thanh.hien();
    const std::vector<Diem> duoi{{0x0000C0, 500, 28}, {0x00A000, 630, 30}, {0xC0C000, 630, 18},
                                 {0x203040, 580, 28}, {0x203040, 750, 28}, {0x203040, 900, 28}};
    ASSERT_TRUE(choThay(duoi));

    trai.to(0x7000A0);
    EXPECT_TRUE(choThay({{0x7000A0, 500, 28}, {0x7000A0, 400, 200}, {0x203040, 750, 28}}));
    trai.doi(680, 0);  // what it leaves is background, where it comes it is whole
    EXPECT_TRUE(choThay({{0x203040, 500, 28}, {0x7000A0, 750, 28}, {0x7000A0, 820, 45}}));
    {
        const CuaMau tren(x.c(), x.goc(), 0x00B0B0, {560, 0, 30, 60});  // above the bar
        EXPECT_TRUE(choThay({{0x00B0B0, 575, 28}}));
        tren.to(0x606060);
        EXPECT_TRUE(choThay({{0x606060, 575, 28}}));
        tren.xuongDay();
        EXPECT_TRUE(choThay({{0x606060, 575, 28}}));
    }
    EXPECT_TRUE(choThay({{0x203040, 575, 28}}));
    datNenGoc(0x105010);
    EXPECT_TRUE(choThay({{0x105010, 575, 28}, {0x105010, 100, 100}, {0x7000A0, 750, 28}}));

    // The bar itself may draw whatever it likes.
    choYen();
    for (const std::uint32_t mau : {0xFFFFFFU, mauThanh, 0x00FFFFU, mauThanh}) {
        thanh.to(mau);
        troiQua(0.2);
    }
    EXPECT_EQ(nhan.dangCho(), 0U);
    trai.to(0x0000C0);
    EXPECT_TRUE(choThay({{0x0000C0, 750, 28}}));

    thanh.an();
    an.reset();
    trai.doi(300, 0);
    EXPECT_TRUE(choThay({{0x0000C0, 500, 28}, {0x105010, 750, 28}}));
    trai.to(0x0000C8);
    EXPECT_TRUE(choThay({{0x0000C8, 500, 28}, {0x105010, 575, 28}}));
}

// A window without a background shows at first what stood where it comes: the bar, too.
TEST_F(DaiCheX11, cuaSoChuaVeKhongDemThanhVaoKhung) {
    const CuaMau duoi(x.c(), x.goc(), 0x0000C0, {400, 0, 500, 300});
    mo();
    const CuaMau thanh(khac.c(), khac.goc(), mauThanh, oThanh, CuaMau::Hien::chua);
    const CuaSoAnLinux an(khac.c(), khac.goc(), thanh.ma());
    thanh.hien();
    ASSERT_TRUE(choThay({{0x0000C0, 640, 28}}));
    const CuaMau trong(x.c(), x.goc(), std::nullopt, {420, 0, 440, 200}, CuaMau::Hien::chua);
    trong.hien();
    thanh.hien();
    duoi.to(0x0000C8);
    EXPECT_TRUE(choThay({{0x0000C8, 500, 250}, {0x0000C8, 640, 28}})) << "not painted yet: as if not there";
    trong.to(0x00A060);
    EXPECT_TRUE(choThay({{0x00A060, 500, 28}, {0x00A060, 800, 28}}));
}

// It comes and goes while everything changes as fast as it can.
TEST_F(DaiCheX11, denVaDiGiuaLucVe) {
    const CuaMau duoi(x.c(), x.goc(), 0x0000C0, {400, 0, 500, 300});
    mo(60);
    const CuaMau thanh(khac.c(), khac.goc(), mauThanh, oThanh, CuaMau::Hien::chua);
    std::uint32_t mau = 0x0000C0;
    for (int luot = 0; luot < 12; ++luot) {
        const CuaSoAnLinux an(khac.c(), khac.goc(), thanh.ma());
        thanh.hien();
        for (int i = 0; i < 6; ++i)
            duoi.to(mau ^= 0x008000U);
        ASSERT_TRUE(choThay({{mau, 640, 28}})) << luot;
        thanh.an();
        duoi.to(mau ^= 0x004000U);
        ASSERT_TRUE(choThay({{mau, 640, 28}})) << luot;
    }
    choYen();
}

// A second monitor on which the bar does not stand has nothing to do with it.
TEST_F(DaiCheX11, manHinhKhacKhongBanTam) {
    ASSERT_TRUE(x.datManHinh("Duoi", 0, 400, 700, 300, x.dauRaDau()));
    ManHinh::CauHinh cauHinh;
    cauHinh.co = lietKe().at(0).diemAnh;
    mo(lietKe().at(0), cauHinh);
    choYen();
    const CuaMau thanh(khac.c(), khac.goc(), mauThanh, oThanh, CuaMau::Hien::chua);
    const CuaSoAnLinux an(khac.c(), khac.goc(), thanh.ma());
    thanh.hien();
    troiQua(0.3);
    EXPECT_EQ(nhan.dangCho(), 0U);
    x.to(0x00CC00, 10, 410, 100, 100);
    EXPECT_TRUE(choMau({0x00CC00}, 50, 50));
    ASSERT_TRUE(x.boManHinh("Duoi"));
}

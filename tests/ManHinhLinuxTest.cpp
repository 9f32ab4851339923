#include "ManHinhLinux.hpp"

#include <poll.h>
#include <xcb/screensaver.h>

#include <thread>

#include "x11/PhongManHinh.hpp"

using namespace tovira;
using namespace tovira::thu;
using namespace std::chrono_literals;

namespace {

// Sets or (nullptr) unsets an environment variable for a scope.
class BienTam {
  public:
    BienTam(const char* ten, const char* giaTri) : ten_(ten) {
        if (const char* cu = std::getenv(ten)) cu_ = cu;
        giaTri != nullptr ? setenv(ten, giaTri, 1) : unsetenv(ten);
    }
    ~BienTam() { cu_ ? setenv(ten_, cu_->c_str(), 1) : unsetenv(ten_); }
    BienTam(const BienTam&) = delete;
    BienTam& operator=(const BienTam&) = delete;

  private:
    const char* ten_;
    std::optional<std::string> cu_;
};

}  // namespace

TEST_F(ManHinhX11, noiRoVaoLucKhongGhiDuoc) {
    EXPECT_TRUE(nen->duocGhi());
    EXPECT_EQ(lyDoKhongGhi(), "");
    EXPECT_FALSE(nen->xinGhi());
    for (const auto& [ten, giaTri, tim] : {std::tuple{"XDG_SESSION_TYPE", "wayland", "Wayland"},
                                           {"WAYLAND_DISPLAY", "wayland-0", "Wayland"},
                                           {"DISPLAY", ":65000", ":65000"}}) {
        const BienTam bien(ten, giaTri);
        EXPECT_FALSE(nen->duocGhi());
        EXPECT_NE(lyDoKhongGhi().find(tim), std::string::npos);
        noi.clear();
        nen->moCaiDatGhiManHinh();
        EXPECT_EQ(noi, lyDoKhongGhi());
    }
    const BienTam bien("DISPLAY", ":65000");
    nen->lietKe([](auto kq) { EXPECT_FALSE(kq); });
    nen->giuThuc(true);
    nen->giuThuc(false);
}

TEST_F(ManHinhX11, manHinhRandrThanhDanhSach) {
    const auto mot = lietKe();
    ASSERT_EQ(mot.size(), 1U);
    EXPECT_TRUE(mot[0].chinh);
    EXPECT_FALSE(mot[0].ten.empty());
    EXPECT_EQ(mot[0].diemAnh, (KichThuoc{x.rong(), x.cao()}));

    ASSERT_TRUE(x.datManHinh("Trai", 0, 0, 700, 800, x.dauRaDau()));
    ASSERT_TRUE(x.datManHinh("Phai", 700, 10, 501, 301));
    const auto hai = lietKe();
    ASSERT_EQ(hai.size(), 2U);
    EXPECT_EQ(hai[0].ten, "Trai");
    EXPECT_EQ(hai[1].ten, "Phai");
    EXPECT_EQ(hai[1].khung, (KhungHinh{700, 10, 501, 301}));
    EXPECT_EQ(hai[1].rong, 501);
    EXPECT_NE(hai[0].chinh, hai[1].chinh);

    // The second one is shared: its own pixels, odd size, nothing of the first.
    x.to(0x00AA00, 700, 10, 501, 301);
    x.to(0xAA0000, 1100, 250, 60, 40);
    ManHinh::CauHinh cauHinh;
    cauHinh.co = hai[1].diemAnh;
    mo(hai[1], cauHinh);
    const auto anh = khungToi();
    EXPECT_EQ(std::pair(anh.rong, anh.cao), std::pair(501, 301));
    EXPECT_EQ(anh.tai(2, 2), Mau{0x00AA00});
    EXPECT_EQ(anh.tai(430, 260), Mau{0xAA0000});
    choYen();
    x.to(0x0000AA, 100, 100, 50, 50);  // on the other monitor: no frame
    troiQua(0.3);
    EXPECT_EQ(nhan.dangCho(), 0U);
    x.to(0x0000AA, 710, 20, 50, 50);
    EXPECT_TRUE(choMau({0x0000AA}, 30, 30));

    choYen();
    EXPECT_FALSE(nhan.coLoi());
    ASSERT_TRUE(x.boManHinh("Phai"));
    const auto loi = nhan.choLoi();
    ASSERT_TRUE(loi);
    EXPECT_EQ(std::pair(loi->mien, loi->ma),
              std::pair(std::string(ManHinh::mienNguon), ManHinh::maManHinhDoi));
    EXPECT_FALSE(loi->moTa.empty());
    ASSERT_TRUE(x.boManHinh("Trai"));
}

TEST_F(ManHinhX11, khungChoThayDungNhungGiDuocVe) {
    mo();
    ASSERT_EQ(khungToi().tai(640, 400), Mau{0x203040});
    struct O {
        std::uint32_t mau;
        int x, y, rong, cao;
    };
    std::vector<O> cac;
    for (std::uint32_t i = 0; i < 24; ++i)
        cac.push_back({0x0A5037U * (i + 3) & 0xFFFFFFU, static_cast<int>(i % 6) * 200 + 5,
                       static_cast<int>(i / 6) * 170 + 3, 90, 41 + static_cast<int>(i)});
    for (const auto& o : cac) {
        x.to(o.mau, o.x, o.y, o.rong, o.cao);
        ASSERT_TRUE(choMau({o.mau}, o.x + o.rong / 2, o.y + o.cao / 2));
    }
    // Everything that was drawn on the way is in the last picture, wherever its rows came from.
    x.to(0xFFFF00, 0, x.cao() - 20, 40, 20);
    auto anh = khungToi();
    for (const auto& o : cac)
        EXPECT_EQ(anh.tai(o.x + o.rong / 2, o.y + o.cao / 2), Mau{o.mau});
    EXPECT_EQ(anh.tai(20, x.cao() - 10), Mau{0xFFFF00});
    EXPECT_EQ(anh.tai(150, 160), Mau{0x203040});
}

TEST_F(ManHinhX11, conTroDuocVeVaMoiChuyenDongLaThayDoi) {
    x.datHinhConTro(0xFF0000, 32);
    x.datConTro(300, 200);
    mo();
    EXPECT_EQ(khungToi().tai(300, 200), Mau{0xFF0000});
    choYen();
    x.datConTro(900, 611);  // by a program
    ASSERT_TRUE(choMau({0xFF0000}, 900, 611));
    choYen();
    x.datHinhConTro(0x00FF00, 32);  // another shape at the same place
    ASSERT_TRUE(choMau({0x00FF00}, 900, 611));
    choYen();
    x.diChuot(40, 30);  // as a device does
    ASSERT_TRUE(choMau({0x00FF00}, 40, 30));
    choYen();
    // Drawing under one half of the pointer neither paints over it nor blends it twice.
    x.to(0x0000FF, 0, 0, 40, 30);
    ASSERT_TRUE(choMau({0x0000FF}, 8, 8));
    x.to(0x0000FE, 0, 0, 1, 1);
    const auto anh = khungToi();
    EXPECT_EQ(anh.tai(40, 30), Mau{0x00FF00});
    EXPECT_EQ(anh.tai(300, 200), Mau{0x203040});
    EXPECT_EQ(anh.tai(900, 611), Mau{0x203040});
    // Half outside the screen, and switched off.
    x.datConTro(0, x.cao() - 1);
    ASSERT_TRUE(choMau({0x00FF00}, 4, x.cao() - 6));
    ManHinh::CauHinh cauHinh;
    cauHinh.co = {x.rong(), x.cao()};
    cauHinh.veConTro = false;
    luong->doiCauHinh(cauHinh);
    ASSERT_TRUE(choMau({0x203040}, 4, x.cao() - 6));
}

TEST_F(ManHinhX11, manHinhYenThiKhongGiaoKhungNao) {
    mo();
    choYen();
    troiQua(1.0);
    EXPECT_EQ(nhan.dangCho(), 0U);
    x.to(0xABCDEF, 10, 10, 30, 30);
    auto m = nhan.lay();
    ASSERT_TRUE(m);
    EXPECT_EQ(giai(*m->khung).tai(25, 25), Mau{0xABCDEF});  // the very next frame is the marker's
    tra(std::move(m->khung));
    EXPECT_EQ(nhan.dangCho(), 0U);
}

TEST_F(ManHinhX11, thayDoiDauDuocGiaoNgayConLaiTheoNhip) {
    mo(1);
    choYen();
    troiQua(1.0);
    const auto luc = DongHo::now();
    x.to(0x111111, 10, 10, 30, 30);
    auto dau = nhan.lay();
    ASSERT_TRUE(dau);
    EXPECT_LT(dau->luc - luc, 800ms);
    // Changes right behind it wait for their turn, all together in one frame.
    x.to(0x222222, 10, 10, 30, 30);
    x.to(0x333333, 10, 10, 30, 30);
    auto sau = nhan.lay();
    ASSERT_TRUE(sau);
    EXPECT_GE(sau->luc - dau->luc, 950ms);
    EXPECT_EQ(giai(*sau->khung).tai(25, 25), Mau{0x333333});
    tra(std::move(dau->khung));
    tra(std::move(sau->khung));
}

TEST_F(ManHinhX11, khongQuaMuoiHaiKhungMoiGiayVaKhongMatThayDoiCuoi) {
    mo();
    std::vector<DongHo::time_point> cacLuc;
    std::uint32_t mau = 0;
    const auto het = DongHo::now() + 2s;
    while (DongHo::now() < het) {
        x.to(++mau, 0, 0, x.rong(), 64);
        while (nhan.dangCho() > 0) {
            auto m = nhan.lay();
            cacLuc.push_back(m->luc);
            tra(std::move(m->khung));
        }
    }
    x.to(0xFF00FF, 0, 0, x.rong(), 64);
    EXPECT_TRUE(choMau({0xFF00FF}, 500, 32));
    ASSERT_GE(cacLuc.size(), 5U);
    EXPECT_LE(cacLuc.size(), 25U);  // two seconds and the first one
}

TEST_F(ManHinhX11, khungDuocThuPhongTheoCauHinh) {
    x.to(0xFF8000, 320, 200, 320, 200);
    const auto nguon = lietKe().at(0);
    ManHinh::CauHinh cauHinh;
    cauHinh.co = {641, 401};
    mo(nguon, cauHinh);
    auto anh = khungToi();
    EXPECT_EQ(std::pair(anh.rong, anh.cao), std::pair(641, 401));
    EXPECT_EQ(anh.tai(240, 150), Mau{0xFF8000});
    EXPECT_EQ(anh.tai(100, 150), Mau{0x203040});
    x.to(0x00FF80, 640, 400, 320, 200);
    EXPECT_TRUE(choMau({0x00FF80}, 400, 250));
    choYen();
    for (const KichThuoc co : {KichThuoc{320, 200}, {1600, 1001}, {1280, 800}}) {
        cauHinh.co = co;
        luong->doiCauHinh(cauHinh);  // causes a frame by itself
        anh = khungToi();
        EXPECT_EQ((KichThuoc{anh.rong, anh.cao}), co);
        EXPECT_EQ(anh.tai(static_cast<int>(co.rong * 3 / 8), static_cast<int>(co.cao * 3 / 8)),
                  Mau{0xFF8000});
        EXPECT_EQ(anh.tai(static_cast<int>(co.rong * 5 / 8), static_cast<int>(co.cao * 5 / 8)),
                  Mau{0x00FF80});
    }
}

TEST_F(ManHinhX11, khungDangGiuKhongDoiVaHetDemThiChoTra) {
    x.to(0xFF0000, 0, 0, 200, 200);
    mo();
    std::vector<std::unique_ptr<ManHinh::Khung>> giu;
    const std::uint32_t mau[] = {0xFF0000, 0x00FF00, 0x0000FF};
    for (const auto m : mau) {
        x.to(m, 0, 0, 200, 200);
        for (;;) {  // the first picture may have been taken before or after the drawing
            auto k = nhan.lay();
            ASSERT_TRUE(k);
            const bool dung = giai(*k->khung).tai(100, 100) == Mau{m};
            if (dung) giu.push_back(std::move(k->khung));
            if (dung) break;
            tra(std::move(k->khung));
        }
        choYen();
    }
    // All three buffers are held: changes wait, and what is held stays as it was.
    x.to(0x101010, 0, 0, 200, 200);
    x.to(0xF0F0F0, 0, 0, 200, 200);
    troiQua(0.4);
    EXPECT_EQ(nhan.dangCho(), 0U);
    for (std::size_t i = 0; i < giu.size(); ++i)
        EXPECT_EQ(giai(*giu[i]).tai(100, 100), Mau{mau[i]});
    tra(std::move(giu[1]));
    EXPECT_EQ(khungToi().tai(100, 100), Mau{0xF0F0F0});
    EXPECT_EQ(giai(*giu[0]).tai(100, 100), Mau{0xFF0000});
    // A frame outlives its stream.
    luong.reset();
    EXPECT_EQ(giai(*giu[2]).tai(100, 100), Mau{0x0000FF});
    tra(std::move(giu[0]));
    tra(std::move(giu[2]));
}

TEST_F(ManHinhX11, dungLaKhongConCuocGoiNao) {
    for (int luot = 0; luot < 20; ++luot) {
        std::atomic<bool> song{true};
        std::atomic<int> tre{0};
        const auto nguon = lietKe().at(0);
        ManHinh::CauHinh cauHinh;
        cauHinh.co = nguon.diemAnh;
        cauHinh.khungMoiGiay = 1000;
        const auto dem = [&](auto&&...) {
            if (!song) ++tre;
        };
        auto kq = nen->moLuong(nguon, cauHinh, {dem, dem});
        ASSERT_TRUE(kq);
        auto l = std::move(kq).giaTri();
        l->batDau(dem);
        for (std::uint32_t i = 0; i < 20U * static_cast<unsigned>(luot % 4); ++i)
            x.to(i, 0, 0, 50, 50);
        l.reset();
        song = false;
        x.to(0, 0, 0, 50, 50);
        trenHangDoi([] {});
        EXPECT_EQ(tre, 0);
    }
    // From within its own callback, on the frame queue.
    std::promise<void> xong;
    auto kq = nen->moLuong(lietKe().at(0), {},
                           {[&](auto) {
                                luong.reset();
                                xong.set_value();
                            },
                            [](auto) {}});
    ASSERT_TRUE(kq);
    luong = std::move(kq).giaTri();
    luong->batDau([](auto) {});
    EXPECT_EQ(xong.get_future().wait_for(hanCho), std::future_status::ready);
    trenHangDoi([] {});
}

TEST_F(ManHinhX11, manHinhTatThiLuongKetThuc) {
    mo();
    choYen();
    ASSERT_TRUE(x.tatManHinhDau());
    const auto loi = nhan.choLoi();
    x.batLaiManHinhDau();
    ASSERT_TRUE(loi);
    EXPECT_EQ(loi->ma, ManHinh::maManHinhDoi);
    // A display that is not there any more cannot be opened either: the stream ends at once.
    auto nguon = lietKe().at(0);
    nguon.khung.rong -= 1;
    BoNhan khac;
    auto kq = nen->moLuong(nguon, {}, khac.phiaNhan());
    ASSERT_TRUE(kq);
    luong = std::move(kq).giaTri();
    luong->batDau([](auto) {});
    EXPECT_TRUE(khac.choLoi());
    luong.reset();
}

TEST_F(ManHinhX11, matKetNoiVoiMayChuXThiLuongKetThuc) {
    mo();
    choYen();
    x.ngatKhachKhac();
    const auto loi = nhan.choLoi();
    ASSERT_TRUE(loi);
    EXPECT_NE(loi->ma, ManHinh::maManHinhDoi);
    mo();  // and another one can be started
    EXPECT_EQ(khungToi().tai(640, 400), Mau{0x203040});
}

TEST_F(ManHinhX11, giuThucGiuManHinhKhongTat) {
    x.theoDoiBaoVe(1);
    EXPECT_TRUE(x.choBaoVe(10s));  // an idle screen is blanked
    x.tatBaoVe();
    nen->giuThuc(true);
    EXPECT_FALSE(x.choBaoVe(2500ms));
    nen->giuThuc(false);
    EXPECT_TRUE(x.choBaoVe(10s));
    x.theoDoiBaoVe(0);
}

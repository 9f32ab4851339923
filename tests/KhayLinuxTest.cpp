// The status item in a real status area: its picture, its menu opened and clicked.

#include "KhayLinux.hpp"

#include <gtest/gtest.h>
#include <xcb/xtest.h>

#include <QApplication>
#include <QMainWindow>
#include <QTimer>

#include "KiemQuyen.hpp"
#include "gia/PhongWebLinux.hpp"
#include "gia/WebGia.hpp"
#include "x11/KhayXGia.hpp"

using namespace tovira;
using gia::cho;

namespace {

class KhayLinuxThu : public testing::Test {
  protected:
    gia::NenLinhTinhGia khac;
    gia::NenDieuKhienGia nenNhap;
    gia::NenManHinhGia nenMan;
    gia::CaiDatGia caiDat;
    ThamSo thamSo = ThamSo::tinh({"tovira", "--server", "https://thu.example"}, caiDat);
    KiemQuyen kiemQuyen{khac, nenNhap, nenMan};
    bool dangPhat = false;
    QMainWindow cua;
    KhayLinux nen{[this] { return cua.menuBar(); }};
    Khay khay{{nen, kiemQuyen, [this] { return dangPhat; }, khac, khac, thamSo}};
    ManX x = moManX();

    void bam(QPoint cho, std::uint8_t nut) {
        xcb_test_fake_input(x.c(), XCB_MOTION_NOTIFY, 0, 0, x.goc(), static_cast<std::int16_t>(cho.x()),
                            static_cast<std::int16_t>(cho.y()), 0);
        for (const auto loai : {XCB_BUTTON_PRESS, XCB_BUTTON_RELEASE})
            xcb_test_fake_input(x.c(), static_cast<std::uint8_t>(loai), nut, 0, x.goc(), 0, 0, 0);
        xcb_flush(x.c());
    }
    static QMenu* menuDangMo() { return qobject_cast<QMenu*>(QApplication::activePopupWidget()); }

    // An item may be replaced by another one after it has come.
    bool moMenu(thu::KhayXGia& khayX) {
        for (int lan = 0; lan < 5; ++lan) {
            bam({khayX.canh / 3, khayX.canh / 3}, 3);
            if (cho([&] { return khayX.lam() && menuDangMo() != nullptr; }, 2)) return true;
        }
        return false;
    }

    // What stands in the menu that is open, with separators as "-", disabled items in brackets.
    static std::vector<std::string> doc(const QMenu& menu) {
        std::vector<std::string> ra;
        for (const QAction* m : menu.actions())
            ra.push_back(m->isSeparator() ? "-"
                         : m->isEnabled() ? m->text().toStdString()
                                          : "[" + m->text().toStdString() + "]");
        return ra;
    }
    void chon(QMenu& menu, const char* ten) {
        for (QAction* m : menu.actions())
            if (m->text() == QString::fromUtf8(ten))
                return bam(menu.mapToGlobal(menu.actionGeometry(m).center()), 1);
        ADD_FAILURE() << ten;
    }
};

}  // namespace

TEST_F(KhayLinuxThu, menuMoTuKhayVaBamDuoc) {
    thu::KhayXGia khayX;
    std::string goi;
    khay.dung();
    khay.khiMo = [&] { goi += "mở "; };
    khay.khiDungChiaSe = [&] { goi += "dừng "; };
    ASSERT_TRUE(cho([&] { return khayX.lam(); }));
    EXPECT_TRUE(khay.coChoDat());
    EXPECT_EQ(cua.menuBar()->cornerWidget(), nullptr);
    EXPECT_EQ(khayX.soDiemDo(), 0);

    nenNhap.phep = false;
    ASSERT_TRUE(moMenu(khayX));
    EXPECT_EQ(doc(*menuDangMo()),
              (std::vector<std::string>{"Mở Tovira", "-", "✓  Ghi màn hình", "✗  Trợ năng",
                                        "↻  Bật rồi mà vẫn ✗ — Mở lại Tovira", "-", "Chạy cùng macOS",
                                        "[Hỗ trợ màn hình khoá]", "-", "Hướng dẫn", "Giới thiệu", "-",
                                        "[Máy chủ: https://thu.example]", "Thoát Tovira"}));
    EXPECT_EQ(menuDangMo()->actions()[3]->toolTip(),
              QStringLiteral("Chưa cấp — hoặc vừa cấp mà chưa mở lại ứng dụng. Bấm để mở Cài đặt hệ thống."));
    EXPECT_TRUE(menuDangMo()->toolTipsVisible());
    chon(*menuDangMo(), "Mở Tovira");
    EXPECT_TRUE(cho([&] { return goi == "mở " && menuDangMo() == nullptr; })) << goi;

    nenNhap.phep = true;
    dangPhat = true;
    khay.capNhatBieuTuong(true);
    EXPECT_TRUE(cho([&] { return khayX.soDiemDo() > 20; })) << khayX.soDiemDo();
    ASSERT_TRUE(moMenu(khayX));
    auto dau = doc(*menuDangMo());
    EXPECT_EQ(dau.size(), 16U) << "no relaunch line";
    dau.resize(4);
    EXPECT_EQ(
        dau, (std::vector<std::string>{"[● Đang bị điều khiển]", "Dừng chia sẻ màn hình", "-", "Mở Tovira"}));
    chon(*menuDangMo(), "Dừng chia sẻ màn hình");
    EXPECT_TRUE(cho([&] { return goi == "mở dừng "; })) << goi;
    khay.capNhatBieuTuong(false);
    EXPECT_TRUE(cho([&] { return khayX.soDiemDo() == 0; }));
}

TEST_F(KhayLinuxThu, khongCoKhayThiMenuOTrenNut) {
    ASSERT_TRUE(cho([&] { return !khay.coChoDat(); }));
    khay.dung();
    cua.show();
    auto* nut = qobject_cast<QToolButton*>(cua.menuBar()->cornerWidget());
    ASSERT_NE(nut, nullptr);
    ASSERT_TRUE(cho([&] { return nut->isVisible() && cua.isActiveWindow(); }));
    EXPECT_EQ(nut->toolTip(), QStringLiteral("Tovira — máy này có thể được điều khiển từ xa"));
    std::string goi;
    khay.khiDungChiaSe = [&] { goi += "dừng "; };
    dangPhat = true;
    khay.capNhatBieuTuong(true);
    EXPECT_EQ(nut->toolTip(), QStringLiteral("Tovira — máy này ĐANG BỊ ĐIỀU KHIỂN"));
    // A menu on a button runs its own loop: look at it from within.
    QTimer::singleShot(0, nut, [&] {
        EXPECT_TRUE(cho([&] { return menuDangMo() != nullptr; }));
        if (menuDangMo() != nullptr) chon(*menuDangMo(), "Dừng chia sẻ màn hình");
    });
    nut->showMenu();
    EXPECT_TRUE(cho([&] { return goi == "dừng "; })) << goi;
}

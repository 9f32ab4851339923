// Pop-ups on a real engine: one at a time, whatever the page of the old one is in the middle of.

#include <QFileDialog>
#include <QPointer>
#include <QScreen>

#include "gia/DongCoWeb.hpp"
#include "gia/NguoiDungQt.hpp"

using namespace tovira;
using gia::cho;

namespace {

class CuaSoTachLinuxThu : public testing::Test, public gia::PhongWebLinux {
  protected:
    CuaSoTachLinuxThu() {
        auto& may = gia::mayChuTrang();
        may.trang.clear();
        may.trang["/app"] = {"<!doctype html><title>app</title>"};
    }

    // The pop-up in sight that is not this one; null when there is none.
    QWidget* tachHien(const QWidget* tru = nullptr) {
        for (auto* w : QApplication::topLevelWidgets())
            if (w != &cua && w != tru && w->isVisible() && w->findChild<QWebEngineView*>() != nullptr)
                return w;
        return nullptr;
    }
    static QWebEnginePage& trangCua(const QWidget& cuaSoTach) {
        return *cuaSoTach.findChild<QWebEngineView*>()->page();
    }
    QPointer<QWidget> moTach(const char* ten) {
        const QWidget* cu = tachHien();
        js(std::string("window.") + ten + " = open('', '" + ten + "'); 1");
        EXPECT_TRUE(cho([&] { return tachHien(cu) != nullptr; })) << ten;
        return tachHien(cu);
    }
};

}  // namespace

TEST_F(CuaSoTachLinuxThu, tungCaiMot) {
    len();
    const auto dem = [] {
        int so = 0;
        for (auto* w : QApplication::topLevelWidgets())
            if (w->isVisible() && w->findChild<QWebEngineView*>() != nullptr) ++so;
        return so;
    };
    js("window.mot = window.open('', 'mot', 'width=520,height=400'); mot.document.title = 'mot'; 1");
    ASSERT_TRUE(cho([&] { return dem() == 2; }));
    js("window.hai = window.open('', 'hai'); 1");
    EXPECT_TRUE(choJs("mot.closed && !hai.closed")) << "a new one closes the old one";
    EXPECT_TRUE(cho([&] { return dem() == 2; }));
    // The user closes it: its page closes itself.
    for (auto* w : QApplication::topLevelWidgets())
        if (w != &cua && w->isVisible() && w->findChild<QWebEngineView*>() != nullptr) w->close();
    EXPECT_TRUE(choJs("hai.closed"));
    EXPECT_EQ(dem(), 1);
}

// What the opener writes into it is seen, whether it is written at once or later.
TEST_F(CuaSoTachLinuxThu, trangTrongDuocVietVao) {
    len();
    const auto thayMau = [](QColor mau) {
        const QImage anh = QGuiApplication::primaryScreen()->grabWindow(0).toImage();
        for (int y = 0; y < anh.height(); y += 9)
            for (int x = 0; x < anh.width(); x += 9)
                if (anh.pixelColor(x, y) == mau) return true;
        return false;
    };
    const auto viet = [](const char* mau) {
        return std::string("mot.document.write('<title>mot</title><style>html { background: ") + mau +
               "; }</style>'); 1";
    };
    js("window.mot = open('', 'mot'); " + viet("#00ccff"));
    EXPECT_TRUE(cho([&] { return thayMau(QColor(0x00, 0xcc, 0xff)); }));
    js("mot.close(); 1");
    ASSERT_TRUE(cho([&] { return tachHien() == nullptr; })) << "its opener may close it";
    const auto hai = moTach("mot");
    js(viet("#ccff00"));
    EXPECT_TRUE(cho([&] { return thayMau(QColor(0xcc, 0xff, 0x00)); }));
}

// Within a question of any page the engine stands still, so that no page can ask for the new pop-up then: the
// request comes to the host all the same, as from one that asked just before.
TEST_F(CuaSoTachLinuxThu, thayKhiTrangCuDangThongBao) {
    len();
    const auto cu = moTach("mot");
    khac.trongThongBao = [&] {
        khac.trongThongBao = nullptr;
        ASSERT_TRUE(cuaSo.khiXinTach("", {}, {}));
        EXPECT_TRUE(cho([&] { return tach.so() == 0; })) << "its page has had its time to close itself";
        EXPECT_TRUE(cu && !cu->isVisible()) << "the engine is still within a call of its page";
    };
    trangCua(*cu).runJavaScript(QStringLiteral("alert('mot'); alert('hai')"));
    EXPECT_TRUE(cho([&] { return cu.isNull(); }));
    EXPECT_EQ(khac.lay(), std::vector<std::string>{"thongBao mot"}) << "nothing more of it is shown";
    EXPECT_EQ(js("mot.closed"), "true");
    EXPECT_TRUE(moTach("hai"));
}

// The user closes it while its page is too busy to hear of that, and then asks something.
TEST_F(CuaSoTachLinuxThu, dongKhiTrangSapHoi) {
    len();
    const auto cu = moTach("mot");
    bool daThongBao = false;
    khac.trongThongBao = [&] {
        daThongBao = true;
        cu->close();
        EXPECT_TRUE(cho([&] { return tach.so() == 0; }));
        EXPECT_FALSE(cu.isNull());
    };
    trangCua(*cu).runJavaScript(QStringLiteral("alert('x')"));
    EXPECT_TRUE(cho([&] { return daThongBao && cu.isNull(); }));
    EXPECT_EQ(js("mot.closed"), "true");
}

TEST_F(CuaSoTachLinuxThu, thayKhiTrangCuDangXinTep) {
    len();
    const auto cu = moTach("mot");
    js("mot.document.write('<title>mot</title><input type=file "
       "style=\"position:fixed;width:100%;height:100%\">'); 1");
    const gia::KhiCoBang<QFileDialog> hoi([&](QFileDialog* bang) {
        EXPECT_EQ(bang->parentWidget(), cu);
        EXPECT_TRUE(cuaSo.khiXinTach("", {}, {}));
    });
    auto* nhan = cu->findChild<QWebEngineView*>()->focusProxy();
    ASSERT_TRUE(choJs("mot.document.querySelector('input').clientWidth > 300"));
    gia::bamChuot(nhan, {40, 15});
    EXPECT_TRUE(cho([&] { return hoi.thay() && cu.isNull(); })) << "the panel goes with its window";
    EXPECT_EQ(QApplication::activeModalWidget(), nullptr);
    EXPECT_EQ(js("mot.closed"), "true");
    EXPECT_EQ(tach.so(), 0U);
}

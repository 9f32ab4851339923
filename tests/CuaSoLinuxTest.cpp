// The main window on a real X server with a window manager: its frame, its menu, and above all that a page
// goes on rendering while nobody can see it.

#include "CuaSoLinux.hpp"

#include <QAction>
#include <QFileDialog>
#include <QLineEdit>
#include <QMenu>
#include <QMenuBar>
#include <QMessageBox>
#include <QPushButton>
#include <QScreen>
#include <QTemporaryDir>

#include "BaoMaMayLinux.hpp"
#include "HopBaoLinux.hpp"
#include "gia/DongCoWeb.hpp"
#include "gia/NguoiDungQt.hpp"
#include "gia/TienTrinh.hpp"

using namespace tovira;
using gia::cho;

namespace {

class CuaSoLinuxThu : public testing::Test, public gia::PhongWebLinux {
  protected:
    CuaSoLinuxThu() {
        gia::mayChuTrang().trang["/app"] = {R"html(<!doctype html><title>app</title>
            <style>html { background: #ff00aa; height: 100% }</style>
            <input id="o" value="chu trong o"><input id="t" type="file" style="position:fixed;left:0;top:0;width:100%;height:50px">
            <script>window.n = 0; (function ve() { n++; requestAnimationFrame(ve); })();</script>)html"};
    }

    // The page draws at least 20 more frames.
    bool dangVe() {
        const int dau = std::stoi(js("n"));
        return cho([&] { return std::stoi(js("n")) >= dau + 20; }, 5);
    }
    // Does the page's colour show anywhere on the screen?
    static bool thayTrang() {
        const QImage anh = QGuiApplication::primaryScreen()->grabWindow(0).toImage();
        for (int y = 0; y < anh.height(); y += 3)
            for (int x = 0; x < anh.width(); x += 3)
                if (anh.pixelColor(x, y) == QColor(0xff, 0x00, 0xaa)) return true;
        return false;
    }
    // Parked: rendering, out of sight, and without the focus.
    void xemDoXa(const char* cach) {
        EXPECT_TRUE(cho([&] { return !cua.isVisible() && trang.khungNhin().window() != &cua; })) << cach;
        EXPECT_TRUE(dangVe()) << cach;
        EXPECT_TRUE(cho([] { return !thayTrang(); }, 5)) << cach;
        EXPECT_EQ(QGuiApplication::focusWindow(), nullptr) << cach;
        EXPECT_EQ(js("document.visibilityState"), "visible") << cach;
        EXPECT_TRUE(cua.trangThai().hienRa) << cach;
    }
    void xemTroLai(const char* cach, QPoint choCu) {
        EXPECT_TRUE(cho([&] { return cua.isVisible() && cua.isActiveWindow() && thayTrang(); })) << cach;
        EXPECT_EQ(trang.khungNhin().window(), &cua) << cach;
        EXPECT_EQ(cua.pos(), choCu) << cach;
        EXPECT_TRUE(dangVe()) << cach;
    }
    QAction* mucMenu(const char* ten) {
        for (auto* m : cua.menuBar()->actions())
            for (auto* a : m->menu()->actions())
                if (a->text() == QString::fromUtf8(ten)) return a;
        return nullptr;
    }
};

}  // namespace

TEST_F(CuaSoLinuxThu, veTiepKhiKhongAiThay) {
    len();
    ASSERT_TRUE(cho([&] { return cua.isActiveWindow() && thayTrang(); }));
    EXPECT_EQ(trang.khungNhin().size(), QSize(1180, 780));
    phat();
    const QPoint choCu = cua.pos();

    cua.close();
    xemDoXa("closed");
    cuaSo.hien();
    xemTroLai("closed", choCu);

    cua.showMinimized();
    xemDoXa("minimised");
    cuaSo.hien();
    xemTroLai("minimised", choCu);

    const auto sangBan = [](const char* so) {
        return gia::TienTrinh({"xdotool", "set_desktop", so}).doiHet();
    };
    ASSERT_EQ(sangBan("1"), 0);
    xemDoXa("on another desktop");
    ASSERT_EQ(sangBan("0"), 0);
    cuaSo.hien();
    xemTroLai("on another desktop", choCu);

    {
        QWidget che;
        che.setStyleSheet(QStringLiteral("background: #204060"));
        che.showFullScreen();
        ASSERT_TRUE(cho([] { return !thayTrang(); }));
        EXPECT_TRUE(dangVe()) << "covered";
    }
    ASSERT_TRUE(cho([] { return thayTrang(); }));

    mucMenu("Ẩn Tovira")->trigger();
    xemDoXa("hidden by the menu");
    cuaSo.boDo();
    EXPECT_TRUE(cho([&] { return !cua.isVisible() && trang.khungNhin().window() == &cua; }))
        << "the share has ended";
    EXPECT_FALSE(cua.trangThai().hienRa);
    cuaSo.damBaoDangVe();
    xemDoXa("hidden before the share began");
    cuaSo.hien();
    xemTroLai("hidden before the share began", choCu);

    manHinh.dung();
    cua.close();
    EXPECT_TRUE(cho([] { return !thayTrang(); }));
    EXPECT_FALSE(cua.trangThai().hienRa) << "not sharing: closing hides";
    cua.raTruoc();
    cua.an();
    lang();
    EXPECT_FALSE(cua.isVisible()) << "the newer wish counts";
}

TEST_F(CuaSoLinuxThu, nhoChoCuaMinh) {
    len();
    ASSERT_TRUE(cho([&] { return cua.isActiveWindow(); }));
    cua.resize(1000, 700);
    cua.move(300, 120);
    ASSERT_TRUE(cho([&] { return cua.size() == QSize(1000, 700) && cua.pos() == QPoint(300, 120); }));
    ASSERT_TRUE(cho([&] { return caiDat.kho.count("cua-so-chinh") == 1; }));
    const auto saved = [&](const std::string& chu) {
        QMainWindow w;
        w.setMinimumSize(900, 600);
        w.restoreGeometry(QByteArray::fromBase64(QByteArray::fromStdString(chu)));
        return w.geometry();
    };
    ASSERT_TRUE(cho([&] { return saved(caiDat.kho["cua-so-chinh"]) == cua.geometry(); }));
    const auto truoc = caiDat.kho["cua-so-chinh"];
    phat();
    cua.close();
    xemDoXa("closed");
    cuaSo.hien();
    xemTroLai("closed", QPoint(300, 120));
    manHinh.dung();
    EXPECT_EQ(saved(caiDat.kho["cua-so-chinh"]), saved(truoc)) << "never the parking place";

    // Saved where no screen is: brought back.
    QWidget xa;
    xa.setGeometry(7000, 5000, 1000, 700);
    gia::CaiDatGia khac2;
    khac2.ghi("cua-so-chinh", xa.saveGeometry().toBase64().toStdString());
    TrangLinux trang2(gia::hoSoChung(), tach);
    CuaSoLinux cua2(trang2, khac2);
    trang2.dung(cuaSo);
    cua2.dung(cuaSo);
    EXPECT_TRUE(QGuiApplication::primaryScreen()->geometry().contains(cua2.geometry().center()))
        << cua2.x() << cua2.y();
}

TEST_F(CuaSoLinuxThu, menuDenTrang) {
    len();
    ASSERT_TRUE(cho([&] { return cua.isActiveWindow(); }));
    ASSERT_EQ(cua.menuBar()->actions().size(), 3);
    EXPECT_EQ(mucMenu("Làm lại")->shortcut(), QKeySequence(QStringLiteral("Ctrl+Shift+Z")));
    EXPECT_EQ(mucMenu("Thoát Tovira")->shortcut(), QKeySequence(QStringLiteral("Ctrl+Q")));
    js("document.getElementById('o').focus(); 1");
    mucMenu("Chọn tất cả")->trigger();
    EXPECT_TRUE(choJs("String(getSelection()) === 'chu trong o'"));
    mucMenu("Cắt")->trigger();
    EXPECT_TRUE(choJs("document.getElementById('o').value === ''"));
    mucMenu("Dán")->trigger();
    EXPECT_TRUE(choJs("document.getElementById('o').value === 'chu trong o'"));
    mucMenu("Hoàn tác")->trigger();
    EXPECT_TRUE(choJs("document.getElementById('o').value === ''"));
    std::vector<LenhMenu> chon;
    cua.khiChonMenu = [&](LenhMenu l) { chon.push_back(l); };
    mucMenu("Thoát Tovira")->trigger();
    mucMenu("Giới thiệu Tovira")->trigger();
    EXPECT_EQ(chon, (std::vector{LenhMenu::thoat, LenhMenu::gioiThieu}));
}

// On a small screen too the whole window is to be seen. (Run on one of 1280×800 as well.)
TEST_F(CuaSoLinuxThu, vuaManHinh) {
    len();
    ASSERT_TRUE(cho([&] { return cua.isActiveWindow() && thayTrang(); }));
    const QRect thay = cua.screen()->availableGeometry();
    EXPECT_TRUE(thay.contains(cua.frameGeometry()))
        << cua.frameGeometry().top() << " " << cua.frameGeometry().bottom();
    const QSize nhin = trang.khungNhin().size();
    EXPECT_EQ(nhin.width(), 1180);
    EXPECT_TRUE(nhin.height() == 780 || cua.frameGeometry().height() > thay.height() - 40) << nhin.height();
}

TEST_F(CuaSoLinuxThu, menuChuotPhai) {
    len();
    ASSERT_TRUE(cho([&] { return cua.isActiveWindow() && thayTrang(); }));
    js("document.body.style.margin = '80px 0 0'; 1");
    const auto bamPhai = [&](QPoint cho) {
        gia::bamChuot(trang.khungNhin().focusProxy(), cho, Qt::RightButton);
    };
    const auto menu = [] { return qobject_cast<QMenu*>(QApplication::activePopupWidget()); };
    const auto cacMuc = [&] {
        QStringList ra;
        for (auto* a : menu()->actions())
            ra << (a->isSeparator() ? QStringLiteral("-") : a->text());
        return ra.join(u'|').toStdString();
    };
    bamPhai(QPoint(30, 90));
    ASSERT_TRUE(cho([&] { return menu() != nullptr; }));
    EXPECT_EQ(cacMuc(), "Hoàn tác|Làm lại|-|Cắt|Sao chép|Dán|Chọn tất cả");
    for (auto* a : menu()->actions())
        if (a->text() == QStringLiteral("Chọn tất cả")) a->trigger();
    menu()->close();
    EXPECT_TRUE(choJs("String(getSelection()) === 'chu trong o'"));
    ASSERT_TRUE(cho([&] { return menu() == nullptr; }));
    // Where nothing can be edited and nothing is chosen there is nothing to offer.
    js("getSelection().removeAllRanges(); document.activeElement.blur(); window.phai = 0; "
       "addEventListener('contextmenu', function () { phai++; }); 1");
    bamPhai(QPoint(600, 500));
    EXPECT_TRUE(choJs("phai === 1"));
    lang();
    EXPECT_EQ(menu(), nullptr);
}

TEST_F(CuaSoLinuxThu, oChonTep) {
    len();
    ASSERT_TRUE(cho([&] { return cua.isActiveWindow() && thayTrang(); }));
    struct Muc {
        const char* thuocTinh;
        QFileDialog::FileMode kieu;
        const char* nut;
        const char* ra;
    };
    const QString tep = QString::fromStdString((tam.duong() / "gửi.txt").string());
    ASSERT_TRUE(QFile(tep).open(QIODevice::WriteOnly));
    for (const auto& m : {Muc{"", QFileDialog::ExistingFile, "Gửi", "gửi.txt"},
                          Muc{"multiple", QFileDialog::ExistingFiles, "Gửi", "gửi.txt"},
                          Muc{"webkitdirectory", QFileDialog::Directory, "Gửi thư mục này", "gửi.txt"}}) {
        js(std::string(
               "(function () { var t = document.getElementById('t'); t.value = ''; t.multiple = false; "
               "t.webkitdirectory = false; if ('") +
           m.thuocTinh + "') t['" + m.thuocTinh + "'] = true; })(); 1");
        const gia::KhiCoBang<QFileDialog> hoi([&](QFileDialog* bang) {
            EXPECT_EQ(bang->fileMode(), m.kieu);
            EXPECT_EQ(bang->labelText(QFileDialog::Accept).toStdString(), m.nut);
            EXPECT_EQ(bang->parentWidget(), &cua) << "a sheet on the window";
            EXPECT_EQ(bang->windowModality(), Qt::WindowModal);
            bang->setDirectory(QFileInfo(tep).path());
            // Typed: the list of files fills by and by.
            if (m.kieu != QFileDialog::Directory)
                bang->findChild<QLineEdit*>(QStringLiteral("fileNameEdit"))
                    ->setText(QFileInfo(tep).fileName());
            bang->QDialog::accept();
        });
        auto* nhan = trang.khungNhin().focusProxy();
        gia::bamChuot(nhan, {300, 25});
        EXPECT_TRUE(cho([&] { return hoi.thay(); })) << m.thuocTinh;
        EXPECT_TRUE(choJs("document.getElementById('t').files.length >= 1")) << m.thuocTinh;
        EXPECT_EQ(js("[].map.call(document.getElementById('t').files, f => f.name).join('|')"), m.ra)
            << m.thuocTinh
            << js("[].map.call(document.getElementById('t').files, f => f.webkitRelativePath).join('|')");
    }
}

TEST(HopBaoLinux, motNutVaChuTron) {
    HopBaoLinux hop;
    const gia::KhiCoBang<QMessageBox> hoi([](QMessageBox* bang) {
        EXPECT_EQ(bang->text(), QStringLiteral("Tiêu đề"));
        EXPECT_EQ(bang->informativeText(), QStringLiteral("<b>chi tiết</b>"));
        EXPECT_EQ(bang->textFormat(), Qt::PlainText);
        ASSERT_EQ(bang->buttons().size(), 1);
        EXPECT_EQ(bang->buttons()[0]->text(), QStringLiteral("Đã hiểu"));
        bang->buttons()[0]->click();
    });
    hop.canhBao("Tiêu đề", "<b>chi tiết</b>");
    EXPECT_TRUE(hoi.thay());
    // Gone with the window that it belonged to, it counts as answered.
    QTimer mat;
    QObject::connect(&mat, &QTimer::timeout, &mat, [&] {
        if (auto* bang = qobject_cast<QMessageBox*>(QApplication::activeModalWidget())) delete bang;
    });
    mat.start(10);
    hop.thongBao("x");
    EXPECT_EQ(QApplication::activeModalWidget(), nullptr);
}

TEST_F(CuaSoLinuxThu, maMayVaMatKhauChoKichBanDaMo) {
    len();
    const QTemporaryDir thuMuc;
    const QString tep = thuMuc.filePath(QStringLiteral("ma"));
    const auto doc = [&] {
        QFile f(tep);
        return f.open(QIODevice::ReadOnly) ? f.readAll().toStdString() : std::string();
    };
    const BaoMaMayLinux bao(trang, tep);
    js("document.body.innerHTML = '<output id=ma-may></output><output id=mat-khau data-gia=abc23></output>'");
    js("document.getElementById('ma-may').dataset.gia = '123456789'");
    EXPECT_TRUE(cho([&] { return doc() == "123456789\nabc23\n"; })) << doc();
    EXPECT_EQ(QFileInfo(tep).permissions() & 0x077, QFileDevice::Permissions());
    js("document.getElementById('mat-khau').dataset.gia = 'moi45'");
    EXPECT_TRUE(cho([&] { return doc() == "123456789\nmoi45\n"; })) << doc();
    EXPECT_EQ(QDir(thuMuc.path()).entryList(QDir::Files).size(), 1);
}

// Revealing a file, on a message bus of the test's own: by the file manager where there is one, else as a
// folder.

#include "TepNguoiDungLinux.hpp"

#include <gtest/gtest.h>

#include <QDBusConnection>
#include <QDBusConnectionInterface>
#include <QDesktopServices>
#include <QGuiApplication>
#include <QUrl>

#include "gia/ChoQt.hpp"
#include "gia/ThuMucTam.hpp"

using namespace tovira;
using gia::cho;

// What a file manager offers.
class QuanLyTep : public QObject {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.freedesktop.FileManager1")
  public:
    QStringList nhan;
  public Q_SLOTS:
    void ShowItems(const QStringList& cac, const QString& /*ma*/) { nhan += cac; }
};

// Takes what would be opened on the desktop.
class ManHinhNen : public QObject {
    Q_OBJECT
  public:
    QStringList nhan;
  public Q_SLOTS:
    void mo(const QUrl& url) { nhan += url.toLocalFile(); }
};

TEST(TepNguoiDungLinux, hienTrongQuanLyTepHoacMoThuMuc) {
    const gia::ThuMucTam tam;
    const std::string tep = (tam / "ảnh 100%#.txt").string();
    gia::ghiTep(tep, "x");
    TepNguoiDungLinux nguoiDung;
    ManHinhNen nen;
    QDesktopServices::setUrlHandler(QStringLiteral("file"), &nen, "mo");

    // Nobody offers it on this bus.
    nguoiDung.hien(tep);
    EXPECT_TRUE(cho([&] { return !nen.nhan.isEmpty(); }));
    EXPECT_EQ(nen.nhan, QStringList{QString::fromStdString(tam.duong().string())});
    nguoiDung.hien(tam.duong().string());
    EXPECT_TRUE(cho([&] { return nen.nhan.size() == 2; }));
    EXPECT_EQ(nen.nhan[1], nen.nhan[0]) << "a folder is opened itself";

    nen.nhan.clear();
    QuanLyTep quanLy;
    auto bus = QDBusConnection::connectToBus(QDBusConnection::SessionBus, QStringLiteral("quan-ly-tep"));
    ASSERT_TRUE(bus.isConnected()) << "run it under dbus-run-session";
    ASSERT_TRUE(bus.registerObject(QStringLiteral("/org/freedesktop/FileManager1"), &quanLy,
                                   QDBusConnection::ExportAllSlots));
    ASSERT_TRUE(bus.registerService(QStringLiteral("org.freedesktop.FileManager1")));
    nguoiDung.hien(tep);
    EXPECT_TRUE(cho([&] { return !quanLy.nhan.isEmpty(); }));
    EXPECT_EQ(QUrl(quanLy.nhan.value(0)).toLocalFile().toStdString(), tep)
        << quanLy.nhan.value(0).toStdString();
    EXPECT_EQ(quanLy.nhan.size(), 1);
    EXPECT_TRUE(nen.nhan.isEmpty());
    QDesktopServices::unsetUrlHandler(QStringLiteral("file"));
}

int main(int soThamSo, char** thamSo) {
    testing::InitGoogleTest(&soThamSo, thamSo);
    qputenv("QT_QPA_PLATFORM", "offscreen");
    const QGuiApplication ung(soThamSo, thamSo);
    return RUN_ALL_TESTS();
}

#include "TepNguoiDungLinuxTest.moc"

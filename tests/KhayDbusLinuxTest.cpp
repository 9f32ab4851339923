// The whole program on a desktop whose status area is a StatusNotifier host, on a message bus of the test's
// own: its item, its menu from live state, and what comes of choosing from it.

#include <gtest/gtest.h>

#include <QCoreApplication>
#include <QDBusArgument>
#include <QDBusConnection>
#include <QDBusConnectionInterface>
#include <QDBusMessage>
#include <QDBusVariant>
#include <string_view>

#include "ThietBiLinux.hpp"
#include "XcbLinux.hpp"
#include "x11/PhongDuong.hpp"

using namespace tovira;
using gia::choDen;
using gia::TienTrinh;

// What keeps the list of items. In a process of its own: programs ask it while the test waits for them.
class SoMuc : public QObject {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.kde.StatusNotifierWatcher")
    Q_PROPERTY(bool IsStatusNotifierHostRegistered READ coKhay)
    Q_PROPERTY(QStringList RegisteredStatusNotifierItems READ cacMuc)
  public:
    [[nodiscard]] bool coKhay() const { return true; }
    [[nodiscard]] QStringList cacMuc() const { return cacMuc_; }
  public Q_SLOTS:
    void RegisterStatusNotifierItem(const QString& ten) { cacMuc_ += ten; }

  private:
    QStringList cacMuc_;
};

namespace {

const auto tenSo = QStringLiteral("org.kde.StatusNotifierWatcher");

int chaySoMuc() {
    SoMuc so;
    auto bus = QDBusConnection::sessionBus();
    const bool duoc = bus.registerObject(QStringLiteral("/StatusNotifierWatcher"), &so,
                                         QDBusConnection::ExportAllContents) &&
                      bus.registerService(tenSo);
    return duoc ? QCoreApplication::exec() : 1;
}

struct MucMenu {
    int so = 0;
    QVariantMap thuocTinh;
};

// The items of the topmost level.
std::vector<MucMenu> docMenu(const QDBusArgument& goc) {
    std::vector<MucMenu> ra;
    MucMenu boQua;
    goc.beginStructure();
    goc >> boQua.so >> boQua.thuocTinh;
    goc.beginArray();
    while (!goc.atEnd()) {
        QDBusVariant con;
        goc >> con;
        const auto d = con.variant().value<QDBusArgument>();
        MucMenu muc;
        d.beginStructure();
        d >> muc.so >> muc.thuocTinh;
        d.endStructure();
        ra.push_back(muc);
    }
    goc.endArray();
    goc.endStructure();
    return ra;
}

// Number of clearly red pixels in all sizes of a picture.
int demDiemDo(const QDBusArgument& cacAnh) {
    int ra = 0;
    cacAnh.beginArray();
    while (!cacAnh.atEnd()) {
        int rong = 0;
        int cao = 0;
        QByteArray argb;
        cacAnh.beginStructure();
        cacAnh >> rong >> cao >> argb;
        cacAnh.endStructure();
        const auto kenh = [&](qsizetype i) { return static_cast<unsigned char>(argb[i]); };
        for (qsizetype i = 0; i + 3 < argb.size(); i += 4)
            ra += kenh(i) > 200 && kenh(i + 1) > 200 && kenh(i + 2) < 110 && kenh(i + 3) < 110;
    }
    cacAnh.endArray();
    return ra;
}

class KhayDbusTest : public thu::PhongDuong {
  protected:
    void moVoiKhay() {
        ASSERT_TRUE(bus.isConnected()) << "run it under dbus-run-session";
        ASSERT_TRUE(choDen([&] { return bus.interface()->isServiceRegistered(tenSo).value(); }));
        moTovira({}, "window.tovira");
        ASSERT_TRUE(choDen([&] {
            muc = thuocTinh(tenSo, "/StatusNotifierWatcher", tenSo, "RegisteredStatusNotifierItems")
                      .toStringList()
                      .value(0);
            return !muc.isEmpty();
        }));
    }

    QList<QVariant> goi(const QString& ai, const char* vat, const char* giaoDien, const char* ham,
                        const QVariantList& thamSo) {
        auto tin = QDBusMessage::createMethodCall(ai, QString::fromLatin1(vat), QString::fromLatin1(giaoDien),
                                                  QString::fromLatin1(ham));
        tin.setArguments(thamSo);
        const auto dap = bus.call(tin, QDBus::Block, 10000);
        EXPECT_EQ(dap.type(), QDBusMessage::ReplyMessage) << ham << dap.errorMessage().toStdString();
        return dap.arguments();
    }
    QVariant thuocTinh(const QString& ai, const char* vat, const QString& giaoDien, const char* ten) {
        const auto dap =
            goi(ai, vat, "org.freedesktop.DBus.Properties", "Get", {giaoDien, QString::fromLatin1(ten)});
        return dap.value(0).value<QDBusVariant>().variant();
    }
    int soDiemDo() {
        const auto anh =
            thuocTinh(muc, "/StatusNotifierItem", QStringLiteral("org.kde.StatusNotifierItem"), "IconPixmap");
        return demDiemDo(anh.value<QDBusArgument>());
    }

    // As a host does it when the user opens the menu.
    std::vector<MucMenu> moMenu() {
        const char* giaoDien = "com.canonical.dbusmenu";
        goi(muc, "/MenuBar", giaoDien, "AboutToShow", {0});
        const auto dap = goi(muc, "/MenuBar", giaoDien, "GetLayout", {0, -1, QStringList()});
        return docMenu(dap.value(1).value<QDBusArgument>());
    }
    // With separators as "-", disabled items in brackets.
    std::vector<std::string> docTenMenu() {
        std::vector<std::string> ra;
        for (const auto& [_, dong] : moMenu()) {
            const auto ten = dong.value(QStringLiteral("label")).toString().toStdString();
            ra.push_back(dong.value(QStringLiteral("type")) == QStringLiteral("separator") ? "-"
                         : dong.value(QStringLiteral("enabled"), true).toBool()            ? ten
                                                                                           : "[" + ten + "]");
        }
        return ra;
    }
    void chon(const char* ten) {
        for (const auto& [id, dong] : moMenu())
            if (dong.value(QStringLiteral("label")).toString() == QString::fromUtf8(ten)) {
                goi(muc, "/MenuBar", "com.canonical.dbusmenu", "Event",
                    {id, QStringLiteral("clicked"), QVariant::fromValue(QDBusVariant(0)), 0U});
                return;
            }
        ADD_FAILURE() << ten;
    }

    // How many dialogs of the program stand on the screen.
    int soHop() {
        const auto doc = [&](xcb_window_t cua, const char* ten) {
            return PhanXcb<xcb_get_property_reply_t>(xcb_get_property_reply(
                x.c(), xcb_get_property(x.c(), 0, cua, nguyenTuX(x.c(), ten), XCB_ATOM_ANY, 0, 1024),
                nullptr));
        };
        const auto cac = doc(x.goc(), "_NET_CLIENT_LIST");
        if (!cac) return 0;
        int ra = 0;
        const auto* cua = static_cast<const xcb_window_t*>(xcb_get_property_value(cac.get()));
        for (int i = 0; i < xcb_get_property_value_length(cac.get()) / 4; ++i) {
            const auto chu = doc(cua[i], "WM_TRANSIENT_FOR");
            ra += chu && xcb_get_property_value_length(chu.get()) == 4;
        }
        return ra;
    }
    // A dialog comes, and goes when it is told to.
    void doiHopVaDong() {
        ASSERT_TRUE(choDen([&] { return soHop() == 1; }));
        EXPECT_TRUE(choDen([&] {
            EXPECT_EQ(TienTrinh({"xdotool", "key", "Escape"}).doiHet(), 0);
            return soHop() == 0;
        }));
    }

    QString muc;  // who keeps the program's item
    QDBusConnection bus = QDBusConnection::sessionBus();
    TienTrinh so{{"/proc/self/exe", "--so-muc"}};
    ManX x = moManX();
};

}  // namespace

TEST_F(KhayDbusTest, mucDoKhiBiDieuKhienVaMenuTuTrangThaiThat) {
    moVoiKhay();
    EXPECT_EQ(soDiemDo(), 0);
    std::vector<std::string> mong{"Mở Tovira",
                                  "-",
                                  "✓  Ghi màn hình",
                                  "✓  Trợ năng",
                                  "-",
                                  "Chạy cùng macOS",
                                  "[Hỗ trợ màn hình khoá]",
                                  "-",
                                  "Hướng dẫn",
                                  "Giới thiệu",
                                  "-",
                                  "[Máy chủ: " + trang.goc() + "]",
                                  "Thoát Tovira"};
    EXPECT_EQ(docTenMenu(), mong);

    ASSERT_FALSE(chiaSe().empty());
    EXPECT_TRUE(choDen([&] { return soDiemDo() > 100; })) << soDiemDo();
    mong.insert(mong.begin(), {"[● Đang bị điều khiển]", "Dừng chia sẻ màn hình", "-"});
    EXPECT_EQ(docTenMenu(), mong);
    chon("Dừng chia sẻ màn hình");
    EXPECT_TRUE(trang.cho("!tovira.manHinhDangPhat() && lanBam == 1"));
    EXPECT_TRUE(choDen([&] { return soDiemDo() == 0; }));
    mong.erase(mong.begin(), mong.begin() + 3);
    EXPECT_EQ(docTenMenu(), mong);

    chon("Thoát Tovira");
    EXPECT_EQ(tovira->doiHet(), 0);
}

// Both permissions are missing in a Wayland session, and the program's own file has gone in the meantime.
TEST_F(KhayDbusTest, noiThieuGiVaOLaiKhiBanMoiKhongLenDuoc) {
    const auto banSao = tam / "tovira";
    std::filesystem::copy_file(chuongTrinh, banSao);
    chuongTrinh = banSao.string();
    setenv("WAYLAND_DISPLAY", "wayland-0", 1);
    moVoiKhay();
    unsetenv("WAYLAND_DISPLAY");
    chon("✗  Trợ năng");
    doiHopVaDong();

    std::filesystem::remove(banSao);
    chon("↻  Bật rồi mà vẫn ✗ — Mở lại Tovira");
    doiHopVaDong();
    EXPECT_EQ(trang.hoi("1"), "1");
    chon("↻  Bật rồi mà vẫn ✗ — Mở lại Tovira");  // as often as one likes
    doiHopVaDong();
    tovira->bao(SIGTERM);
    EXPECT_EQ(tovira->doiHet(), 0);
}

int main(int soThamSo, char** thamSo) {
    testing::InitGoogleTest(&soThamSo, thamSo);
    const QCoreApplication ung(soThamSo, thamSo);
    if (soThamSo > 1 && std::string_view(thamSo[1]) == "--so-muc") return chaySoMuc();
    return RUN_ALL_TESTS();
}

#include "KhayDbusLinuxTest.moc"

#include "GiuThucLinux.hpp"

#include <xcb/screensaver.h>

#include <QDBusConnection>
#include <QDBusMessage>
#include <QFile>
#include <QString>

namespace tovira {

namespace {

const QString tenKetNoi = QStringLiteral("tv-giu-thuc");

// libdbus would start a bus of its own when there is none.
bool coBusPhien() {
    if (!qEnvironmentVariableIsEmpty("DBUS_SESSION_BUS_ADDRESS")) return true;
    const QString thuMuc = qEnvironmentVariable("XDG_RUNTIME_DIR");
    return !thuMuc.isEmpty() && QFile::exists(thuMuc + QStringLiteral("/bus"));
}

// True when there is a connection to be closed.
bool nhoDichVuPhien() {
    if (!coBusPhien()) return false;
    auto bus = QDBusConnection::connectToBus(QDBusConnection::SessionBus, tenKetNoi);
    if (!bus.isConnected()) return false;
    auto nho = QDBusMessage::createMethodCall(
        QStringLiteral("org.freedesktop.ScreenSaver"), QStringLiteral("/org/freedesktop/ScreenSaver"),
        QStringLiteral("org.freedesktop.ScreenSaver"), QStringLiteral("Inhibit"));
    nho << QStringLiteral("Tovira") << QStringLiteral("Đang chia sẻ màn hình");
    bus.send(nho);  // the answer is a number for taking it back, which closing the connection does too
    return true;
}

}  // namespace

GiuThucLinux::GiuThucLinux() : x_(moManX()) {
    if (x_ && coMoRong(x_.c(), &xcb_screensaver_id)) {
        const PhanXcb<xcb_screensaver_query_version_reply_t> phien(xcb_screensaver_query_version_reply(
            x_.c(), xcb_screensaver_query_version(x_.c(), 1, 1), nullptr));
        xcb_screensaver_suspend(x_.c(), 1);
        xcb_flush(x_.c());
    }
    coBus_ = nhoDichVuPhien();
}

GiuThucLinux::~GiuThucLinux() {
    QDBusConnection::disconnectFromBus(tenKetNoi);
}

}  // namespace tovira

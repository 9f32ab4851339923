#pragma once
// What a test program needs before it can run a real web engine: an application, a store of its own, and a
// resolver that finds every name under ".example" on the test's own server.

#include <arpa/inet.h>
#include <gtest/gtest.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <QApplication>
#include <QTemporaryDir>
#include <memory>

#include "gia/PhongWebLinux.hpp"

namespace tovira::gia {

// A listening socket on 127.0.0.1, on a port of the system's choice.
inline int moCam(std::uint16_t& cong) {
    const int cam = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    sockaddr_in dia{};
    dia.sin_family = AF_INET;
    dia.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t dai = sizeof dia;
    const bool duoc = cam >= 0 && ::bind(cam, reinterpret_cast<sockaddr*>(&dia), sizeof dia) == 0 &&
                      ::listen(cam, 64) == 0 &&
                      ::getsockname(cam, reinterpret_cast<sockaddr*>(&dia), &dai) == 0;
    if (!duoc) std::abort();
    cong = ntohs(dia.sin_port);
    return cam;
}

inline MayChuTrang& mayChuTrang(MayChuTrang* moi = nullptr) {
    static MayChuTrang* mayChu = nullptr;
    if (moi != nullptr) mayChu = moi;
    return *mayChu;
}

inline int chayThuWeb(int soThamSo, char** thamSo) {
    testing::InitGoogleTest(&soThamSo, thamSo);
    const QTemporaryDir nha;
    for (const char* bien : {"XDG_DATA_HOME", "XDG_CACHE_HOME", "XDG_CONFIG_HOME", "XDG_RUNTIME_DIR"})
        qputenv(bien, nha.path().toUtf8());
    std::uint16_t cong = 0;
    const int cam = moCam(cong);
    const QByteArray noi = "127.0.0.1:" + QByteArray::number(cong);
    qputenv("QTWEBENGINE_CHROMIUM_FLAGS",
            "--host-resolver-rules=\"MAP *.example " + noi + "\" --use-fake-device-for-media-stream");
    // Left alone, the desktop's libraries would start a message bus that outlives the test.
    qputenv("DBUS_SESSION_BUS_ADDRESS", "disabled:");
    // Containers run tests as root, where the sandbox cannot start.
    if (::geteuid() == 0) qputenv("QTWEBENGINE_DISABLE_SANDBOX", "1");
    HoSoWeb::dangKyGiaoThuc();
    QApplication ung(soThamSo, thamSo);
    QApplication::setApplicationName(QStringLiteral("tovira-thu"));
    QApplication::setQuitOnLastWindowClosed(false);
    MayChuTrang mayChu;
    mayChu.mo(cam);
    mayChuTrang(&mayChu);
    HoSoWeb hoSo;
    hoSoChung(&hoSo);
    return RUN_ALL_TESTS();
}

}  // namespace tovira::gia

#pragma once
// Main thread. Waiting with a turning event loop.

#include <QDeadlineTimer>
#include <QEventLoop>
#include <QTimer>
#include <functional>

namespace tovira::gia {

// Turns the event loop until `dieuKien` holds; false when it does not within `giay` seconds.
inline bool cho(const std::function<bool()>& dieuKien, double giay = 15) {
    const QDeadlineTimer han(static_cast<qint64>(giay * 1000));
    while (!dieuKien()) {
        if (han.hasExpired()) return false;
        QEventLoop vong;
        QTimer::singleShot(5, &vong, &QEventLoop::quit);
        vong.exec();
    }
    return true;
}

}  // namespace tovira::gia

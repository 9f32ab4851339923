#pragma once
// Main thread. What the small windows beside the main one share.

#include <QGuiApplication>
#include <QPointer>
#include <QScreen>
#include <QWidget>

namespace tovira {

// A size in points as Qt's fonts count them: the tables give sizes in units of 1/72 inch at 72 per inch, one
// pixel each.
inline QFont chuCo(double co, bool dam) {
    QFont chu = QGuiApplication::font();
    chu.setPixelSize(static_cast<int>(co + 0.5));
    chu.setBold(dam);
    return chu;
}

inline void datGiuaManHinh(QWidget& cuaSo) {
    if (const QScreen* man = QGuiApplication::primaryScreen())
        cuaSo.move(man->availableGeometry().center() - QPoint(cuaSo.width() / 2, cuaSo.height() / 2));
}

// Shows the window that `giu` keeps, building it the first time; closing it does not destroy it.
template <class Dung>
void hienMotCuaSo(QPointer<QWidget>& giu, Dung dung) {
    if (giu.isNull()) {
        giu = dung();
        datGiuaManHinh(*giu);
        QObject::connect(qApp, &QCoreApplication::aboutToQuit, giu, [giu] { delete giu.data(); });
    }
    giu->show();
    giu->raise();
    giu->activateWindow();
}

}  // namespace tovira

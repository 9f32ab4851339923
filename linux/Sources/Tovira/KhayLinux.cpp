#include "KhayLinux.hpp"

#include <QAction>
#include <QIcon>
#include <QPainter>
#include <QPixmap>
#include <cstring>

#include "GioiThieuLinux.hpp"
#include "HuongDanLinux.hpp"

namespace tovira {

namespace {

// The two symbols of the status item, drawn for a tray of any size: a display, and one with a warning
// triangle.
QPixmap veKyHieu(const VeKhay& ve, int canh) {
    QPixmap anh(canh, canh);
    anh.fill(Qt::transparent);
    QPainter but(&anh);
    but.setRenderHint(QPainter::Antialiasing);
    but.scale(canh / 24.0, canh / 24.0);
    const QColor mau = ve.toDo ? QColor(0xff, 0x3b, 0x30) : QColor(0xd0, 0xd4, 0xdc);
    // A dark rim keeps the light symbol readable on a light panel.
    for (const auto& [net, rong] : {std::pair(QColor(0, 0, 0, 150), 3.6), std::pair(mau, 2.0)}) {
        but.setPen(QPen(net, rong, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
        but.setBrush(Qt::NoBrush);
        but.drawRoundedRect(QRectF(2.5, 4, 19, 12.5), 2, 2);
        but.drawLine(QPointF(12, 16.5), QPointF(12, 20));
        but.drawLine(QPointF(8, 20), QPointF(16, 20));
    }
    if (std::strcmp(ve.kyHieu, "display") != 0) {
        const QPolygonF tamGiac({QPointF(17, 10.5), QPointF(23, 21.5), QPointF(11, 21.5)});
        but.setPen(QPen(QColor(0, 0, 0, 150), 1));
        but.setBrush(mau);
        but.drawPolygon(tamGiac);
        but.setPen(QPen(Qt::white, 1.6, Qt::SolidLine, Qt::RoundCap));
        but.drawLine(QPointF(17, 14.5), QPointF(17, 17.5));
        but.drawPoint(QPointF(17, 19.7));
    }
    return anh;
}

QIcon bieuTuongCho(const VeKhay& ve) {
    QIcon kq;
    for (const int canh : {16, 22, 24, 32, 48, 64})
        kq.addPixmap(veKyHieu(ve, canh));
    return kq;
}

}  // namespace

void KhayLinux::dungMuc(Khay& chu, const VeKhay& ve, const char* moTa) {
    lapLaiMenu(chu);
    QObject::connect(&menu_, &QMenu::aboutToShow, &menu_, [this, &chu] { lapLaiMenu(chu); });
    menu_.setToolTipsVisible(true);
    bieuTuong_.setObjectName(QString::fromUtf8(moTa));
    bieuTuong_.setContextMenu(&menu_);
    QObject::connect(&bieuTuong_, &QSystemTrayIcon::activated, &menu_,
                     [&chu](QSystemTrayIcon::ActivationReason ly) {
                         // A plain click opens the window where the desktop shows the menu on the other
                         // button.
                         if (ly == QSystemTrayIcon::Trigger || ly == QSystemTrayIcon::DoubleClick)
                             chu.bam(LenhKhay::bamMo);
                     });
    doiVe(ve);
    bieuTuong_.show();
}

// A tray may come after the program, and go before it.
void KhayLinux::xetNutDuPhong() {
    if (nut_ != nullptr) return nut_->setVisible(!coChoDat());
    QMenuBar* thanh = thanhMenu_();
    if (thanh == nullptr || coChoDat()) return;
    nut_ = new QToolButton(thanh);
    nut_->setText(QStringLiteral("Tovira"));
    nut_->setAccessibleName(QStringLiteral("Tovira"));
    nut_->setToolButtonStyle(Qt::ToolButtonTextBesideIcon);
    nut_->setPopupMode(QToolButton::InstantPopup);
    nut_->setMenu(&menu_);
    thanh->setCornerWidget(nut_);
    nut_->show();
}

void KhayLinux::doiVe(const VeKhay& ve) {
    const QIcon icon = bieuTuongCho(ve);
    const QString meo = QString::fromUtf8(ve.meo);
    bieuTuong_.setIcon(icon);
    bieuTuong_.setToolTip(meo);
    xetNutDuPhong();
    if (nut_ == nullptr) return;
    nut_->setIcon(icon);
    nut_->setToolTip(meo);
}

void KhayLinux::lapLaiMenu(Khay& chu) {
    menu_.clear();
    for (const MucKhay& muc : chu.lapMenu()) {
        if (muc.laNgan()) {
            menu_.addSeparator();
            continue;
        }
        QAction* hanhDong =
            menu_.addAction(QString::fromStdString(muc.ten).replace(u'&', QStringLiteral("&&")));
        hanhDong->setEnabled(muc.batDuoc);
        hanhDong->setToolTip(QString::fromStdString(muc.meo));
        if (muc.lenh == LenhKhay::bamTuKhoiDong) {
            hanhDong->setCheckable(true);
            hanhDong->setChecked(muc.danhDau);
        }
        if (muc.phim != 0) {
            const QKeyCombination phim(Qt::CTRL, static_cast<Qt::Key>(QChar(muc.phim).toUpper().unicode()));
            hanhDong->setShortcut(phim);
        }
        // Queued: an action may rebuild the very menu that is still closing.
        QObject::connect(
            hanhDong, &QAction::triggered, &menu_, [&chu, lenh = muc.lenh] { chu.bam(lenh); },
            Qt::QueuedConnection);
    }
}

void KhayLinux::moHuongDan() {
    HuongDanLinux::hien();
}

void KhayLinux::moGioiThieu() {
    GioiThieuLinux::hien();
}

}  // namespace tovira

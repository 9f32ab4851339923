#include "GioiThieuLinux.hpp"

#include <QFontDatabase>
#include <QFrame>
#include <QGridLayout>
#include <QHBoxLayout>
#include <QImage>
#include <QLabel>
#include <QPainter>
#include <QPainterPath>
#include <QPushButton>
#include <QVBoxLayout>
#include <cstring>

#include "BieuTuong.hpp"
#include "CuaSoPhuLinux.hpp"
#include "GioiThieu.hpp"
#include "HuongDanLinux.hpp"

namespace tovira {

namespace {

QPixmap anhBieuTuong(int canh, double tiLe) {
    const int diem = static_cast<int>(canh * tiLe);
    const auto rgba = BieuTuong::rgba(diem, BieuTuong::BoGoc::co);
    QImage anh(rgba.data(), diem, diem, diem * 4, QImage::Format_RGBA8888);
    QPixmap kq = QPixmap::fromImage(anh.copy());
    kq.setDevicePixelRatio(tiLe);
    return kq;
}

// The cards' symbols, drawn because a Linux desktop has no system set with these names.
QPixmap anhKyHieu(const char* ten, const QColor& mau, double tiLe) {
    constexpr int canh = 18;
    QPixmap anh(QSize(canh, canh) * tiLe);
    anh.setDevicePixelRatio(tiLe);
    anh.fill(Qt::transparent);
    QPainter but(&anh);
    but.setRenderHint(QPainter::Antialiasing);
    but.setPen(Qt::NoPen);
    but.setBrush(mau);
    if (std::strcmp(ten, "lock.fill") == 0) {
        but.drawRoundedRect(QRectF(3, 8, 12, 9), 2, 2);
        but.setBrush(Qt::NoBrush);
        but.setPen(QPen(mau, 2));
        but.drawArc(QRectF(5.5, 2, 7, 9), 0, 180 * 16);
    } else if (std::strcmp(ten, "bolt.fill") == 0) {
        but.drawPolygon(QPolygonF({{10.5, 1}, {3.5, 10.5}, {8.2, 10.5}, {7, 17}, {14.5, 7.2}, {9.6, 7.2}}));
    } else {
        QPainterPath mat;
        mat.moveTo(1, 9);
        mat.quadTo(9, 0.5, 17, 9);
        mat.quadTo(9, 17.5, 1, 9);
        mat.addEllipse(QPointF(9, 9), 2.4, 2.4);
        but.drawPath(mat);
        but.setCompositionMode(QPainter::CompositionMode_Clear);
        but.setPen(QPen(Qt::black, 4));
        but.drawLine(QPointF(3, 16), QPointF(15, 2));
        but.setCompositionMode(QPainter::CompositionMode_SourceOver);
        but.setPen(QPen(mau, 1.8, Qt::SolidLine, Qt::RoundCap));
        but.drawLine(QPointF(3, 16), QPointF(15, 2));
    }
    return anh;
}

QLabel* nhan(QWidget* cha, const char* chu, const QFont& phong, QPalette::ColorRole mau) {
    auto* kq = new QLabel(QString::fromUtf8(chu), cha);
    kq->setFont(phong);
    kq->setForegroundRole(mau);
    kq->setAlignment(Qt::AlignHCenter | Qt::AlignTop);
    kq->setTextInteractionFlags(Qt::TextSelectableByMouse);
    return kq;
}

QFrame* hop(QWidget* cha) {
    auto* kq = new QFrame(cha);
    kq->setObjectName(QStringLiteral("hop"));
    kq->setStyleSheet(QStringLiteral(
        "#hop { border: 1px solid palette(mid); border-radius: 10px; background: palette(base); }"));
    return kq;
}

QFrame* the(QWidget* cha, const GioiThieu::The& the) {
    QFrame* kq = hop(cha);
    auto* xep = new QVBoxLayout(kq);
    xep->setContentsMargins(6, 13, 6, 13);
    xep->setSpacing(6);
    auto* anh = new QLabel(kq);
    anh->setPixmap(anhKyHieu(the.kyHieu, kq->palette().color(QPalette::Highlight), kq->devicePixelRatioF()));
    anh->setAlignment(Qt::AlignHCenter);
    QLabel* chu = nhan(kq, the.chu, chuCo(10.5, false), QPalette::PlaceholderText);
    chu->setWordWrap(true);
    chu->setFixedWidth(GioiThieu::rongChuThe);
    xep->addWidget(anh);
    xep->addWidget(chu, 1, Qt::AlignHCenter);
    return kq;
}

QFrame* hopThongTin(QWidget* cha) {
    QFrame* kq = hop(cha);
    auto* luoi = new QGridLayout(kq);
    luoi->setContentsMargins(14, 10, 14, 10);
    int hang = 0;
    for (const auto& dong : GioiThieu::cacDong) {
        QLabel* trai = nhan(kq, dong.nhan, chuCo(11.5, false), QPalette::PlaceholderText);
        trai->setAlignment(Qt::AlignLeft);
        QLabel* phai = nhan(kq, dong.giaTri, chuCo(11.5, false), QPalette::Text);
        phai->setAlignment(Qt::AlignRight);
        luoi->addWidget(trai, hang, 0);
        luoi->addWidget(phai, hang++, 1);
    }
    return kq;
}

QHBoxLayout* leHaiBen(QWidget* giua) {
    auto* kq = new QHBoxLayout;
    kq->setContentsMargins(GioiThieu::leNgang, 0, GioiThieu::leNgang, 0);
    kq->addWidget(giua);
    return kq;
}

QWidget* dungNoiDung() {
    auto* cuaSo = new QWidget(nullptr, Qt::Window | Qt::CustomizeWindowHint | Qt::WindowTitleHint |
                                           Qt::WindowSystemMenuHint | Qt::WindowCloseButtonHint);
    cuaSo->setWindowTitle(QString::fromUtf8(GioiThieu::tieuDeCuaSo));
    auto* xep = new QVBoxLayout(cuaSo);
    xep->setContentsMargins(0, 0, 0, 0);
    xep->setSpacing(0);
    xep->addStretch();
    auto* icon = new QLabel(cuaSo);
    icon->setPixmap(anhBieuTuong(GioiThieu::canhBieuTuong, cuaSo->devicePixelRatioF()));
    xep->addWidget(icon, 0, Qt::AlignHCenter);
    xep->addSpacing(14);
    xep->addWidget(nhan(cuaSo, GioiThieu::ten, chuCo(22, true), QPalette::WindowText));
    xep->addSpacing(3);
    QFont deu = QFontDatabase::systemFont(QFontDatabase::FixedFont);
    deu.setPixelSize(12);
    xep->addWidget(nhan(cuaSo, GioiThieu::phienBan, deu, QPalette::PlaceholderText));
    xep->addSpacing(10);
    QLabel* khauHieu = nhan(cuaSo, GioiThieu::khauHieu, chuCo(13, false), QPalette::PlaceholderText);
    khauHieu->setWordWrap(true);
    khauHieu->setFixedWidth(GioiThieu::rongKhauHieu);
    xep->addWidget(khauHieu, 0, Qt::AlignHCenter);
    xep->addSpacing(20);
    auto* hangThe = new QHBoxLayout;
    hangThe->setContentsMargins(GioiThieu::leNgang, 0, GioiThieu::leNgang, 0);
    hangThe->setSpacing(8);
    for (const auto& mot : GioiThieu::cacThe)
        hangThe->addWidget(the(cuaSo, mot), 1);
    xep->addLayout(hangThe);
    xep->addSpacing(16);
    xep->addLayout(leHaiBen(hopThongTin(cuaSo)));
    xep->addSpacing(16);
    auto* nut = new QPushButton(QString::fromUtf8(GioiThieu::nutHuongDan), cuaSo);
    QObject::connect(nut, &QPushButton::clicked, nut, [] { HuongDanLinux::hien(); });
    xep->addWidget(nut, 0, Qt::AlignHCenter);
    xep->addStretch();
    cuaSo->setFixedSize(GioiThieu::rong, GioiThieu::cao);
    return cuaSo;
}

}  // namespace

void GioiThieuLinux::hien() {
    static QPointer<QWidget> giu;
    hienMotCuaSo(giu, dungNoiDung);
}

}  // namespace tovira

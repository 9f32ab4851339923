#include "ChiBaoLinux.hpp"

#include <xcb/xcb.h>

#include <QGuiApplication>
#include <QLabel>
#include <QPainter>
#include <QPushButton>
#include <QScreen>
#include <QTimer>
#include <cstdlib>

#include "CuaSoPhuLinux.hpp"

namespace tovira {

namespace {

constexpr QRgb doHeThong = 0xffff3b30;  // the red that desktops use for what needs attention now
constexpr int cachNangMs = 100;         // two windows that both insist on being on top must not spin

QRect hinhChuNhat(const KhungHinh& k) {
    return {static_cast<int>(k.x), static_cast<int>(k.y), static_cast<int>(k.rong), static_cast<int>(k.cao)};
}

// The bar itself: rounded, red.
class Thanh final : public QWidget {
  public:
    explicit Thanh(const std::function<void()>& khiBam)
        : QWidget(nullptr, Qt::Window | Qt::FramelessWindowHint | Qt::BypassWindowManagerHint |
                               Qt::WindowStaysOnTopHint | Qt::WindowDoesNotAcceptFocus) {
        setAttribute(Qt::WA_TranslucentBackground);
        setAttribute(Qt::WA_ShowWithoutActivating);
        setWindowTitle(QStringLiteral("Tovira"));
        themChu(ChiBao::cham);
        themChu(ChiBao::loi);
        auto* nut = new QPushButton(QString::fromUtf8(ChiBao::nut.chu), this);
        nut->setGeometry(hinhChuNhat(ChiBao::nut.cho));
        nut->setFont(chuCo(ChiBao::nut.co, ChiBao::nut.dam));
        nut->setFocusPolicy(Qt::NoFocus);
        nut->setStyleSheet(QStringLiteral(
            "QPushButton { background: white; color: #b3130a; border: none; border-radius: 11px; }"
            "QPushButton:hover { background: #ffe9e7; } QPushButton:pressed { background: #ffd0cc; }"));
        connect(
            nut, &QPushButton::clicked, this, [khiBam] { khiBam(); }, Qt::QueuedConnection);
    }

  private:
    void themChu(const ChiBao::Chu& chu) {
        auto* nhan = new QLabel(QString::fromUtf8(chu.chu), this);
        nhan->setGeometry(hinhChuNhat(chu.cho));
        nhan->setFont(chuCo(chu.co, chu.dam));
        nhan->setStyleSheet(QStringLiteral("color: white; background: transparent;"));
    }

    void paintEvent(QPaintEvent*) override {
        QPainter but(this);
        but.setRenderHint(QPainter::Antialiasing);
        QColor mau = QColor::fromRgba(doHeThong);
        mau.setAlphaF(ChiBao::doDac);
        but.setPen(Qt::NoPen);
        but.setBrush(mau);
        but.drawRoundedRect(rect(), ChiBao::boGoc, ChiBao::boGoc);
    }
};

}  // namespace

std::optional<ChiBao::ManChinh> ChiBaoLinux::manChinh() {
    const QScreen* man = QGuiApplication::primaryScreen();
    if (man == nullptr) return std::nullopt;
    const auto khung = [](const QRect& r) {
        return KhungHinh{double(r.x()), double(r.y()), double(r.width()), double(r.height())};
    };
    return ChiBao::ManChinh{khung(man->geometry()), khung(man->availableGeometry())};
}

void ChiBaoLinux::dungThanh(const KhungHinh& khung, std::function<void()> khiBam) {
    goThanh();
    thanh_ = std::make_unique<Thanh>(khiBam);
    thanh_->setGeometry(hinhChuNhat(khung));
    nghePhuKin();
    thanh_->show();
    thanh_->raise();
}

void ChiBaoLinux::goThanh() {
    if (!thanh_) return;
    qGuiApp->removeNativeEventFilter(this);
    // Its own button may be what takes it away.
    thanh_->hide();
    thanh_.release()->deleteLater();
}

void ChiBaoLinux::nghePhuKin() {
    const auto* x11 = qGuiApp->nativeInterface<QNativeInterface::QX11Application>();
    if (x11 == nullptr) return;
    const auto cuaSo = static_cast<xcb_window_t>(thanh_->winId());
    xcb_connection_t* noi = x11->connection();
    const std::unique_ptr<xcb_get_window_attributes_reply_t, decltype(&std::free)> cu(
        xcb_get_window_attributes_reply(noi, xcb_get_window_attributes(noi, cuaSo), nullptr), &std::free);
    if (!cu) return;
    const std::uint32_t matNa = cu->your_event_mask | XCB_EVENT_MASK_VISIBILITY_CHANGE;
    xcb_change_window_attributes(noi, cuaSo, XCB_CW_EVENT_MASK, &matNa);
    lanNangTruoc_.invalidate();
    qGuiApp->installNativeEventFilter(this);
}

bool ChiBaoLinux::nativeEventFilter(const QByteArray& loai, void* thongDiep, qintptr* /*ketQua*/) {
    if (!thanh_ || loai != "xcb_generic_event_t") return false;
    const auto* suKien = static_cast<const xcb_generic_event_t*>(thongDiep);
    if ((suKien->response_type & 0x7f) != XCB_VISIBILITY_NOTIFY) return false;
    const auto* thay = reinterpret_cast<const xcb_visibility_notify_event_t*>(suKien);
    if (thay->window != thanh_->winId() || thay->state == XCB_VISIBILITY_UNOBSCURED) return false;
    if (!lanNangTruoc_.isValid() || lanNangTruoc_.elapsed() >= cachNangMs) {
        lanNangTruoc_.start();
        thanh_->raise();
    } else {
        QTimer::singleShot(cachNangMs, thanh_.get(), [thanh = thanh_.get()] { thanh->raise(); });
    }
    return false;
}

}  // namespace tovira

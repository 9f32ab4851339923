#include "ChiBaoLinux.hpp"

#include <QGuiApplication>
#include <QLabel>
#include <QPainter>
#include <QPainterPath>
#include <QPushButton>
#include <QScreen>

#include "CuaSoPhuLinux.hpp"

namespace tovira {

namespace {

constexpr QRgb doHeThong = 0xffff3b30;  // the red that desktops use for what needs attention now
constexpr int cachNangMs = 100;         // two windows that both insist on being on top must not spin
// A compositor takes its time to take a window off the screen.
constexpr int choTanMs = 1000;

QRect hinhChuNhat(const KhungHinh& k) {
    return {static_cast<int>(k.x), static_cast<int>(k.y), static_cast<int>(k.rong), static_cast<int>(k.cao)};
}

xcb_connection_t* ketNoiQt() {
    const auto* x11 = qGuiApp->nativeInterface<QNativeInterface::QX11Application>();
    return x11 != nullptr ? x11->connection() : nullptr;
}

// Where no compositor makes see-through pixels, corners can only be cut off.
QRegion hinhTron(const QRect& o) {
    QPainterPath duong;
    duong.addRoundedRect(o, ChiBao::boGoc, ChiBao::boGoc);
    return QRegion(duong.toFillPolygon().toPolygon());
}

// The bar itself: rounded, red.
class Thanh final : public QWidget {
  public:
    explicit Thanh(const std::function<void()>& khiBam)
        : QWidget(nullptr, Qt::Window | Qt::FramelessWindowHint | Qt::BypassWindowManagerHint |
                               Qt::WindowStaysOnTopHint | Qt::WindowDoesNotAcceptFocus) {
        setAttribute(Qt::WA_TranslucentBackground);
        setAttribute(Qt::WA_ShowWithoutActivating);
        setAttribute(Qt::WA_X11NetWmWindowTypeDock);
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

ChiBaoLinux::ChiBaoLinux() {
    henNang_.setSingleShot(true);
    henNang_.setInterval(cachNangMs);
    QObject::connect(&henNang_, &QTimer::timeout, &henNang_, [this] { nang(); });
    henBoAn_.setSingleShot(true);
    henBoAn_.setInterval(choTanMs);
    QObject::connect(&henBoAn_, &QTimer::timeout, &henBoAn_, [this] { an_.reset(); });
}

void ChiBaoLinux::dungThanh(const KhungHinh& khung, std::function<void()> khiBam) {
    goThanh();
    thanh_ = std::make_unique<Thanh>(khiBam);
    thanh_->setGeometry(hinhChuNhat(khung));
    cua_ = static_cast<xcb_window_t>(thanh_->winId());
    if (auto* noi = ketNoiQt()) {
        ngheCuaSoKhac();
        if (!coBoGhepX(noi)) thanh_->setMask(hinhTron(thanh_->rect()));
        henBoAn_.stop();
        if (x_) an_ = std::make_unique<CuaSoAnLinux>(noi, x_.goc(), cua_);
    }
    thanh_->show();
    thanh_->raise();
}

void ChiBaoLinux::goThanh() {
    if (!thanh_) return;
    henNang_.stop();
    nghe_.reset();
    x_ = {};
    // Its own button may be what takes it away.
    thanh_->hide();
    thanh_.release()->deleteLater();
    henBoAn_.start();
}

void ChiBaoLinux::ngheCuaSoKhac() {
    x_ = moManX();
    if (!x_) return;
    const std::uint32_t matNa = XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY;
    xcb_change_window_attributes(x_.c(), x_.goc(), XCB_CW_EVENT_MASK, &matNa);
    xcb_flush(x_.c());
    lanNangTruoc_.invalidate();
    nghe_ = std::make_unique<QSocketNotifier>(xcb_get_file_descriptor(x_.c()), QSocketNotifier::Read);
    QObject::connect(nghe_.get(), &QSocketNotifier::activated, nghe_.get(), [this] { xemCuaSoKhac(); });
}

void ChiBaoLinux::xemCuaSoKhac() {
    bool coCuaSoKhac = false;
    while (const PhanXcb<xcb_generic_event_t> sk{xcb_poll_for_event(x_.c())}) {
        // Events about the windows of the desktop begin alike.
        const int loai = sk->response_type & 0x7f;
        if (loai < XCB_CREATE_NOTIFY || loai > XCB_CIRCULATE_NOTIFY) continue;
        coCuaSoKhac |= reinterpret_cast<const xcb_map_notify_event_t&>(*sk).window != cua_;
    }
    if (xcb_connection_has_error(x_.c()) != 0) return nghe_->setEnabled(false);
    if (!coCuaSoKhac || henNang_.isActive()) return;
    if (lanNangTruoc_.isValid() && lanNangTruoc_.elapsed() < cachNangMs) return henNang_.start();
    nang();
}

// Nothing happens, and no event comes of it, where the bar is on top already.
void ChiBaoLinux::nang() {
    lanNangTruoc_.start();
    const std::uint32_t tren = XCB_STACK_MODE_ABOVE;
    xcb_configure_window(x_.c(), cua_, XCB_CONFIG_WINDOW_STACK_MODE, &tren);
    xcb_flush(x_.c());
}

}  // namespace tovira

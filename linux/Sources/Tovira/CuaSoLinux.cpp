#include "CuaSoLinux.hpp"

#include <QApplication>
#include <QCloseEvent>
#include <QFile>
#include <QMenuBar>
#include <QScreen>
#include <QWindow>
#include <utility>

#include "ThanhMenu.hpp"
#include "ThietBiLinux.hpp"
#include "XcbLinux.hpp"

namespace tovira {
namespace {

constexpr int nghiTruocKhiLuu = 300;  // milliseconds a dragged window rests before its place is saved
// Milliseconds after which a window that has gone out of sight means it: managers unmap and map it while they
// dress it, and what they report of its state may be old.
constexpr int choKhuat = 120;
// What a manager's own frame may take around a window; known for sure only once it is there.
constexpr QSize vienCuaSo(8, 40);

// Qt asks for this before there is anything to minimise when the window has not been shown yet.
void xinThuNho(const QWidget& cua) {
    const auto* x11 = qGuiApp->nativeInterface<QNativeInterface::QX11Application>();
    if (x11 == nullptr) return;
    auto* c = x11->connection();
    constexpr std::uint32_t thuNho = 3;
    xcb_client_message_event_t loi{};
    loi.response_type = XCB_CLIENT_MESSAGE;
    loi.format = 32;
    loi.window = static_cast<xcb_window_t>(cua.winId());
    loi.type = nguyenTuX(c, "WM_CHANGE_STATE");
    loi.data.data32[0] = thuNho;
    xcb_send_event(c, 0, xcb_setup_roots_iterator(xcb_get_setup(c)).data->root,
                   XCB_EVENT_MASK_SUBSTRUCTURE_REDIRECT | XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY,
                   reinterpret_cast<const char*>(&loi));
    xcb_flush(c);
}

}  // namespace

CuaSoLinux::CuaSoLinux(TrangLinux& trang, CaiDat& caiDat) : trang_(trang), caiDat_(caiDat) {
    henLuu_.setSingleShot(true);
    henLuu_.setInterval(nghiTruocKhiLuu);
    connect(&henLuu_, &QTimer::timeout, this, &CuaSoLinux::luuKhung);
    henXemKhuat_.setSingleShot(true);
    henXemKhuat_.setInterval(choKhuat);
    connect(&henXemKhuat_, &QTimer::timeout, this, &CuaSoLinux::xemKhuat);
}

CuaSoLinux::~CuaSoLinux() {
    if (chu_ == nullptr) return;
    if (henLuu_.isActive()) luuKhung();
    // The view belongs to the page's ground.
    trang_.khungNhin().setParent(nullptr);
}

QWidget* CuaSoLinux::dangHien() {
    for (QWidget* w : QApplication::topLevelWidgets())
        if (w->isVisible() && dynamic_cast<CuaSoLinux*>(w) != nullptr) return w;
    return nullptr;
}

void CuaSoLinux::dung(CuaSo& chu) {
    chu_ = &chu;
    setWindowTitle(QString::fromLatin1(CuaSo::tieuDe));
    setMinimumSize(static_cast<int>(CuaSo::rongNhoNhat), static_cast<int>(CuaSo::caoNhoNhat));
    dungThanhMenu(*menuBar(), [this](LenhMenu lenh) { chonMenu(lenh); });
    setCentralWidget(&trang_.khungNhin());
    datKhungDau();
}

void CuaSoLinux::datKhungDau() {
    const QRect thay = screen()->availableGeometry();
    const QSize muon(static_cast<int>(CuaSo::rongDau),
                     static_cast<int>(CuaSo::caoDau) + menuBar()->sizeHint().height());
    resize(muon.boundedTo(thay.size() - vienCuaSo));
    move(thay.center() - QRect(QPoint(), size() + vienCuaSo).center());
    if (const auto luu = caiDat_.doc(CuaSo::tenLuuKhung)) {
        // Brings a place that no screen shows any more back into sight by itself.
        restoreGeometry(QByteArray::fromBase64(QByteArray::fromStdString(*luu)));
    }
}

void CuaSoLinux::luuKhung() {
    caiDat_.ghi(CuaSo::tenLuuKhung, saveGeometry().toBase64().toStdString());
}

// Only a place that the user can have chosen. (A parked window itself stays where it was.)
void CuaSoLinux::henLuu() {
    if (chu_ != nullptr && isVisible() && !isMinimized()) henLuu_.start();
}

DoCuaSo::TrangThai CuaSoLinux::trangThai() const {
    const QPoint goc = pos();
    return {{static_cast<double>(goc.x()), static_cast<double>(goc.y()), static_cast<double>(width()),
             static_cast<double>(height())},
            dangDoXa_ || isVisible(),
            !dangDoXa_ && isMinimized()};
}

void CuaSoLinux::hien(DoCuaSo::CachHien cach) {
    seThuNho_ = cach == DoCuaSo::CachHien::thuNho;
    if (seThuNho_) {
        showMinimized();
        return xinThuNho(*this);
    }
    setWindowState(windowState() & ~Qt::WindowMinimized);
    show();
    raise();
    activateWindow();
}

void CuaSoLinux::an() {
    seRaTruoc_ = false;
    hide();
}

void CuaSoLinux::doXa() {
    if (dangDoXa_) return;
    dangDoXa_ = true;
    bai_.nhan(*takeCentralWidget());
    hide();
}

void CuaSoLinux::veCho(Diem goc) {
    seRaTruoc_ = false;
    if (!dangDoXa_) return;
    dangDoXa_ = false;
    setWindowState(windowState() & ~Qt::WindowMinimized);
    setCentralWidget(&trang_.khungNhin());
    bai_.dong();
    const QPoint cho(static_cast<int>(goc.x), static_cast<int>(goc.y));
    if (cho != pos()) move(cho);
}

void CuaSoLinux::raTruoc() {
    // Not before it is certain that it will not be parked in this very turn: nobody is to see it flash.
    seRaTruoc_ = true;
    seThuNho_ = false;
    QTimer::singleShot(0, this, [this] {
        if (!std::exchange(seRaTruoc_, false) || dangDoXa_) return;
        setWindowState(windowState() & ~Qt::WindowMinimized);
        setAttribute(Qt::WA_ShowWithoutActivating, true);
        show();
        setAttribute(Qt::WA_ShowWithoutActivating, false);
    });
}

void CuaSoLinux::choThuNho() {
    if (!windowFlags().testFlag(Qt::WindowMinimizeButtonHint)) setWindowFlag(Qt::WindowMinimizeButtonHint);
}

void CuaSoLinux::baoKhiTrangNap(const QString& tep) {
    if (tep.isEmpty()) return;
    chu_->khiTrangNap = [tep] {
        QFile bao(tep);
        // Whoever waits for it notices that it is missing.
        [[maybe_unused]] const bool duoc = bao.open(QIODevice::WriteOnly);
    };
}

void CuaSoLinux::chonMenu(LenhMenu lenh) {
    if (const auto sua = hanhDongSua(lenh)) {
        trang_.khungNhin().triggerPageAction(*sua);
    } else if (lenh == LenhMenu::an) {
        // Hiding is closing: out of sight, and parked while the page is needed.
        chu_->khiXinDong();
    } else if (khiChonMenu) {
        khiChonMenu(lenh);
    }
}

void CuaSoLinux::closeEvent(QCloseEvent* e) {
    e->ignore();
    chu_->khiXinDong();
}

void CuaSoLinux::changeEvent(QEvent* e) {
    QMainWindow::changeEvent(e);
    if (e->type() == QEvent::WindowStateChange && isMinimized()) henXemKhuat_.start();
}

void CuaSoLinux::showEvent(QShowEvent* e) {
    QMainWindow::showEvent(e);
    if (auto* w = windowHandle()) {
        w->removeEventFilter(this);
        w->installEventFilter(this);
    }
}

bool CuaSoLinux::eventFilter(QObject* vat, QEvent* e) {
    if (vat == windowHandle() && e->type() == QEvent::Expose && !windowHandle()->isExposed())
        henXemKhuat_.start();
    // The page's first picture makes Qt replace the window by one that can show it, which comes unminimised.
    if (vat == windowHandle() && e->type() == QEvent::PlatformSurface && seThuNho_)
        QTimer::singleShot(0, this, [this] {
            if (seThuNho_ && isVisible()) xinThuNho(*this);
        });
    return QMainWindow::eventFilter(vat, e);
}

// Out of sight though this program has not hidden it: minimised, or on another desktop, say. (A covered
// window is exposed to X11 and goes on drawing.)
void CuaSoLinux::xemKhuat() {
    if (chu_ == nullptr || dangDoXa_ || !isVisible()) return;
    if (isMinimized()) {
        chu_->khiThuNho();
    } else if (!windowHandle()->isExposed()) {
        chu_->khiChe();
    }
}

void CuaSoLinux::moveEvent(QMoveEvent* e) {
    QMainWindow::moveEvent(e);
    henLuu();
}

void CuaSoLinux::resizeEvent(QResizeEvent* e) {
    QMainWindow::resizeEvent(e);
    henLuu();
}

}  // namespace tovira

#include "CuaSoTachLinux.hpp"

#include <QCloseEvent>
#include <QMainWindow>
#include <QScreen>
#include <QTimer>
#include <QWebEngineNewWindowRequest>
#include <QWebEngineScript>
#include <QWebEngineSettings>
#include <QWebEngineView>
#include <utility>

#include "TrangChung.hpp"

namespace tovira {
namespace {

// How long the page of a closed window may take over its own close handling.
constexpr int hanDong = 2000;  // milliseconds
// How often a page that is asking is looked at again, once its window is gone.
constexpr int xemLaiSau = 50;  // milliseconds

}  // namespace

// One pop-up: a window, a view, and a page without bridge or channel.
class CuaSoTachLinux::KhungTach final : public QMainWindow {
  public:
    KhungTach(const MoTach& mo, CuaSo& chu, CuaSoTachLinux& tach)
        : trang_(std::make_unique<TrangChung>(tach.hoSo_.hoSo(), chu, tach)),
          ma_(mo.ma),
          chu_(chu),
          tach_(tach) {
        setWindowTitle(QString::fromLatin1(CuaSo::tieuDe));
        nhin_ = new QWebEngineView(this);
        nhin_->setPage(trang_.get());
        setCentralWidget(nhin_);
        setMinimumSize(static_cast<int>(MoTach::rongNhoNhat), static_cast<int>(MoTach::caoNhoNhat));
        resize(static_cast<int>(mo.rong), static_cast<int>(mo.cao));
        move(screen()->availableGeometry().center() - rect().center());
        connect(trang_.get(), &QWebEnginePage::windowCloseRequested, this, [this] {
            chu_.khiTachTuDong(ma_);
            if (daDong_) tach_.an(ma_);
        });
    }
    ~KhungTach() override {
        // The page goes before the view that shows it, and may outlive neither.
        nhin_->setPage(nullptr);
    }
    KhungTach(const KhungTach&) = delete;
    KhungTach& operator=(const KhungTach&) = delete;

    [[nodiscard]] TrangChung& trang() { return *trang_; }

    // Takes the page in that was asked for, and shows it. The engine gives a page that another one has opened
    // no settings of its own before it goes somewhere, and ends the process when it draws without them. So
    // they are made by a page that nobody sees, and handed over, in a turn of their own, before anything is
    // drawn.
    void nhan(QWebEngineNewWindowRequest& xin) {
        trang_->setHtml(QString());
        xin.openIn(trang_.get());
        trang_->settings()->setAttribute(QWebEngineSettings::PluginsEnabled, false);
        QTimer::singleShot(0, this, [this] {
            if (daDong_) return;
            show();
            activateWindow();
        });
    }

    // Out of sight at once; deletes itself, but not within an event of its own page, and not while that page
    // is asking: the loop that turns then runs within the page.
    void boDi() {
        hide();
        trang_->thoiHoi();
        if (!trang_->dangHoi()) return deleteLater();
        QTimer::singleShot(xemLaiSau, this, [this] { boDi(); });
    }

  protected:
    void closeEvent(QCloseEvent* e) override {
        e->accept();
        if (std::exchange(daDong_, true)) return;
        chu_.khiTachSapDong(ma_);
        QTimer::singleShot(hanDong, this, [this] { tach_.an(ma_); });
    }

  private:
    std::unique_ptr<TrangChung> trang_;
    QWebEngineView* nhin_;
    MaTach ma_;
    CuaSo& chu_;
    CuaSoTachLinux& tach_;
    bool daDong_ = false;
};

CuaSoTachLinux::CuaSoTachLinux(HoSoWeb& hoSo) : hoSo_(hoSo) {}

CuaSoTachLinux::~CuaSoTachLinux() = default;

void CuaSoTachLinux::mo(const MoTach& mo, QWebEngineNewWindowRequest& xin, CuaSo& chu) {
    auto khung = std::make_unique<KhungTach>(mo, chu, *this);
    khung->nhan(xin);
    cacKhung_[mo.ma] = std::move(khung);
}

void CuaSoTachLinux::dong(MaTach ma) {
    if (const auto o = cacKhung_.find(ma); o != cacKhung_.end()) o->second->close();
}

void CuaSoTachLinux::an(MaTach ma) {
    auto nut = cacKhung_.extract(ma);
    if (!nut) return;
    nut.mapped().release()->boDi();
}

void CuaSoTachLinux::chay(MaTach ma, const char* js) {
    if (const auto o = cacKhung_.find(ma); o != cacKhung_.end()) {
        o->second->trang().runJavaScript(QString::fromUtf8(js), QWebEngineScript::MainWorld);
    }
}

}  // namespace tovira

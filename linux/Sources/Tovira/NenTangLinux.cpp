#include "NenTangLinux.hpp"

#include <unistd.h>
#include <xcb/xcb.h>

#include <QLoggingCategory>
#include <QMenuBar>
#include <QSessionManager>
#include <QTimer>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <optional>
#include <utility>

#include "BaoMaMayLinux.hpp"
#include "BatBien.hpp"
#include "DieuKhienLinux.hpp"
#include "ManHinhLinux.hpp"
#include "MayChuNhanNen.hpp"
#include "NoiGiaoDienLinux.hpp"
#include "TinHieuLinux.hpp"

namespace tovira {
namespace {

// The engine would end the process in the middle of its own start.
bool hopCatDungDuoc() {
    if (::geteuid() != 0) return true;
    if (qEnvironmentVariableIntValue("QTWEBENGINE_DISABLE_SANDBOX") == 1) return true;
    if (qEnvironmentVariable("QTWEBENGINE_CHROMIUM_FLAGS").contains(QStringLiteral("--no-sandbox")))
        return true;
    std::fputs(
        "✗ The web engine's sandbox cannot start for root. Start Tovira as an ordinary user, or set "
        "QTWEBENGINE_DISABLE_SANDBOX=1 to run it without the sandbox.\n",
        stderr);
    return false;
}

// What the engine leaves out:
// - names in place of this machine's addresses, which only a multicast resolver knows and many networks have
// none of;
// - keeping a page that came over plain HTTP from this machine's loopback servers: a server in the house has
// no
//   certificate, and its page must reach the picture. The loopback servers ask for their secrets all the
//   same.
// What the user asked of the engine stays.
void datCoDongCo() {
    constexpr const char* bien = "QTWEBENGINE_CHROMIUM_FLAGS";
    const QByteArray co = "--disable-features=";
    QByteArray dat = qgetenv(bien);
    for (const char* tinhNang : {"WebRtcHideLocalIpsWithMdns", "BlockInsecurePrivateNetworkRequests"}) {
        if (dat.contains(tinhNang)) continue;
        // Of several such flags the engine follows the last one only.
        const auto cho = dat.lastIndexOf(co);
        if (cho >= 0)
            dat.insert(cho + co.size(), QByteArray(tinhNang) + ',');
        else
            dat += (dat.isEmpty() ? QByteArray() : QByteArray(" ")) + co + tinhNang;
    }
    qputenv(bien, dat);
}

bool coManHinh() {
    if (qEnvironmentVariableIsSet("QT_QPA_PLATFORM")) return true;
    xcb_connection_t* noi = xcb_connect(nullptr, nullptr);
    const bool duoc = xcb_connection_has_error(noi) == 0;
    xcb_disconnect(noi);
    if (duoc) {
        // Windows are parked in a way that only X11 knows; a Wayland session has it as well.
        qputenv("QT_QPA_PLATFORM", "xcb");
    } else {
        std::fputs("✗ There is no X display to open a window on (DISPLAY).\n", stderr);
    }
    return duoc;
}

// Whatever tells the program to end has it end by its own rules, not by asking every window.
class NgheThoat final : public QObject {
  public:
    explicit NgheThoat(UngDung& ungDung) : ungDung_(ungDung) { qApp->installEventFilter(this); }

  private:
    bool eventFilter(QObject* vat, QEvent* suKien) override {
        if (vat != qApp || suKien->type() != QEvent::Quit) return false;
        ungDung_.thoat();
        return true;
    }

    UngDung& ungDung_;
};

// When its connection to the display is cut Qt ends the process on the spot; what is held down is held in
// the display, which may well go on.
class LucBiCat {
  public:
    LucBiCat(UngDung& ungDung, VongLap& vongLap) {
        static const bool daDangKy = std::atexit(&LucBiCat::thaHet) == 0;
        TOVIRA_BUOC(daDangKy);
        ungDung_ = &ungDung;
        vongLap_ = &vongLap;
    }
    ~LucBiCat() { ungDung_ = nullptr; }
    LucBiCat(const LucBiCat&) = delete;
    LucBiCat& operator=(const LucBiCat&) = delete;

  private:
    static void thaHet() {
        if (ungDung_ != nullptr && vongLap_->dangOChinh()) std::exchange(ungDung_, nullptr)->khiSapKetThuc();
    }

    static inline UngDung* ungDung_ = nullptr;
    static inline VongLap* vongLap_ = nullptr;
};

int& datTen(int& soThamSo) {
    QApplication::setOrganizationName(QStringLiteral("Tovira"));
    QApplication::setApplicationName(QStringLiteral("Tovira"));
    QApplication::setDesktopFileName(QStringLiteral("tovira"));
    QApplication::setQuitOnLastWindowClosed(false);
    // The engine's account of its own settings is for those who ask for it (QT_LOGGING_RULES).
    QLoggingCategory::setFilterRules(QStringLiteral("qt.webenginecontext=false"));
    return soThamSo;
}

}  // namespace

std::unique_ptr<NenTang> NenTang::tao(int& soThamSo, char** thamSo, MotBan& motBan) {
    if (!hopCatDungDuoc() || !coManHinh()) return nullptr;
    std::signal(SIGPIPE, SIG_IGN);
    datCoDongCo();
    HoSoWeb::dangKyGiaoThuc();
    return std::make_unique<NenTangLinux>(soThamSo, thamSo, motBan);
}

NenTangLinux::NenTangLinux(int& soThamSo, char** thamSo, MotBan& motBan)
    : ung_(datTen(soThamSo), thamSo),
      vaoCho_(motBan),
      tuKhoiDong_(TuKhoiDong::tao()),
      dieuKhien_(taoNenDieuKhien(vongLap_, [this](const std::string& lyDo) { noiThieu("Trợ năng", lyDo); })),
      manHinh_(taoNenManHinh([this](const std::string& lyDo) { noiThieu("Ghi màn hình", lyDo); })),
      mayChuNhan_(taoNenMayChuNhan()),
      xinQuyen_(*dieuKhien_),
      tach_(hoSo_),
      trang_(hoSo_, tach_),
      cua_(trang_, caiDat_),
      khay_([this] { return cua_.menuBar(); }),
      ungDung_(vongLap_) {}

std::string NenTangLinux::thuMucGiaoDien() const {
    return noiGiaoDien();
}

// Later: the page that asked must not wait for the user.
void NenTangLinux::noiThieu(const char* ten, const std::string& lyDo) {
    if (dangNoi_) return;
    dangNoi_ = true;
    vongLap_.chay([this, ten, lyDo] {
        hopBao_.canhBao(ten, lyDo.empty() ? "Tovira đã có quyền này trên máy này. Không thiếu gì." : lyDo);
        dangNoi_ = false;
    });
}

int NenTangLinux::chay(UngDung& ungDung, UngDung::KhoiDong cach) {
    const TinHieuLinux tinHieu([&ungDung] { ungDung.thoat(); });
    vaoCho_.motBan.nghe([&ungDung] { ungDung.khiMoLaiUngDung(UngDung::CoCuaSoHien::khong); },
                        [this, &ungDung] {
                            ungDung_.khiMatCho();
                            ungDung.thoat();
                        });
    const NgheThoat ngheThoat(ungDung);
    const LucBiCat lucBiCat(ungDung, vongLap_);
    QObject moc;
    cua_.khiChonMenu = [&ungDung](LenhMenu lenh) {
        switch (lenh) {
            case LenhMenu::gioiThieu:
                return ungDung.moGioiThieu();
            case LenhMenu::huongDan:
                return ungDung.moHuongDan();
            case LenhMenu::thoat:
                return ungDung.thoat();
            default:
                return;
        }
    };
    // The session ends: what is held must be let go before the display goes.
    QObject::connect(
        &ung_, &QGuiApplication::commitDataRequest, &moc,
        [&ungDung](QSessionManager&) { ungDung.khiSapKetThuc(); }, Qt::DirectConnection);
    QObject::connect(&ung_, &QCoreApplication::aboutToQuit, &moc, [&ungDung] { ungDung.khiSapKetThuc(); });
    std::optional<BaoMaMayLinux> baoMa;
    QTimer::singleShot(0, &moc, [this, &ungDung, &baoMa, cach] {
        ungDung.khiKhoiDongXong(cach);
        cua_.baoKhiTrangNap(qEnvironmentVariable("TOVIRA_TEP_SAN_SANG"));
        baoMa.emplace(trang_, qEnvironmentVariable("TOVIRA_TEP_MA"));
    });
    const int ra = QApplication::exec();
    cua_.khiChonMenu = nullptr;
    return ra;
}

}  // namespace tovira

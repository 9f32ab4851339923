#include "TrangChinh.hpp"

#include <QWebEngineLoadingInfo>
#include <chrono>

namespace tovira {
namespace {

// A clicked link is followed in the same breath; what goes to the same address later was no click.
constexpr std::chrono::seconds doiSauBam{2};
// The engine's progress of a load that has not been answered yet.
constexpr int tienDoChuaTraLoi = 10;
constexpr int maBiHuy = -3;  // net::ERR_ABORTED

// As location.origin spells it. The engine's addresses are canonical already.
std::string gocCua(const QUrl& url) {
    const QString giaoThuc = url.scheme();
    if (giaoThuc != u"http" && giaoThuc != u"https") return "null";
    const int cong = url.port();
    QString goc = giaoThuc + QStringLiteral("://") + url.host(QUrl::FullyEncoded);
    if (url.host().contains(u':')) {
        goc = giaoThuc + QStringLiteral("://[") + url.host() + u']';
    }
    if (cong != -1 && cong != (giaoThuc == u"http" ? 80 : 443)) goc += u':' + QString::number(cong);
    return goc.toStdString();
}

}  // namespace

TrangChinh::TrangChinh(QWebEngineProfile& hoSo, CuaSo& chu, CuaSoTachLinux& tach)
    : TrangChung(hoSo, chu, tach),
      kenh_(*this, {[this](const QString& json, const std::string& goc) {
                        // Both the address of this page, which may already be the next one's, and what its
                        // document says.
                        if (!chu_.gocCauDuoc(gocCua(url()))) return;
                        chu_.cau().nhan(json.toStdString(), {LoaiKhung::chinh, goc});
                    },
                    [this](const QString& diaChi) { khiBam(diaChi); },
                    [this](const QString& diaChi) { return xet(QUrl(diaChi), LoaiDieuHuong::bamLienKet); }}) {
    hanCho_.setSingleShot(true);
    hanBam_.setSingleShot(true);
    hanBam_.setInterval(doiSauBam);
    connect(&hanCho_, &QTimer::timeout, this, [this] {
        triggerAction(QWebEnginePage::Stop);
        chu_.neuHongThiBao(LyDoHong::khac);
    });
    connect(this, &QWebEnginePage::urlChanged, &hanCho_, &QTimer::stop);
    connect(this, &QWebEnginePage::loadProgress, this, [this](int phanTram) {
        if (phanTram > tienDoChuaTraLoi) hanCho_.stop();
    });
    connect(this, &QWebEnginePage::loadingChanged, this, &TrangChinh::khiTaiDoi);
    // Later: the engine is still taking the dead process apart.
    connect(
        this, &QWebEnginePage::renderProcessTerminated, this, [this] { chu_.khiTrangChet(); },
        Qt::QueuedConnection);
}

void TrangChinh::tai(const QUrl& url, double cho) {
    load(url);
    hanCho_.start(std::chrono::milliseconds(static_cast<long>(cho * 1000)));
}

void TrangChinh::taiHtml(const QString& html) {
    hanCho_.stop();
    setHtml(html);
}

bool TrangChinh::acceptNavigationRequest(const QUrl& url, NavigationType kieu, bool khungChinh) {
    return xet(url, loai(url, kieu, khungChinh));
}

bool TrangChinh::xet(const QUrl& url, LoaiDieuHuong loai) {
    ThaoTacDieuHuong thaoTac;
    if (!url.isEmpty()) thaoTac.diaChi = diaChiCua(url);
    thaoTac.loai = loai;
    switch (chu_.khiDieuHuong(thaoTac)) {
        case TraLoiDieuHuong::choPhep:
            return true;
        case TraLoiDieuHuong::taiXuong:
            download(url);
            break;
        case TraLoiDieuHuong::huy:
            break;
    }
    return false;
}

// The engine calls a script's own navigation a link click too; a click is one only if it was seen. One in
// another frame was asked about before.
LoaiDieuHuong TrangChinh::loai(const QUrl& url, NavigationType kieu, bool khungChinh) {
    if (!khungChinh) return LoaiDieuHuong::khac;
    if (kieu == NavigationTypeRedirect) return truoc_;
    const bool bam = kieu == NavigationTypeLinkClicked && hanBam_.isActive() && url == diaChiBam_;
    hanBam_.stop();
    truoc_ = bam ? LoaiDieuHuong::bamLienKet : LoaiDieuHuong::khac;
    return truoc_;
}

void TrangChinh::khiBam(const QString& diaChi) {
    diaChiBam_ = QUrl(diaChi);
    hanBam_.start();
}

void TrangChinh::khiTaiDoi(const QWebEngineLoadingInfo& tin) {
    if (tin.status() == QWebEngineLoadingInfo::LoadStartedStatus) return;
    hanCho_.stop();
    if (tin.status() == QWebEngineLoadingInfo::LoadSucceededStatus) return;
    // An answer is an answer, whatever its status.
    if (tin.errorDomain() == QWebEngineLoadingInfo::HttpStatusCodeDomain) return;
    // Aborted is also what the engine calls a load that became a download or that was refused.
    const bool huy = tin.status() == QWebEngineLoadingInfo::LoadStoppedStatus || tin.errorCode() == maBiHuy;
    chu_.neuHongThiBao(huy ? LyDoHong::daHuy : LyDoHong::khac);
}

}  // namespace tovira

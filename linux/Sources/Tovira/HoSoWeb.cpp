#include "HoSoWeb.hpp"

#include <QWebEngineSettings>
#include <QWebEngineUrlScheme>

#include "ChinhSachDieuHuong.hpp"
#include "DiaChiUrl.hpp"

namespace tovira {
namespace {

QByteArray tenGiaoThuc() {
    const auto ten = giaoThucCua(ChinhSachDieuHuong::diaChiTaiLai);
    return {ten.data(), static_cast<qsizetype>(ten.size())};
}

}  // namespace

void HoSoWeb::dangKyGiaoThuc() {
    QWebEngineUrlScheme::registerScheme(QWebEngineUrlScheme(tenGiaoThuc()));
}

HoSoWeb::HoSoWeb() : hoSo_(QStringLiteral("Tovira")) {
    hoSo_.setPersistentCookiesPolicy(QWebEngineProfile::AllowPersistentCookies);
    hoSo_.installUrlSchemeHandler(tenGiaoThuc(), &giaoThucRieng_);
    auto& dat = *hoSo_.settings();
    // A failed load shows this program's own page.
    dat.setAttribute(QWebEngineSettings::ErrorPageEnabled, false);
    // The picture of a session starts by itself.
    dat.setAttribute(QWebEngineSettings::PlaybackRequiresUserGesture, false);
    dat.setAttribute(QWebEngineSettings::JavascriptCanAccessClipboard, true);
    dat.setAttribute(QWebEngineSettings::JavascriptCanOpenWindows, true);
    dat.setAttribute(QWebEngineSettings::ScreenCaptureEnabled, false);
    dat.setAttribute(QWebEngineSettings::PluginsEnabled, false);
    dat.setAttribute(QWebEngineSettings::LocalContentCanAccessRemoteUrls, false);
    // Both ends of a direct connection may be on one local network.
    dat.setAttribute(QWebEngineSettings::WebRTCPublicInterfacesOnly, false);
}

}  // namespace tovira

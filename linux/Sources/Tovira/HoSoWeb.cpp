#include "HoSoWeb.hpp"

#include <QWebEngineSettings>

namespace tovira {

HoSoWeb::HoSoWeb() : hoSo_(QStringLiteral("Tovira")) {
    hoSo_.setPersistentCookiesPolicy(QWebEngineProfile::AllowPersistentCookies);
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

#include "KenhCau.hpp"

#include <QJsonArray>
#include <QJsonDocument>
#include <QUuid>
#include <QWebEnginePage>
#include <QWebEngineScript>
#include <QWebEngineScriptCollection>

namespace tovira {
namespace {

constexpr auto theGioiRieng = QWebEngineScript::ApplicationWorld;

// Published without a superclass, so that the channel finds `nhan` and nothing of QObject: no deleteLater, no
// objectName, no signals.
class KenhCauKin final : public KenhCauTho {
  public:
    using KenhCauTho::KenhCauTho;
    const QMetaObject* metaObject() const override {
        static const QMetaObject kin = [] {
            QMetaObject m = KenhCauTho::staticMetaObject;
            m.d.superdata = nullptr;
            return m;
        }();
        return &kin;
    }
};

// In the isolated world of every document of the main frame. %1: trusted origins, %2: name of the event.
// The transport takes an "invoke" (6) without any handshake, so that nothing posted early is lost or
// reordered. A window's own origin is compared as well: a sandboxed document is not what its address says.
constexpr const char16_t* chuyenTiep =
    uR"js((function () {
  if (window !== window.top || !window.qt) return;
  var ong = qt.webChannelTransport;
  ong.onmessage = function () {};
  var gui = function (chu) {
    ong.send(JSON.stringify({ type: 6, object: 'tv', method: 'nhan', args: [chu], id: 0 }));
  };
  window.addEventListener('click', function (e) {
    var a = e.composedPath().find(function (n) { return n instanceof HTMLElement && n.matches('a[href], area[href]'); });
    if (!a) return;
    if (a.protocol === 'data:' && !a.hasAttribute('download')) {
      // The engine refuses to go there before it asks anyone; as a download it goes.
      a.setAttribute('download', '');
      setTimeout(function () { a.removeAttribute('download'); }, 0);
      return;
    }
    gui('b' + a.href);
  }, true);
  if (%1.indexOf(String(location.origin)) < 0 || window.origin !== location.origin) return;
  // What one turn of the page posts travels together: a burst costs one crossing.
  var cho = [];
  window.addEventListener('%2', function (e) {
    if (typeof e.detail !== 'string' || cho.push(e.detail) > 1) return;
    Promise.resolve().then(function () {
      var gom = cho;
      cho = [];
      gui('k' + JSON.stringify([String(location.origin)].concat(gom)));
    });
  });
})();
)js";

// In the page's own world, before the bridge script. Like the channel of a WebKit view it takes any value and
// drops what cannot be said. %1: name of the event.
constexpr const char16_t* dauTrang =
    uR"js((function () {
  if (window !== window.top) return;
  var phat = window.dispatchEvent.bind(window), SuKien = CustomEvent, viet = JSON.stringify;
  window.webkit = { messageHandlers: { tv: { postMessage: function (o) {
    try { phat(new SuKien('%1', { detail: viet(o) })); } catch (e) {}
  } } } };
})();
)js";

QWebEngineScript kichBanTai(const char* ten, const QString& chu, QWebEngineScript::ScriptWorldId theGioi) {
    QWebEngineScript s;
    s.setName(QString::fromLatin1(ten));
    s.setSourceCode(chu);
    s.setInjectionPoint(QWebEngineScript::DocumentCreation);
    s.setWorldId(theGioi);
    s.setRunsOnSubFrames(false);
    return s;
}

}  // namespace

KenhCau::KenhCau(QWebEnginePage& trang, NguoiNhan nguoiNhan)
    : trang_(trang),
      nguoiNhan_(std::move(nguoiNhan)),
      dau_(std::make_unique<KenhCauKin>([this](const QString& chu) { nhan(chu); })),
      tenSuKien_(QStringLiteral("tv-") + QUuid::createUuid().toString(QUuid::Id128)) {
    kenh_.registerObject(QStringLiteral("tv"), dau_.get());
    trang_.setWebChannel(&kenh_, theGioiRieng);
    datKichBan({}, {});
}

KenhCau::~KenhCau() {
    kenh_.deregisterObject(dau_.get());
    trang_.setWebChannel(nullptr);
}

void KenhCau::datKichBan(const std::string& kichBan, const std::vector<std::string>& gocTin) {
    QJsonArray goc;
    for (const auto& g : gocTin)
        goc.append(QString::fromStdString(g));
    const auto danhSach = QString::fromUtf8(QJsonDocument(goc).toJson(QJsonDocument::Compact));
    // Not one multi-argument replacement each: an origin might hold a "%2".
    QString rieng = QString::fromUtf16(chuyenTiep);
    rieng.replace(QStringLiteral("%2"), tenSuKien_).replace(QStringLiteral("%1"), danhSach);
    QString chung = QString::fromUtf16(dauTrang);
    chung.replace(QStringLiteral("%1"), tenSuKien_);

    auto& cac = trang_.scripts();
    cac.clear();
    cac.insert(kichBanTai("tv-chuyen-tiep", rieng, theGioiRieng));
    if (!kichBan.empty()) {
        cac.insert(
            kichBanTai("tv-cau", chung + QString::fromStdString(kichBan), QWebEngineScript::MainWorld));
    }
}

void KenhCau::nhan(const QString& chu) const {
    if (chu.startsWith(u'k')) {
        auto gom = QJsonDocument::fromJson(chu.sliced(1).toUtf8()).array();
        if (gom.isEmpty()) return;
        const std::string goc = gom.takeAt(0).toString().toStdString();
        for (const auto& json : std::as_const(gom))
            nguoiNhan_.khiThongDiep(json.toString(), goc);
    } else if (chu.startsWith(u'b')) {
        nguoiNhan_.khiBam(chu.sliced(1));
    }
}

}  // namespace tovira

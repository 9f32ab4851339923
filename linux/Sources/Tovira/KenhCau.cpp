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

// In the isolated world of every document, the frames within included. %1: trusted origins, %2: name of the
// event, %3: what only these scripts know. Only the main frame has a transport; it takes an "invoke" (6)
// without any handshake, so that nothing posted early is lost or reordered. A window's own origin is compared
// as well: a sandboxed document is not what its address says.
constexpr const char16_t* chuyenTiep =
    uR"js((function () {
  // A click on a link that the page leaves to take its course. The last to hear of it, so that what the page does about
  // it itself is the page's own doing.
  var khiBam = function (lam) {
    window.addEventListener('click', function (e) {
      if (e.defaultPrevented) return;
      var a = e.composedPath().find(function (n) { return n instanceof HTMLElement && n.matches('a[href], area[href]'); });
      if (!a || a.hasAttribute('download')) return;
      if (a.protocol !== 'data:') return lam(a, e);
      // The engine refuses to go there before it asks anyone; as a download it goes.
      a.setAttribute('download', '');
      setTimeout(function () { a.removeAttribute('download'); }, 0);
    });
  };
  if (window !== window.top) {
    khiBam(function (a, e) {
      // A new window asks for itself.
      if (a.target === '_blank' || e.ctrlKey || e.metaKey || e.shiftKey || e.altKey) return;
      // The host is asked by way of the main frame, which would be too late for a click under way.
      e.preventDefault();
      var ong = new MessageChannel();
      ong.port1.onmessage = function (tra) {
        ong.port1.close();
        if (tra.data !== true) return;
        // Outside the document nobody else hears of it.
        var di = a.cloneNode(false);
        di.getAttributeNames().forEach(function (t) { if (/^on/i.test(t)) di.removeAttribute(t); });
        di.click();
      };
      window.top.postMessage(['%3', a.href], '*', [ong.port2]);
    });
    return;
  }
  if (!window.qt) return;
  var ong = qt.webChannelTransport, soHoi = 0, choTra = new Map();
  var goi = function (ten, doi, so) {
    ong.send(JSON.stringify({ type: 6, object: 'tv', method: ten, args: [doi], id: so }));
  };
  var gui = function (chu) { goi('nhan', chu, 0); };
  ong.onmessage = function (m) {
    var tra = JSON.parse(m.data), cua = tra.type === 10 && choTra.get(tra.id);
    if (!cua) return;
    choTra.delete(tra.id);
    cua.postMessage(tra.data === true);
  };
  window.addEventListener('message', function (e) {
    if (e.ports.length !== 1 || !Array.isArray(e.data) || e.data[0] !== '%3') return;
    e.stopImmediatePropagation();
    choTra.set(++soHoi, e.ports[0]);
    goi('hoi', String(e.data[1]), soHoi);
  }, true);
  khiBam(function (a) { gui('b' + a.href); });
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

enum class KhungCon : bool { khong, co };  // in the frames within as well?

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

QString tenNgauNhien() {
    return QUuid::createUuid().toString(QUuid::Id128);
}

QWebEngineScript kichBanTai(const char* ten, const QString& chu, QWebEngineScript::ScriptWorldId theGioi,
                            KhungCon khungCon) {
    QWebEngineScript s;
    s.setName(QString::fromLatin1(ten));
    s.setSourceCode(chu);
    s.setInjectionPoint(QWebEngineScript::DocumentCreation);
    s.setWorldId(theGioi);
    s.setRunsOnSubFrames(khungCon == KhungCon::co);
    return s;
}

}  // namespace

KenhCau::KenhCau(QWebEnginePage& trang, NguoiNhan nguoiNhan)
    : trang_(trang),
      nguoiNhan_(std::move(nguoiNhan)),
      dau_(std::make_unique<KenhCauKin>(
          [this](const QString& chu) { nhan(chu); },
          [this](const QString& diaChi) { return nguoiNhan_.duocTheo(diaChi); })),
      tenSuKien_(QStringLiteral("tv-") + tenNgauNhien()),
      khoaBam_(tenNgauNhien()) {
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
    rieng.replace(QStringLiteral("%3"), khoaBam_)
        .replace(QStringLiteral("%2"), tenSuKien_)
        .replace(QStringLiteral("%1"), danhSach);
    QString chung = QString::fromUtf16(dauTrang);
    chung.replace(QStringLiteral("%1"), tenSuKien_);

    auto& cac = trang_.scripts();
    cac.clear();
    cac.insert(kichBanTai("tv-chuyen-tiep", rieng, theGioiRieng, KhungCon::co));
    if (!kichBan.empty()) {
        cac.insert(kichBanTai("tv-cau", chung + QString::fromStdString(kichBan), QWebEngineScript::MainWorld,
                              KhungCon::khong));
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

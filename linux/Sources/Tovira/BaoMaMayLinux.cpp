#include "BaoMaMayLinux.hpp"

#include <QPointer>
#include <QSaveFile>
#include <QVariant>
#include <QWebEngineScript>
#include <chrono>

#include "BaoMaMay.hpp"
#include "TrangLinux.hpp"

namespace tovira {

BaoMaMayLinux::BaoMaMayLinux(TrangLinux& trang, const QString& tep) : trang_(trang), tep_(tep) {
    if (tep_.isEmpty()) return;
    QObject::connect(&nhip_, &QTimer::timeout, &nhip_, [this] { xem(); });
    nhip_.start(std::chrono::seconds(1));
}

void BaoMaMayLinux::xem() {
    // An answer may come when this has gone; its timer goes with it.
    const auto khiCo = [this, con = QPointer<QTimer>(&nhip_)](const QVariant& tuTrang) {
        if (con) ghi(BaoMaMay::ghi(tuTrang.toString().toStdString()));
    };
    // In a world of its own: the page's scripts cannot change what this reads with.
    trang_.khungNhin().page()->runJavaScript(QString::fromUtf8(BaoMaMay::kichBan),
                                             QWebEngineScript::ApplicationWorld, khiCo);
}

void BaoMaMayLinux::ghi(const std::string& noiDung) {
    if (noiDung.empty() || noiDung == daGhi_) return;
    QSaveFile ra(tep_);
    if (!ra.open(QIODevice::WriteOnly)) return;
    // Before anything is in it. What cannot be written is tried again a second later.
    if (!ra.setPermissions(QFileDevice::ReadOwner | QFileDevice::WriteOwner)) return;
    ra.write(noiDung.data(), static_cast<qint64>(noiDung.size()));
    if (ra.commit()) daGhi_ = noiDung;
}

}  // namespace tovira

#include "TaiXuongLinux.hpp"

#include <QFile>
#include <QFileInfo>
#include <QWebEngineDownloadRequest>
#include <QWebEngineProfile>

namespace tovira {
namespace {

// The engine has a word of its own for what has no name ("data:" links); the extension after it is worth
// keeping.
std::string tenGoiY(const QWebEngineDownloadRequest& tai) {
    const QString khongTen = QStringLiteral("qwe_download");
    QString ten = tai.suggestedFileName();
    if (ten.startsWith(khongTen)) ten.replace(0, khongTen.size(), QStringLiteral("tep-nhan-duoc"));
    return ten.toStdString();
}

}  // namespace

void TaiXuongLinux::nhan(QWebEngineProfile& hoSo) {
    QObject::connect(&hoSo, &QWebEngineProfile::downloadRequested, &moc_,
                     [this](QWebEngineDownloadRequest* tai) { khiXin(*tai); });
}

void TaiXuongLinux::khiXin(QWebEngineDownloadRequest& tai) {
    const MaTai ma = tai.id();
    if (dangTai_.contains(ma)) {
        // Interrupted, and the engine would try again by itself: what has failed has failed. Not accepted, it
        // ends.
        return hong(ma, tai);
    }
    dangTai_.insert(ma);
    const QFileInfo cho(QFile::decodeName(chu_.khiChonNoiLuu(ma, tenGoiY(tai)).c_str()));
    // In this order: with the folder the engine makes up a name of its own.
    tai.setDownloadDirectory(cho.path());
    tai.setDownloadFileName(cho.fileName());
    QObject::connect(&tai, &QWebEngineDownloadRequest::stateChanged, &moc_, [this, ma, &tai](auto trangThai) {
        switch (trangThai) {
            case QWebEngineDownloadRequest::DownloadCompleted:
                if (dangTai_.erase(ma) > 0) chu_.khiTaiXong(ma);
                break;
            case QWebEngineDownloadRequest::DownloadCancelled:
            case QWebEngineDownloadRequest::DownloadInterrupted:
                hong(ma, tai);
                break;
            default:
                break;
        }
    });
    tai.accept();
}

void TaiXuongLinux::hong(MaTai ma, const QWebEngineDownloadRequest& tai) {
    if (dangTai_.erase(ma) > 0) chu_.khiTaiHong(ma, tai.interruptReasonString().toStdString());
}

}  // namespace tovira

#include "TaiXuongLinux.hpp"

#include <QFile>
#include <QFileInfo>
#include <QWebEngineDownloadRequest>
#include <QWebEngineProfile>

namespace tovira {

void TaiXuongLinux::nhan(QWebEngineProfile& hoSo) {
    QObject::connect(&hoSo, &QWebEngineProfile::downloadRequested, &moc_,
                     [this](QWebEngineDownloadRequest* tai) { khiXin(*tai); });
}

void TaiXuongLinux::khiXin(QWebEngineDownloadRequest& tai) {
    const MaTai ma = ++truoc_;
    const QFileInfo cho(
        QFile::decodeName(chu_.khiChonNoiLuu(ma, tai.suggestedFileName().toStdString()).c_str()));
    // In this order: with the folder the engine makes up a name of its own.
    tai.setDownloadDirectory(cho.path());
    tai.setDownloadFileName(cho.fileName());
    QObject::connect(&tai, &QWebEngineDownloadRequest::stateChanged, &moc_, [this, ma, &tai](auto trangThai) {
        switch (trangThai) {
            case QWebEngineDownloadRequest::DownloadCompleted:
                chu_.khiTaiXong(ma);
                break;
            case QWebEngineDownloadRequest::DownloadCancelled:
            case QWebEngineDownloadRequest::DownloadInterrupted:
                chu_.khiTaiHong(ma, tai.interruptReasonString().toStdString());
                tai.disconnect();
                break;
            default:
                break;
        }
    });
    tai.accept();
}

}  // namespace tovira

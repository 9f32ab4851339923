#include "TepNguoiDungLinux.hpp"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDesktopServices>
#include <QDir>
#include <QFileInfo>
#include <QStandardPaths>
#include <QUrl>

namespace tovira {
namespace {

// What every desktop can do: the folder, nothing selected.
void moThuMuc(const QFileInfo& tep) {
    QDesktopServices::openUrl(QUrl::fromLocalFile(tep.isDir() ? tep.filePath() : tep.path()));
}

}  // namespace

std::optional<std::string> TepNguoiDungLinux::thuMucTaiXuong() const {
    const QString duong = QStandardPaths::writableLocation(QStandardPaths::DownloadLocation);
    // A fresh account may not have it yet.
    if (duong.isEmpty() || !QDir().mkpath(duong)) return std::nullopt;
    return QFile::encodeName(duong).toStdString();
}

void TepNguoiDungLinux::hien(const std::string& duong) {
    const QFileInfo tep(QFile::decodeName(QByteArray::fromStdString(duong)));
    const auto phien = QDBusConnection::sessionBus();
    if (!phien.isConnected()) return moThuMuc(tep);
    auto goi = QDBusMessage::createMethodCall(
        QStringLiteral("org.freedesktop.FileManager1"), QStringLiteral("/org/freedesktop/FileManager1"),
        QStringLiteral("org.freedesktop.FileManager1"), QStringLiteral("ShowItems"));
    goi << QStringList{QUrl::fromLocalFile(tep.filePath()).toString(QUrl::FullyEncoded)} << QString();
    auto* cho = new QDBusPendingCallWatcher(phien.asyncCall(goi));
    QObject::connect(cho, &QDBusPendingCallWatcher::finished, cho, [cho, tep] {
        if (cho->isError()) moThuMuc(tep);
        cho->deleteLater();
    });
}

}  // namespace tovira

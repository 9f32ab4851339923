#include "MoDiaChiLinux.hpp"

#include <QDesktopServices>
#include <QUrl>

namespace tovira {

void MoDiaChiLinux::mo(const std::string& diaChi) {
    QDesktopServices::openUrl(QUrl::fromEncoded(QByteArray::fromStdString(diaChi)));
}

}  // namespace tovira

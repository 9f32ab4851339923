#include "CaiDatLinux.hpp"

namespace tovira {

std::optional<std::string> CaiDatLinux::doc(const std::string& khoa) const {
    const QVariant giaTri = kho_.value(QString::fromStdString(khoa));
    if (!giaTri.isValid()) return std::nullopt;
    // An unquoted comma in a file written by hand reads as a list.
    if (giaTri.typeId() == QMetaType::QStringList) return giaTri.toStringList().join(u", ").toStdString();
    return giaTri.toString().toStdString();
}

void CaiDatLinux::ghi(const std::string& khoa, const std::string& giaTri) {
    kho_.setValue(QString::fromStdString(khoa), QString::fromStdString(giaTri));
    kho_.sync();
}

}  // namespace tovira

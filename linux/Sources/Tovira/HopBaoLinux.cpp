#include "HopBaoLinux.hpp"

#include <QMessageBox>
#include <QPointer>

#include "CuaSoLinux.hpp"

namespace tovira {
namespace {

void hoi(QMessageBox::Icon hinh, const std::string& chu, const std::string& chiTiet) {
    // Never on a pop-up, which may go before it is answered. Whatever it belongs to takes it along.
    const QPointer hop = new QMessageBox(hinh, QStringLiteral("Tovira"), QString::fromStdString(chu),
                                         QMessageBox::NoButton, CuaSoLinux::dangHien());
    // A page's text is a text, never markup.
    hop->setTextFormat(Qt::PlainText);
    hop->setInformativeText(QString::fromStdString(chiTiet));
    hop->addButton(QStringLiteral("Đã hiểu"), QMessageBox::AcceptRole);
    hop->exec();
    delete hop;
}

}  // namespace

void HopBaoLinux::canhBao(const std::string& tieuDe, const std::string& chiTiet) {
    hoi(QMessageBox::Warning, tieuDe, chiTiet);
}

void HopBaoLinux::thongBao(const std::string& noiDung) {
    hoi(QMessageBox::NoIcon, noiDung, {});
}

}  // namespace tovira

#include "HopBaoLinux.hpp"

#include <QApplication>
#include <QMessageBox>

namespace tovira {
namespace {

void hoi(QMessageBox::Icon hinh, const std::string& chu, const std::string& chiTiet) {
    QMessageBox hop(hinh, QStringLiteral("Tovira"), QString::fromStdString(chu), QMessageBox::NoButton,
                    QApplication::activeWindow());
    // A page's text is a text, never markup.
    hop.setTextFormat(Qt::PlainText);
    hop.setInformativeText(QString::fromStdString(chiTiet));
    hop.addButton(QStringLiteral("Đã hiểu"), QMessageBox::AcceptRole);
    hop.exec();
}

}  // namespace

void HopBaoLinux::canhBao(const std::string& tieuDe, const std::string& chiTiet) {
    hoi(QMessageBox::Warning, tieuDe, chiTiet);
}

void HopBaoLinux::thongBao(const std::string& noiDung) {
    hoi(QMessageBox::NoIcon, noiDung, {});
}

}  // namespace tovira

#include "UngDungLinux.hpp"

#include <QApplication>
#include <QIcon>
#include <QImage>
#include <QProcess>

#include "BieuTuong.hpp"
#include "GioiThieuLinux.hpp"
#include "HuongDanLinux.hpp"

namespace tovira {
namespace {

// Window managers take the whole icon over the wire; beyond this they only shrink it.
constexpr int canhLonNhat = 256;

}  // namespace

void UngDungLinux::datBieuTuong() {
    QIcon hinh;
    for (const int canh : BieuTuong::canhUngDung) {
        if (canh > canhLonNhat) continue;
        const auto diem = BieuTuong::rgba(canh, BieuTuong::BoGoc::co);
        hinh.addPixmap(
            QPixmap::fromImage(QImage(diem.data(), canh, canh, canh * 4, QImage::Format_RGBA8888).copy()));
    }
    QApplication::setWindowIcon(hinh);
}

// A program without a window is in no desktop's list here: there is no second way to be quiet.
void UngDungLinux::datKieu(UngDung::Kieu /*kieu*/) {}

void UngDungLinux::moBanMoi(std::function<void(std::optional<std::string>)> xong) {
    QProcess ban;
    ban.setProgram(QApplication::applicationFilePath());
    ban.setArguments(QApplication::arguments().mid(1));
    if (ban.startDetached()) return xong(std::nullopt);
    xong(ban.errorString().toStdString());
}

// Not quit(): that asks every window first, and the main one never closes.
void UngDungLinux::ketThuc() {
    QApplication::exit(0);
}

void UngDungLinux::moGioiThieu() {
    GioiThieuLinux::hien();
}

void UngDungLinux::moHuongDan() {
    HuongDanLinux::hien();
}

}  // namespace tovira

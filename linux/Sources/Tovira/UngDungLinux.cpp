#include "UngDungLinux.hpp"

#include <unistd.h>

#include <QApplication>
#include <QIcon>
#include <QImage>
#include <QProcessEnvironment>

#include "BieuTuong.hpp"
#include "GioiThieuLinux.hpp"
#include "HuongDanLinux.hpp"
#include "MotBan.hpp"

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

// The new one runs from the moment at which it takes this one's place.
void UngDungLinux::moBanMoi(std::function<void(std::optional<std::string>)> xong) {
    if (banMoi_) return;  // on its way
    banMoi_ = std::make_unique<QProcess>();
    cho_ = std::make_unique<ChoBanMoi>(vongLap_, [this, xong = std::move(xong)](auto loi) {
        if (loi) banMoi_.release()->deleteLater();  // which ends it, if it is still about to start
        xong(std::move(loi));
    });
    QObject::connect(banMoi_.get(), &QProcess::errorOccurred, banMoi_.get(),
                     [this](QProcess::ProcessError) { cho_->khiHong(banMoi_->errorString().toStdString()); });
    QObject::connect(banMoi_.get(), &QProcess::finished, banMoi_.get(),
                     [this](int ma, QProcess::ExitStatus) { cho_->khiKetThuc(ma); });
    auto moiTruong = QProcessEnvironment::systemEnvironment();
    moiTruong.insert(QString::fromLatin1(MotBan::bienThay), QStringLiteral("1"));
    banMoi_->setProcessEnvironment(moiTruong);
    banMoi_->setProcessChannelMode(QProcess::ForwardedChannels);
    banMoi_->setInputChannelMode(QProcess::ForwardedInputChannel);
    // Ctrl-C at the terminal of the old one is not for the new one.
    banMoi_->setChildProcessModifier([] { ::setsid(); });
    banMoi_->start(QApplication::applicationFilePath(), QApplication::arguments().mid(1));
}

void UngDungLinux::khiMatCho() {
    if (!banMoi_) return;
    // It outlives this program.
    static_cast<void>(banMoi_.release());
    cho_->khiNhanCho();
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

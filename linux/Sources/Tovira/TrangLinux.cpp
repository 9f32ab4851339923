#include "TrangLinux.hpp"

#include <QWebEngineScript>

namespace tovira {

TrangLinux::TrangLinux(HoSoWeb& hoSo, CuaSoTachLinux& tach) : hoSo_(hoSo), tach_(tach) {}

TrangLinux::~TrangLinux() = default;

void TrangLinux::dung(CuaSo& chu) {
    taiXuong_.emplace(chu);
    taiXuong_->nhan(hoSo_.hoSo());
    trang_ = std::make_unique<TrangChinh>(hoSo_.hoSo(), chu, tach_);
    khungNhin_ = std::make_unique<KhungNhin>();
    khungNhin_->setPage(trang_.get());
    khungNhin_->resize(static_cast<int>(CuaSo::rongDau), static_cast<int>(CuaSo::caoDau));
}

void TrangLinux::datKichBan(const std::string& kichBan, const std::vector<std::string>& gocTin) {
    trang_->kenh().datKichBan(kichBan, gocTin);
}

void TrangLinux::tai(const std::string& diaChi, double cho) {
    trang_->tai(QUrl::fromEncoded(QByteArray::fromStdString(diaChi)), cho);
}

void TrangLinux::taiHtml(const std::string& html) {
    trang_->taiHtml(QString::fromStdString(html));
}

void TrangLinux::chay(const std::string& js) {
    trang_->runJavaScript(QString::fromStdString(js), QWebEngineScript::MainWorld);
}

}  // namespace tovira

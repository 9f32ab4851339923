#pragma once
// Main thread. The page of the main window: asks the logic where it may go, and carries the bridge.

#include <QTimer>
#include <QUrl>
#include <memory>

#include "KenhCau.hpp"
#include "TrangChung.hpp"

class QWebEngineLoadingInfo;

namespace tovira {

class TrangChinh final : public TrangChung {
  public:
    TrangChinh(QWebEngineProfile& hoSo, CuaSo& chu, CuaSoTachLinux& tach);

    [[nodiscard]] KenhCau& kenh() { return kenh_; }
    // Loads an address; without any answer after `cho` seconds it has failed.
    void tai(const QUrl& url, double cho);
    void taiHtml(const QString& html);

  protected:
    bool acceptNavigationRequest(const QUrl& url, NavigationType kieu, bool khungChinh) override;

  private:
    // Asks the logic, and does what it says; true when the page may go there.
    [[nodiscard]] bool xet(const QUrl& url, LoaiDieuHuong loai);
    [[nodiscard]] LoaiDieuHuong loai(const QUrl& url, NavigationType kieu, bool khungChinh);
    void khiBam(const QString& diaChi);
    void khiTaiDoi(const QWebEngineLoadingInfo& tin);

    KenhCau kenh_;
    QTimer hanCho_;
    QTimer hanBam_;                              // runs while diaChiBam_ may still be followed
    QUrl diaChiBam_;                             // the link that the user has just clicked
    LoaiDieuHuong truoc_ = LoaiDieuHuong::khac;  // what the navigation under way began as
};

}  // namespace tovira

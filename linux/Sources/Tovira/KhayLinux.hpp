#pragma once
// Main thread. The status item on a Linux desktop: StatusNotifierItem or XEmbed through Qt's tray icon; where
// the desktop has no tray at all, the same menu hangs on a button in the main window's menu bar.

#include <QMenu>
#include <QMenuBar>
#include <QSystemTrayIcon>
#include <QToolButton>
#include <functional>

#include "Khay.hpp"

namespace tovira {

class KhayLinux final : public Khay::Nen {
  public:
    // `thanhMenu` gives the main window's menu bar once that window is built.
    explicit KhayLinux(std::function<QMenuBar*()> thanhMenu) : thanhMenu_(std::move(thanhMenu)) {}

    void dungMuc(Khay& chu, const VeKhay& ve, const char* moTa) override;
    void doiVe(const VeKhay& ve) override;
    [[nodiscard]] bool coChoDat() override { return QSystemTrayIcon::isSystemTrayAvailable(); }
    void moHuongDan() override;
    void moGioiThieu() override;

  private:
    void lapLaiMenu(Khay& chu);
    void xetNutDuPhong();

    std::function<QMenuBar*()> thanhMenu_;
    QMenu menu_;
    QSystemTrayIcon bieuTuong_;
    QToolButton* nut_ = nullptr;  // owned by the menu bar
};

}  // namespace tovira

#pragma once
// Main thread. The program as the desktop sees it.

#include <QProcess>
#include <memory>

#include "ChoBanMoi.hpp"
#include "UngDung.hpp"

namespace tovira {

class UngDungLinux final : public UngDung::Nen {
  public:
    explicit UngDungLinux(VongLap& vongLap) : vongLap_(vongLap) {}

    void datBieuTuong() override;
    void datKieu(UngDung::Kieu kieu) override;
    void moBanMoi(std::function<void(std::optional<std::string>)> xong) override;
    void ketThuc() override;
    void moGioiThieu() override;
    void moHuongDan() override;

    // Another program has taken this one's place: the new instance of a relaunch, if there is one.
    void khiMatCho();

  private:
    VongLap& vongLap_;
    std::unique_ptr<QProcess> banMoi_;
    std::unique_ptr<ChoBanMoi> cho_;
};

}  // namespace tovira

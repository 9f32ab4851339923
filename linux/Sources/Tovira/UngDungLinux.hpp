#pragma once
// Main thread. The program as the desktop sees it.

#include "UngDung.hpp"

namespace tovira {

class UngDungLinux final : public UngDung::Nen {
  public:
    void datBieuTuong() override;
    void datKieu(UngDung::Kieu kieu) override;
    void moBanMoi(std::function<void(std::optional<std::string>)> xong) override;
    void ketThuc() override;
    void moGioiThieu() override;
    void moHuongDan() override;
};

}  // namespace tovira

#pragma once
// Main thread. The main web view.

#include <memory>
#include <optional>

#include "CuaSo.hpp"
#include "CuaSoTachLinux.hpp"
#include "HoSoWeb.hpp"
#include "KhungNhin.hpp"
#include "TaiXuongLinux.hpp"
#include "TrangChinh.hpp"

namespace tovira {

class TrangLinux final : public CuaSo::NenTrang {
  public:
    TrangLinux(HoSoWeb& hoSo, CuaSoTachLinux& tach);
    ~TrangLinux() override;

    void dung(CuaSo& chu) override;
    void datKichBan(const std::string& kichBan, const std::vector<std::string>& gocTin) override;
    void tai(const std::string& diaChi, double cho) override;
    void taiHtml(const std::string& html) override;
    void chay(const std::string& js) override;

    // After dung. Whoever shows it borrows it and gives it back before this goes.
    [[nodiscard]] KhungNhin& khungNhin() { return *khungNhin_; }

  private:
    HoSoWeb& hoSo_;
    CuaSoTachLinux& tach_;
    std::optional<TaiXuongLinux> taiXuong_;
    std::unique_ptr<TrangChinh> trang_;
    std::unique_ptr<KhungNhin> khungNhin_;
};

}  // namespace tovira

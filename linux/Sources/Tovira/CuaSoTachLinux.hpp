#pragma once
// Main thread. The pop-up windows that the logic let in.

#include <map>
#include <memory>

#include "CuaSo.hpp"
#include "HoSoWeb.hpp"

class QWebEngineNewWindowRequest;

namespace tovira {

class CuaSoTachLinux final : public CuaSo::NenTach {
  public:
    explicit CuaSoTachLinux(HoSoWeb& hoSo);
    ~CuaSoTachLinux() override;

    // Opens the window that a page asked for by `xin`, with this identity and size.
    void mo(const MoTach& mo, QWebEngineNewWindowRequest& xin, CuaSo& chu);
    // How many there are, those included whose pages are still closing themselves.
    [[nodiscard]] std::size_t so() const { return cacKhung_.size(); }

    void dong(MaTach ma) override;
    void an(MaTach ma) override;
    void chay(MaTach ma, const char* js) override;

  private:
    class KhungTach;

    HoSoWeb& hoSo_;
    std::map<MaTach, std::unique_ptr<KhungTach>> cacKhung_;
};

}  // namespace tovira

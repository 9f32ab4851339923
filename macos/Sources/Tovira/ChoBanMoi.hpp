#pragma once
// Main thread. Waits for the new instance of a relaunch: it has taken over, it has failed, or it takes too
// long. The first of these is the answer.

#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "HangDoi.hpp"

namespace tovira {

class ChoBanMoi {
  public:
    // The reason, as the user sees it, where the new instance does not run; absent where it does.
    using Xong = std::function<void(std::optional<std::string> loi)>;

    static constexpr double han = 30;  // seconds

    // Calls `xong` once, unless it is destroyed before; that call may destroy it.
    ChoBanMoi(VongLap& vongLap, Xong xong);

    void khiNhanCho() { traLoi(std::nullopt); }
    // It ended with this status before it had taken over.
    void khiKetThuc(int trangThai);
    // It could not be started, or did not end by itself.
    void khiHong(const std::string& moTa) { traLoi(moTa); }

  private:
    void traLoi(std::optional<std::string> loi);

    Xong xong_;
    std::unique_ptr<HenGio> henHan_;
};

}  // namespace tovira

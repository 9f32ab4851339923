#pragma once
// Main thread.

#include "NenChung.hpp"

namespace tovira {

class TepNguoiDungLinux final : public TepNguoiDung {
  public:
    [[nodiscard]] std::optional<std::string> thuMucTaiXuong() const override;
    void hien(const std::string& duong) override;
};

}  // namespace tovira

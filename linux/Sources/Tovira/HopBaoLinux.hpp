#pragma once
// Main thread.

#include "NenChung.hpp"

namespace tovira {

class HopBaoLinux final : public HopBao {
  public:
    void canhBao(const std::string& tieuDe, const std::string& chiTiet) override;
    void thongBao(const std::string& noiDung) override;
};

}  // namespace tovira

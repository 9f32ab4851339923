#pragma once
// Main thread.

#include "NenChung.hpp"

namespace tovira {

class MoDiaChiLinux final : public MoDiaChi {
  public:
    void mo(const std::string& diaChi) override;
};

}  // namespace tovira

#pragma once
// User defaults in memory.

#include <map>

#include "NenChung.hpp"

namespace tovira::gia {

struct CaiDatGia final : CaiDat {
    std::map<std::string, std::string> kho;
    std::optional<std::string> doc(const std::string& khoa) const override {
        const auto cho = kho.find(khoa);
        return cho == kho.end() ? std::nullopt : std::optional(cho->second);
    }
    void ghi(const std::string& khoa, const std::string& giaTri) override { kho[khoa] = giaTri; }
};

}  // namespace tovira::gia

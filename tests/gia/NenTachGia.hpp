#pragma once
// Pop-ups that do as they are told and remember it.

#include <string>
#include <vector>

#include "CuaSoTach.hpp"

namespace tovira::gia {

struct NenTachGia final : CuaSoTach::Nen {
    std::vector<std::string> viec;
    void dong(MaTach ma) override { viec.push_back("dong " + std::to_string(ma)); }
    void an(MaTach ma) override { viec.push_back("an " + std::to_string(ma)); }
    void chay(MaTach ma, const char* js) override { viec.push_back(std::to_string(ma) + ": " + js); }
};

}  // namespace tovira::gia

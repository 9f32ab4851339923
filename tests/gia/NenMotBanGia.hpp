#pragma once
// A desktop on which the place is free or taken, as a test says.

#include <string>
#include <utility>
#include <vector>

#include "MotBan.hpp"

namespace tovira::gia {

struct NenMotBanGia final : MotBan::Nen {
    bool trong = true;
    std::vector<std::string> viec;

    // What was done since the last time this was asked.
    std::vector<std::string> lay() { return std::exchange(viec, {}); }

    bool giuCho() override {
        viec.emplace_back("giữ");
        return trong;
    }
    void goiBanKia() override { viec.emplace_back("gọi"); }
    void nhanCho(double) override { viec.emplace_back("nhận"); }
    void nghe(std::function<void()>, std::function<void()>) override { viec.emplace_back("nghe"); }
};

}  // namespace tovira::gia

#pragma once
// Main thread. The main queue of a mode that ends before any loop would run: nothing posted to it is ever
// due.

#include "HangDoi.hpp"

namespace tovira {

struct VongLapMotLan final : VongLap {
    struct The final : HenGio {};
    void chay(std::function<void()>) override {}
    void chaySau(double, std::function<void()>) override {}
    std::unique_ptr<HenGio> lapLai(double, std::function<void()>) override { return std::make_unique<The>(); }
    double dongHo() const override { return 0; }
    double gioTu1970() const override { return 0; }
    bool dangOChinh() const override { return true; }
};

}  // namespace tovira

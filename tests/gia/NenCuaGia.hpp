#pragma once
// A window that does as it is told and remembers it.

#include <string>
#include <utility>
#include <vector>

#include "DoCuaSo.hpp"

namespace tovira::gia {

struct NenCuaGia final : DoCuaSo::NenCua {
    DoCuaSo::TrangThai cua{{100, 50, 1180, 808}, false, false};
    std::vector<std::string> viec;

    // What was done since the last time this was asked.
    std::vector<std::string> lay() { return std::exchange(viec, {}); }

    void dung(CuaSo&) override { viec.emplace_back("dung"); }
    DoCuaSo::TrangThai trangThai() const override { return cua; }
    void hien(DoCuaSo::CachHien cach) override {
        cua.thuNho = cach == DoCuaSo::CachHien::thuNho;
        viec.emplace_back(cua.thuNho ? "hienThuNho" : "hien");
        cua.hienRa = true;
    }
    void an() override {
        viec.emplace_back("an");
        cua.hienRa = false;
    }
    void doXa() override {
        viec.emplace_back("doXa");
        cua.khung.x = cua.khung.y = -32000;
    }
    void veCho(Diem goc) override {
        viec.emplace_back("veCho");
        cua.khung.x = goc.x;
        cua.khung.y = goc.y;
    }
    void raTruoc() override {
        viec.emplace_back("raTruoc");
        cua.hienRa = true;
        cua.thuNho = false;
    }
    void choThuNho() override { viec.emplace_back("choThuNho"); }
};

}  // namespace tovira::gia

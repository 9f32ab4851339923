#pragma once
// An event stream that only remembers what was posted into it.

#include <functional>
#include <limits>
#include <utility>
#include <vector>

#include "DieuKhien.hpp"

namespace tovira::gia {

class NenDieuKhienGia final : public DieuKhien::Nen {
  public:
    bool phep = true;
    KhungHinh manHinhChinh{0, 0, 1000, 500};
    double bamDup = 0.5;
    // Events from this one on cannot be made.
    std::size_t hongTu = std::numeric_limits<std::size_t>::max();

    // Told of every event, for tests in which the process does not live to be asked.
    std::function<void(const SuKien&)> khiDang;

    std::vector<SuKien> suKien;
    int soLanHoiPhep = 0;
    int soLanMoCaiDat = 0;
    // Index into suKien at which each text began and ended.
    std::vector<std::size_t> batDau, ketThuc;
    // Likewise for each time waiting text was dropped.
    std::vector<std::size_t> boCho;

    // What was posted since the last time this was asked.
    std::vector<SuKien> lay() { return std::exchange(suKien, {}); }

    bool duocPhep() override {
        ++soLanHoiPhep;
        return phep;
    }
    KhungHinh khungManHinhChinh() override { return manHinhChinh; }
    double khoangBamDup() override { return bamDup; }
    bool dang(const SuKien& sk) override {
        if (suKien.size() >= hongTu) return false;
        suKien.push_back(sk);
        if (khiDang) khiDang(sk);
        return true;
    }
    void batDauChu() override { batDau.push_back(suKien.size()); }
    void ketThucChu() override { ketThuc.push_back(suKien.size()); }
    void boChuDangCho() override { boCho.push_back(suKien.size()); }
    void moCaiDatTroNang() override { ++soLanMoCaiDat; }
};

}  // namespace tovira::gia

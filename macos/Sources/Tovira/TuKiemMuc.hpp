#pragma once
// Main thread. What the files of the self-check share: a check, what it is given, and how it says no.

#include <filesystem>
#include <span>
#include <string>
#include <string_view>
#include <utility>

#include "TuKiem.hpp"

namespace tovira::tu_kiem {

using KetLuan = TuKiem::KetLuan;

struct ChoDua {
    TuKiem::Nen& nen;
    std::filesystem::path thuMucTam;  // empty of anything at first, gone afterwards
};

// One line of the report.
struct Muc {
    const char* ten;
    KetLuan (*ham)(const ChoDua&);
};

[[nodiscard]] std::span<const Muc> mucMayChuAnh();
[[nodiscard]] std::span<const Muc> mucGiaoDienKem();
[[nodiscard]] std::span<const Muc> mucNhanTep();
[[nodiscard]] std::span<const Muc> mucDoMayChu();
[[nodiscard]] std::span<const Muc> mucDieuKhien();
[[nodiscard]] std::span<const Muc> mucDuLieu();
[[nodiscard]] std::span<const Muc> mucTrang();
[[nodiscard]] std::span<const Muc> mucHinhAnh();
[[nodiscard]] std::span<const Muc> mucHeThong();

[[nodiscard]] inline KetLuan buoc(bool dung, std::string lyDo) {
    return dung ? TuKiem::dat() : TuKiem::hong(std::move(lyDo));
}

// The first line of what came instead of what was expected, short enough to read.
[[nodiscard]] std::string rutGon(std::string_view chu);

[[nodiscard]] KetLuan cungChu(std::string_view nhan, std::string_view mong);

// Every row must satisfy `dung`; a row's first member names it.
template <class Bang, class Dung>
[[nodiscard]] KetLuan moiHang(const Bang& bang, Dung dung) {
    for (const auto& hang : bang) {
        const auto& [ten, mong] = hang;
        if (!dung(ten, mong)) return TuKiem::hong("sai ở: " + rutGon(ten));
    }
    return TuKiem::dat();
}

}  // namespace tovira::tu_kiem

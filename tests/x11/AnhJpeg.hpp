#pragma once
// Any thread. Decodes what a viewer would receive.

#include <turbojpeg.h>

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <ostream>
#include <span>
#include <vector>

namespace tovira::thu {

// A colour as 0xRRGGBB, with room for what JPEG loses.
struct Mau {
    std::uint32_t rgb = 0;

    friend bool operator==(const Mau& a, const Mau& b) {
        constexpr int choPhep = 6;
        for (const int dich : {0, 8, 16})
            if (std::abs(static_cast<int>((a.rgb >> dich) & 0xFFU) -
                         static_cast<int>((b.rgb >> dich) & 0xFFU)) > choPhep)
                return false;
        return true;
    }
    friend std::ostream& operator<<(std::ostream& ra, const Mau& m) { return ra << std::hex << m.rgb; }
};

// A decoded picture; 0 × 0 when the bytes are not a JPEG.
struct AnhJpeg {
    int rong = 0;
    int cao = 0;
    std::vector<std::uint8_t> bgrx;

    explicit AnhJpeg(std::span<const std::byte> jpeg) {
        const auto* dau = reinterpret_cast<const unsigned char*>(jpeg.data());
        tjhandle may = tjInitDecompress();
        int kieu = 0;
        int mau = 0;
        if (tjDecompressHeader3(may, dau, jpeg.size(), &rong, &cao, &kieu, &mau) == 0) {
            bgrx.resize(static_cast<std::size_t>(rong) * static_cast<std::size_t>(cao) * 4);
            if (tjDecompress2(may, dau, jpeg.size(), bgrx.data(), rong, 0, cao, TJPF_BGRX, 0) != 0)
                rong = cao = 0;
        } else {
            rong = cao = 0;
        }
        tjDestroy(may);
    }

    [[nodiscard]] Mau tai(int x, int y) const {
        if (x < 0 || y < 0 || x >= rong || y >= cao) return {0xFFFFFFFF};
        const auto* p = &bgrx[(static_cast<std::size_t>(y) * static_cast<std::size_t>(rong) +
                               static_cast<std::size_t>(x)) *
                              4];
        return {static_cast<std::uint32_t>(p[2] << 16 | p[1] << 8 | p[0])};
    }
};

}  // namespace tovira::thu

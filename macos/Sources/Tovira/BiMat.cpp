#include "BiMat.hpp"

#include <sys/random.h>
#include <unistd.h>

#include <algorithm>
#include <vector>

namespace tovira {

void layNgauNhien(std::span<std::byte> ra) {
    constexpr std::size_t toiDaMoiLan = 256;  // getentropy's own limit
    while (!ra.empty()) {
        const auto phan = ra.first(std::min(ra.size(), toiDaMoiLan));
        if (getentropy(phan.data(), phan.size()) != 0) return;
        ra = ra.subspan(phan.size());
    }
}

std::string taoBiMat(std::size_t soByte, NguonNgauNhien nguon) {
    constexpr char chuSo[] = "0123456789abcdef";
    std::vector<std::byte> dem(soByte);
    nguon(dem);
    std::string ra;
    ra.reserve(2 * soByte);
    for (const std::byte b : dem) {
        ra += chuSo[std::to_integer<unsigned>(b >> 4)];
        ra += chuSo[std::to_integer<unsigned>(b & std::byte{15})];
    }
    return ra;
}

}  // namespace tovira

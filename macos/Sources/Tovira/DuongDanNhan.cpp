#include "DuongDanNhan.hpp"

#include <algorithm>
#include <array>
#include <cstdint>

#include "KyTu.hpp"

namespace tovira {
namespace {

constexpr std::size_t toiDaKyTu = 1023;

constexpr std::array<std::int8_t, 256> bangGiai = [] {
    constexpr std::string_view bangChu = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    std::array<std::int8_t, 256> bang{};
    for (auto& o : bang)
        o = -1;
    for (std::size_t i = 0; i < bangChu.size(); ++i)
        bang[static_cast<unsigned char>(bangChu[i])] = static_cast<std::int8_t>(i);
    return bang;
}();

}  // namespace

std::optional<std::string> giaiBase64(std::string_view chu) {
    if (chu.size() % 4 != 0) return std::nullopt;
    const std::size_t dem = chu.ends_with("==") ? 2 : chu.ends_with("=") ? 1 : 0;
    chu.remove_suffix(dem);
    std::string ra;
    ra.reserve(chu.size() / 4 * 3 + 2);
    std::uint32_t gom = 0;
    int soBit = 0;
    for (const char c : chu) {
        const int giaTri = bangGiai[static_cast<unsigned char>(c)];
        if (giaTri < 0) return std::nullopt;
        gom = (gom << 6 | static_cast<std::uint32_t>(giaTri)) & 0xFFFF;
        soBit += 6;
        if (soBit < 8) continue;
        soBit -= 8;
        ra += static_cast<char>(gom >> soBit & 0xFF);
    }
    return ra;
}

std::vector<std::string_view> tachTheoGach(std::string_view duong) {
    std::vector<std::string_view> ra;
    while (!duong.empty()) {
        const std::string_view ten = duong.substr(0, duong.find('/'));
        duong.remove_prefix(std::min(ten.size() + 1, duong.size()));
        if (!ten.empty()) ra.push_back(ten);
    }
    return ra;
}

std::optional<std::vector<std::string_view>> tachDuongNhan(std::string_view duong) {
    if (duong.empty() || duong.front() == '/' || duong.front() == '~') return std::nullopt;
    if (duong.find('\0') != std::string_view::npos) return std::nullopt;
    // No text has more characters than bytes.
    if (duong.size() > toiDaKyTu && demKyTu(duong) > toiDaKyTu) return std::nullopt;
    auto ra = tachTheoGach(duong);
    const bool quayLai =
        std::any_of(ra.begin(), ra.end(), [](auto ten) { return ten == "." || ten == ".."; });
    if (ra.empty() || quayLai) return std::nullopt;
    return ra;
}

}  // namespace tovira

#include "BaoMaMay.hpp"

#include <algorithm>
#include <cstddef>

namespace tovira {

const char BaoMaMay::kichBan[] =
    "['ma-may', 'mat-khau'].map(function (id) {\n"
    "  var o = document.getElementById(id);\n"
    "  return (o && o.dataset.gia) || '';\n"
    "}).join('\\n')";

std::string BaoMaMay::ghi(std::string_view tuTrang) {
    constexpr std::size_t daiMa = 9;
    constexpr std::size_t daiMatKhau = 64;
    const auto laSo = [](char c) { return c >= '0' && c <= '9'; };
    const auto laChu = [laSo](char c) { return laSo(c) || (c >= 'a' && c <= 'z'); };
    if (tuTrang.size() <= daiMa + 1 || tuTrang[daiMa] != '\n') return {};
    const auto ma = tuTrang.substr(0, daiMa);
    const auto matKhau = tuTrang.substr(daiMa + 1);
    if (!std::all_of(ma.begin(), ma.end(), laSo)) return {};
    if (matKhau.size() > daiMatKhau || !std::all_of(matKhau.begin(), matKhau.end(), laChu)) return {};
    return std::string(tuTrang) + '\n';
}

}  // namespace tovira

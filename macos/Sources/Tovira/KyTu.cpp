#include "KyTu.hpp"

#include <utf8proc.h>

#include <algorithm>
#include <charconv>
#include <cstdint>
#include <cstring>

namespace tovira {

namespace {

constexpr utf8proc_int32_t thayThe = 0xFFFD;

struct Ma {
    utf8proc_int32_t so;
    std::size_t dai;  // in bytes, at least 1
    bool dung;
};

// The code point at the front of `utf8`, which must not be empty.
Ma layMa(std::string_view utf8) {
    utf8proc_int32_t so = 0;
    const auto dai = utf8proc_iterate(reinterpret_cast<const utf8proc_uint8_t*>(utf8.data()),
                                      static_cast<utf8proc_ssize_t>(utf8.size()), &so);
    if (dai <= 0) return {thayThe, 1, false};
    return {so, static_cast<std::size_t>(dai), true};
}

// How many bytes at the front of `byte` are ASCII, counted in whole words of eight and then one by one.
std::size_t daiAscii(std::string_view byte) {
    std::size_t i = 0;
    for (std::uint64_t tu = 0; i + sizeof tu <= byte.size(); i += sizeof tu) {
        std::memcpy(&tu, byte.data() + i, sizeof tu);
        if ((tu & 0x8080808080808080U) != 0) break;
    }
    while (i < byte.size() && static_cast<unsigned char>(byte[i]) < 0x80)
        ++i;
    return i;
}

}  // namespace

bool laUtf8(std::string_view byte) {
    for (byte.remove_prefix(daiAscii(byte)); !byte.empty(); byte.remove_prefix(daiAscii(byte))) {
        const Ma ma = layMa(byte);
        if (!ma.dung) return false;
        byte.remove_prefix(ma.dai);
    }
    return true;
}

std::size_t daiKyTuDau(std::string_view utf8) {
    if (utf8.empty()) return 0;
    Ma truoc = layMa(utf8);
    std::size_t dai = truoc.dai;
    utf8proc_int32_t trangThai = 0;
    while (dai < utf8.size()) {
        const Ma sau = layMa(utf8.substr(dai));
        if (utf8proc_grapheme_break_stateful(truoc.so, sau.so, &trangThai)) break;
        dai += sau.dai;
        truoc = sau;
    }
    return dai;
}

std::size_t demKyTu(std::string_view utf8) {
    std::size_t dem = 0;
    while (!utf8.empty()) {
        utf8.remove_prefix(daiKyTuDau(utf8));
        ++dem;
    }
    return dem;
}

std::u16string sangUtf16(std::string_view utf8) {
    std::u16string ra;
    while (!utf8.empty()) {
        const Ma ma = layMa(utf8);
        const auto so = static_cast<std::uint32_t>(ma.so);
        if (so < 0x10000) {
            ra += static_cast<char16_t>(so);
        } else {
            ra += static_cast<char16_t>(0xD800 + ((so - 0x10000) >> 10));
            ra += static_cast<char16_t>(0xDC00 + ((so - 0x10000) & 0x3FF));
        }
        utf8.remove_prefix(ma.dai);
    }
    return ra;
}

std::size_t daiDoanUtf16(std::u16string_view donVi, std::size_t toiDa) {
    if (donVi.size() <= toiDa) return donVi.size();
    const bool giuaCap = donVi[toiDa] >= 0xDC00 && donVi[toiDa] < 0xE000;
    return giuaCap ? toiDa - 1 : toiDa;
}

std::optional<std::int64_t> docSo(std::string_view chu, std::int64_t toiDa) {
    const bool toanSo = std::all_of(chu.begin(), chu.end(), [](char c) { return c >= '0' && c <= '9'; });
    std::int64_t so = 0;
    if (!toanSo || std::from_chars(chu.data(), chu.data() + chu.size(), so).ec != std::errc() || so > toiDa)
        return std::nullopt;
    return so;
}

}  // namespace tovira

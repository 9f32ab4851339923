#include "DiaChiUrl.hpp"

#include <uriparser/Uri.h>

#include <algorithm>
#include <memory>

namespace tovira {
namespace {

// uriparser's pieces are ranges in the text it was given.
std::string_view doan(const UriTextRangeA& r) {
    return r.first == nullptr ? std::string_view() : std::string_view(r.first, r.afterLast - r.first);
}

// A port is decimal digits or nothing; absent (outer) when it is too large to be told.
std::optional<std::optional<std::uint32_t>> docCong(std::string_view chu) {
    if (chu.empty()) return std::optional<std::uint32_t>();
    std::uint64_t so = 0;
    for (const char c : chu) {
        so = so * 10 + static_cast<std::uint64_t>(c - '0');
        if (so > UINT32_MAX) return std::nullopt;
    }
    return static_cast<std::uint32_t>(so);
}

bool laChuCai(char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
}

}  // namespace

std::optional<DiaChiUrl> DiaChiUrl::tach(std::string_view diaChi) {
    UriUriA uri{};
    const char* loi = nullptr;
    if (uriParseSingleUriExA(&uri, diaChi.data(), diaChi.data() + diaChi.size(), &loi) != URI_SUCCESS) {
        return std::nullopt;
    }
    const std::unique_ptr<UriUriA, decltype(&uriFreeUriMembersA)> giu(&uri, &uriFreeUriMembersA);
    const auto cong = docCong(doan(uri.portText));
    if (!cong) return std::nullopt;
    DiaChiUrl ra;
    ra.giaoThuc = doan(uri.scheme);
    ra.may = doan(uri.hostText);
    if (uri.hostData.ip6 != nullptr || uri.hostData.ipFuture.first != nullptr) ra.may = "[" + ra.may + "]";
    ra.cong = *cong;
    return ra;
}

std::optional<DiaChiUrl> DiaChiUrl::tachCuaTrang(std::string_view diaChi) {
    const std::string_view giaoThuc = giaoThucCua(diaChi);
    const std::size_t dau = giaoThuc.size() + 1;
    if (giaoThuc.empty() || diaChi.substr(dau, 2) != "//") return tach(diaChi);
    return tach(diaChi.substr(0, diaChi.find_first_of("/?#", dau + 2)));
}

std::string_view DiaChiUrl::mayTran() const {
    std::string_view m = may;
    if (m.size() >= 2 && m.front() == '[' && m.back() == ']') m = m.substr(1, m.size() - 2);
    return m;
}

std::string chuThuong(std::string_view chu) {
    std::string ra(chu);
    for (char& c : ra)
        if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
    return ra;
}

std::string_view giaoThucCua(std::string_view diaChi) {
    const std::string_view ten = diaChi.substr(0, std::min(diaChi.find(':'), diaChi.size()));
    if (ten.size() == diaChi.size() || ten.empty() || !laChuCai(ten.front())) return {};
    const bool hopLe = std::all_of(ten.begin(), ten.end(), [](char c) {
        return laChuCai(c) || (c >= '0' && c <= '9') || c == '+' || c == '-' || c == '.';
    });
    return hopLe ? ten : std::string_view();
}

}  // namespace tovira

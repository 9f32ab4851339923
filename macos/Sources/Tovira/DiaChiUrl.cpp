#include "DiaChiUrl.hpp"

#include <uriparser/Uri.h>

#include <algorithm>
#include <memory>

#include "KyTu.hpp"

namespace tovira {
namespace {

// uriparser's pieces are ranges in the text it was given.
std::string_view doan(const UriTextRangeA& r) {
    return r.first == nullptr ? std::string_view() : std::string_view(r.first, r.afterLast - r.first);
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
    const auto chuCong = doan(uri.portText);
    const auto cong = docSo(chuCong, UINT32_MAX);
    if (!cong && !chuCong.empty()) return std::nullopt;
    DiaChiUrl ra;
    ra.giaoThuc = doan(uri.scheme);
    ra.may = doan(uri.hostText);
    if (uri.hostData.ip6 != nullptr || uri.hostData.ipFuture.first != nullptr) ra.may = "[" + ra.may + "]";
    if (cong) ra.cong = static_cast<std::uint32_t>(*cong);
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

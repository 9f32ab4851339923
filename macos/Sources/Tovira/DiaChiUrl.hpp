#pragma once
// Any thread: plain values. The pieces of an address that decide trust and routing, exactly as they are
// written.

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace tovira {

struct DiaChiUrl {
    std::string giaoThuc;               // scheme, empty when there is none
    std::string may;                    // host, an IPv6 literal with its brackets; empty when there is none
    std::optional<std::uint32_t> cong;  // only when named explicitly

    // Absent when `diaChi` is no RFC 3986 URI reference. Nothing is lower-cased, decoded or completed.
    [[nodiscard]] static std::optional<DiaChiUrl> tach(std::string_view diaChi);

    // The same for an address as a web engine spells it: engines leave characters in path and query that the
    // RFC does not allow, so that nothing after the authority is looked at.
    [[nodiscard]] static std::optional<DiaChiUrl> tachCuaTrang(std::string_view diaChi);

    // The host without the brackets of an IPv6 literal.
    [[nodiscard]] std::string_view mayTran() const;

    friend bool operator==(const DiaChiUrl&, const DiaChiUrl&) = default;
};

// With its ASCII letters in lower case: schemes and hosts mean the same in either.
[[nodiscard]] std::string chuThuong(std::string_view chu);

// The scheme of an address of any kind ("blob:…", "data:…" included) as it is written; empty when there is
// none.
[[nodiscard]] std::string_view giaoThucCua(std::string_view diaChi);

}  // namespace tovira

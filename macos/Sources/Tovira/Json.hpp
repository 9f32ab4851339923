#pragma once
// Any thread: values. Reads one flat JSON object strictly: nothing after it, no lone surrogates, no broken
// UTF-8, numbers of any length. Nested values are checked and skipped.

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tovira {

class DoiTuongJson {
  public:
    // Absent when `utf8` is not exactly one JSON object. The later of two equal keys wins.
    [[nodiscard]] static std::optional<DoiTuongJson> doc(std::string_view utf8);

    [[nodiscard]] bool co(std::string_view khoa) const;
    // The text under `khoa`; absent when missing or of another type. Lives as long as this object.
    [[nodiscard]] std::optional<std::string_view> chu(std::string_view khoa) const;
    // The number under `khoa`; true and false read as 1 and 0.
    [[nodiscard]] std::optional<double> so(std::string_view khoa) const;
    // The texts under `khoa`; absent when it is not an array of texts only.
    [[nodiscard]] std::optional<std::vector<std::string_view>> mangChu(std::string_view khoa) const;
};

}  // namespace tovira

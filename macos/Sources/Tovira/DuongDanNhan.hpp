#pragma once
// Any thread: pure functions on bytes. The relative path that a sender names: how it travels and what it may
// not be.

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tovira {

// Standard Base64 with its padding, nothing between or around; absent when it is anything else.
[[nodiscard]] std::optional<std::string> giaiBase64(std::string_view chu);

// Splits at "/", empty pieces dropped. The pieces live as long as `duong`.
[[nodiscard]] std::vector<std::string_view> tachTheoGach(std::string_view duong);

// The names that a relative path is made of, never empty, valid as long as `duong`. Absent when it may not be
// used at all: empty, more than 1023 characters, absolute, of the home folder, holding a "." or ".." name or
// a NUL.
[[nodiscard]] std::optional<std::vector<std::string_view>> tachDuongNhan(std::string_view duong);

}  // namespace tovira

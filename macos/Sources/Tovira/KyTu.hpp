#pragma once
// Any thread: pure functions on text. User-perceived characters are the extended grapheme clusters of UAX
// #29.

#include <cstddef>
#include <cstdint>
#include <limits>
#include <optional>
#include <string>
#include <string_view>

namespace tovira {

// Is `byte` well-formed UTF-8 throughout? (No surrogates, nothing overlong, nothing past U+10FFFF.)
[[nodiscard]] bool laUtf8(std::string_view byte);

// The length in bytes of the first character of `utf8`; 0 only when `utf8` is empty.
[[nodiscard]] std::size_t daiKyTuDau(std::string_view utf8);

// How many characters `utf8` has.
[[nodiscard]] std::size_t demKyTu(std::string_view utf8);

// `utf8` in UTF-16 code units. Bytes that are not UTF-8 become U+FFFD.
[[nodiscard]] std::u16string sangUtf16(std::string_view utf8);

// The number that decimal digits and nothing else make; absent for any other text, and beyond `toiDa`.
[[nodiscard]] std::optional<std::int64_t> docSo(
    std::string_view chu, std::int64_t toiDa = std::numeric_limits<std::int64_t>::max());

// How many units at the front of `donVi` make a piece of at most `toiDa` (2 or more) that does not end inside
// a surrogate pair.
[[nodiscard]] std::size_t daiDoanUtf16(std::u16string_view donVi, std::size_t toiDa);

}  // namespace tovira

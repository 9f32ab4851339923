#pragma once
// Any thread: values and pure functions on bytes. The head of a request, from the first byte received to the
// words of its lines. Nothing here knows of sockets.

#include <cstddef>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <utility>

namespace tovira {

// How far a head may grow, in bytes, and at which moment that is tested.
struct LuatDau {
    enum class Luc : unsigned char {
        sauKhiGhep,   // on all that came, before looking for the end: bytes after the blank line count too
        truocKhiDoc,  // before reading on: a head whose end is already there is never too long
    };
    std::size_t toiDa;
    std::size_t moiLanDoc;  // the most that one read may bring
    Luc luc;
};

enum class TrangThaiDau : unsigned char { chuaDu, daDu, quaDai };

// Gathers one head, read by read, up to the blank line.
class GomDau {
  public:
    explicit GomDau(const LuatDau& luat) : luat_(luat) {}

    // Room for the next read, moiLanDoc bytes.
    [[nodiscard]] std::span<char> choDoc();
    // `so` bytes have come into choDoc().
    TrangThaiDau them(std::size_t so);

    // Once daDu: the bytes before the blank line, as text.
    [[nodiscard]] std::string phanDau() const;
    // Once daDu: the bytes after the blank line. Valid until this object changes.
    [[nodiscard]] std::span<const std::byte> thua() const;

  private:
    LuatDau luat_;
    std::unique_ptr<char[]> dem_;
    std::size_t sucChua_ = 0;
    std::size_t so_ = 0;
    std::size_t cuoiDau_ = 0;
};

// UTF-8 text of any bytes: each longest beginning of a sequence that goes wrong becomes one U+FFFD.
[[nodiscard]] std::string docUtf8(std::string_view byte);

// Takes the first line off `conLai`, without its CR LF; what is left stays in `conLai`.
[[nodiscard]] std::string_view layDong(std::string_view& conLai);

// The first two words of a line, separated by runs of spaces; nothing when there are fewer.
[[nodiscard]] std::optional<std::pair<std::string_view, std::string_view>> haiTuDau(std::string_view dong);

}  // namespace tovira

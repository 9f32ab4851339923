#pragma once
// Any thread: pure functions on text. What the head of a request to the file server says, and the answers
// that it may get.

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace tovira {

enum class TrangThaiNhan : std::uint8_t {
    duoc,           // 200
    khongNoiDung,   // 204
    yeuCauHong,     // 400
    biTuChoi,       // 403
    khongCo,        // 404
    saiPhuongThuc,  // 405
    thanQuaDai,     // 413
    dauQuaDai,      // 431
    loiMayChu,      // 500
};

// A whole answer. `gocMayChu` is the one origin whose pages may read it.
[[nodiscard]] std::string cauTraNhan(TrangThaiNhan trangThai, std::string_view gocMayChu);

// What a head asks for, as far as it can be told without the file system.
struct YeuCauNhan {
    std::optional<TrangThaiNhan> traNgay;  // the answer when the path does not matter
    std::string duong;                     // the relative path, UTF-8, not examined
    std::int64_t doDai = -1;               // of the body, in bytes; -1 when missing or not a number
};

// `biMat` is the secret of the running server, empty while it is stopped.
[[nodiscard]] YeuCauNhan xetYeuCauNhan(std::string_view phanDau, std::string_view biMat);

// The value of the first `ten`=value of a query, nothing decoded; empty when there is none.
[[nodiscard]] std::string_view layThamSo(std::string_view truyVan, std::string_view ten);

// Are they the same? Takes as long wherever the first difference lies.
[[nodiscard]] bool soBang(std::string_view mot, std::string_view hai);

// The lines of a head after its first, looked up by name.
class TuDienDau {
  public:
    explicit TuDienDau(std::string_view cacDong) : cacDong_(cacDong) {}
    // The value of the last line whose name is `ten` (lower-case ASCII) in any case, white space around it
    // dropped. Valid as long as the head.
    [[nodiscard]] std::optional<std::string_view> lay(std::string_view ten) const;

  private:
    std::string_view cacDong_;
};

}  // namespace tovira

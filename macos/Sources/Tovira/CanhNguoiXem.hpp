#pragma once
// Main thread: a plain value. Decides what becomes of a share whose viewers have all left.

#include <cstddef>
#include <cstdint>
#include <optional>

namespace tovira {

class CanhNguoiXem {
  public:
    // Seconds between two looks, and seconds without any viewer after which the share ends.
    static constexpr double chuKy = 2.0;
    static constexpr double hanVang = 8.0;

    // vuaVang: the first look that finds everyone gone.
    enum class Viec : std::uint8_t { tiep, vuaVang, ketThuc };

    // One look at `luc` seconds of a clock that never jumps. `soKhach` is the number of viewers, absent as
    // long as there has never been one: a share waits for its first viewer for as long as it takes.
    [[nodiscard]] Viec nhip(std::optional<std::size_t> soKhach, double luc);

  private:
    std::optional<double> vangTu_;
};

}  // namespace tovira

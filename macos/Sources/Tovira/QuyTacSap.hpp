#pragma once
// Any thread: a value. What to do when the web engine's process dies: once is forgiven, twice within a minute
// is not.

#include <cstdint>
#include <optional>

namespace tovira {

class QuyTacSap {
  public:
    static constexpr double khoangTha = 60.0;  // seconds

    enum class Viec : std::uint8_t { taiLai, boCuoc };

    // The process died at `luc`, in seconds on a clock that never jumps.
    [[nodiscard]] Viec khiSap(double luc) {
        const bool lai = lanTruoc_ && luc - *lanTruoc_ < khoangTha;
        lanTruoc_ = luc;
        return lai ? Viec::boCuoc : Viec::taiLai;
    }

  private:
    std::optional<double> lanTruoc_;
};

}  // namespace tovira

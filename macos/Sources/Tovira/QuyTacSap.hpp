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
        boCuoc_ = lai;
        return lai ? Viec::boCuoc : Viec::taiLai;
    }

    // Given up not long ago: only the user brings the page back, or it would die and return all day.
    [[nodiscard]] bool dangNghi(double luc) const { return boCuoc_ && luc - *lanTruoc_ < khoangTha; }

  private:
    std::optional<double> lanTruoc_;
    bool boCuoc_ = false;
};

}  // namespace tovira

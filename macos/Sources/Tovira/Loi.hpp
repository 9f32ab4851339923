#pragma once
// Any thread: plain values. Expected failures travel as KetQua, never as exceptions.

#include <optional>
#include <string>
#include <utility>
#include <variant>

namespace tovira {

// An expected failure: the domain that raised it, a small code within the domain,
// and the Vietnamese description that the user sees.
struct Loi {
    std::string mien;
    int ma = 0;
    std::string moTa;

    friend bool operator==(const Loi&, const Loi&) = default;
};

// The domain of every error that the program's own servers raise.
inline constexpr const char* mienTovira = "Tovira";

// Either a T or the reason why there is none.
template <class T>
class [[nodiscard]] KetQua {
  public:
    KetQua(T giaTri) : o_(std::in_place_index<0>, std::move(giaTri)) {}
    KetQua(Loi loi) : o_(std::in_place_index<1>, std::move(loi)) {}

    explicit operator bool() const noexcept { return o_.index() == 0; }
    T& giaTri() & { return std::get<0>(o_); }
    const T& giaTri() const& { return std::get<0>(o_); }
    T&& giaTri() && { return std::get<0>(std::move(o_)); }
    const Loi& loi() const { return std::get<1>(o_); }

  private:
    std::variant<T, Loi> o_;
};

template <>
class [[nodiscard]] KetQua<void> {
  public:
    KetQua() = default;
    KetQua(Loi loi) : loi_(std::move(loi)) {}

    explicit operator bool() const noexcept { return !loi_.has_value(); }
    const Loi& loi() const { return loi_.value(); }

  private:
    std::optional<Loi> loi_;
};

}  // namespace tovira

#pragma once
// Any thread: values. Reads one flat JSON object strictly: nothing after it, no lone surrogates, no broken
// UTF-8, numbers of any length. Nested values are checked and skipped.

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tovira {

// A row of T that lives in the object itself up to N of them and on the heap beyond: most objects are small,
// and reading one must not allocate.
template <class T, std::size_t N>
class DayNho {
  public:
    DayNho() {}  // the places are not cleared

    [[nodiscard]] T* dau() { return ngoai_.empty() ? trong_.data() : ngoai_.data(); }
    [[nodiscard]] const T* dau() const { return ngoai_.empty() ? trong_.data() : ngoai_.data(); }
    [[nodiscard]] std::size_t so() const { return so_; }

    // Gives the row `so` places; what stood in it is lost when it moves to the heap.
    void datCo(std::size_t so) {
        if (so > N) ngoai_.resize(so);
        so_ = so;
    }

    void them(const T& t) {
        if (so_ == N && ngoai_.empty()) ngoai_.assign(trong_.begin(), trong_.end());
        if (so_ < N)
            trong_[so_] = t;
        else
            ngoai_.push_back(t);
        ++so_;
    }

  private:
    std::array<T, N> trong_;
    std::vector<T> ngoai_;
    std::size_t so_ = 0;
};

class DoiTuongJson {
  public:
    // Values may be nested this deep, as in the platform's own parser.
    static constexpr int sauNhat = 512;

    // The empty object. (Not defaulted: that would clear all of it each time.)
    DoiTuongJson() {}

    // Absent when `utf8` is not exactly one JSON object. The later of two equal keys wins.
    [[nodiscard]] static std::optional<DoiTuongJson> doc(std::string_view utf8);

    [[nodiscard]] bool co(std::string_view khoa) const { return tim(khoa) != nullptr; }
    // The text under `khoa`; absent when missing or of another type. Lives as long as this object.
    [[nodiscard]] std::optional<std::string_view> chu(std::string_view khoa) const;
    // The number under `khoa`; true and false read as 1 and 0.
    [[nodiscard]] std::optional<double> so(std::string_view khoa) const;
    // The texts under `khoa`; absent when it is not an array of texts only.
    [[nodiscard]] std::optional<std::vector<std::string_view>> mangChu(std::string_view khoa) const;

  private:
    class BoDoc;

    enum class Loai : std::uint8_t { chu, so, mangChu, phanTu, khac };

    struct Doan {  // a part of vung_
        std::uint32_t dau;
        std::uint32_t dai;
    };

    // A member of the object, or (phanTu) a text of the array whose member comes after it.
    struct Muc {
        Loai loai;
        Doan khoa;
        Doan chu;           // chu, phanTu
        double so;          // so
        std::size_t soChu;  // mangChu: how many elements stand before it
    };

    [[nodiscard]] bool nap(std::string_view utf8);
    [[nodiscard]] std::string_view lay(Doan doan) const { return {vung_.dau() + doan.dau, doan.dai}; }
    [[nodiscard]] const Muc* tim(std::string_view khoa) const;

    DayNho<char, 256> vung_;  // the text, decoded in place
    DayNho<Muc, 8> muc_;
};

}  // namespace tovira

#pragma once
// Main thread. The server's keyboard map as it is now: which key is where, what each key types, which keys
// are modifiers and which keycodes are nobody's.

#include <xcb/xcb.h>

#include <array>
#include <bitset>
#include <cstdint>
#include <memory>
#include <unordered_map>
#include <vector>

struct xkb_context;
struct xkb_keymap;

namespace tovira {

using TapPhimX = std::bitset<256>;  // by X keycode

class BanPhimLinux {
  public:
    // What a modifier key adds that no key command can ask for (third and fifth level, Hyper …).
    static constexpr std::uint64_t coKhac = 1ULL << 63U;

    // How a symbol is typed on the map itself: its key, with the Shift and third-level keys in `kem` (0:
    // none).
    struct CachGo {
        xcb_keycode_t phim = 0;
        std::array<xcb_keycode_t, 2> kem{};
    };

    BanPhimLinux();

    // Reads the map of XKB device `thietBi`. False when the server did not give it; the old one stays then.
    bool doc(xcb_connection_t* c, int thietBi);

    // The keycode of a macOS virtual key's physical key; 0 when there is none.
    [[nodiscard]] xcb_keycode_t maCua(std::uint16_t phim) const {
        return phim < 128 ? ma_[phim] : xcb_keycode_t{0};
    }

    // What holding the key adds: key command flags or coKhac; 0 for an ordinary key and for the locks, whose
    // being held says nothing.
    [[nodiscard]] std::uint64_t coCua(xcb_keycode_t ma) const { return co_[ma]; }
    // A key whose holding adds exactly the one flag `co`; 0 when the map has none.
    [[nodiscard]] xcb_keycode_t phimCho(std::uint64_t co) const;
    // Real modifiers of Num Lock, which most users keep on.
    [[nodiscard]] std::uint8_t mucNumLock() const { return numLock_; }

    // How to type `chu` in layout `nhom` while the real modifiers `khoa` are locked. Keys in `tru` are left
    // alone. Return is U+000D.
    [[nodiscard]] const CachGo* cachGo(char32_t chu, std::uint32_t nhom, std::uint8_t khoa,
                                       const TapPhimX& tru);

    // The first symbol that the key has on any of its layouts and levels; 0 when it has none.
    [[nodiscard]] std::uint32_t kyHieuDau(xcb_keycode_t ma) const;
    // Keycodes that carry neither a symbol nor a modifier and are no key's that a command can name.
    [[nodiscard]] std::vector<xcb_keycode_t> maTrong() const;

  private:
    struct Giai {
        void operator()(xkb_context* p) const;
        void operator()(xkb_keymap* p) const;
    };

    void docPhimBoTro(const std::array<std::uint8_t, 256>& muc);
    void timViTri();
    [[nodiscard]] xcb_keycode_t phimBacBa() const;
    void lapBangChu(std::uint32_t nhom, std::uint8_t khoa, const TapPhimX& tru);

    std::unique_ptr<xkb_context, Giai> canh_;
    std::unique_ptr<xkb_keymap, Giai> ban_;
    std::array<xcb_keycode_t, 128> ma_{};      // by macOS virtual key
    std::array<std::uint64_t, 256> co_{};      // by keycode
    std::array<std::uint64_t, 256> coThat_{};  // as co_, by what the map says alone
    std::array<std::uint8_t, 256> muc_{};      // real modifiers by keycode
    std::uint8_t numLock_ = 0;

    struct BangChu {
        std::uint32_t nhom = 0;
        std::uint8_t khoa = 0;
        TapPhimX tru;
        std::unordered_map<char32_t, CachGo> cach;
    };
    std::unique_ptr<BangChu> bangChu_;  // what cachGo asked for last
};

}  // namespace tovira

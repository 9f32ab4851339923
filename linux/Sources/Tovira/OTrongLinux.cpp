#include "OTrongLinux.hpp"

#include <algorithm>

namespace tovira {

namespace {

// Latin-1 has keysyms of its own numbers; every other code point has one above this.
constexpr std::uint32_t gocUnicode = 0x01000000;

std::uint32_t kyHieuCua(char32_t chu) {
    const auto ma = static_cast<std::uint32_t>(chu);
    return ma < 0x100 ? ma : gocUnicode + ma;
}

}  // namespace

void OTrongLinux::capNhat(const BanPhimLinux& ban) {
    std::vector<O> moi;
    const auto trong = ban.maTrong();
    for (unsigned i = 8; i < 256; ++i) {
        const auto ma = static_cast<xcb_keycode_t>(i);
        const auto cu = std::find_if(o_.begin(), o_.end(), [&](const O& o) { return o.ma == ma; });
        const bool laTrong = std::binary_search(trong.begin(), trong.end(), ma);
        const bool cuaTa = cu != o_.end() && cu->kyHieu != 0 && ban.kyHieuDau(ma) == cu->kyHieu;
        if (!laTrong && !cuaTa) continue;
        O o = cu != o_.end() ? *cu : O{ma};
        if (laTrong) o.kyHieu = 0;  // a new map took our symbol off
        moi.push_back(o);
    }
    o_ = std::move(moi);
    ma_.reset();
    for (const auto& o : o_)
        ma_.set(o.ma);
}

xcb_keycode_t OTrongLinux::muon(char32_t chu, double luc) {
    const auto kyHieu = kyHieuCua(chu);
    auto o = std::find_if(o_.begin(), o_.end(), [&](const O& x) { return x.kyHieu == kyHieu; });
    if (o == o_.end()) {
        o = std::min_element(o_.begin(), o_.end(), [](const O& a, const O& b) { return a.luot < b.luot; });
        if (o == o_.end() || !coTheLay(*o, luc)) return 0;
        o->kyHieu = kyHieu;
        o->canGui = true;
    }
    o->luot = ++luot_;
    o->luc = luc;
    lucCuoi_ = luc;
    return o->ma;
}

void OTrongLinux::guiBan() {
    // Every change makes every program fetch the whole map again: neighbours go together.
    std::vector<xcb_keysym_t> kyHieu;
    for (auto o = o_.begin(); o != o_.end();) {
        if (!o->canGui) {
            ++o;
            continue;
        }
        const auto dau = o->ma;
        kyHieu.clear();
        for (; o != o_.end() && o->canGui && o->ma == dau + kyHieu.size() / 2; ++o) {
            // Twice, for both Shift levels: alone, a capital letter would be given its small one as well.
            kyHieu.insert(kyHieu.end(), 2, o->kyHieu);
            o->canGui = false;
        }
        xcb_change_keyboard_mapping(c_, static_cast<std::uint8_t>(kyHieu.size() / 2), dau, 2, kyHieu.data());
    }
}

bool OTrongLinux::docHet(double luc) const {
    return std::all_of(o_.begin(), o_.end(), [&](const O& o) { return coTheLay(o, luc); });
}

void OTrongLinux::traHet() {
    for (auto& o : o_) {
        o.canGui = o.kyHieu != 0;
        o.kyHieu = 0;
    }
    guiBan();
    lucCuoi_.reset();
}

}  // namespace tovira

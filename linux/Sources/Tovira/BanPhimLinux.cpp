#include "BanPhimLinux.hpp"

#include <xkbcommon/xkbcommon-keysyms.h>
#include <xkbcommon/xkbcommon-x11.h>

#include <algorithm>
#include <optional>

#include "MaPhimLinux.hpp"
#include "PhimMac.hpp"
#include "XcbLinux.hpp"

namespace tovira {

namespace {

struct GiaiTrangThai {
    void operator()(xkb_state* p) const { xkb_state_unref(p); }
};

// The real modifiers of every key, from the core protocol: xkbcommon keeps them to itself.
std::optional<std::array<std::uint8_t, 256>> docMuc(xcb_connection_t* c) {
    const PhanXcb<xcb_get_modifier_mapping_reply_t> dap(
        xcb_get_modifier_mapping_reply(c, xcb_get_modifier_mapping(c), nullptr));
    if (!dap) return std::nullopt;
    std::array<std::uint8_t, 256> ra{};
    const auto* ma = xcb_get_modifier_mapping_keycodes(dap.get());
    const int rong = dap->keycodes_per_modifier;
    for (int i = 0; i < 8 * rong; ++i)
        if (ma[i] != 0)
            ra[ma[i]] = static_cast<std::uint8_t>(ra[ma[i]] | 1U << static_cast<unsigned>(i / rong));
    return ra;
}

bool laKhoa(xkb_keysym_t k) {
    return k == XKB_KEY_Caps_Lock || k == XKB_KEY_Shift_Lock || k == XKB_KEY_Num_Lock ||
           k == XKB_KEY_Scroll_Lock;
}

// A keypad's symbols double those of other keys and follow Num Lock.
bool laPhimSo(xkb_keysym_t k) {
    return k >= XKB_KEY_KP_Space && k <= XKB_KEY_KP_Equal;
}

}  // namespace

void BanPhimLinux::Giai::operator()(xkb_context* p) const {
    xkb_context_unref(p);
}
void BanPhimLinux::Giai::operator()(xkb_keymap* p) const {
    xkb_keymap_unref(p);
}

BanPhimLinux::BanPhimLinux() : canh_(xkb_context_new(XKB_CONTEXT_NO_DEFAULT_INCLUDES)) {
    // A server that goes away is no news for standard error.
    if (canh_) xkb_context_set_log_level(canh_.get(), XKB_LOG_LEVEL_CRITICAL);
}

bool BanPhimLinux::doc(xcb_connection_t* c, int thietBi) {
    const auto muc = docMuc(c);
    if (!canh_ || !muc) return false;
    std::unique_ptr<xkb_keymap, Giai> moi(
        xkb_x11_keymap_new_from_device(canh_.get(), c, thietBi, XKB_KEYMAP_COMPILE_NO_FLAGS));
    if (!moi) return false;
    ban_ = std::move(moi);
    bangChu_.reset();
    timViTri();
    docPhimBoTro(*muc);
    return true;
}

void BanPhimLinux::timViTri() {
    for (const auto& h : bangPhimX) {
        const auto ma = xkb_keymap_key_by_name(ban_.get(), h.ten);
        const bool co = ma != XKB_KEYCODE_INVALID && ma >= 8 && ma <= 255;
        ma_[h.phim] = static_cast<xcb_keycode_t>(co ? ma : static_cast<xkb_keycode_t>(h.evdev + evdevThanhX));
    }
}

void BanPhimLinux::docPhimBoTro(const std::array<std::uint8_t, 256>& muc) {
    muc_ = muc;
    numLock_ = 0;
    std::uint8_t mucAlt = 0;
    std::uint8_t mucLenh = 0;
    for (int ma = 8; ma < 256; ++ma) {
        const auto k = kyHieuDau(static_cast<xcb_keycode_t>(ma));
        const auto m = muc[static_cast<std::size_t>(ma)];
        if (k == XKB_KEY_Num_Lock) numLock_ |= m;
        if (k == XKB_KEY_Alt_L || k == XKB_KEY_Alt_R) mucAlt |= m;
        if (k == XKB_KEY_Super_L || k == XKB_KEY_Super_R) mucLenh |= m;
    }
    constexpr std::uint8_t mucCoDinh = XCB_MOD_MASK_SHIFT | XCB_MOD_MASK_LOCK | XCB_MOD_MASK_CONTROL;
    mucAlt &= static_cast<std::uint8_t>(~mucCoDinh);
    mucLenh &= static_cast<std::uint8_t>(~(mucCoDinh | mucAlt));
    for (std::size_t ma = 0; ma < 256; ++ma) {
        const auto m = muc[ma];
        auto co = std::uint64_t{0};
        if ((m & XCB_MOD_MASK_SHIFT) != 0) co |= PhimMac::coShift;
        if ((m & XCB_MOD_MASK_CONTROL) != 0) co |= PhimMac::coControl;
        if ((m & mucAlt) != 0) co |= PhimMac::coAlt;
        if ((m & mucLenh) != 0) co |= PhimMac::coCommand;
        const auto biet = XCB_MOD_MASK_SHIFT | XCB_MOD_MASK_LOCK | XCB_MOD_MASK_CONTROL | mucAlt | mucLenh;
        if ((m & ~biet & 0xFFU) != 0) co |= coKhac;
        if (laKhoa(kyHieuDau(static_cast<xcb_keycode_t>(ma)))) co = 0;
        coThat_[ma] = co_[ma] = co;
    }
    // The Alt keys answer to "alt" even where the layout makes one of them a third-level key.
    for (const std::uint16_t phim : {std::uint16_t{58}, std::uint16_t{61}})
        if (co_[ma_[phim]] == coKhac) co_[ma_[phim]] = PhimMac::coAlt;
}

xcb_keycode_t BanPhimLinux::phimCho(std::uint64_t co) const {
    constexpr std::array<std::uint16_t, 8> thuongDung{56, 60, 59, 62, 58, 61, 55, 54};  // macOS modifier keys
    for (const auto phim : thuongDung)
        if (coThat_[ma_[phim]] == co) return ma_[phim];
    const auto thay = std::find(coThat_.begin(), coThat_.end(), co);
    return static_cast<xcb_keycode_t>(thay == coThat_.end() ? 0 : thay - coThat_.begin());
}

std::uint32_t BanPhimLinux::kyHieuDau(xcb_keycode_t ma) const {
    const xkb_keysym_t* k = nullptr;
    const auto soNhom = xkb_keymap_num_layouts_for_key(ban_.get(), ma);
    for (xkb_layout_index_t nhom = 0; nhom < soNhom; ++nhom) {
        const auto soBac = xkb_keymap_num_levels_for_key(ban_.get(), ma, nhom);
        for (xkb_level_index_t bac = 0; bac < soBac; ++bac)
            if (xkb_keymap_key_get_syms_by_level(ban_.get(), ma, nhom, bac, &k) > 0 &&
                k[0] != XKB_KEY_NoSymbol)
                return k[0];
    }
    return XKB_KEY_NoSymbol;
}

std::vector<xcb_keycode_t> BanPhimLinux::maTrong() const {
    std::vector<xcb_keycode_t> ra;
    if (!ban_) return ra;
    for (unsigned ma = 8; ma < 256; ++ma) {
        const auto m = static_cast<xcb_keycode_t>(ma);
        const bool coCho = std::find(ma_.begin(), ma_.end(), m) != ma_.end();
        if (!coCho && muc_[m] == 0 && kyHieuDau(m) == XKB_KEY_NoSymbol) ra.push_back(m);
    }
    return ra;
}

xcb_keycode_t BanPhimLinux::phimBacBa() const {
    for (unsigned ma = 8; ma < 256; ++ma)
        if (muc_[ma] != 0 && kyHieuDau(static_cast<xcb_keycode_t>(ma)) == XKB_KEY_ISO_Level3_Shift)
            return static_cast<xcb_keycode_t>(ma);
    return 0;
}

const BanPhimLinux::CachGo* BanPhimLinux::cachGo(char32_t chu, std::uint32_t nhom, std::uint8_t khoa,
                                                 const TapPhimX& tru) {
    if (!ban_) return nullptr;
    if (!bangChu_ || bangChu_->nhom != nhom || bangChu_->khoa != khoa || bangChu_->tru != tru)
        lapBangChu(nhom, khoa, tru);
    const auto it = bangChu_->cach.find(chu);
    return it == bangChu_->cach.end() ? nullptr : &it->second;
}

void BanPhimLinux::lapBangChu(std::uint32_t nhom, std::uint8_t khoa, const TapPhimX& tru) {
    bangChu_ = std::make_unique<BangChu>(BangChu{nhom, khoa, tru, {}});
    const std::unique_ptr<xkb_state, GiaiTrangThai> tt(xkb_state_new(ban_.get()));
    if (!tt) return;
    const auto shift = phimCho(PhimMac::coShift);
    const auto bacBa = phimBacBa();
    // Simplest way first, so that a symbol found twice keeps it.
    for (const auto& kem : {std::array<xcb_keycode_t, 2>{0, 0}, {shift, 0}, {0, bacBa}, {shift, bacBa}}) {
        const auto xuong =
            static_cast<xkb_mod_mask_t>((kem[0] != 0 ? muc_[kem[0]] : 0) | (kem[1] != 0 ? muc_[kem[1]] : 0));
        xkb_state_update_mask(tt.get(), xuong, 0, khoa, 0, 0, nhom);
        for (unsigned ma = 8; ma < 256; ++ma) {
            if (tru[ma] || muc_[ma] != 0) continue;
            const auto k = xkb_state_key_get_one_sym(tt.get(), ma);
            const auto chu = laPhimSo(k) ? 0 : xkb_keysym_to_utf32(k);
            if (chu != 0) bangChu_->cach.try_emplace(chu, CachGo{static_cast<xcb_keycode_t>(ma), kem});
        }
    }
}

}  // namespace tovira

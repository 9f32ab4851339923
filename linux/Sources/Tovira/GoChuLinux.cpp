#include "GoChuLinux.hpp"

#include "XcbLinux.hpp"
#include "XkbLinux.hpp"

namespace tovira {

namespace {

bool laDieuKhien(char32_t chu) {
    return chu < 0x20 || (chu >= 0x7F && chu < 0xA0);
}

}  // namespace

GoChuLinux::TrangThai GoChuLinux::docTrangThai() const {
    const PhanXcb<xcb_xkb_get_state_reply_t> dap(
        xcb_xkb_get_state_reply(c_, xcb_xkb_get_state(c_, XCB_XKB_ID_USE_CORE_KBD), nullptr));
    if (!dap) return {};
    return {dap->group, dap->lockedMods, dap->latchedMods};
}

void GoChuLinux::datKhoa(std::uint8_t muc, std::uint8_t khoa, std::uint8_t boChot) {
    if ((muc | boChot) != 0)
        xcb_xkb_latch_lock_state(c_, XCB_XKB_ID_USE_CORE_KBD, muc, khoa, 0, 0, boChot, 0, 0);
}

std::size_t GoChuLinux::go(std::u32string_view chu, double luc) {
    const auto tt = docTrangThai();
    if (!bam_.docDangXuong()) return chu.size();
    // Num Lock stays: only the keypad heeds it, and text does not use that.
    const auto khoaGiu = static_cast<std::uint8_t>(tt.khoa & ban_.mucNumLock());
    const auto khoaNhac = static_cast<std::uint8_t>(tt.khoa & ~khoaGiu);

    // First all the keys, so that the map changes once.
    std::vector<BanPhimLinux::CachGo> phim;
    std::size_t xong = 0;
    for (; xong < chu.size(); ++xong) {
        auto c = chu[xong];
        if (c == U'\n' && xong > 0 && chu[xong - 1] == U'\r') continue;
        if (c == U'\n') c = U'\r';
        if (laDieuKhien(c) && c != U'\r' && c != U'\t') continue;
        if (const auto* cach = ban_.cachGo(c, tt.nhom, khoaGiu, oTrong_.ma())) {
            phim.push_back(*cach);
            continue;
        }
        if (laDieuKhien(c) || oTrong_.ma().none()) continue;
        const auto ma = oTrong_.muon(c, luc);
        if (ma == 0) break;
        phim.push_back({ma, {}});
    }
    oTrong_.guiBan();

    const BamPhimLinux::BoTro khongBoTro(bam_, 0, 0);
    datKhoa(khoaNhac, 0, tt.chot);
    for (const auto& p : phim) {
        for (const auto kem : p.kem)
            if (kem != 0) bam_.nhan(kem);
        bam_.go(p.phim);
        for (const auto kem : p.kem)
            if (kem != 0) bam_.nha(kem);
    }
    datKhoa(khoaNhac, khoaNhac, 0);
    return xong;
}

}  // namespace tovira

#include "BamPhimLinux.hpp"

#include <xcb/xtest.h>

#include "PhimMac.hpp"
#include "XcbLinux.hpp"

namespace tovira {

bool BamPhimLinux::docDangXuong() {
    const PhanXcb<xcb_query_keymap_reply_t> dap(xcb_query_keymap_reply(c_, xcb_query_keymap(c_), nullptr));
    if (!dap) return false;
    for (unsigned ma = 0; ma < 256; ++ma)
        xuong_[ma] = (static_cast<unsigned>(dap->keys[ma / 8]) >> (ma % 8) & 1U) != 0;
    // The local user has let go of what we had put back: our device must forget it too.
    const auto thua = muon_ & ~xuong_;
    for (unsigned ma = 0; thua.any() && ma < 256; ++ma)
        if (thua[ma]) nha(static_cast<xcb_keycode_t>(ma));
    return true;
}

void BamPhimLinux::gui(std::uint8_t loai, xcb_keycode_t ma) {
    xcb_test_fake_input(c_, loai, ma, XCB_CURRENT_TIME, XCB_NONE, 0, 0, 0);
}

void BamPhimLinux::nhan(xcb_keycode_t ma) {
    if (cuaTa_[ma] || xuong_[ma]) nha(ma);
    gui(XCB_KEY_PRESS, ma);
    cuaTa_.set(ma);
    xuong_.set(ma);
}

void BamPhimLinux::nha(xcb_keycode_t ma) {
    gui(XCB_KEY_RELEASE, ma);
    cuaTa_.reset(ma);
    xuong_.reset(ma);
    muon_.reset(ma);
}

BamPhimLinux::BoTro::BoTro(BamPhimLinux& bam, std::uint64_t co, xcb_keycode_t tru) : bam_(bam) {
    constexpr auto tatCa = PhimMac::coShift | PhimMac::coControl | PhimMac::coAlt | PhimMac::coCommand;
    auto thieu = co & tatCa;
    for (unsigned i = 8; i < 256; ++i) {
        const auto ma = static_cast<xcb_keycode_t>(i);
        const auto them = bam_.ban_.coCua(ma);
        if (!bam_.xuong_[ma] || them == 0 || ma == tru) continue;
        if ((them & ~(co & tatCa)) != 0)
            nhac_.push_back({ma, !bam_.cuaTa_[ma] || bam_.muon_[ma]});
        else
            thieu &= ~them;
    }
    for (const auto bit : {PhimMac::coShift, PhimMac::coControl, PhimMac::coAlt, PhimMac::coCommand})
        if (const auto ma = (thieu & bit) != 0 ? bam_.ban_.phimCho(bit) : xcb_keycode_t{0};
            ma != 0 && ma != tru)
            them_.push_back(ma);
    for (const auto& n : nhac_)
        bam_.nha(n.ma);
    for (const auto ma : them_)
        bam_.nhan(ma);
}

BamPhimLinux::BoTro::~BoTro() {
    for (auto it = them_.rbegin(); it != them_.rend(); ++it)
        bam_.nha(*it);
    for (const auto& n : nhac_) {
        bam_.nhan(n.ma);
        bam_.muon_[n.ma] = n.muon;
    }
}

}  // namespace tovira

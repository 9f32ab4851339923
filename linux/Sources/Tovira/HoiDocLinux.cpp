#include "HoiDocLinux.hpp"

#include <algorithm>
#include <utility>

#include "ThietBiLinux.hpp"

namespace tovira {

namespace {

// Window managers ping with small times of day; a number far from them is taken for no answer of theirs.
constexpr std::uint32_t soDau = 0xA0000000;
constexpr int sauNhat = 32;  // windows between the focus and its top level

}  // namespace

HoiDocLinux::HoiDocLinux(const ManX& x)
    : x_(x),
      giaoThuc_(nguyenTuX(x.c(), "WM_PROTOCOLS")),
      ping_(nguyenTuX(x.c(), "_NET_WM_PING")),
      so_(soDau) {}

bool HoiDocLinux::bietPing(xcb_window_t cuaSo) const {
    const PhanXcb<xcb_get_property_reply_t> dap(xcb_get_property_reply(
        x_.c(), xcb_get_property(x_.c(), 0, cuaSo, giaoThuc_, XCB_ATOM_ATOM, 0, 64), nullptr));
    if (!dap || dap->format != 32) return false;
    const auto* dau = static_cast<const xcb_atom_t*>(xcb_get_property_value(dap.get()));
    const auto* cuoi = dau + xcb_get_property_value_length(dap.get()) / 4;
    return std::find(dau, cuoi, ping_) != cuoi;
}

xcb_window_t HoiDocLinux::timCuaSo() const {
    const PhanXcb<xcb_get_input_focus_reply_t> tieuDiem(
        xcb_get_input_focus_reply(x_.c(), xcb_get_input_focus(x_.c()), nullptr));
    if (!tieuDiem) return 0;
    auto cuaSo = tieuDiem->focus;
    if (cuaSo == XCB_INPUT_FOCUS_POINTER_ROOT) {
        const PhanXcb<xcb_query_pointer_reply_t> tro(
            xcb_query_pointer_reply(x_.c(), xcb_query_pointer(x_.c(), x_.goc()), nullptr));
        cuaSo = tro ? tro->child : 0;
    }
    for (int i = 0; i < sauNhat && cuaSo != 0 && cuaSo != x_.goc(); ++i) {
        if (bietPing(cuaSo)) return cuaSo;
        const PhanXcb<xcb_query_tree_reply_t> cay(
            xcb_query_tree_reply(x_.c(), xcb_query_tree(x_.c(), cuaSo), nullptr));
        cuaSo = cay ? cay->parent : 0;
    }
    return 0;
}

bool HoiDocLinux::hoi(std::uint64_t luot) {
    const auto truoc = std::exchange(cuaSo_, timCuaSo());
    if (std::exchange(dangCho_, false) && cuaSo_ == truoc) cam_ = cuaSo_;
    if (cuaSo_ == 0 || cuaSo_ == cam_) return false;
    dangCho_ = true;
    // Answers go to the root window; Qt sends its own to those who listen for the structure itself.
    if (!dangNghe_) nghe(XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY | XCB_EVENT_MASK_STRUCTURE_NOTIFY);
    luot_ = luot;
    xcb_client_message_event_t tin{};
    tin.response_type = XCB_CLIENT_MESSAGE;
    tin.format = 32;
    tin.window = cuaSo_;
    tin.type = giaoThuc_;
    tin.data.data32[0] = ping_;
    tin.data.data32[1] = ++so_;
    tin.data.data32[2] = cuaSo_;
    xcb_send_event(x_.c(), 0, cuaSo_, XCB_EVENT_MASK_NO_EVENT, reinterpret_cast<const char*>(&tin));
    return true;
}

std::optional<std::uint64_t> HoiDocLinux::dapAn(const xcb_generic_event_t& suKien) {
    if ((suKien.response_type & 0x7FU) != XCB_CLIENT_MESSAGE) return std::nullopt;
    const auto& tin = reinterpret_cast<const xcb_client_message_event_t&>(suKien);
    const bool cuaTa = tin.type == giaoThuc_ && tin.format == 32 && tin.data.data32[0] == ping_ &&
                       tin.data.data32[1] == so_ && tin.data.data32[2] == cuaSo_;
    if (!dangNghe_ || !cuaTa) return std::nullopt;
    dangCho_ = false;
    return luot_;
}

void HoiDocLinux::thoi() {
    dangCho_ = false;
    if (dangNghe_) nghe(XCB_EVENT_MASK_NO_EVENT);
}

void HoiDocLinux::nghe(std::uint32_t matNa) {
    xcb_change_window_attributes(x_.c(), x_.goc(), XCB_CW_EVENT_MASK, &matNa);
    dangNghe_ = matNa != 0;
}

}  // namespace tovira

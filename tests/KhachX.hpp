#pragma once
// A program on the X server as injected input meets it: a window with the keyboard, which notes every event
// and turns keys into text with the map that it fetches when it comes to them.

#include <gtest/gtest.h>
#include <poll.h>
#include <xcb/xinput.h>
#include <xcb/xtest.h>
#include <xkbcommon/xkbcommon-x11.h>

#include <chrono>
#include <functional>
#include <string>
#include <vector>

#include "XcbLinux.hpp"
#include "XkbLinux.hpp"

namespace tovira::gia {

class KhachX {
  public:
    struct SuKienX {
        int loai = 0;      // XCB_KEY_PRESS …
        int chiTiet = 0;   // keycode or button
        unsigned co = 0;   // core state bits when it happened
        int x = 0, y = 0;  // on the root window
        friend bool operator==(const SuKienX&, const SuKienX&) = default;
    };
    enum class Ping { tra, khongBiet };

    explicit KhachX(Ping ping = Ping::tra) : x_(moManX()) {
        xkb_x11_setup_xkb_extension(c(), 1, 0, XKB_X11_SETUP_XKB_EXTENSION_NO_FLAGS, nullptr, nullptr, &xkb_,
                                    nullptr);
        constexpr std::uint16_t ban = XCB_XKB_EVENT_TYPE_NEW_KEYBOARD_NOTIFY | XCB_XKB_EVENT_TYPE_MAP_NOTIFY;
        xcb_xkb_select_events(c(), XCB_XKB_ID_USE_CORE_KBD, ban, 0, ban, 0xFF, 0xFF, nullptr);
        giaoThuc_ = nguyenTu("WM_PROTOCOLS");
        ping_ = nguyenTu("_NET_WM_PING");
        cuaSo_ = xcb_generate_id(c());
        const std::uint32_t giaTri[] = {1, XCB_EVENT_MASK_KEY_PRESS | XCB_EVENT_MASK_KEY_RELEASE |
                                               XCB_EVENT_MASK_BUTTON_PRESS | XCB_EVENT_MASK_BUTTON_RELEASE |
                                               XCB_EVENT_MASK_POINTER_MOTION};
        xcb_create_window(c(), XCB_COPY_FROM_PARENT, cuaSo_, x_.goc(), 0, 0, x_.man->width_in_pixels,
                          x_.man->height_in_pixels, 0, XCB_WINDOW_CLASS_INPUT_OUTPUT, XCB_COPY_FROM_PARENT,
                          XCB_CW_OVERRIDE_REDIRECT | XCB_CW_EVENT_MASK, giaTri);
        if (ping == Ping::tra)
            xcb_change_property(c(), XCB_PROP_MODE_REPLACE, cuaSo_, giaoThuc_, XCB_ATOM_ATOM, 32, 1, &ping_);
        xcb_map_window(c(), cuaSo_);
        layTieuDiem();
    }

    ~KhachX() {
        if (ban_ != nullptr) xkb_keymap_unref(ban_);
        xkb_context_unref(canh_);
    }
    KhachX(const KhachX&) = delete;
    KhachX& operator=(const KhachX&) = delete;

    [[nodiscard]] xcb_connection_t* c() const { return x_.c(); }
    [[nodiscard]] const ManX& x() const { return x_; }
    [[nodiscard]] xcb_window_t cuaSo() const { return cuaSo_; }
    // A mapped top-level window whose class names contain `lop`; 0 when there is none yet.
    [[nodiscard]] xcb_window_t cuaSoCo(const std::string& lop) const {
        const PhanXcb<xcb_query_tree_reply_t> cay(
            xcb_query_tree_reply(c(), xcb_query_tree(c(), x_.goc()), nullptr));
        const auto* con = xcb_query_tree_children(cay.get());
        for (int i = 0; i < xcb_query_tree_children_length(cay.get()); ++i) {
            const PhanXcb<xcb_get_window_attributes_reply_t> tt(
                xcb_get_window_attributes_reply(c(), xcb_get_window_attributes(c(), con[i]), nullptr));
            const PhanXcb<xcb_get_property_reply_t> ten(xcb_get_property_reply(
                c(), xcb_get_property(c(), 0, con[i], XCB_ATOM_WM_CLASS, XCB_ATOM_STRING, 0, 64), nullptr));
            if (!tt || !ten || tt->map_state != XCB_MAP_STATE_VIEWABLE) continue;
            const std::string lopNay(static_cast<const char*>(xcb_get_property_value(ten.get())),
                                     static_cast<std::size_t>(xcb_get_property_value_length(ten.get())));
            if (lopNay.find(lop) != std::string::npos) return con[i];
        }
        return 0;
    }
    void layTieuDiem() {
        xcb_set_input_focus(c(), XCB_INPUT_FOCUS_POINTER_ROOT, cuaSo_, XCB_CURRENT_TIME);
        dongBo();
    }
    // Returns once the server has carried out everything that this connection asked.
    void dongBo() const {
        PhanXcb<xcb_get_input_focus_reply_t>(
            xcb_get_input_focus_reply(c(), xcb_get_input_focus(c()), nullptr));
    }

    // Reads events until `du` holds, which is asked again and again and may turn a clock; fails the test
    // after `giay` seconds.
    void docToi(const std::function<bool()>& du, double giay = 20) {
        const auto han = std::chrono::steady_clock::now() + std::chrono::duration<double>(giay);
        docCo();
        while (!du()) {
            const auto con = std::chrono::duration<double>(han - std::chrono::steady_clock::now()).count();
            if (con <= 0) {
                ADD_FAILURE() << "still waiting; text so far: " << chu;
                return;
            }
            pollfd p{xcb_get_file_descriptor(c()), POLLIN, 0};
            static_cast<void>(poll(&p, 1, 5));
            docCo();
        }
    }
    // Reads what has arrived.
    void docCo() {
        while (const PhanXcb<xcb_generic_event_t> e{xcb_poll_for_event(c())})
            nhanSuKien(*e);
        xcb_flush(c());
    }

    // The local user's own keyboard.
    void banPhimThat(bool xuong, xcb_keycode_t ma) const {
        const auto loai = xcb_get_extension_data(c(), &xcb_input_id)->first_event +
                          (xuong ? XCB_INPUT_DEVICE_KEY_PRESS : XCB_INPUT_DEVICE_KEY_RELEASE);
        xcb_test_fake_input(c(), static_cast<std::uint8_t>(loai), ma, XCB_CURRENT_TIME, XCB_NONE, 0, 0,
                            static_cast<std::uint8_t>(thietBiThat()));
        dongBo();
    }

    // What keys and buttons did, without the modifiers' own presses: "+38/1" is key 38 down while Shift is
    // held.
    [[nodiscard]] std::string keLai() const {
        std::string ra;
        for (const auto& e : suKien) {
            if (e.loai == XCB_MOTION_NOTIFY || laBoTro(e.chiTiet, e.loai)) continue;
            const bool xuong = e.loai == XCB_KEY_PRESS || e.loai == XCB_BUTTON_PRESS;
            if (!ra.empty()) ra += ' ';
            ra += (xuong ? '+' : '-') + std::to_string(e.chiTiet) + '/' + std::to_string(e.co & 0xFFU);
        }
        return ra;
    }

    std::vector<SuKienX> suKien;
    std::string chu;  // UTF-8
    int soLanDocBan = 0;

  private:
    xcb_atom_t nguyenTu(const std::string& ten) const {
        const PhanXcb<xcb_intern_atom_reply_t> dap(xcb_intern_atom_reply(
            c(), xcb_intern_atom(c(), 0, static_cast<std::uint16_t>(ten.size()), ten.c_str()), nullptr));
        return dap->atom;
    }
    static bool laBoTro(int ma, int loai) {
        if (loai != XCB_KEY_PRESS && loai != XCB_KEY_RELEASE) return false;
        return ma == 37 || ma == 50 || ma == 62 || ma == 64 || ma == 105 || ma == 108 || ma == 133 ||
               ma == 134;
    }
    int thietBiThat() const {
        PhanXcb<xcb_input_xi_query_version_reply_t>(
            xcb_input_xi_query_version_reply(c(), xcb_input_xi_query_version(c(), 2, 2), nullptr));
        const PhanXcb<xcb_input_xi_query_device_reply_t> may(xcb_input_xi_query_device_reply(
            c(), xcb_input_xi_query_device(c(), XCB_INPUT_DEVICE_ALL), nullptr));
        for (auto it = xcb_input_xi_query_device_infos_iterator(may.get()); it.rem > 0;
             xcb_input_xi_device_info_next(&it)) {
            const std::string ten(xcb_input_xi_device_info_name(it.data),
                                  static_cast<std::size_t>(xcb_input_xi_device_info_name_length(it.data)));
            if (it.data->type == XCB_INPUT_DEVICE_TYPE_SLAVE_KEYBOARD &&
                ten.find("XTEST") == std::string::npos)
                return it.data->deviceid;
        }
        return 0;
    }

    void docBan() {
        ++soLanDocBan;
        ban_ = xkb_x11_keymap_new_from_device(canh_, c(), xkb_x11_get_core_keyboard_device_id(c()),
                                              XKB_KEYMAP_COMPILE_NO_FLAGS);
    }

    void nhanSuKien(const xcb_generic_event_t& e) {
        const auto loai = e.response_type & 0x7F;
        if (loai == xkb_) {
            if (ban_ != nullptr) xkb_keymap_unref(ban_);
            ban_ = nullptr;  // fetched when the next key comes
        } else if (loai == XCB_CLIENT_MESSAGE) {
            auto tin = reinterpret_cast<const xcb_client_message_event_t&>(e);
            if (tin.type != giaoThuc_ || tin.data.data32[0] != ping_) return;
            tin.window = x_.goc();
            xcb_send_event(c(), 0, x_.goc(),
                           XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY | XCB_EVENT_MASK_SUBSTRUCTURE_REDIRECT,
                           reinterpret_cast<const char*>(&tin));
        } else if (loai >= XCB_KEY_PRESS && loai <= XCB_MOTION_NOTIFY) {
            // Key, button and motion events share their shape.
            const auto& k = reinterpret_cast<const xcb_key_press_event_t&>(e);
            suKien.push_back({loai, k.detail, k.state, k.root_x, k.root_y});
            if (loai == XCB_KEY_PRESS) nhanChu(k);
        }
    }

    void nhanChu(const xcb_key_press_event_t& k) {
        if (ban_ == nullptr) docBan();
        xkb_state* tt = xkb_state_new(ban_);
        xkb_state_update_mask(tt, k.state & 0xFFU, 0, 0, 0, 0, k.state >> 13U & 3U);
        char byte[16] = {};
        xkb_state_key_get_utf8(tt, k.detail, byte, sizeof byte);
        xkb_state_unref(tt);
        chu += byte;
    }

    ManX x_;
    std::uint8_t xkb_ = 0;
    xkb_context* canh_ = xkb_context_new(XKB_CONTEXT_NO_DEFAULT_INCLUDES);
    xkb_keymap* ban_ = nullptr;
    xcb_window_t cuaSo_ = 0;
    xcb_atom_t giaoThuc_ = 0;
    xcb_atom_t ping_ = 0;
};

}  // namespace tovira::gia

#pragma once
// Main thread. A status area as desktops without StatusNotifier have it (XEmbed), with room for one item.

#include <cstring>

#include "ThietBiLinux.hpp"
#include "XcbLinux.hpp"

namespace tovira::thu {

class KhayXGia {
  public:
    static constexpr std::int16_t canh = 32;

    // Stands at the top left of the screen.
    KhayXGia() : x_(moManX()), o_(xcb_generate_id(x_.c())) {
        auto* c = x_.c();
        const std::uint32_t giaTri[] = {x_.man->white_pixel, 1};
        xcb_create_window(c, XCB_COPY_FROM_PARENT, o_, x_.goc(), 0, 0, canh, canh, 0,
                          XCB_WINDOW_CLASS_INPUT_OUTPUT, XCB_COPY_FROM_PARENT,
                          XCB_CW_BACK_PIXEL | XCB_CW_OVERRIDE_REDIRECT, giaTri);
        xcb_map_window(c, o_);
        // Items of another depth could not be put into this window.
        xcb_change_property(c, XCB_PROP_MODE_REPLACE, o_, nguyenTuX(c, "_NET_SYSTEM_TRAY_VISUAL"),
                            XCB_ATOM_VISUALID, 32, 1, &x_.man->root_visual);
        const xcb_atom_t cho = nguyenTuX(c, "_NET_SYSTEM_TRAY_S0");
        xcb_set_selection_owner(c, o_, cho, XCB_CURRENT_TIME);
        xcb_client_message_event_t bao{};
        bao.response_type = XCB_CLIENT_MESSAGE;
        bao.format = 32;
        bao.window = x_.goc();
        bao.type = nguyenTuX(c, "MANAGER");
        bao.data.data32[1] = cho;
        bao.data.data32[2] = o_;
        xcb_send_event(c, 0, x_.goc(), XCB_EVENT_MASK_STRUCTURE_NOTIFY, reinterpret_cast<const char*>(&bao));
        xcb_flush(c);
    }

    // Does what has been asked of it so far; true once it has an item.
    bool lam() {
        auto* c = x_.c();
        const xcb_atom_t loiXin = nguyenTuX(c, "_NET_SYSTEM_TRAY_OPCODE");
        while (const PhanXcb<xcb_generic_event_t> sk{xcb_poll_for_event(c)}) {
            const auto& loi = reinterpret_cast<const xcb_client_message_event_t&>(*sk);
            if ((sk->response_type & 0x7f) != XCB_CLIENT_MESSAGE || loi.type != loiXin ||
                loi.data.data32[1] != 0)
                continue;
            muc_ = loi.data.data32[2];
            const std::uint32_t co[] = {canh, canh};
            xcb_reparent_window(c, muc_, o_, 0, 0);
            xcb_configure_window(c, muc_, XCB_CONFIG_WINDOW_WIDTH | XCB_CONFIG_WINDOW_HEIGHT, co);
            xcb_map_window(c, muc_);
            xcb_client_message_event_t nhung{};  // "you are embedded now"
            nhung.response_type = XCB_CLIENT_MESSAGE;
            nhung.format = 32;
            nhung.window = muc_;
            nhung.type = nguyenTuX(c, "_XEMBED");
            nhung.data.data32[3] = o_;
            xcb_send_event(c, 0, muc_, 0, reinterpret_cast<const char*>(&nhung));
            xcb_flush(c);
        }
        return muc_ != XCB_NONE;
    }

    // Number of clearly red pixels of the item.
    [[nodiscard]] int soDiemDo() const {
        const PhanXcb<xcb_get_image_reply_t> anh(xcb_get_image_reply(
            x_.c(), xcb_get_image(x_.c(), XCB_IMAGE_FORMAT_Z_PIXMAP, x_.goc(), 0, 0, canh, canh, ~0U),
            nullptr));
        if (!anh) return 0;
        const auto* p = xcb_get_image_data(anh.get());
        int so = 0;
        for (int i = 0; i < canh * canh; ++i, p += 4)
            so += p[2] > 200 && p[1] < 110 && p[0] < 110;
        return so;
    }

  private:
    ManX x_;
    xcb_window_t o_;
    xcb_window_t muc_ = XCB_NONE;
};

}  // namespace tovira::thu

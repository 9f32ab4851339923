#pragma once
// One thread. A plain X client for tests: draws known colours, moves the pointer, rearranges monitors.

#include <poll.h>
#include <sys/uio.h>
#include <xcb/randr.h>
#include <xcb/screensaver.h>
#include <xcb/xcbext.h>
#include <xcb/xtest.h>

#include <chrono>
#include <cstring>
#include <string>
#include <vector>

#include "XcbLinux.hpp"

namespace tovira::thu {

class KhachX {
  public:
    KhachX() : x_(moManX()) {
        if (!x_) return;
        PhanXcb<void>(xcb_randr_query_version_reply(c(), xcb_randr_query_version(c(), 1, 5), nullptr));
        gc_ = xcb_generate_id(c());
        const std::uint32_t v[] = {0, XCB_SUBWINDOW_MODE_INCLUDE_INFERIORS, 0};
        xcb_create_gc(c(), gc_, x_.goc(),
                      XCB_GC_FOREGROUND | XCB_GC_SUBWINDOW_MODE | XCB_GC_GRAPHICS_EXPOSURES, v);
    }

    [[nodiscard]] bool duoc() const { return static_cast<bool>(x_); }
    [[nodiscard]] xcb_connection_t* c() const { return x_.c(); }
    [[nodiscard]] xcb_window_t goc() const { return x_.goc(); }
    [[nodiscard]] int rong() const { return x_.man->width_in_pixels; }
    [[nodiscard]] int cao() const { return x_.man->height_in_pixels; }

    // Returns once the server has carried out everything so far.
    void dongBo() { PhanXcb<void>(xcb_get_input_focus_reply(c(), xcb_get_input_focus(c()), nullptr)); }

    // Fills a rectangle of the root window with 0xRRGGBB.
    void to(std::uint32_t mau, int x, int y, int rong, int cao) {
        xcb_change_gc(c(), gc_, XCB_GC_FOREGROUND, &mau);
        const xcb_rectangle_t o{static_cast<std::int16_t>(x), static_cast<std::int16_t>(y),
                                static_cast<std::uint16_t>(rong), static_cast<std::uint16_t>(cao)};
        xcb_poly_fill_rectangle(c(), x_.goc(), gc_, 1, &o);
        dongBo();
    }

    // Places the pointer as a program does, without any device.
    void datConTro(int x, int y) {
        xcb_warp_pointer(c(), XCB_NONE, x_.goc(), 0, 0, 0, 0, static_cast<std::int16_t>(x),
                         static_cast<std::int16_t>(y));
        dongBo();
    }

    // Makes the pointer a square of `canh` pixels in one colour, its hotspot in the middle.
    void datHinhConTro(std::uint32_t mau, int canh) {
        const auto c16 = static_cast<std::uint16_t>(canh);
        const xcb_pixmap_t hinh = xcb_generate_id(c());
        xcb_create_pixmap(c(), 1, hinh, x_.goc(), c16, c16);
        const xcb_gcontext_t gc = xcb_generate_id(c());
        const std::uint32_t mot = 1;
        xcb_create_gc(c(), gc, hinh, XCB_GC_FOREGROUND, &mot);
        const xcb_rectangle_t o{0, 0, c16, c16};
        xcb_poly_fill_rectangle(c(), hinh, gc, 1, &o);
        const auto kenh = [mau](int dich) {
            return static_cast<std::uint16_t>(((mau >> dich) & 0xFFU) * 0x101U);
        };
        const xcb_cursor_t conTro = xcb_generate_id(c());
        xcb_create_cursor(c(), conTro, hinh, hinh, kenh(16), kenh(8), kenh(0), 0, 0, 0, c16 / 2, c16 / 2);
        xcb_change_window_attributes(c(), x_.goc(), XCB_CW_CURSOR, &conTro);
        xcb_free_cursor(c(), conTro);
        xcb_free_gc(c(), gc);
        xcb_free_pixmap(c(), hinh);
        dongBo();
    }

    xcb_atom_t atom(const std::string& ten) {
        const PhanXcb<xcb_intern_atom_reply_t> r(xcb_intern_atom_reply(
            c(), xcb_intern_atom(c(), 0, static_cast<std::uint16_t>(ten.size()), ten.c_str()), nullptr));
        return r ? r->atom : XCB_NONE;
    }

    // Defines a monitor by hand; `dauRa` is the output that it takes over, or none. The request is put
    // together here because libxcb 1.15 takes a wrong length for it.
    bool datManHinh(const std::string& ten, int x, int y, int rong, int cao, xcb_randr_output_t dauRa = 0) {
        struct {
            xcb_randr_set_monitor_request_t dau{};
            xcb_randr_monitor_info_t m{};
            xcb_randr_output_t dauRa = 0;
        } goi;
        goi.dau.window = x_.goc();
        goi.m.name = atom(ten);
        goi.m.x = static_cast<std::int16_t>(x);
        goi.m.y = static_cast<std::int16_t>(y);
        goi.m.width = static_cast<std::uint16_t>(rong);
        goi.m.height = static_cast<std::uint16_t>(cao);
        goi.m.width_in_millimeters = 300;
        goi.m.height_in_millimeters = 200;
        goi.m.nOutput = dauRa != 0 ? 1 : 0;
        goi.dauRa = dauRa;
        iovec phan[3]{};  // libxcb wants two free ones in front
        phan[2] = {&goi, sizeof goi - (dauRa != 0 ? 0 : sizeof dauRa)};
        const xcb_protocol_request_t yeuCau{1, &xcb_randr_id, XCB_RANDR_SET_MONITOR, 1};
        return daLam(c(), {xcb_send_request(c(), XCB_REQUEST_CHECKED, phan + 2, &yeuCau)});
    }
    bool boManHinh(const std::string& ten) {
        return daLam(c(), xcb_randr_delete_monitor_checked(c(), x_.goc(), atom(ten)));
    }

    // Moves the pointer as a device does.
    void diChuot(int x, int y) {
        xcb_test_fake_input(c(), XCB_MOTION_NOTIFY, 0, 0, x_.goc(), static_cast<std::int16_t>(x),
                            static_cast<std::int16_t>(y), 0);
        dongBo();
    }

    [[nodiscard]] xcb_randr_output_t dauRaDau() { return taiNguyen().dauRa; }
    bool tatManHinhDau() { return datCheDo(taiNguyen(), XCB_NONE); }
    bool batLaiManHinhDau() { return datCheDo(taiNguyen(), cheDoCu_); }

    // Cuts off every other client of the server.
    void ngatKhachKhac() {
        const auto* caiDat = xcb_get_setup(c());
        const std::uint32_t buoc = caiDat->resource_id_mask + 1;
        constexpr std::uint32_t soKhach = 16;
        constexpr std::uint32_t soMa = 16;
        for (std::uint32_t k = 1; k < soKhach; ++k)
            for (std::uint32_t m = 0; m < soMa && k * buoc != caiDat->resource_id_base; ++m)
                xcb_kill_client(c(), k * buoc + m);
        dongBo();
    }

    // Blanks the screen after `giay` idle seconds (0: never) and reports it to choBaoVe.
    void theoDoiBaoVe(int giay) {
        xcb_screensaver_select_input(c(), x_.goc(), XCB_SCREENSAVER_EVENT_NOTIFY_MASK);
        xcb_set_screen_saver(c(), static_cast<std::int16_t>(giay), 0, XCB_BLANKING_PREFERRED,
                             XCB_EXPOSURES_ALLOWED);
        dongBo();
    }
    void tatBaoVe() {
        xcb_force_screen_saver(c(), XCB_SCREEN_SAVER_RESET);
        dongBo();
        while (PhanXcb<xcb_generic_event_t>(xcb_poll_for_event(c()))) {
        }
    }
    // True when the screen was blanked within `han`.
    bool choBaoVe(std::chrono::milliseconds han) {
        const auto het = std::chrono::steady_clock::now() + han;
        const int ma = xcb_get_extension_data(c(), &xcb_screensaver_id)->first_event;
        for (;;) {
            while (const PhanXcb<xcb_generic_event_t> sk{xcb_poll_for_event(c())})
                if ((sk->response_type & 0x7f) == ma &&
                    reinterpret_cast<const xcb_screensaver_notify_event_t&>(*sk).state ==
                        XCB_SCREENSAVER_STATE_ON)
                    return true;
            const auto con =
                std::chrono::duration_cast<std::chrono::milliseconds>(het - std::chrono::steady_clock::now());
            if (con.count() <= 0) return false;
            pollfd cho{xcb_get_file_descriptor(c()), POLLIN, 0};
            poll(&cho, 1, static_cast<int>(con.count()));
        }
    }

  private:
    struct TaiNguyen {
        xcb_randr_crtc_t crtc = 0;
        xcb_randr_output_t dauRa = 0;
        xcb_timestamp_t luc = 0;
    };

    TaiNguyen taiNguyen() {
        const PhanXcb<xcb_randr_get_screen_resources_current_reply_t> r(
            xcb_randr_get_screen_resources_current_reply(
                c(), xcb_randr_get_screen_resources_current(c(), x_.goc()), nullptr));
        if (!r || r->num_crtcs == 0 || r->num_outputs == 0) return {};
        return {*xcb_randr_get_screen_resources_current_crtcs(r.get()),
                *xcb_randr_get_screen_resources_current_outputs(r.get()), r->config_timestamp};
    }

    bool datCheDo(const TaiNguyen& t, xcb_randr_mode_t cheDo) {
        const PhanXcb<xcb_randr_get_crtc_info_reply_t> cu(
            xcb_randr_get_crtc_info_reply(c(), xcb_randr_get_crtc_info(c(), t.crtc, t.luc), nullptr));
        if (cu && cu->mode != XCB_NONE) cheDoCu_ = cu->mode;
        const PhanXcb<xcb_randr_set_crtc_config_reply_t> r(xcb_randr_set_crtc_config_reply(
            c(),
            xcb_randr_set_crtc_config(c(), t.crtc, XCB_CURRENT_TIME, t.luc, 0, 0, cheDo,
                                      XCB_RANDR_ROTATION_ROTATE_0, cheDo == XCB_NONE ? 0 : 1, &t.dauRa),
            nullptr));
        return r && r->status == XCB_RANDR_SET_CONFIG_SUCCESS;
    }

    xcb_randr_mode_t cheDoCu_ = XCB_NONE;
    ManX x_;
    xcb_gcontext_t gc_ = XCB_NONE;
};

}  // namespace tovira::thu

#pragma once
// Any thread; a connection is used by one thread at a time. Owners for what libxcb hands out.

#include <xcb/xcb.h>

#include <cstdlib>
#include <memory>

namespace tovira {

struct GiaiPhongC {
    void operator()(void* p) const { std::free(p); }
};

// A reply, event or error: libxcb allocates it, its reader frees it.
template <class T>
using PhanXcb = std::unique_ptr<T, GiaiPhongC>;

struct DongKetNoiX {
    void operator()(xcb_connection_t* c) const { xcb_disconnect(c); }
};

// Closing it frees everything that the server keeps for it: damage watches, alarms, shared segments.
using KetNoiX = std::unique_ptr<xcb_connection_t, DongKetNoiX>;

// A connection with the screen that the display's name chose.
struct ManX {
    KetNoiX ketNoi;
    const xcb_screen_t* man = nullptr;

    explicit operator bool() const { return man != nullptr; }
    [[nodiscard]] xcb_connection_t* c() const { return ketNoi.get(); }
    [[nodiscard]] xcb_window_t goc() const { return man->root; }
};

// Opens the display that DISPLAY names; false in a boolean context when there is none.
[[nodiscard]] inline ManX moManX() {
    int so = 0;
    ManX ra{KetNoiX(xcb_connect(nullptr, &so)), nullptr};
    if (xcb_connection_has_error(ra.c()) != 0) return ra;
    auto it = xcb_setup_roots_iterator(xcb_get_setup(ra.c()));
    for (; it.rem > 0 && so > 0; --so)
        xcb_screen_next(&it);
    if (it.rem > 0) ra.man = it.data;
    return ra;
}

// True when the server carried out a request sent with its _checked form.
[[nodiscard]] inline bool daLam(xcb_connection_t* c, xcb_void_cookie_t phieu) {
    return !PhanXcb<xcb_generic_error_t>(xcb_request_check(c, phieu)) && xcb_connection_has_error(c) == 0;
}

// True when the server has the extension `mo`.
[[nodiscard]] inline bool coMoRong(xcb_connection_t* c, xcb_extension_t* mo) {
    const auto* tin = xcb_get_extension_data(c, mo);
    return tin != nullptr && tin->present != 0;
}

}  // namespace tovira

#pragma once
// One thread. A window of one colour that no window manager manages, on top when it comes.

#include <optional>

#include "DemAnhLinux.hpp"
#include "XcbLinux.hpp"

namespace tovira::thu {

class CuaMau {
  public:
    enum class Hien { co, chua };

    // `o` is its place on the screen without the border, which is `mauVien`; without a colour nothing paints
    // it.
    CuaMau(xcb_connection_t* c, xcb_window_t goc, std::optional<std::uint32_t> mau, const OAnh& o,
           Hien hien = Hien::co, int vien = 0, std::uint32_t mauVien = 0)
        : c_(c), ma_(xcb_generate_id(c)) {
        const std::uint32_t giaTri[] = {mau.value_or(0), mauVien, 1};
        xcb_create_window(
            c, XCB_COPY_FROM_PARENT, ma_, goc, static_cast<std::int16_t>(o.x - vien),
            static_cast<std::int16_t>(o.y - vien), static_cast<std::uint16_t>(o.rong),
            static_cast<std::uint16_t>(o.cao), static_cast<std::uint16_t>(vien),
            XCB_WINDOW_CLASS_INPUT_OUTPUT, XCB_COPY_FROM_PARENT,
            (mau ? std::uint32_t{XCB_CW_BACK_PIXEL} : 0U) | XCB_CW_BORDER_PIXEL | XCB_CW_OVERRIDE_REDIRECT,
            giaTri + (mau ? 0 : 1));
        if (hien == Hien::co) this->hien();
    }
    ~CuaMau() {
        xcb_destroy_window(c_, ma_);
        dongBo();
    }
    CuaMau(const CuaMau&) = delete;
    CuaMau& operator=(const CuaMau&) = delete;

    [[nodiscard]] xcb_window_t ma() const { return ma_; }
    void hien() const {
        xcb_map_window(c_, ma_);
        dongBo();
    }
    void an() const {
        xcb_unmap_window(c_, ma_);
        dongBo();
    }
    void to(std::uint32_t mau) const {
        xcb_change_window_attributes(c_, ma_, XCB_CW_BACK_PIXEL, &mau);
        xcb_clear_area(c_, 0, ma_, 0, 0, 0, 0);
        dongBo();
    }
    void doi(int x, int y) const {
        const std::uint32_t cho[] = {static_cast<std::uint32_t>(x), static_cast<std::uint32_t>(y)};
        xcb_configure_window(c_, ma_, XCB_CONFIG_WINDOW_X | XCB_CONFIG_WINDOW_Y, cho);
        dongBo();
    }
    void xuongDay() const {
        const std::uint32_t duoi = XCB_STACK_MODE_BELOW;
        xcb_configure_window(c_, ma_, XCB_CONFIG_WINDOW_STACK_MODE, &duoi);
        dongBo();
    }

  private:
    // Returns once the server has carried it out.
    void dongBo() const { PhanXcb<void>(xcb_get_input_focus_reply(c_, xcb_get_input_focus(c_), nullptr)); }

    xcb_connection_t* c_;
    xcb_window_t ma_;
};

}  // namespace tovira::thu

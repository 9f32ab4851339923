#pragma once
// Frame queue. The strip of the screen that a window of this program covers (CuaSoAnLinux), put together from
// the windows below it and the background, and watched there: what the covering window itself draws is no
// change.

#include <xcb/composite.h>
#include <xcb/damage.h>
#include <xcb/render.h>
#include <xcb/xfixes.h>

#include <memory>
#include <optional>
#include <unordered_map>
#include <vector>

#include "CuaSoAnLinux.hpp"
#include "DemAnhLinux.hpp"
#include "XcbLinux.hpp"

namespace tovira {

class DaiChe {
  public:
    using Tin = std::shared_ptr<const CuaSoAnLinux::Tin>;

    DaiChe() = default;
    ~DaiChe() { boHet(); }
    DaiChe(const DaiChe&) = delete;
    DaiChe& operator=(const DaiChe&) = delete;

    // `x` outlives this or the next call, and speaks XFIXES and DAMAGE; `man` is the part of the root window
    // that is captured; `matNa` is the event mask that its owner has on the root window.
    void batDau(const ManX& x, const OAnh& man, std::uint32_t matNa);
    void dong();

    // From now on covered is what `tin` says, nothing where it is null. True when that is news.
    bool theo(const Tin& tin);
    // What is covered, on the root window; empty when nothing is.
    [[nodiscard]] const OAnh& o() const { return o_; }

    // True when the event was about the windows below.
    bool nhan(const xcb_generic_event_t& suKien);
    [[nodiscard]] bool coViec() const { return daVe_ || doiCay_ || doiNen_; }

    // Takes changes inside the strip out of `vung`, a region of the root window.
    void botVung(xcb_xfixes_region_t vung) const;
    // Asks what has changed below; the answer is read by `thayDoi`, true when the strip looks different.
    [[nodiscard]] std::optional<xcb_xfixes_fetch_region_cookie_t> hoiThayDoi();
    bool thayDoi(std::optional<xcb_xfixes_fetch_region_cookie_t> phieu);

    // Is there anything to write into a picture read at `cac`?
    [[nodiscard]] bool trong(const std::vector<DoanHang>& cac) const;
    // Writes the strip into `dem`, which shows `man` and has just been read, where `cac` says that it was.
    // The server is grabbed and its events have been read.
    void ghep(DemAnh& dem, const std::vector<DoanHang>& cac);

  private:
    // A window below, or above: everything in the strip but the covering window.
    struct Cua {
        xcb_window_t ma = XCB_NONE;
        OAnh o;  // on the root window, border included
        int vien = 0;
        xcb_visualid_t kieu = XCB_NONE;
        friend bool operator==(const Cua&, const Cua&) = default;
    };
    struct Canh {
        xcb_damage_damage_t ma = XCB_NONE;
        bool daVe = false;
        bool nghi = true;  // may still show what stood on the screen where it came, the covering window too
    };

    [[nodiscard]] bool dung() const { return tin_ != nullptr; }
    bool moRong();
    void batDauTheo();
    void boHet();
    void boTheo();
    void hoiKieu();
    void taoNen();
    [[nodiscard]] std::vector<Cua> docCay();
    bool capNhatCay();
    void veNen();
    void veCua(const Cua& cua);
    [[nodiscard]] bool conThanh(const Cua& cua);
    [[nodiscard]] PhanXcb<xcb_get_image_reply_t> docCua(xcb_window_t cua, const OAnh& cuaO,
                                                        const OAnh& o) const;
    void chepVao(DemAnh& dem, const std::vector<DoanHang>& cac);

    const ManX* x_ = nullptr;
    OAnh man_;
    std::uint32_t matNa_ = 0;
    std::optional<bool> duMoRong_;
    std::unordered_map<xcb_visualid_t, xcb_render_pictformat_t> kieu_;

    Tin tin_;
    OAnh o_;
    xcb_xfixes_region_t vungO_ = XCB_NONE;    // the strip
    xcb_xfixes_region_t vungMot_ = XCB_NONE;  // work areas
    xcb_xfixes_region_t vungTong_ = XCB_NONE;
    xcb_pixmap_t anh_ = XCB_NONE;  // the strip as it is put together
    xcb_render_picture_t hinh_ = XCB_NONE;
    xcb_gcontext_t but_ = XCB_NONE;
    xcb_window_t nen_ = XCB_NONE;  // shows what the root window's background shows there
    xcb_atom_t tenNen_ = XCB_NONE;
    std::vector<Cua> cac_;  // from the bottom to the top
    std::unordered_map<xcb_window_t, Canh> canh_;
    bool daVe_ = false;
    bool doiCay_ = false;
    bool doiNen_ = false;
};

}  // namespace tovira

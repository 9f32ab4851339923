#pragma once
// Frame queue. Learns from the X server, without asking over and over, that the picture, the pointer or the
// monitors of a screen may have changed.

#include <xcb/damage.h>
#include <xcb/sync.h>

#include <vector>

#include "DaiCheLinux.hpp"
#include "DemAnhLinux.hpp"
#include "Loi.hpp"
#include "XcbLinux.hpp"

namespace tovira {

class TheoDoiManHinh {
  public:
    // Starts watching on `x`, which must outlive this. Fails with loiNguonX when the server lacks
    // DAMAGE or XFIXES.
    KetQua<void> batDau(const ManX& x);

    // What this listens to on the root window.
    static constexpr std::uint32_t matNaGoc = XCB_EVENT_MASK_STRUCTURE_NOTIFY;

    // Reads what the server has sent so far into the flags below, save what is for `dai`; false when the
    // connection is lost.
    [[nodiscard]] bool docSuKien(DaiChe& dai);

    // At first everything may have changed.
    // Something was drawn since the last layVungVe.
    bool daVe = true;
    // The pointer has another image.
    bool conTroDoiAnh = true;
    // The pointer is being moved: it has to be looked at until this is false.
    bool conTroDong = false;
    // One more look at the pointer is due, for the last step of a movement.
    bool conTroVuaDung = true;
    // Monitors or the root window were rearranged.
    bool manDoi = true;

    [[nodiscard]] bool coViec() const {
        return daVe || conTroDoiAnh || conTroDong || conTroVuaDung || manDoi;
    }

    // Takes over what was drawn outside `dai`: asks for it, and later reads the answer as rectangles of the
    // root window.
    [[nodiscard]] xcb_xfixes_fetch_region_cookie_t hoiVungVe(const DaiChe& dai);
    [[nodiscard]] std::vector<OAnh> layVungVe(xcb_xfixes_fetch_region_cookie_t phieu);

  private:
    KetQua<void> hoiMoRong();
    void theoDoiConTro();
    void taoBaoThuc(std::uint32_t boDem, std::uint32_t kieu, xcb_sync_alarm_t ma);
    void xet(const xcb_generic_event_t& suKien);

    const ManX* x_ = nullptr;
    xcb_damage_damage_t veLai_ = XCB_NONE;
    xcb_xfixes_region_t vung_ = XCB_NONE;
    xcb_sync_alarm_t baoDong_ = XCB_NONE;
    xcb_sync_alarm_t baoYen_ = XCB_NONE;
};

}  // namespace tovira

#include "ThietBiLinux.hpp"

#include <xcb/xinput.h>

#include <cstring>
#include <vector>

namespace tovira {

namespace {

// The server marks the devices behind XTEST with this property.
bool laXtest(xcb_connection_t* c, xcb_input_device_id_t ma, xcb_atom_t dau) {
    const PhanXcb<xcb_input_xi_get_property_reply_t> dap(xcb_input_xi_get_property_reply(
        c, xcb_input_xi_get_property(c, ma, 0, dau, XCB_ATOM_ANY, 0, 1), nullptr));
    return dap && dap->num_items > 0;
}

// The keyboards that our core key events reach, as XInput sees them: slaves of the master keyboard that is
// paired with this client's pointer.
std::vector<xcb_input_device_id_t> banPhimCuaMinh(xcb_connection_t* c) {
    std::vector<xcb_input_device_id_t> ra;
    const auto phieuTro = xcb_input_xi_get_client_pointer(c, XCB_NONE);
    const auto phieuMay = xcb_input_xi_query_device(c, XCB_INPUT_DEVICE_ALL);
    const PhanXcb<xcb_input_xi_get_client_pointer_reply_t> tro(
        xcb_input_xi_get_client_pointer_reply(c, phieuTro, nullptr));
    const PhanXcb<xcb_input_xi_query_device_reply_t> may(
        xcb_input_xi_query_device_reply(c, phieuMay, nullptr));
    if (!tro || !may) return ra;
    xcb_input_device_id_t chu = 0;
    for (auto it = xcb_input_xi_query_device_infos_iterator(may.get()); it.rem > 0;
         xcb_input_xi_device_info_next(&it))
        if (it.data->deviceid == tro->deviceid) chu = it.data->attachment;
    for (auto it = xcb_input_xi_query_device_infos_iterator(may.get()); it.rem > 0;
         xcb_input_xi_device_info_next(&it))
        if (it.data->type == XCB_INPUT_DEVICE_TYPE_SLAVE_KEYBOARD && it.data->attachment == chu)
            ra.push_back(it.data->deviceid);
    return ra;
}

}  // namespace

xcb_atom_t nguyenTuX(xcb_connection_t* c, const char* ten) {
    const PhanXcb<xcb_intern_atom_reply_t> dap(xcb_intern_atom_reply(
        c, xcb_intern_atom(c, 0, static_cast<std::uint16_t>(std::strlen(ten)), ten), nullptr));
    return dap ? dap->atom : xcb_atom_t{XCB_ATOM_NONE};
}

std::optional<ThietBiPhim> timThietBiPhim(xcb_connection_t* c) {
    if (!coMoRong(c, &xcb_input_id)) return std::nullopt;
    const PhanXcb<xcb_input_xi_query_version_reply_t> phien(
        xcb_input_xi_query_version_reply(c, xcb_input_xi_query_version(c, 2, 2), nullptr));
    if (!phien || phien->major_version < 2) return std::nullopt;
    const auto dau = nguyenTuX(c, "XTEST Device");
    ThietBiPhim ra;
    for (const auto ma : banPhimCuaMinh(c)) {
        if (laXtest(c, ma, dau))
            ra.xtest = ma;
        else
            ra.banKhac.push_back(ma);
    }
    if (ra.xtest == 0) return std::nullopt;
    return ra;
}

}  // namespace tovira

#include "DemAnhLinux.hpp"

#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <cstring>

#include "BatBien.hpp"

namespace tovira {

std::vector<DoanHang> doanKhac(const PhienBan& cu, const PhienBan& moi, int cao) {
    std::vector<DoanHang> ra;
    for (int b = 0; b < soBang(cao); ++b) {
        const auto i = static_cast<std::size_t>(b);
        if (cu[i] == moi[i]) continue;
        const int tu = b * caoBang;
        const int den = std::min(cao, tu + caoBang);
        if (!ra.empty() && ra.back().den == tu)
            ra.back().den = den;
        else
            ra.push_back({tu, den});
    }
    return ra;
}

bool docDuocDiemAnh(const ManX& x) {
    const auto* caiDat = xcb_get_setup(x.c());
    if (caiDat->image_byte_order != XCB_IMAGE_ORDER_LSB_FIRST) return false;
    bool du32 = false;
    for (auto it = xcb_setup_pixmap_formats_iterator(caiDat); it.rem > 0; xcb_format_next(&it))
        du32 |= it.data->depth == x.man->root_depth && it.data->bits_per_pixel == 32;
    if (!du32) return false;
    for (auto d = xcb_screen_allowed_depths_iterator(x.man); d.rem > 0; xcb_depth_next(&d))
        for (auto v = xcb_depth_visuals_iterator(d.data); v.rem > 0; xcb_visualtype_next(&v))
            if (v.data->visual_id == x.man->root_visual)
                return v.data->red_mask == 0xFF0000 && v.data->green_mask == 0xFF00 &&
                       v.data->blue_mask == 0xFF;
    return false;
}

DemAnh::DemAnh(xcb_connection_t* c, int rong, int cao)
    : phienBan(static_cast<std::size_t>(soBang(cao)), 0),
      c_(c),
      rong_(rong),
      cao_(cao),
      co_(static_cast<std::size_t>(rong) * static_cast<std::size_t>(cao) * 4) {
    if (chiaSe()) return;
    auto* p = mmap(nullptr, co_, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    TOVIRA_BUOC(p != MAP_FAILED);
    diem_ = static_cast<std::uint8_t*>(p);
}

DemAnh::~DemAnh() {
    munmap(diem_, co_);
}

// Memory that the server maps too. It is passed as a descriptor, so nothing is left behind by a crash.
bool DemAnh::chiaSe() {
    if (!coMoRong(c_, &xcb_shm_id)) return false;
    const PhanXcb<xcb_shm_query_version_reply_t> phien(
        xcb_shm_query_version_reply(c_, xcb_shm_query_version(c_), nullptr));
    if (!phien || (phien->major_version == 1 && phien->minor_version < 2)) return false;
    const int fd = memfd_create("tovira-khung", MFD_CLOEXEC);
    if (fd < 0) return false;
    void* p = MAP_FAILED;
    if (ftruncate(fd, static_cast<off_t>(co_)) == 0)
        p = mmap(nullptr, co_, PROT_READ | PROT_WRITE, MAP_SHARED, fd, 0);
    if (p == MAP_FAILED) {
        close(fd);
        return false;
    }
    const xcb_shm_seg_t doan = xcb_generate_id(c_);
    // libxcb closes the descriptor once it has been sent.
    if (!daLam(c_, xcb_shm_attach_fd_checked(c_, doan, fd, 0))) {
        munmap(p, co_);
        return false;
    }
    diem_ = static_cast<std::uint8_t*>(p);
    doan_ = doan;
    return true;
}

bool DemAnh::doc(xcb_window_t goc, int x, int y, const std::vector<DoanHang>& cac) {
    return dungChung() ? docQuaBoNhoChung(goc, x, y, cac) : docQuaDay(goc, x, y, cac);
}

// Whole rows, because the server packs what it is asked for: only then does it land in its own place.
bool DemAnh::docQuaBoNhoChung(xcb_window_t goc, int x, int y, const std::vector<DoanHang>& cac) {
    std::vector<xcb_shm_get_image_cookie_t> phieu;
    phieu.reserve(cac.size());
    for (const auto& d : cac)
        phieu.push_back(xcb_shm_get_image(
            c_, goc, static_cast<std::int16_t>(x), static_cast<std::int16_t>(y + d.tu),
            static_cast<std::uint16_t>(rong_), static_cast<std::uint16_t>(d.den - d.tu), ~0U,
            XCB_IMAGE_FORMAT_Z_PIXMAP, doan_, static_cast<std::uint32_t>(d.tu * buoc())));
    bool duoc = true;
    for (const auto p : phieu)
        duoc = PhanXcb<xcb_shm_get_image_reply_t>(xcb_shm_get_image_reply(c_, p, nullptr)) && duoc;
    return duoc;
}

bool DemAnh::docQuaDay(xcb_window_t goc, int x, int y, const std::vector<DoanHang>& cac) {
    for (const auto& d : cac) {
        const auto phieu =
            xcb_get_image(c_, XCB_IMAGE_FORMAT_Z_PIXMAP, goc, static_cast<std::int16_t>(x),
                          static_cast<std::int16_t>(y + d.tu), static_cast<std::uint16_t>(rong_),
                          static_cast<std::uint16_t>(d.den - d.tu), ~0U);
        const PhanXcb<xcb_get_image_reply_t> anh(xcb_get_image_reply(c_, phieu, nullptr));
        const auto can = static_cast<std::size_t>(d.den - d.tu) * static_cast<std::size_t>(buoc());
        if (!anh || static_cast<std::size_t>(xcb_get_image_data_length(anh.get())) < can) return false;
        std::memcpy(hang(d.tu), xcb_get_image_data(anh.get()), can);
    }
    return true;
}

}  // namespace tovira

#include <QtWebEngineCore/qtwebenginecoreglobal.h>

#include <cstdlib>

#include "DanhSachManHinhLinux.hpp"
#include "ManHinhLinux.hpp"
#include "NoiGiaoDienLinux.hpp"
#include "PhienLinux.hpp"
#include "TuKiemNen.hpp"

namespace tovira {

namespace {

std::string bien(const char* ten) {
    const char* v = std::getenv(ten);
    return v == nullptr || *v == '\0' ? "(trống)" : v;
}

class NenTuKiemLinux final : public TuKiem::Nen {
  public:
    std::string thuMucGiaoDien() override { return noiGiaoDien(); }
    std::string loaiPhien() override {
        return std::string(laPhienWayland() ? "Wayland"
                           : moManX()       ? "X11"
                                            : "không có màn hình") +
               ", DISPLAY " + bien("DISPLAY") + ", XDG_SESSION_TYPE " + bien("XDG_SESSION_TYPE");
    }
    std::string phienBanWeb() override {
        return std::string("Qt WebEngine ") + qWebEngineVersion() + ", Chromium " +
               qWebEngineChromiumVersion();
    }
    // A Wayland session has displays, only not for us.
    std::string lyDoKhongManHinh() override {
        return moManX() || laPhienWayland() ? "" : "không có màn hình X11, DISPLAY " + bien("DISPLAY");
    }
    std::string lyDoKhongDieuKhien() override { return tovira::lyDoKhongDieuKhien(); }
    std::string lyDoKhongGhi() override { return tovira::lyDoKhongGhi(); }
    std::vector<ManHinh::Nguon> cacManHinh() override {
        const auto x = moManX();
        return x ? lietKeManHinhX(x) : std::vector<ManHinh::Nguon>();
    }
    std::optional<std::vector<std::uint32_t>> phimDangGiu() override {
        const auto x = moManX();
        if (!x) return std::nullopt;
        const PhanXcb<xcb_query_keymap_reply_t> phim(
            xcb_query_keymap_reply(x.c(), xcb_query_keymap(x.c()), nullptr));
        if (!phim) return std::nullopt;
        std::vector<std::uint32_t> ra;
        for (std::uint32_t ma = 0; ma < 256; ++ma)
            if ((phim->keys[ma / 8] >> (ma % 8) & 1) != 0) ra.push_back(ma);
        return ra;
    }
};

}  // namespace

std::unique_ptr<TuKiem::Nen> taoNenTuKiem() {
    return std::make_unique<NenTuKiemLinux>();
}

}  // namespace tovira

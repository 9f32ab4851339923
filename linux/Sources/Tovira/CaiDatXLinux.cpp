#include "CaiDatXLinux.hpp"

#include <cstddef>
#include <string>

#include "ThietBiLinux.hpp"

namespace tovira {

namespace {

// A reader that stops being `con` at the first read past the end.
class Doc {
  public:
    explicit Doc(std::string_view d) : d_(d) {}

    [[nodiscard]] bool con() const { return con_; }
    void datThuTu(bool lonTruoc) { lonTruoc_ = lonTruoc; }

    std::string_view doan(std::size_t n) {
        if (n > d_.size()) {
            con_ = false;
            return {};
        }
        const auto ra = d_.substr(0, n);
        d_.remove_prefix(n);
        return ra;
    }
    std::uint32_t so(std::size_t n) {
        std::uint32_t ra = 0;
        const auto b = doan(n);
        for (std::size_t i = 0; i < b.size(); ++i)
            ra = ra << 8U | static_cast<unsigned char>(b[lonTruoc_ ? i : b.size() - 1 - i]);
        return ra;
    }
    // Texts are padded to four bytes.
    std::string_view chu(std::size_t n) {
        const auto ra = doan(n);
        doan((4 - n % 4) % 4);
        return ra;
    }

  private:
    std::string_view d_;
    bool con_ = true;
    bool lonTruoc_ = false;
};

enum : std::uint32_t { loaiSo = 0, loaiChu = 1, loaiMau = 2 };

}  // namespace

std::optional<std::int32_t> soTrongCaiDatX(std::string_view thuocTinh, std::string_view ten) {
    Doc d(thuocTinh);
    d.datThuTu(d.so(1) == 1);
    d.doan(3 + 4);  // padding, serial
    for (auto con = d.so(4); con > 0 && d.con(); --con) {
        const auto loai = d.so(1);
        d.doan(1);
        const auto tenNay = d.chu(d.so(2));
        d.doan(4);  // serial of the last change
        if (loai == loaiSo) {
            const auto so = d.so(4);
            if (d.con() && tenNay == ten) return static_cast<std::int32_t>(so);
        } else if (loai == loaiChu) {
            d.chu(d.so(4));
        } else if (loai == loaiMau) {
            d.doan(8);
        } else {
            return std::nullopt;
        }
    }
    return std::nullopt;
}

std::optional<double> khoangBamDupX(xcb_connection_t* c) {
    const PhanXcb<xcb_get_selection_owner_reply_t> chu(
        xcb_get_selection_owner_reply(c, xcb_get_selection_owner(c, nguyenTuX(c, "_XSETTINGS_S0")), nullptr));
    if (!chu || chu->owner == XCB_NONE) return std::nullopt;
    const auto phieu =
        xcb_get_property(c, 0, chu->owner, nguyenTuX(c, "_XSETTINGS_SETTINGS"), XCB_ATOM_ANY, 0, 1U << 16U);
    const PhanXcb<xcb_get_property_reply_t> dap(xcb_get_property_reply(c, phieu, nullptr));
    if (!dap || dap->format != 8) return std::nullopt;
    const std::string_view byte(static_cast<const char*>(xcb_get_property_value(dap.get())),
                                static_cast<std::size_t>(xcb_get_property_value_length(dap.get())));
    const auto ms = soTrongCaiDatX(byte, "Net/DoubleClickTime");
    if (!ms || *ms <= 0) return std::nullopt;
    return *ms / 1000.0;
}

}  // namespace tovira

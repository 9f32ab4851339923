#include "ManHinhLinux.hpp"

#include <xcb/damage.h>
#include <xcb/xfixes.h>

#include <cstdlib>
#include <optional>
#include <string_view>

#include "DanhSachManHinhLinux.hpp"
#include "DemAnhLinux.hpp"
#include "GiuThucLinux.hpp"
#include "HangDoiKhungLinux.hpp"
#include "LuongManHinhLinux.hpp"
#include "ManHinhNen.hpp"
#include "PhienLinux.hpp"

namespace tovira {

namespace {

std::string bienMoiTruong(const char* ten) {
    const char* v = std::getenv(ten);
    return v == nullptr ? "" : v;
}

bool docDuocMotDiem(const ManX& x) {
    const auto phieu = xcb_get_image(x.c(), XCB_IMAGE_FORMAT_Z_PIXMAP, x.goc(), 0, 0, 1, 1, ~0U);
    return PhanXcb<xcb_get_image_reply_t>(xcb_get_image_reply(x.c(), phieu, nullptr)) != nullptr;
}

class NenManHinhLinux final : public ManHinh::Nen {
  public:
    explicit NenManHinhLinux(NoiThieu noiThieu) : noiThieu_(std::move(noiThieu)) {}

    bool duocGhi() override { return lyDoKhongGhi().empty(); }

    // X has no permission that a user could grant to a running program.
    bool xinGhi() override { return false; }

    void moCaiDatGhiManHinh() override {
        if (noiThieu_) noiThieu_(lyDoKhongGhi());
    }

    void lietKe(std::function<void(KetQua<std::vector<ManHinh::Nguon>>)> xong) override {
        const auto x = moManX();
        if (!x) return xong(loiNguonX("Không kết nối được với máy chủ X"));
        xong(lietKeManHinhX(x));
    }

    KetQua<std::unique_ptr<ManHinh::Luong>> moLuong(const ManHinh::Nguon& nguon,
                                                    const ManHinh::CauHinh& cauHinh,
                                                    ManHinh::PhiaNhan phiaNhan) override {
        return std::unique_ptr<ManHinh::Luong>(
            std::make_unique<LuongManHinhLinux>(hangDoi_, nguon, cauHinh, std::move(phiaNhan)));
    }

    HangDoi& hangDoiKhung() override { return hangDoi_; }

    void giuThuc(bool giu) override {
        if (!giu)
            giuThuc_.reset();
        else if (!giuThuc_)
            giuThuc_.emplace();
    }

  private:
    NoiThieu noiThieu_;
    HangDoiKhungLinux hangDoi_;
    std::optional<GiuThucLinux> giuThuc_;
};

}  // namespace

std::string lyDoKhongGhi() {
    if (laPhienWayland())
        return "Phiên làm việc này dùng Wayland, nơi Tovira không ghi được màn hình. Hãy đăng xuất, chọn "
               "phiên "
               "X11 (Xorg) ở màn hình đăng nhập rồi mở lại Tovira.";
    const auto x = moManX();
    if (!x)
        return "Không kết nối được với máy chủ X (DISPLAY=\"" + bienMoiTruong("DISPLAY") +
               "\"). Hãy mở Tovira trong một phiên X11.";
    if (!docDuocDiemAnh(x)) return "Màn hình không dùng màu 24 bit. Hãy đặt độ sâu màu của máy chủ X là 24.";
    if (!coMoRong(x.c(), &xcb_damage_id) || !coMoRong(x.c(), &xcb_xfixes_id))
        return "Máy chủ X thiếu phần mở rộng DAMAGE hoặc XFIXES. Hãy bật chúng trong cấu hình máy chủ X.";
    if (!docDuocMotDiem(x))
        return "Máy chủ X không cho đọc màn hình. Hãy mở Tovira bằng chính người dùng của phiên X11.";
    return "";
}

std::unique_ptr<ManHinh::Nen> taoNenManHinh(NoiThieu noiThieu) {
    return std::make_unique<NenManHinhLinux>(std::move(noiThieu));
}

std::unique_ptr<ManHinh::Nen> taoNenManHinh() {
    return taoNenManHinh(nullptr);
}

}  // namespace tovira

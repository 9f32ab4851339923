// The X11 body of DieuKhien's ground.

#include <xcb/xtest.h>
#include <xkbcommon/xkbcommon-x11.h>

#include <algorithm>
#include <optional>
#include <utility>

#include "CaiDatXLinux.hpp"
#include "DanhSachManHinhLinux.hpp"
#include "DieuKhienLinux.hpp"
#include "DieuKhienNen.hpp"
#include "PhienLinux.hpp"
#include "TayXLinux.hpp"

namespace tovira {

namespace {

constexpr double bamDupMacDinh = 0.4;  // seconds; what toolkits take when no desktop says otherwise

// Appends the code points of valid UTF-16.
void themChu(std::u32string& ra, const std::u16string& donVi) {
    for (std::size_t i = 0; i < donVi.size(); ++i) {
        const char32_t a = donVi[i];
        const bool doi = a >= 0xD800 && a < 0xDC00 && i + 1 < donVi.size();
        ra.push_back(doi ? 0x10000 + ((a - 0xD800) << 10U) + (donVi[++i] - 0xDC00U) : a);
    }
}

// Opens the display and makes sure, with an event that nobody sees, that it takes our input.
std::unique_ptr<TayXLinux> moTay(VongLap& vongLap) {
    if (laPhienWayland()) return nullptr;
    auto x = moManX();
    if (!x || !coMoRong(x.c(), &xcb_test_id)) return nullptr;
    const auto c = x.c();
    if (xkb_x11_setup_xkb_extension(c, XKB_X11_MIN_MAJOR_XKB_VERSION, XKB_X11_MIN_MINOR_XKB_VERSION,
                                    XKB_X11_SETUP_XKB_EXTENSION_NO_FLAGS, nullptr, nullptr, nullptr,
                                    nullptr) == 0)
        return nullptr;
    // Requests of ours are carried out even while another program has grabbed the server.
    xcb_test_grab_control(c, 1);
    const auto* may = xcb_get_setup(c);
    if (may == nullptr) return nullptr;
    const auto phieu = xcb_test_fake_input_checked(c, XCB_KEY_RELEASE, may->min_keycode, XCB_CURRENT_TIME,
                                                   XCB_NONE, 0, 0, 0);
    if (!daLam(c, phieu)) return nullptr;
    return std::make_unique<TayXLinux>(std::move(x), vongLap);
}

class DieuKhienLinux final : public DieuKhien::Nen {
  public:
    DieuKhienLinux(VongLap& vongLap, NoiThieu noiThieu)
        : noiThieu_(std::move(noiThieu)), tay_(moTay(vongLap)) {}

    bool duocPhep() override { return tay_ && tay_->song(); }
    KhungHinh khungManHinhChinh() override {
        if (!tay_) return {};
        const auto cac = HoiManHinhX(tay_->x(), coRandr15(tay_->x())).dapAn();
        const auto chinh = std::find_if(cac.begin(), cac.end(), [](const auto& n) { return n.chinh; });
        return chinh != cac.end() ? chinh->khung : KhungHinh{};
    }
    double khoangBamDup() override {
        const auto cuaMay = tay_ ? khoangBamDupX(tay_->x().c()) : std::nullopt;
        return cuaMay.value_or(bamDupMacDinh);
    }
    bool dang(const SuKien& suKien) override {
        if (!duocPhep()) return false;
        const auto* chu = std::get_if<SuKienChu>(&suKien);
        if (chu == nullptr) return tay_->them(suKien);
        // A symbol goes down and up at once, when its text is complete.
        if (chu->xuong) themChu(chu_, chu->donVi);
        if (!dangGoChu_) ketThucChu();
        return true;
    }
    void batDauChu() override { dangGoChu_ = true; }
    void ketThucChu() override {
        dangGoChu_ = false;
        auto chu = std::exchange(chu_, {});
        if (!chu.empty() && duocPhep()) tay_->them(std::move(chu));
    }
    void boChuDangCho() override {
        chu_.clear();
        if (tay_) tay_->boChuDangCho();
    }
    void moCaiDatTroNang() override {
        if (noiThieu_) noiThieu_(lyDoKhongDieuKhien());
    }

  private:
    NoiThieu noiThieu_;
    std::unique_ptr<TayXLinux> tay_;
    std::u32string chu_;  // of the text command at hand
    bool dangGoChu_ = false;
};

}  // namespace

std::unique_ptr<DieuKhien::Nen> taoNenDieuKhien(VongLap& vongLap, NoiThieu noiThieu) {
    return std::make_unique<DieuKhienLinux>(vongLap, std::move(noiThieu));
}

std::unique_ptr<DieuKhien::Nen> taoNenDieuKhien(VongLap& vongLap) {
    return taoNenDieuKhien(vongLap, nullptr);
}

}  // namespace tovira

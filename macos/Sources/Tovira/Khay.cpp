#include "Khay.hpp"

#include "KiemQuyen.hpp"
#include "NenChung.hpp"
#include "ThamSo.hpp"
#include "TuKhoiDong.hpp"

namespace tovira {

namespace {

constexpr const char* meoDaCap = "Đã cấp. Bấm để mở Cài đặt hệ thống.";
constexpr const char* meoChuaCap =
    "Chưa cấp — hoặc vừa cấp mà chưa mở lại ứng dụng. Bấm để mở Cài đặt hệ thống.";
constexpr const char* meoMoLai =
    "macOS chỉ đọc trạng thái quyền một lần lúc ứng dụng khởi động. Vừa bật trong Cài đặt thì phải mở lại "
    "ứng "
    "dụng mới có hiệu lực.";
constexpr const char* meoManKhoa = "Chưa hỗ trợ trên macOS. Máy phải được đăng nhập rồi mới nhận điều khiển.";

MucKhay quyen(LenhKhay lenh, const char* ten, bool co) {
    return {lenh, std::string(co ? "✓" : "✗") + "  " + ten, co ? meoDaCap : meoChuaCap};
}

MucKhay tat(std::string ten, const char* meo = "") {
    return {LenhKhay::khongCo, std::move(ten), meo, /*batDuoc=*/false};
}

}  // namespace

std::vector<MucKhay> Khay::lapMenu(const TrangThai& tt) {
    std::vector<MucKhay> menu;
    if (tt.dangPhat) {
        menu.push_back(tat("● Đang bị điều khiển"));
        menu.push_back({LenhKhay::bamDungChiaSe, "Dừng chia sẻ màn hình"});
        menu.emplace_back();
    }
    menu.push_back({LenhKhay::bamMo, "Mở Tovira"});
    menu.emplace_back();
    menu.push_back(quyen(LenhKhay::bamGhiManHinh, "Ghi màn hình", tt.ghiManHinh));
    menu.push_back(quyen(LenhKhay::bamTroNang, "Trợ năng", tt.troNang));
    if (!tt.ghiManHinh || !tt.troNang)
        menu.push_back({LenhKhay::bamMoLai, "↻  Bật rồi mà vẫn ✗ — Mở lại Tovira", meoMoLai});
    menu.emplace_back();
    menu.push_back({LenhKhay::bamTuKhoiDong, "Chạy cùng macOS", "", true, tt.tuKhoiDong});
    menu.push_back(tat("Hỗ trợ màn hình khoá", meoManKhoa));
    menu.emplace_back();
    menu.push_back({LenhKhay::bamHuongDan, "Hướng dẫn"});
    menu.push_back({LenhKhay::bamGioiThieu, "Giới thiệu"});
    menu.emplace_back();
    menu.push_back(tat("Máy chủ: " + tt.mayChu));
    menu.push_back({LenhKhay::bamThoat, "Thoát Tovira", "", true, false, 'q'});
    return menu;
}

void Khay::dung() {
    d_.nen.dungMuc(*this, ve(false), "Tovira");
}

void Khay::capNhatBieuTuong(bool dangPhat) {
    d_.nen.doiVe(ve(dangPhat));
}

std::vector<MucKhay> Khay::lapMenu() const {
    return lapMenu(TrangThai{d_.dangPhat(), d_.kiemQuyen.duocGhiManHinh(), d_.kiemQuyen.duocTroNang(),
                             d_.tuKhoiDong.dangBat(), d_.thamSo.mayChu});
}

void Khay::bam(LenhKhay lenh) {
    const auto goi = [](const std::function<void()>& khi) {
        if (khi) khi();
    };
    switch (lenh) {
        case LenhKhay::khongCo:
            return;
        case LenhKhay::bamDungChiaSe:
            return goi(khiDungChiaSe);
        case LenhKhay::bamMo:
            return goi(khiMo);
        case LenhKhay::bamGhiManHinh:
            return d_.kiemQuyen.moGhiManHinh();
        case LenhKhay::bamTroNang:
            return d_.kiemQuyen.moTroNang();
        case LenhKhay::bamMoLai:
            return goi(khiMoLai);
        case LenhKhay::bamTuKhoiDong:
            return bamTuKhoiDong();
        case LenhKhay::bamHuongDan:
            return d_.nen.moHuongDan();
        case LenhKhay::bamGioiThieu:
            return d_.nen.moGioiThieu();
        case LenhKhay::bamThoat:
            return goi(khiThoat);
    }
}

void Khay::bamTuKhoiDong() {
    if (const auto loi = d_.tuKhoiDong.dat(!d_.tuKhoiDong.dangBat()))
        d_.hopBao.canhBao("Không đổi được mục khởi động", *loi);
}

VeKhay Khay::ve(bool dangPhat) {
    if (dangPhat)
        return {"display.trianglebadge.exclamationmark", false, true, "Tovira — máy này ĐANG BỊ ĐIỀU KHIỂN"};
    return {"display", true, false, "Tovira — máy này có thể được điều khiển từ xa"};
}

}  // namespace tovira

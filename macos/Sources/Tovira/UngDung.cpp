#include "UngDung.hpp"

#include "ChiBao.hpp"
#include "CuaSo.hpp"
#include "DieuKhien.hpp"
#include "Khay.hpp"
#include "KichBanTrang.hpp"
#include "ManHinh.hpp"
#include "NenChung.hpp"

namespace tovira {

namespace {

constexpr double chuKyTheoDoi = 1.0;  // seconds

// A callback that does nothing once its owner is gone.
std::function<void()> yeu(const std::shared_ptr<UngDung*>& chu, void (UngDung::*viec)()) {
    return [yeuChu = std::weak_ptr(chu), viec] {
        if (const auto con = yeuChu.lock()) ((*con)->*viec)();
    };
}

}  // namespace

UngDung::UngDung(const ChoDua& choDua) : d_(choDua), conSong_(std::make_shared<UngDung*>(this)) {}

UngDung::~UngDung() = default;

void UngDung::khiKhoiDongXong(KhoiDong cach) {
    d_.nen.datBieuTuong();
    d_.cuaSo.dung();
    d_.khay.dung();
    noiDay();
    if (cach == KhoiDong::ngam) {
        d_.nen.datKieu(Kieu::phu);
        // Without a status item the window is what the menu hangs on.
        if (!d_.khay.coChoDat()) d_.cuaSo.hienThuNho();
    } else {
        d_.nen.datKieu(Kieu::thuong);
        d_.cuaSo.hien();
    }
    theoDoiChiaSe();
}

void UngDung::noiDay() {
    d_.khay.khiMo = [yeuChu = std::weak_ptr(conSong_)] {
        if (const auto con = yeuChu.lock()) (*con)->d_.cuaSo.hien();
    };
    d_.khay.khiDungChiaSe = yeu(conSong_, &UngDung::dungChiaSe);
    d_.khay.khiMoLai = yeu(conSong_, &UngDung::moLai);
    d_.khay.khiThoat = yeu(conSong_, &UngDung::thoat);
    d_.chiBao.khiDung = yeu(conSong_, &UngDung::dungChiaSe);
    d_.manHinh.khiTuDung = [yeuChu = std::weak_ptr(conSong_)] {
        const auto con = yeuChu.lock();
        if (!con) return;
        (*con)->d_.dieuKhien.nhaHet();
        (*con)->d_.cuaSo.boDo();
    };
}

void UngDung::khiMoLaiUngDung(CoCuaSoHien coCuaSoHien) {
    // The system counts a parked window as one that is there to see.
    if (coCuaSoHien == CoCuaSoHien::khong || d_.cuaSo.dangDo()) d_.cuaSo.hien();
}

void UngDung::khiSapKetThuc() {
    ngungHet();
}

void UngDung::ngungHet() {
    d_.dieuKhien.nhaHet();
    d_.manHinh.dung();
}

void UngDung::thoat() {
    ngungHet();
    d_.nen.ketThuc();
}

void UngDung::dungChiaSe() {
    // The page's own button ends the session by its rules and tells the remote side.
    d_.cuaSo.chay(kich_ban_trang::bamDung());
    d_.manHinh.dung();
    d_.dieuKhien.nhaHet();
    d_.chiBao.an();
}

void UngDung::theoDoiChiaSe() {
    dongHo_ = d_.vongLap.lapLai(chuKyTheoDoi, [this] { nhipTheoDoi(); });
}

void UngDung::nhipTheoDoi() {
    const bool dangPhat = d_.manHinh.dangPhat();
    if (dangPhat == phatTruoc_) return;
    phatTruoc_ = dangPhat;
    d_.khay.capNhatBieuTuong(dangPhat);
    d_.cuaSo.choThuNho();
    if (dangPhat) {
        d_.cuaSo.damBaoDangVe();
        d_.chiBao.hien();
    } else {
        d_.chiBao.an();
        d_.cuaSo.boDo();  // nothing, unless the share ended in a way that left the window parked
    }
}

void UngDung::moLai() {
    d_.nen.moBanMoi(
        [yeuChu = std::weak_ptr(conSong_), &vongLap = d_.vongLap](std::optional<std::string> loi) {
            vongLap.chay([yeuChu, loi = std::move(loi)] {
                const auto con = yeuChu.lock();
                if (!con) return;
                if (!loi) return (*con)->thoat();
                (*con)->d_.hopBao.canhBao("Không mở lại được Tovira",
                                          *loi + "\n\nHãy thoát rồi tự mở lại từ thư mục Ứng dụng.");
            });
        });
}

}  // namespace tovira

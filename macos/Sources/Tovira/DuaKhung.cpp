#include "DuaKhung.hpp"

#include <algorithm>
#include <utility>

namespace tovira {

using Gui = MjpegServer::Gui;

void DuaKhung::chonLuot(std::uint64_t luot) {
    hangDoi_.chay([toi = shared_from_this(), luot] { toi->luot_ = luot; });
}

void DuaKhung::nhan(std::uint64_t luot, std::unique_ptr<ManHinh::Khung> khung) {
    if (luot != luot_ || !khung || khung->trangThai() != TrangThaiKhung::daDu) return;
    cho_ = std::move(khung);
    ++hen_;
    thuGui();
}

std::function<void()> DuaKhung::khiCoNguoiRanh() {
    // Only the frame queue takes hold of this object: were it the server's queue, the last hold might end
    // there.
    return [&hangDoi = hangDoi_, yeu = weak_from_this()] {
        hangDoi.chay([yeu] {
            if (const auto toi = yeu.lock()) toi->khiRanh();
        });
    };
}

void DuaKhung::khiRanh() {
    daNhoBao_ = false;
    if (cho_) return thuGui();
    if (!cuoi_) return;
    gui(Gui::nguoiChuaCo);
    henLang();
}

// Encodes and sends the waiting frame if anybody can take it.
void DuaKhung::thuGui() {
    if (!coNguoiRanh()) return;
    const auto khung = std::exchange(cho_, nullptr);
    if (auto moi = maHoa(*khung)) {
        cuoi_ = std::move(moi);
        gui(Gui::moiNguoi);
    }
    if (cuoi_) henLang();
}

MjpegServer::Khung DuaKhung::maHoa(ManHinh::Khung& khung) {
    std::vector<std::byte> dem;
    dem.reserve(coDem_ + coDem_ / 8);  // a little room, so that a slightly larger frame does not copy itself
    dem.resize(KhungMjpeg::leDau);
    if (!khung.maHoa(chatLuong, dem) || dem.size() == KhungMjpeg::leDau) return nullptr;
    coDem_ = dem.size() + KhungMjpeg::leCuoi;
    return KhungMjpeg::dong(std::move(dem));
}

void DuaKhung::henLang() {
    hangDoi_.chaySau(hanLang, [yeu = weak_from_this(), hen = ++hen_] {
        if (const auto toi = yeu.lock()) toi->khiLang(hen);
    });
}

// An engine shows a part only when the next boundary arrives: what stays on the screen is therefore sent
// twice.
void DuaKhung::khiLang(std::uint64_t hen) {
    if (hen == hen_ && cuoi_) gui(Gui::nhacLai);
}

bool DuaKhung::coNguoiRanh() {
    const std::lock_guard khoa(khoa_);
    if (!noi_) return false;
    if (noi_->coNguoiRanh()) return true;
    if (!std::exchange(daNhoBao_, true)) noi_->baoKhiRanh();
    return false;
}

void DuaKhung::gui(Gui gui) {
    const std::lock_guard khoa(khoa_);
    if (noi_) noi_->dangKhung(cuoi_, gui);
}

void DuaKhung::dong() {
    {
        const std::lock_guard khoa(khoa_);
        noi_ = nullptr;
    }
    hangDoi_.chay([toi = shared_from_this()] {
        toi->luot_ = 0;
        toi->cho_.reset();
        toi->cuoi_.reset();
    });
}

}  // namespace tovira

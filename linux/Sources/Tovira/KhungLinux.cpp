#include "KhungLinux.hpp"

#include <libyuv.h>

#include <algorithm>
#include <cmath>

namespace tovira {

PhienBan phienBanThuPhong(const PhienBan& goc, int cao, int caoMoi) {
    // Rows around the exact footprint that the filter may touch as well.
    constexpr std::int64_t le = 2;
    PhienBan ra(static_cast<std::size_t>(soBang(caoMoi)), 0);
    for (std::size_t b = 0; b < ra.size(); ++b) {
        const auto tren = static_cast<std::int64_t>(b) * caoBang;
        const auto duoi = std::min<std::int64_t>(tren + caoBang, caoMoi);
        const auto tu = std::max<std::int64_t>(tren * cao / caoMoi - le, 0);
        const auto den = std::min<std::int64_t>((duoi * cao + caoMoi - 1) / caoMoi + le, cao);
        for (auto i = tu / caoBang; i < soBang(den); ++i)
            ra[b] = std::max(ra[b], goc[static_cast<std::size_t>(i)]);
    }
    return ra;
}

bool XuongKhung::maHoa(const DemAnh& dem, KichThuoc co, double chatLuong, std::vector<std::byte>& ra) {
    const int cl = std::clamp(static_cast<int>(std::lround(chatLuong * 100)), 1, 100);
    if (co == KichThuoc{dem.rong(), dem.cao()})
        return maHoa_.maHoa({dem.diem(), dem.buoc(), dem.rong(), dem.cao(), &dem.phienBan}, cl, ra);
    constexpr std::int64_t coToiDa = 32767;
    if (co.rong < 1 || co.cao < 1 || co.rong > coToiDa || co.cao > coToiDa) return false;
    const auto rong = static_cast<int>(co.rong);
    const auto cao = static_cast<int>(co.cao);
    if (!thuPhong(dem, rong, cao)) return false;
    return maHoa_.maHoa({anhThu_.data(), rong * 4, rong, cao, &phienBanThu_}, cl, ra);
}

bool XuongKhung::thuPhong(const DemAnh& dem, int rong, int cao) {
    auto phienBan = phienBanThuPhong(dem.phienBan, dem.cao(), cao);
    if (rong == rongThu_ && phienBan == phienBanThu_) return true;
    rongThu_ = 0;
    anhThu_.resize(static_cast<std::size_t>(rong) * static_cast<std::size_t>(cao) * 4);
    if (libyuv::ARGBScale(dem.diem(), dem.buoc(), dem.rong(), dem.cao(), anhThu_.data(), rong * 4, rong, cao,
                          libyuv::kFilterBox) != 0)
        return false;
    rongThu_ = rong;
    phienBanThu_ = std::move(phienBan);
    return true;
}

KhungLinux::KhungLinux(std::shared_ptr<const DemAnh> dem, std::shared_ptr<XuongKhung> xuong, KichThuoc co,
                       std::function<void()> khiTra)
    : dem_(std::move(dem)), xuong_(std::move(xuong)), co_(co), khiTra_(std::move(khiTra)) {}

KhungLinux::~KhungLinux() {
    dem_.reset();
    khiTra_();
}

bool KhungLinux::maHoa(double chatLuong, std::vector<std::byte>& ra) {
    return xuong_->maHoa(*dem_, co_, chatLuong, ra);
}

}  // namespace tovira

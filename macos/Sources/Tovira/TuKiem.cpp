#include "TuKiem.hpp"

#include <stdlib.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <exception>

#include "ThamSo.hpp"
#include "TuKiemMuc.hpp"

namespace tovira {
namespace {

namespace fs = std::filesystem;
using namespace tu_kiem;

class ThuMucRieng {
  public:
    ThuMucRieng() {
        std::error_code khongCo;
        std::string mau = (fs::temp_directory_path(khongCo) / "tovira-tu-kiem-XXXXXX").string();
        if (!khongCo && ::mkdtemp(mau.data()) != nullptr) duong_ = fs::canonical(mau, khongCo);
    }
    ~ThuMucRieng() {
        std::error_code khongSao;
        if (!duong_.empty()) fs::remove_all(duong_, khongSao);
    }
    ThuMucRieng(const ThuMucRieng&) = delete;
    ThuMucRieng& operator=(const ThuMucRieng&) = delete;
    [[nodiscard]] const fs::path& duong() const { return duong_; }

  private:
    fs::path duong_;
};

// A check that throws has failed; the others still run.
KetLuan chayMot(const Muc& muc, const ChoDua& choDua) {
    try {
        return muc.ham(choDua);
    } catch (const std::exception& loi) {
        return TuKiem::hong(loi.what());
    }
}

void bao(const Muc& muc, const KetLuan& ketLuan, TuKiem::TongKet& tong, const TuKiem::Dong& ra,
         const TuKiem::Dong& loi) {
    const std::string ten = muc.ten;
    switch (ketLuan.loai) {
        case KetLuan::Loai::dat:
            ++tong.dat;
            return ra("✓ " + ten);
        case KetLuan::Loai::hong:
            ++tong.hong;
            return loi("✗ " + ten + ": " + ketLuan.lyDo);
        case KetLuan::Loai::boQua:
            ++tong.boQua;
            return ra("– " + ten + " (bỏ qua: " + ketLuan.lyDo + ")");
    }
}

std::string keManHinh(const std::vector<ManHinh::Nguon>& cac) {
    std::string ra;
    for (std::size_t i = 0; i < cac.size(); ++i) {
        const auto& [ma, ten, rong, cao, diemAnh, khung, chinh] = cac[i];
        ra += (i == 0 ? "" : "; ") + ManHinh::tenManHinh(cac[i], i) + " " + std::to_string(diemAnh.rong) +
              "×" + std::to_string(diemAnh.cao) + (chinh ? " (chính)" : "");
    }
    return ra.empty() ? "không có" : ra;
}

std::string kePhim(const std::optional<std::vector<std::uint32_t>>& cac) {
    if (!cac) return "không đọc được";
    std::string ra;
    for (const std::uint32_t ma : *cac)
        ra += (ra.empty() ? "mã " : ", ") + std::to_string(ma);
    return ra.empty() ? "không có" : ra;
}

// What a person looking for a fault asks first.
void keSuThat(TuKiem::Nen& nen, const TuKiem::Dong& ra) {
    ra("");
    ra("Phiên làm việc : " + nen.loaiPhien());
    ra("Bộ máy web     : " + nen.phienBanWeb());
    ra("Máy chủ        : " + std::string(ThamSo::mayChuMacDinh()));
    ra("Giao diện kèm  : " + nen.thuMucGiaoDien());
    if (!nen.lyDoKhongManHinh().empty()) return;
    const auto quyen = [](const std::string& lyDo) { return lyDo.empty() ? "được" : "KHÔNG: " + lyDo; };
    ra("Điều khiển     : " + quyen(nen.lyDoKhongDieuKhien()));
    ra("Ghi màn hình   : " + quyen(nen.lyDoKhongGhi()));
    ra("Màn hình       : " + keManHinh(nen.cacManHinh()));
    ra("Phím đang giữ  : " + kePhim(nen.phimDangGiu()));
}

}  // namespace

TuKiem::TongKet TuKiem::chay(Nen& nen, const Dong& ra, const Dong& loi) {
    const ThuMucRieng tam;
    const ChoDua choDua{nen, tam.duong()};
    TongKet tong;
    ra(std::string("Tovira ") + phienBanTovira + " — tự kiểm");
    ra("");
    for (const auto cacMuc : {mucMayChuAnh(), mucGiaoDienKem(), mucNhanTep(), mucDoMayChu(), mucDieuKhien(),
                              mucDuLieu(), mucTrang(), mucHinhAnh(), mucHeThong()}) {
        for (const Muc& muc : cacMuc)
            bao(muc, chayMot(muc, choDua), tong, ra, loi);
    }
    keSuThat(nen, ra);
    ra("");
    ra(std::to_string(tong.dat) + " đạt, " + std::to_string(tong.hong) + " hỏng, " +
       std::to_string(tong.boQua) + " bỏ qua");
    return tong;
}

int TuKiem::chay(Nen& nen) {
    // Line by line, so that the two streams keep their order where they meet.
    const auto viet = [](std::FILE* noi) {
        return [noi](const std::string& dong) {
            std::fprintf(noi, "%s\n", dong.c_str());
            std::fflush(noi);
        };
    };
    return chay(nen, viet(stdout), viet(stderr)).trangThai();
}

namespace tu_kiem {

std::string rutGon(std::string_view chu) {
    constexpr std::size_t toiDa = 80;
    const auto dong = chu.substr(0, chu.find('\r'));
    return dong.size() <= toiDa ? std::string(dong) : std::string(dong.substr(0, toiDa)) + "…";
}

KetLuan cungChu(std::string_view nhan, std::string_view mong) {
    if (nhan == mong) return TuKiem::dat();
    const auto khac = std::mismatch(nhan.begin(), nhan.end(), mong.begin(), mong.end()).first;
    const auto cho = static_cast<std::size_t>(khac - nhan.begin());
    return TuKiem::hong("khác từ byte " + std::to_string(cho) + ": mong \"" + rutGon(mong.substr(cho)) +
                        "\", nhận \"" + rutGon(nhan.substr(cho)) + "\"");
}

}  // namespace tu_kiem

}  // namespace tovira

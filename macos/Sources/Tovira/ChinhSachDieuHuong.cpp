#include "ChinhSachDieuHuong.hpp"

#include "DiaChiUrl.hpp"

namespace tovira {
namespace {

bool laWeb(std::string_view giaoThuc) {
    const std::string thuong = chuThuong(giaoThuc);
    return thuong == "http" || thuong == "https";
}

// An address whose host cannot be told has none.
std::string mayCua(std::string_view diaChi) {
    const auto url = DiaChiUrl::tachCuaTrang(diaChi);
    return url ? std::string(url->mayTran()) : std::string();
}

QuyetDinhDieuHuong xetLienKet(std::string_view diaChi, std::string_view gocMayChu) {
    if (!laWeb(giaoThucCua(diaChi))) return QuyetDinhDieuHuong::choPhep;
    const auto goc = DiaChiUrl::tach(gocMayChu);
    if (!goc) return QuyetDinhDieuHuong::choPhep;
    return mayCua(diaChi) == goc->mayTran() ? QuyetDinhDieuHuong::choPhep : QuyetDinhDieuHuong::moNgoai;
}

}  // namespace

QuyetDinhDieuHuong ChinhSachDieuHuong::xet(const ThaoTacDieuHuong& thaoTac, std::string_view gocMayChu) {
    if (!thaoTac.diaChi) return QuyetDinhDieuHuong::choPhep;
    const std::string_view diaChi = *thaoTac.diaChi;
    const std::string_view giaoThuc = giaoThucCua(diaChi);
    const bool lienKet = thaoTac.loai == LoaiDieuHuong::bamLienKet;
    if (diaChi == diaChiTaiLai) return QuyetDinhDieuHuong::thuLai;
    if (thaoTac.taiVe == YeuCauTai::co) return QuyetDinhDieuHuong::taiXuong;
    if (giaoThuc == "blob") return QuyetDinhDieuHuong::taiXuong;
    if (lienKet && giaoThuc == "data") return QuyetDinhDieuHuong::taiXuong;
    if (lienKet && !giaoThuc.empty()) return xetLienKet(diaChi, gocMayChu);
    return QuyetDinhDieuHuong::choPhep;
}

bool gocTinDuoc(std::string_view may, std::string_view mayChu) {
    if (may == "127.0.0.1" || may == "localhost") return true;
    const auto url = DiaChiUrl::tach(mayChu);
    if (!url || url->may.empty()) return false;
    return may == url->may || may == url->mayTran();
}

}  // namespace tovira

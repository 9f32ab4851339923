#include "TheoDoiMayChu.hpp"

#include "BatBien.hpp"

namespace tovira {
namespace {

void tang(std::int64_t& dem) {
    TOVIRA_BUOC(dem < INT64_MAX);
    ++dem;
}

}  // namespace

TheoDoiMayChu::Do TheoDoiMayChu::nhip() {
    tang(demNhipDo_);
    const bool coChuyen = dangMatKetNoi_ || demChetLienTiep_ > 0 || mayChuSongTruoc_ == false;
    return coChuyen || demNhipDo_ % nhipMoiLanDo == 0 ? Do::co : Do::khong;
}

TheoDoiMayChu::Viec TheoDoiMayChu::traLoi(bool song) {
    if (song) {
        demChetLienTiep_ = 0;
    } else {
        tang(demChetLienTiep_);
        if (demChetLienTiep_ < 2) return {};
    }
    const bool doi = mayChuSongTruoc_ != song;
    mayChuSongTruoc_ = song;

    Viec viec;
    if (dangDungGiaoDienKem_) {
        viec.songLai = song && doi;
    } else if (doi) {
        viec.matKetNoi = !song;
    }
    // The lost-connection page cannot act on a call, whatever was shown before it: the host returns by
    // itself.
    const bool trangTinh = !dangDungGiaoDienKem_ || dangHien_ == DangHien::trangKhongKetNoi;
    viec.napLai = song && dangMatKetNoi_ && trangTinh;
    return viec;
}

void TheoDoiMayChu::sangMayChu() {
    dangHien_ = DangHien::mayChu;
    dangMatKetNoi_ = false;
    dangDungGiaoDienKem_ = false;
    mayChuSongTruoc_ = true;
    demChetLienTiep_ = 0;
}

void TheoDoiMayChu::matMayChu() {
    dangMatKetNoi_ = true;
    mayChuSongTruoc_ = false;
}

void TheoDoiMayChu::sangGiaoDienKem() {
    matMayChu();
    dangHien_ = DangHien::giaoDienKem;
    dangDungGiaoDienKem_ = true;
}

void TheoDoiMayChu::sangTrangKhongKetNoi() {
    matMayChu();
    dangHien_ = DangHien::trangKhongKetNoi;
}

}  // namespace tovira

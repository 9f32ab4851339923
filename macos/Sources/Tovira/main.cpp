// The entry: a list of steps.

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <vector>

#include "BieuTuong.hpp"
#include "DieuKhienNen.hpp"
#include "DoMayChu.hpp"
#include "DongLenh.hpp"
#include "GiaoDienKem.hpp"
#include "KiemQuyenNen.hpp"
#include "ManHinhNen.hpp"
#include "MotBanNen.hpp"
#include "NenTang.hpp"
#include "ThamSo.hpp"
#include "TuKiemNen.hpp"
#include "VongLapMotLan.hpp"

using namespace tovira;

namespace {

int chayQuyen() {
    VongLapMotLan vongLap;
    const KiemQuyen::Quyen quyen{taoNenManHinh()->duocGhi(), taoNenDieuKhien(vongLap)->duocPhep()};
    const auto baoCao = KiemQuyen::lapBaoCao(taoNenKiemQuyen()->docGoi(), quyen);
    std::fputs(baoCao.chu.c_str(), stdout);
    return baoCao.trangThai;
}

int chayUngDung(int soThamSo, char** cacThamSo, const std::vector<std::string>& thamSo) {
    const auto nenMotBan = taoNenMotBan();
    MotBan motBan(*nenMotBan, MotBan::cach(thamSo, std::getenv(MotBan::bienThay)));
    ::unsetenv(MotBan::bienThay);  // meant for this program, not for those that it starts
    if (motBan.batDau() == MotBan::Viec::ketThuc) return 0;
    const auto nen = NenTang::tao(soThamSo, cacThamSo, motBan);
    if (!nen) return 1;
    ThamSo thamSoChung = ThamSo::tinh(thamSo, nen->caiDat());
    const ThamSo::DatChung datThamSo(thamSoChung);
    DieuKhien dieuKhien(nen->dieuKhien(), nen->vongLap());
    const DieuKhien::DatChung datDieuKhien(dieuKhien);
    ManHinh manHinh(nen->manHinh(), nen->vongLap(), dieuKhien);
    const ManHinh::DatChung datManHinh(manHinh);
    MayChuNhan mayChuNhan(nen->mayChuNhan(), nen->tepNguoiDung(), nen->vongLap(), thamSoChung.gocMayChu);
    const MayChuNhan::DatChung datMayChuNhan(mayChuNhan);
    DoMayChu doMayChu(nen->vongLap());
    GiaoDienKem giaoDienKem(std::filesystem::path(nen->thuMucGiaoDien()).parent_path());
    KiemQuyen kiemQuyen(nen->xinQuyen(), nen->dieuKhien(), nen->manHinh());

    CuaSo cuaSo({nen->vongLap(), thamSoChung, nen->cua(), nen->trang(), nen->tach(), nen->dieuKhien(),
                 nen->xinQuyen(), mayChuNhan, nen->hopBao(), nen->moDiaChi(), nen->caiDat(),
                 nen->tepNguoiDung(), nen->tuKhoiDong(), doMayChu, giaoDienKem});
    Khay khay({nen->khay(), kiemQuyen, [&manHinh] { return manHinh.dangPhat(); }, nen->tuKhoiDong(),
               nen->hopBao(), thamSoChung});
    ChiBao chiBao(nen->chiBao());
    if (const auto nhac = thamSoChung.nhacDiaChi()) {
        std::fprintf(stderr, "Tovira: %s\n", nhac->c_str());
        if (!DongLenh::ngam(thamSo)) cuaSo.baoLoi("Kiểm tra lại địa chỉ máy chủ", *nhac);
    }
    UngDung ungDung({nen->ungDung(), nen->vongLap(), nen->hopBao(), cuaSo, khay, chiBao, manHinh, dieuKhien});
    return nen->chay(ungDung,
                     DongLenh::ngam(thamSo) ? UngDung::KhoiDong::ngam : UngDung::KhoiDong::hienCuaSo);
}

}  // namespace

int main(int soThamSo, char** cacThamSo) {
    const std::vector<std::string> thamSo(cacThamSo, cacThamSo + soThamSo);
    const DongLenh lenh = DongLenh::chon(thamSo);
    switch (lenh.cheDo) {
        case CheDo::tuKiem:
            return TuKiem::chay(*taoNenTuKiem());
        case CheDo::quyen:
            return chayQuyen();
        case CheDo::taoIcon:
            return BieuTuong::chayTaoIcon(lenh.dich);
        case CheDo::taoIconIOS:
            return BieuTuong::chayTaoIconIOS(lenh.dich);
        case CheDo::ungDung:
            return chayUngDung(soThamSo, cacThamSo, thamSo);
    }
    return 1;
}

#pragma once
// Main thread. A Linux desktop: X11 and Qt.

#include <QApplication>

#include "CaiDatLinux.hpp"
#include "ChiBaoLinux.hpp"
#include "CuaSoLinux.hpp"
#include "CuaSoTachLinux.hpp"
#include "HoSoWeb.hpp"
#include "HopBaoLinux.hpp"
#include "KhayLinux.hpp"
#include "MoDiaChiLinux.hpp"
#include "NenTang.hpp"
#include "TepNguoiDungLinux.hpp"
#include "TrangLinux.hpp"
#include "UngDungLinux.hpp"
#include "VongLapLinux.hpp"

namespace tovira {

class NenTangLinux final : public NenTang {
  public:
    NenTangLinux(int& soThamSo, char** thamSo, MotBan& motBan);

    [[nodiscard]] std::string thuMucGiaoDien() const override;
    [[nodiscard]] VongLap& vongLap() override { return vongLap_; }
    [[nodiscard]] CaiDat& caiDat() override { return caiDat_; }
    [[nodiscard]] HopBao& hopBao() override { return hopBao_; }
    [[nodiscard]] MoDiaChi& moDiaChi() override { return moDiaChi_; }
    [[nodiscard]] TepNguoiDung& tepNguoiDung() override { return tepNguoiDung_; }
    [[nodiscard]] TuKhoiDong& tuKhoiDong() override { return *tuKhoiDong_; }
    [[nodiscard]] DieuKhien::Nen& dieuKhien() override { return *dieuKhien_; }
    [[nodiscard]] ManHinh::Nen& manHinh() override { return *manHinh_; }
    [[nodiscard]] Cau::Nen& xinQuyen() override { return xinQuyen_; }
    [[nodiscard]] MayChuNhan::Nen& mayChuNhan() override { return *mayChuNhan_; }
    [[nodiscard]] CuaSo::NenCua& cua() override { return cua_; }
    [[nodiscard]] CuaSo::NenTrang& trang() override { return trang_; }
    [[nodiscard]] CuaSo::NenTach& tach() override { return tach_; }
    [[nodiscard]] Khay::Nen& khay() override { return khay_; }
    [[nodiscard]] ChiBao::Nen& chiBao() override { return chiBao_; }
    [[nodiscard]] UngDung::Nen& ungDung() override { return ungDung_; }

    int chay(UngDung& ungDung, UngDung::KhoiDong cach) override;

  private:
    // Shows what the permission `ten` lacks and how to get it.
    void noiThieu(const char* ten, const std::string& lyDo);

    // X11 has no prompt to ask with: what is allowed is allowed already.
    struct XinQuyen final : Cau::Nen {
        explicit XinQuyen(DieuKhien::Nen& nen) : dieuKhien(nen) {}
        bool xinTroNang() override { return dieuKhien.duocPhep(); }
        DieuKhien::Nen& dieuKhien;
    };

    // Between the members before it, without which nothing runs, and those after it, which only one program
    // can have open.
    struct VaoCho {
        explicit VaoCho(MotBan& motBan) : motBan(motBan) { motBan.vaoCho(); }
        MotBan& motBan;
    };

    QApplication ung_;
    VaoCho vaoCho_;
    VongLapLinux vongLap_;
    CaiDatLinux caiDat_;
    HopBaoLinux hopBao_;
    MoDiaChiLinux moDiaChi_;
    TepNguoiDungLinux tepNguoiDung_;
    bool dangNoi_ = false;  // one such window at a time, however often a page asks
    std::unique_ptr<TuKhoiDong> tuKhoiDong_;
    std::unique_ptr<DieuKhien::Nen> dieuKhien_;
    std::unique_ptr<ManHinh::Nen> manHinh_;
    std::unique_ptr<MayChuNhan::Nen> mayChuNhan_;
    XinQuyen xinQuyen_;
    HoSoWeb hoSo_;
    CuaSoTachLinux tach_;
    TrangLinux trang_;
    CuaSoLinux cua_;
    KhayLinux khay_;
    ChiBaoLinux chiBao_;
    UngDungLinux ungDung_;
};

}  // namespace tovira

#if !__has_feature(objc_arc)
#error "This file needs automatic reference counting."
#endif

#import <AppKit/AppKit.h>

#include "NenTang.hpp"

#include <csignal>
#include <cstdio>

#include "ChuMac.h"
#include "CuaSoMac.h"
#include "DieuKhienNen.hpp"
#include "GiuCf.h"
#include "HienDienMac.h"
#include "ManHinhNen.hpp"
#include "MayChuNhanNen.hpp"
#include "MenuChinhMac.h"
#include "NenChungMac.h"
#include "TinHieuMac.h"
#import "UngDungUyQuyenMac.h"

namespace tovira {

namespace {

class NenTangMac final : public NenTang {
   public:
    explicit NenTangMac(MotBan& motBan) : motBan_(motBan) {}

    std::string thuMucGiaoDien() const override {
        return chuCpp(NSBundle.mainBundle.resourcePath) + "/giao-dien";
    }

    VongLap& vongLap() override { return *vongLap_; }
    CaiDat& caiDat() override { return *caiDat_; }
    HopBao& hopBao() override { return *hopBao_; }
    MoDiaChi& moDiaChi() override { return *moDiaChi_; }
    TepNguoiDung& tepNguoiDung() override { return *tepNguoiDung_; }
    TuKhoiDong& tuKhoiDong() override { return *tuKhoiDong_; }
    DieuKhien::Nen& dieuKhien() override { return *dieuKhien_; }
    ManHinh::Nen& manHinh() override { return *manHinh_; }
    Cau::Nen& xinQuyen() override { return *xinQuyen_; }
    MayChuNhan::Nen& mayChuNhan() override { return *mayChuNhan_; }
    CuaSo::NenCua& cua() override { return web_->cua(); }
    CuaSo::NenTrang& trang() override { return web_->trang(); }
    CuaSo::NenTach& tach() override { return web_->tach(); }
    Khay::Nen& khay() override { return *khay_; }
    ChiBao::Nen& chiBao() override { return *chiBao_; }
    UngDung::Nen& ungDung() override { return *ungDung_; }

    int chay(UngDung& ungDung, UngDung::KhoiDong cach) override {
        // The application holds its delegate weakly.
        TVUngDung* const uyQuyen = [[TVUngDung alloc] initVoiChu:&ungDung cach:cach];
        NSApp.delegate = uyQuyen;
        datMenuChinh(uyQuyen);
        motBan_.nghe([&ungDung] { ungDung.khiMoLaiUngDung(UngDung::CoCuaSoHien::khong); },
                     [&ungDung] { ungDung.thoat(); });
        const TinHieuMac tinHieu(*vongLap_, [&ungDung] { ungDung.thoat(); });
        [NSApp run];
        NSApp.delegate = nil;
        return 0;
    }

   private:
    MotBan& motBan_;
    std::unique_ptr<VongLap> vongLap_ = taoVongLap();
    std::unique_ptr<CaiDat> caiDat_ = taoCaiDat();
    std::unique_ptr<HopBao> hopBao_ = taoHopBao();
    std::unique_ptr<MoDiaChi> moDiaChi_ = taoMoDiaChi();
    std::unique_ptr<TepNguoiDung> tepNguoiDung_ = taoTepNguoiDung();
    std::unique_ptr<TuKhoiDong> tuKhoiDong_ = TuKhoiDong::tao();
    std::unique_ptr<DieuKhien::Nen> dieuKhien_ = taoNenDieuKhien(*vongLap_);
    std::unique_ptr<ManHinh::Nen> manHinh_ = taoNenManHinh();
    std::unique_ptr<Cau::Nen> xinQuyen_ = taoNenCau();
    std::unique_ptr<MayChuNhan::Nen> mayChuNhan_ = taoNenMayChuNhan();
    std::unique_ptr<NenWeb> web_ = taoNenWeb();
    std::unique_ptr<Khay::Nen> khay_ = taoNenKhay();
    std::unique_ptr<ChiBao::Nen> chiBao_ = taoNenChiBao();
    std::unique_ptr<UngDung::Nen> ungDung_ = taoNenUngDung();
};

// Over SSH, say, there is no window server to talk to, and AppKit would end the process.
bool coManHinh() {
    const GiuCf<CFDictionaryRef> phien(CGSessionCopyCurrentDictionary());
    if (phien) return true;
    std::fputs("✗ There is no desktop session to open a window in.\n", stderr);
    return false;
}

}  // namespace

std::unique_ptr<NenTang> NenTang::tao(int&, char**, MotBan& motBan) {
    if (!coManHinh()) return nullptr;
    std::signal(SIGPIPE, SIG_IGN);
    [NSApplication sharedApplication];
    motBan.vaoCho();
    return std::make_unique<NenTangMac>(motBan);
}

}  // namespace tovira

#if !__has_feature(objc_arc)
#error "This file needs automatic reference counting."
#endif

#import <AppKit/AppKit.h>
#import <CoreImage/CoreImage.h>
#import <CoreMedia/CoreMedia.h>
#import <ScreenCaptureKit/ScreenCaptureKit.h>

#include <atomic>
#include <cmath>

#include "BoThanhMac.h"
#include "ChuMac.h"
#include "GiuCf.h"
#include "ManHinh.hpp"
#include "ManHinhNen.hpp"
#import "ThanhMac.h"

namespace tovira {

namespace {

constexpr int maKhongCoManHinh = 2;

Loi loiTu(NSError* loi) {
    return {chuCpp(loi.domain), static_cast<int>(loi.code), chuCpp(loi.localizedDescription)};
}

KhungHinh khungCua(CGDirectDisplayID ma) {
    const CGRect o = CGDisplayBounds(ma);
    return {o.origin.x, o.origin.y, o.size.width, o.size.height};
}

// Pixels per point; a rotated display has the same in both directions.
double tiLeDiemAnh(CGDirectDisplayID ma) {
    const GiuCf<CGDisplayModeRef> cheDo(CGDisplayCopyDisplayMode(ma));
    if (!cheDo || CGDisplayModeGetWidth(cheDo.get()) == 0) return 1;
    return static_cast<double>(CGDisplayModeGetPixelWidth(cheDo.get())) /
           static_cast<double>(CGDisplayModeGetWidth(cheDo.get()));
}

KichThuoc diemAnhCua(CGDirectDisplayID ma, const KhungHinh& khung) {
    const double tiLe = tiLeDiemAnh(ma);
    return {std::lround(khung.rong * tiLe), std::lround(khung.cao * tiLe)};
}

std::string tenCua(CGDirectDisplayID ma) {
    for (NSScreen* man in NSScreen.screens) {
        NSNumber* so = man.deviceDescription[@"NSScreenNumber"];
        if (so && so.unsignedIntValue == ma) return chuCpp(man.localizedName);
    }
    return {};
}

ManHinh::Nguon nguonTu(SCDisplay* man) {
    const CGDirectDisplayID ma = man.displayID;
    const KhungHinh khung = khungCua(ma);
    return {.ma = ma,
            .ten = tenCua(ma),
            .rong = man.width,
            .cao = man.height,
            .diemAnh = diemAnhCua(ma, khung),
            .khung = khung,
            .chinh = ma == CGMainDisplayID()};
}

SCStreamConfiguration* cauHinhTu(const ManHinh::CauHinh& cauHinh) {
    SCStreamConfiguration* ra = [[SCStreamConfiguration alloc] init];
    ra.width = static_cast<size_t>(cauHinh.co.rong);
    ra.height = static_cast<size_t>(cauHinh.co.cao);
    ra.pixelFormat = kCVPixelFormatType_32BGRA;
    ra.minimumFrameInterval = CMTimeMake(1, cauHinh.khungMoiGiay);
    ra.queueDepth = cauHinh.doSauHang;
    ra.showsCursor = cauHinh.veConTro;
    return ra;
}

TrangThaiKhung trangThaiCua(CMSampleBufferRef mau) {
    NSArray* dinhKem = (__bridge NSArray*)CMSampleBufferGetSampleAttachmentsArray(mau, false);
    NSDictionary* dau = dinhKem.firstObject;
    NSNumber* so = dau[SCStreamFrameInfoStatus];
    if (![so isKindOfClass:NSNumber.class]) return TrangThaiKhung::daDu;
    switch (static_cast<SCFrameStatus>(so.integerValue)) {
        case SCFrameStatusComplete:
            return TrangThaiKhung::daDu;
        case SCFrameStatusIdle:
            return TrangThaiKhung::nghi;
        case SCFrameStatusBlank:
            return TrangThaiKhung::trong;
        default:
            return TrangThaiKhung::tamDung;
    }
}

class HangDoiGcd final : public HangDoi {
   public:
    [[nodiscard]] dispatch_queue_t hang() const { return hang_; }

    void chay(std::function<void()> viec) override {
        dispatch_async(hang_, ^{
            viec();
        });
    }
    void chaySau(double giay, std::function<void()> viec) override {
        const auto luc = dispatch_time(DISPATCH_TIME_NOW, static_cast<int64_t>(giay * NSEC_PER_SEC));
        dispatch_after(luc, hang_, ^{
            viec();
        });
    }

   private:
    dispatch_queue_t hang_ = dispatch_queue_create("tv-khung", DISPATCH_QUEUE_SERIAL);
};

// The encoder context and its colour space, made once.
struct XuongAnh {
    CIContext* veHinh = [CIContext contextWithOptions:@{kCIContextUseSoftwareRenderer : @NO}];
    GiuCf<CGColorSpaceRef> mau{CGColorSpaceCreateDeviceRGB()};
};

class KhungMac final : public ManHinh::Khung {
   public:
    KhungMac(CVImageBufferRef anh, TrangThaiKhung trangThai, std::shared_ptr<const XuongAnh> xuong)
        : anh_(CVPixelBufferRetain(anh)), trangThai_(trangThai), xuong_(std::move(xuong)) {}

    [[nodiscard]] TrangThaiKhung trangThai() const override { return trangThai_; }

    bool maHoa(double chatLuong, std::vector<std::byte>& ra) override {
        @autoreleasepool {
            CIImage* anh = [CIImage imageWithCVPixelBuffer:anh_.get()];
            NSDictionary* chon =
                @{(__bridge NSString*)kCGImageDestinationLossyCompressionQuality : @(chatLuong)};
            NSData* jpeg = [xuong_->veHinh JPEGRepresentationOfImage:anh
                                                          colorSpace:xuong_->mau.get()
                                                             options:chon];
            if (!jpeg) return false;
            const auto* dau = static_cast<const std::byte*>(jpeg.bytes);
            ra.insert(ra.end(), dau, dau + jpeg.length);
            return true;
        }
    }

   private:
    GiuCf<CVPixelBufferRef> anh_;
    TrangThaiKhung trangThai_;
    std::shared_ptr<const XuongAnh> xuong_;
};

// What the stream's delegate needs, on whichever thread it is called.
struct DauNhan {
    ManHinh::PhiaNhan phiaNhan;
    std::shared_ptr<const XuongAnh> xuong;
    std::atomic<bool> thoi{false};
};

}  // namespace

}  // namespace tovira

@interface TvNhanKhung : NSObject <SCStreamOutput, SCStreamDelegate>
- (instancetype)initVoi:(std::shared_ptr<tovira::DauNhan>)dau;
@end

@implementation TvNhanKhung {
    std::shared_ptr<tovira::DauNhan> _dau;
}

- (instancetype)initVoi:(std::shared_ptr<tovira::DauNhan>)dau {
    if ((self = [super init])) _dau = std::move(dau);
    return self;
}

- (void)stream:(SCStream*)stream
    didOutputSampleBuffer:(CMSampleBufferRef)mau
                   ofType:(SCStreamOutputType)loai {
    if (_dau->thoi || loai != SCStreamOutputTypeScreen || !CMSampleBufferIsValid(mau)) return;
    CVImageBufferRef anh = CMSampleBufferGetImageBuffer(mau);
    if (!anh) return;
    _dau->phiaNhan.khiCoKhung(
        std::make_unique<tovira::KhungMac>(anh, tovira::trangThaiCua(mau), _dau->xuong));
}

- (void)stream:(SCStream*)stream didStopWithError:(NSError*)loi {
    if (!_dau->thoi) _dau->phiaNhan.khiBiDung(tovira::loiTu(loi));
}

@end

namespace tovira {

namespace {

class LuongMac final : public ManHinh::Luong {
   public:
    LuongMac(const ManHinh::Nguon& nguon, std::shared_ptr<DauNhan> dau)
        : nguon_(nguon), dau_(std::move(dau)), nhan_([[TvNhanKhung alloc] initVoi:dau_]) {}
    ~LuongMac() override { dung(); }
    LuongMac(const LuongMac&) = delete;
    LuongMac& operator=(const LuongMac&) = delete;

    KetQua<void> mo(SCDisplay* man, const ManHinh::CauHinh& cauHinh, dispatch_queue_t hang) {
        SCContentFilter* loc = [[SCContentFilter alloc] initWithDisplay:man excludingWindows:@[]];
        stream_ = [[SCStream alloc] initWithFilter:loc configuration:cauHinhTu(cauHinh) delegate:nhan_];
        NSError* loi = nil;
        if (![stream_ addStreamOutput:nhan_ type:SCStreamOutputTypeScreen sampleHandlerQueue:hang error:&loi])
            return loiTu(loi);
        CGDisplayRegisterReconfigurationCallback(&LuongMac::khiDoiManHinh, this);
        man_ = man;
        SCStream* __weak yeu = stream_;
        ngheThanh_ = [NSNotificationCenter.defaultCenter addObserverForName:TVThanhDaHien
                                                                     object:nil
                                                                      queue:nil
                                                                 usingBlock:^(NSNotification*) {
                                                                     boThanhKhoi(yeu, man);
                                                                 }];
        return {};
    }

    void batDau(std::function<void(KetQua<void>)> xong) override {
        SCStream* stream = stream_;
        SCDisplay* man = man_;
        [stream startCaptureWithCompletionHandler:^(NSError* loi) {
            // The bar may be up already, left from the share before this one.
            if (!loi)
                dispatch_async(dispatch_get_main_queue(), ^{
                    boThanhKhoi(stream, man);
                });
            xong(loi ? KetQua<void>(loiTu(loi)) : KetQua<void>());
        }];
    }

    void doiCauHinh(const ManHinh::CauHinh& cauHinh) override {
        [stream_ updateConfiguration:cauHinhTu(cauHinh) completionHandler:nil];
    }

    void dung() override {
        if (dau_->thoi.exchange(true)) return;
        CGDisplayRemoveReconfigurationCallback(&LuongMac::khiDoiManHinh, this);
        if (ngheThanh_) [NSNotificationCenter.defaultCenter removeObserver:ngheThanh_];
        // The stream does not own its delegate: both stay until the last callback has returned.
        SCStream* stream = stream_;
        TvNhanKhung* nhan = nhan_;
        [stream stopCaptureWithCompletionHandler:^(NSError*) {
            static_cast<void>(stream);
            static_cast<void>(nhan);
        }];
    }

   private:
    // On the main thread, for every display; reports when this one is no longer what is being captured.
    static void khiDoiManHinh(CGDirectDisplayID, CGDisplayChangeSummaryFlags co, void* toi) {
        if (co & kCGDisplayBeginConfigurationFlag) return;
        static_cast<LuongMac*>(toi)->soManHinh();
    }

    void soManHinh() {
        const KhungHinh khung = khungCua(nguon_.ma);
        if (CGDisplayIsActive(nguon_.ma) && khung == nguon_.khung &&
            diemAnhCua(nguon_.ma, khung) == nguon_.diemAnh)
            return;
        dau_->phiaNhan.khiBiDung(Loi{ManHinh::mienNguon, ManHinh::maManHinhDoi, "Màn hình đã đổi"});
    }

    ManHinh::Nguon nguon_;
    std::shared_ptr<DauNhan> dau_;
    TvNhanKhung* nhan_;
    SCStream* stream_ = nil;
    SCDisplay* man_ = nil;
    id<NSObject> ngheThanh_ = nil;
};

class NenManHinhMac final : public ManHinh::Nen {
   public:
    bool duocGhi() override { return CGPreflightScreenCaptureAccess(); }
    bool xinGhi() override { return CGRequestScreenCaptureAccess(); }

    void moCaiDatGhiManHinh() override {
        NSString* diaChi = @"x-apple.systempreferences:com.apple.preference.security?Privacy_ScreenCapture";
        [NSWorkspace.sharedWorkspace openURL:[NSURL URLWithString:diaChi]];
    }

    void lietKe(std::function<void(KetQua<std::vector<ManHinh::Nguon>>)> xong) override {
        const std::weak_ptr<Kho> yeu = kho_;
        const auto tra = ^(SCShareableContent* noiDung, NSError* loi) {
            // NSScreen belongs to the main thread.
            dispatch_async(dispatch_get_main_queue(), ^{
                const auto kho = yeu.lock();
                if (!kho) return;
                if (loi) return xong(loiTu(loi));
                kho->manHinh = noiDung.displays;
                std::vector<ManHinh::Nguon> ra;
                for (SCDisplay* man in noiDung.displays) ra.push_back(nguonTu(man));
                xong(std::move(ra));
            });
        };
        [SCShareableContent getShareableContentExcludingDesktopWindows:NO
                                                   onScreenWindowsOnly:YES
                                                     completionHandler:tra];
    }

    KetQua<std::unique_ptr<ManHinh::Luong>> moLuong(const ManHinh::Nguon& nguon,
                                                    const ManHinh::CauHinh& cauHinh,
                                                    ManHinh::PhiaNhan phiaNhan) override {
        for (SCDisplay* man in kho_->manHinh) {
            if (man.displayID != nguon.ma) continue;
            auto dau = std::make_shared<DauNhan>();
            dau->phiaNhan = std::move(phiaNhan);
            dau->xuong = xuong_;
            auto luong = std::make_unique<LuongMac>(nguon, std::move(dau));
            if (const auto ketQua = luong->mo(man, cauHinh, hangDoi_.hang()); !ketQua) return ketQua.loi();
            return std::unique_ptr<ManHinh::Luong>(std::move(luong));
        }
        return Loi{ManHinh::mienNguon, maKhongCoManHinh, "Không tìm thấy màn hình nào"};
    }

    HangDoi& hangDoiKhung() override { return hangDoi_; }

    void giuThuc(bool giu) override {
        if (hoatDong_) [NSProcessInfo.processInfo endActivity:hoatDong_];
        hoatDong_ = nil;
        if (!giu) return;
        hoatDong_ = [NSProcessInfo.processInfo
            beginActivityWithOptions:NSActivityUserInitiated | NSActivityIdleDisplaySleepDisabled
                              reason:@"Đang chia sẻ màn hình"];
    }

   private:
    // The displays of the last list: a stream is made from one of them.
    struct Kho {
        NSArray<SCDisplay*>* manHinh = nil;
    };

    HangDoiGcd hangDoi_;
    std::shared_ptr<const XuongAnh> xuong_ = std::make_shared<XuongAnh>();
    std::shared_ptr<Kho> kho_ = std::make_shared<Kho>();
    id<NSObject> hoatDong_ = nil;
};

}  // namespace

std::unique_ptr<ManHinh::Nen> taoNenManHinh() { return std::make_unique<NenManHinhMac>(); }

}  // namespace tovira

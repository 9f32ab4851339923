#if !__has_feature(objc_arc)
#error "This file needs automatic reference counting."
#endif

#import <AppKit/AppKit.h>
#import <ApplicationServices/ApplicationServices.h>
#import <WebKit/WebKit.h>

#include "ChuMac.h"
#include "ManHinhNen.hpp"
#include "TuKiemNen.hpp"

namespace tovira {

namespace {

class NenTuKiemMac final : public TuKiem::Nen {
   public:
    std::string thuMucGiaoDien() override { return chuCpp(NSBundle.mainBundle.resourcePath) + "/giao-dien"; }
    std::string loaiPhien() override {
        return "macOS " + chuCpp(NSProcessInfo.processInfo.operatingSystemVersionString);
    }
    std::string phienBanWeb() override {
        NSBundle* goi = [NSBundle bundleForClass:WKWebView.class];
        return "WebKit " + chuCpp([goi objectForInfoDictionaryKey:@"CFBundleVersion"]);
    }
    std::string lyDoKhongManHinh() override {
        std::uint32_t so = 0;
        const bool co = CGGetActiveDisplayList(0, nullptr, &so) == kCGErrorSuccess && so > 0;
        return co ? "" : "không có màn hình nào đang bật";
    }
    std::string lyDoKhongDieuKhien() override {
        return AXIsProcessTrusted() ? "" : "chưa được cấp quyền Trợ năng";
    }
    std::string lyDoKhongGhi() override {
        return CGPreflightScreenCaptureAccess() ? "" : "chưa được cấp quyền Ghi màn hình";
    }
    // From CoreGraphics: the capture source would ask for its permission.
    std::vector<ManHinh::Nguon> cacManHinh() override {
        std::uint32_t so = 0;
        if (CGGetActiveDisplayList(0, nullptr, &so) != kCGErrorSuccess) return {};
        std::vector<CGDirectDisplayID> cac(so);
        if (CGGetActiveDisplayList(so, cac.data(), &so) != kCGErrorSuccess) return {};
        cac.resize(so);
        std::vector<ManHinh::Nguon> ra;
        for (const CGDirectDisplayID ma : cac) {
            ManHinh::Nguon nguon;
            nguon.ma = ma;
            nguon.diemAnh = {static_cast<std::int64_t>(CGDisplayPixelsWide(ma)),
                             static_cast<std::int64_t>(CGDisplayPixelsHigh(ma))};
            nguon.rong = nguon.diemAnh.rong;
            nguon.cao = nguon.diemAnh.cao;
            nguon.chinh = ma == CGMainDisplayID();
            ra.push_back(nguon);
        }
        return ra;
    }
    std::optional<std::vector<std::uint32_t>> phimDangGiu() override {
        std::vector<std::uint32_t> ra;
        for (CGKeyCode ma = 0; ma < 128; ++ma)
            if (CGEventSourceKeyState(kCGEventSourceStateCombinedSessionState, ma)) ra.push_back(ma);
        return ra;
    }
};

}  // namespace

std::unique_ptr<TuKiem::Nen> taoNenTuKiem() { return std::make_unique<NenTuKiemMac>(); }

}  // namespace tovira

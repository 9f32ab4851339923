#if !__has_feature(objc_arc)
#error "This file needs automatic reference counting."
#endif

#import <AppKit/AppKit.h>

#include "UngDung.hpp"

#include "BieuTuongMac.h"
#include "ChuMac.h"
#include "CuaSoPhuMac.h"
#include "HienDienMac.h"
#include "MotBan.hpp"

namespace tovira {

namespace {

struct UngDungMac final : UngDung::Nen {
    void datBieuTuong() override { NSApp.applicationIconImage = anhUngDung(); }

    void datKieu(UngDung::Kieu kieu) override {
        [NSApp setActivationPolicy:kieu == UngDung::Kieu::phu ? NSApplicationActivationPolicyAccessory
                                                              : NSApplicationActivationPolicyRegular];
    }

    void moBanMoi(std::function<void(std::optional<std::string>)> xong) override {
        NSWorkspaceOpenConfiguration* cach = [NSWorkspaceOpenConfiguration configuration];
        cach.createsNewApplicationInstance = YES;
        cach.environment = @{@(MotBan::bienThay) : @"1"};
        // The new one talks to the same server; the first argument is the program's own path.
        NSArray<NSString*>* thamSo = NSProcessInfo.processInfo.arguments;
        if (thamSo.count > 1) cach.arguments = [thamSo subarrayWithRange:NSMakeRange(1, thamSo.count - 1)];
        [NSWorkspace.sharedWorkspace openApplicationAtURL:NSBundle.mainBundle.bundleURL
                                            configuration:cach
                                        completionHandler:^(NSRunningApplication*, NSError* loi) {
                                            if (loi == nil) return xong(std::nullopt);
                                            xong(chuCpp(loi.localizedDescription));
                                        }];
    }

    void ketThuc() override { [NSApp terminate:nil]; }
    void moGioiThieu() override { hienGioiThieu(); }
    void moHuongDan() override { hienHuongDan(); }
};

}  // namespace

std::unique_ptr<UngDung::Nen> taoNenUngDung() { return std::make_unique<UngDungMac>(); }

}  // namespace tovira

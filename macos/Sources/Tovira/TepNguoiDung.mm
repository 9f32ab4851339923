#if !__has_feature(objc_arc)
#error "This file needs automatic reference counting."
#endif

#import <AppKit/AppKit.h>

#include "ChuMac.h"
#include "NenChungMac.h"

namespace tovira {

namespace {

struct TepNguoiDungMac final : TepNguoiDung {
    std::optional<std::string> thuMucTaiXuong() const override {
        NSURL* thuMuc = [NSFileManager.defaultManager URLsForDirectory:NSDownloadsDirectory
                                                             inDomains:NSUserDomainMask]
                            .firstObject;
        return thuMuc == nil ? std::nullopt : std::optional(chuCpp(thuMuc.path));
    }
    void hien(const std::string& duong) override {
        NSURL* url = [NSURL fileURLWithPath:chuMac(duong)];
        [NSWorkspace.sharedWorkspace activateFileViewerSelectingURLs:@[ url ]];
    }
};

}  // namespace

std::unique_ptr<TepNguoiDung> taoTepNguoiDung() { return std::make_unique<TepNguoiDungMac>(); }

}  // namespace tovira

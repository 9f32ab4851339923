#if !__has_feature(objc_arc)
#error "This file needs automatic reference counting."
#endif

#import <AppKit/AppKit.h>
#import <CoreServices/CoreServices.h>

#include <fcntl.h>
#include <limits.h>

#include "ChuMac.h"
#include "MayChuNhanNen.hpp"

namespace tovira {
namespace {

class NenMayChuNhanMac final : public MayChuNhan::Nen {
   public:
    void hoiThuMuc(const Bang& bang, std::function<void(std::optional<std::string>)> xong) override {
        NSOpenPanel* hop = [NSOpenPanel openPanel];
        hop.canChooseFiles = NO;
        hop.canChooseDirectories = YES;
        hop.allowsMultipleSelection = NO;
        hop.canCreateDirectories = YES;
        hop.prompt = chuMac(bang.nut);
        hop.message = chuMac(bang.loiNhan);
        // From the run loop, not from the main queue: what is posted there keeps running beneath the panel.
        CFRunLoopPerformBlock(CFRunLoopGetMain(), kCFRunLoopCommonModes, ^{
            if ([hop runModal] == NSModalResponseOK && hop.URL != nil)
                xong(std::string(hop.URL.fileSystemRepresentation));
            else
                xong(std::nullopt);
        });
        CFRunLoopWakeUp(CFRunLoopGetMain());
    }

    void danhDauTuXa(int tep) override {
        @autoreleasepool {
            char duong[PATH_MAX];
            if (fcntl(tep, F_GETPATH, duong) != 0) return;
            NSURL* url = [NSURL fileURLWithFileSystemRepresentation:duong isDirectory:NO relativeToURL:nil];
            NSDictionary* dauHieu = @{
                (__bridge NSString*)kLSQuarantineAgentNameKey : @"Tovira",
                (__bridge NSString*)kLSQuarantineTypeKey : (__bridge NSString*)kLSQuarantineTypeOtherDownload,
            };
            // Not every file system can keep the mark; the file is wanted all the same.
            [url setResourceValue:dauHieu forKey:NSURLQuarantinePropertiesKey error:nil];
        }
    }
};

}  // namespace

std::unique_ptr<MayChuNhan::Nen> taoNenMayChuNhan() { return std::make_unique<NenMayChuNhanMac>(); }

}  // namespace tovira

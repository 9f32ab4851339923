#if !__has_feature(objc_arc)
#error "This file needs automatic reference counting."
#endif

#include "BoThanhMac.h"

#import "ThanhMac.h"

namespace tovira {

namespace {

NSSet<NSNumber*>* maThanhDangHien() {
    NSMutableSet<NSNumber*>* ra = [NSMutableSet set];
    for (NSWindow* cua in NSApp.windows) {
        if ([cua isKindOfClass:TVThanh.class] && cua.visible) [ra addObject:@(cua.windowNumber)];
    }
    return ra;
}

}  // namespace

void boThanhKhoi(SCStream* stream, SCDisplay* man) {
    if (@available(macOS 15.0, *)) {
        NSSet<NSNumber*>* ma = maThanhDangHien();
        if (stream == nil || ma.count == 0) return;
        // Among all windows: one that has just come up may not count as on the screen yet.
        [SCShareableContent
            getShareableContentExcludingDesktopWindows:NO
                                   onScreenWindowsOnly:NO
                                     completionHandler:^(SCShareableContent* noiDung, NSError*) {
                                         NSMutableArray<SCWindow*>* bo = [NSMutableArray array];
                                         for (SCWindow* cua in noiDung.windows) {
                                             if ([ma containsObject:@(cua.windowID)]) [bo addObject:cua];
                                         }
                                         if (bo.count == 0) return;
                                         [stream
                                             updateContentFilter:[[SCContentFilter alloc] initWithDisplay:man
                                                                                         excludingWindows:bo]
                                               completionHandler:nil];
                                     }];
    }
}

}  // namespace tovira

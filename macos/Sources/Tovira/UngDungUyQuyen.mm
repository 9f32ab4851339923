#if !__has_feature(objc_arc)
#error "This file needs automatic reference counting."
#endif

#import "UngDungUyQuyenMac.h"

@implementation TVUngDung {
    tovira::UngDung* _chu;
    tovira::UngDung::KhoiDong _cach;
}

- (instancetype)initVoiChu:(tovira::UngDung*)chu cach:(tovira::UngDung::KhoiDong)cach {
    self = [super init];
    if (self == nil) return nil;
    _chu = chu;
    _cach = cach;
    return self;
}

- (void)applicationDidFinishLaunching:(NSNotification*)notification {
    _chu->khiKhoiDongXong(_cach);
}

- (BOOL)applicationShouldHandleReopen:(NSApplication*)sender hasVisibleWindows:(BOOL)flag {
    using Co = tovira::UngDung::CoCuaSoHien;
    _chu->khiMoLaiUngDung(flag ? Co::co : Co::khong);
    return YES;
}

- (BOOL)applicationShouldTerminateAfterLastWindowClosed:(NSApplication*)sender {
    return NO;
}

- (void)applicationWillTerminate:(NSNotification*)notification {
    _chu->khiSapKetThuc();
}

- (BOOL)applicationSupportsSecureRestorableState:(NSApplication*)app {
    return YES;
}

- (void)moGioiThieu:(id)sender {
    _chu->moGioiThieu();
}

- (void)moHuongDan:(id)sender {
    _chu->moHuongDan();
}

@end

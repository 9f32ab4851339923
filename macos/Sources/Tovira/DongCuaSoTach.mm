#if !__has_feature(objc_arc)
#error "This file needs automatic reference counting."
#endif

#import "DongCuaSoTachMac.h"

@implementation TVDongCuaSoTach

+ (TVDongCuaSoTach*)chung {
    static TVDongCuaSoTach* con = [[TVDongCuaSoTach alloc] init];
    return con;
}

- (void)windowWillClose:(NSNotification*)notification {
    WKWebView* web = self.web;
    if (web != nil && self.khiSapDong != nil) self.khiSapDong(web);
}

@end

#if !__has_feature(objc_arc)
#error "This file needs automatic reference counting."
#endif

#import "NutNgayMac.h"

@implementation TVNutNgay

- (BOOL)acceptsFirstMouse:(NSEvent*)event {
    return YES;
}

@end

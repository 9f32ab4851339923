#if !__has_feature(objc_arc)
#error "This file needs automatic reference counting."
#endif

#import "CuaSoChinhMac.h"

@implementation TVCuaSoChinh

- (NSRect)constrainFrameRect:(NSRect)frameRect toScreen:(NSScreen*)screen {
    return self.dangDo ? frameRect : [super constrainFrameRect:frameRect toScreen:screen];
}

@end

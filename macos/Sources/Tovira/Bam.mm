#if !__has_feature(objc_arc)
#error "This file needs automatic reference counting."
#endif

#import "BamMac.h"

#include "CuaSoPhuMac.h"

@implementation TVBam

+ (TVBam*)chung {
    static TVBam* const mot = [[TVBam alloc] init];
    return mot;
}

- (void)huongDan:(id)sender {
    tovira::hienHuongDan();
}

@end

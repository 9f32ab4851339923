#pragma once
// Main thread. Apple only: a window that may stand outside every screen.

#import <AppKit/AppKit.h>

// The system pulls titled windows back onto a screen when they are ordered in; a parked one must stay away.
@interface TVCuaSoChinh : NSWindow
@property(nonatomic) BOOL dangDo;
@end

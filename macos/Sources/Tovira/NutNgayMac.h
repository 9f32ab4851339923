#pragma once
// Main thread. Apple only: a button that works at the first click, whichever program is in front.

#import <AppKit/AppKit.h>

@interface TVNutNgay : NSButton
@end

#pragma once
// Main thread. Apple only: the application's delegate.

#import <AppKit/AppKit.h>

#include "UngDung.hpp"

// Hands each event on. `chu` outlives the event loop.
@interface TVUngDung : NSObject <NSApplicationDelegate>
- (instancetype)initVoiChu:(tovira::UngDung*)chu cach:(tovira::UngDung::KhoiDong)cach;
- (void)moGioiThieu:(id)sender;
- (void)moHuongDan:(id)sender;
@end

#pragma once
// Main thread. Apple only: the control bar's window.

#import <AppKit/AppKit.h>

#include <functional>

// Posted on the main thread when a bar has come up; its object is the TVThanh. A capture leaves it out.
extern NSNotificationName const TVThanhDaHien;

@interface TVThanh : NSPanel
// `khung` in AppKit's terms. A press calls `khiBam`, which may order the bar out.
- (instancetype)initVoiKhung:(NSRect)khung khiBam:(std::function<void()>)khiBam;
@end

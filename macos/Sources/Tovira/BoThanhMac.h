#pragma once
// Main thread. Apple only: keeps the control bar out of a capture.

#import <ScreenCaptureKit/ScreenCaptureKit.h>

namespace tovira {

// Leaves the bar, if one is up, out of a started stream of `man`. Before macOS 15 the window's sharing type
// does that; from then on it takes the stream's filter. Returns at once; the filter changes a little later.
void boThanhKhoi(SCStream* stream, SCDisplay* man);

}  // namespace tovira

#pragma once
// Main thread. Apple only: About and Help, one window each. Made when first shown, kept when closed.

#import <AppKit/AppKit.h>

namespace tovira {

void hienGioiThieu();
void hienHuongDan();

// Brings the window before every other, this program's and others'.
inline void raTruocHet(NSWindow* cuaSo) {
    [cuaSo makeKeyAndOrderFront:nil];
    [NSApp activateIgnoringOtherApps:YES];
}

}  // namespace tovira

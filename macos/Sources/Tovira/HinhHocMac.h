#pragma once
// Main thread. Apple only: places between this program (origin top-left of the first screen, y downward) and
// AppKit (origin bottom-left of that screen, y upward). Points both.

#import <AppKit/AppKit.h>

#include "HinhHoc.hpp"

namespace tovira {

// Where y is 0 in this program, in AppKit's terms: the top of the screen that carries the menu bar.
inline CGFloat dinhMac() {
    NSScreen* dau = NSScreen.screens.firstObject;
    return dau == nil ? 0 : NSMaxY(dau.frame);
}

inline KhungHinh tuMac(NSRect khung) {
    return {NSMinX(khung), dinhMac() - NSMaxY(khung), NSWidth(khung), NSHeight(khung)};
}

// A place inside something `dinh` points high; for a place on the screen, dinhMac().
inline NSRect sangMac(const KhungHinh& khung, CGFloat dinh) {
    return NSMakeRect(khung.x, dinh - khung.y - khung.cao, khung.rong, khung.cao);
}

}  // namespace tovira

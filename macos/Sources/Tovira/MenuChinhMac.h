#pragma once
// Main thread. Apple only: the main menu.

#import <AppKit/AppKit.h>

namespace tovira {

// Makes it the application's main menu, its last menu the help menu. moGioiThieu: and moHuongDan: go to
// `uyQuyen`, everything else to the first responder.
void datMenuChinh(id uyQuyen);

}  // namespace tovira

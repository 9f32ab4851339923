#pragma once
// Main thread. Apple only: the delegate of the main window, of its web view, of downloads and of pop-ups'
// views. Holds the windows and views; every question goes to the CuaSo.

#import <WebKit/WebKit.h>

#include <memory>

#include "CuaSo.hpp"
#import "CuaSoChinhMac.h"

@interface TVCuaSo : NSObject <NSWindowDelegate, WKNavigationDelegate, WKUIDelegate, WKDownloadDelegate>
- (instancetype)initVoiChu:(std::weak_ptr<tovira::CuaSo>)chu;
@property(nonatomic, strong) WKWebView* web;
@property(nonatomic, strong) TVCuaSoChinh* cuaSo;
// The one pop-up's window, its view (which is elsewhere while one of its elements fills the screen) and its
// identity.
@property(nonatomic, strong) NSWindow* cuaSoTach;
@property(nonatomic, strong) WKWebView* webTach;
@property(nonatomic) tovira::MaTach maTach;
@end

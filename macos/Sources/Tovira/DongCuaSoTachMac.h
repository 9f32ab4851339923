#pragma once
// Main thread. Apple only: the pop-up's window delegate.

#import <WebKit/WebKit.h>

// One shared instance; hears that the user closes the pop-up's window, while its page still lives.
@interface TVDongCuaSoTach : NSObject <NSWindowDelegate>
@property(class, nonatomic, readonly) TVDongCuaSoTach* chung;
@property(nonatomic, weak) WKWebView* web;
@property(nonatomic, copy) void (^khiSapDong)(WKWebView* web);
@end

#pragma once
// Main thread. Apple only: the message channel's receiver.

#import <WebKit/WebKit.h>

#include <memory>

#include "CuaSo.hpp"

// Hands each posted value on as JSON text, with who posted it. Pages of any other web view than `web` are not
// heard.
@interface TVCau : NSObject <WKScriptMessageHandler>
- (instancetype)initVoiChu:(std::weak_ptr<tovira::CuaSo>)chu;
@property(nonatomic, weak) WKWebView* web;
@end

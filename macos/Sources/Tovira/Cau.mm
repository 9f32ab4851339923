#if !__has_feature(objc_arc)
#error "This file needs automatic reference counting."
#endif

#import <ApplicationServices/ApplicationServices.h>

#include <cmath>
#include <cstdio>

#include "CauMac.h"
#include "ChuMac.h"
#include "NenChungMac.h"

namespace tovira {

namespace {

std::string soJson(NSNumber* so) {
    if (CFGetTypeID((__bridge CFTypeRef)so) == CFBooleanGetTypeID()) return so.boolValue ? "true" : "false";
    const double giaTri = so.doubleValue;
    if (!std::isfinite(giaTri)) return "1e300";
    char dem[32];
    std::snprintf(dem, sizeof dem, "%.17g", giaTri);
    return dem;
}

// The posted value as JSON; nothing but texts and numbers means anything on this channel.
std::string json(NSDictionary* than) {
    __block std::string ra;
    [than enumerateKeysAndObjectsUsingBlock:^(id khoa, id giaTri, BOOL*) {
        if (![khoa isKindOfClass:NSString.class]) return;
        ra += ra.empty() ? "{" : ",";
        ra += Cau::nhayJS(chuCpp(khoa)) + ":";
        if ([giaTri isKindOfClass:NSString.class]) {
            ra += Cau::nhayJS(chuCpp(giaTri));
        } else if ([giaTri isKindOfClass:NSNumber.class]) {
            ra += soJson(giaTri);
        } else {
            ra += "null";
        }
    }];
    return ra.empty() ? "{}" : ra + "}";
}

// As location.origin spells it: the system gives port 0 where it is the scheme's own, and an opaque origin no
// scheme.
std::string gocCua(WKSecurityOrigin* goc) {
    if (goc.protocol.length == 0) return "null";
    std::string ra = chuCpp(goc.protocol) + "://" + chuCpp(goc.host);
    if (goc.port != 0) ra += ":" + std::to_string(goc.port);
    return ra;
}

struct NenCauMac final : Cau::Nen {
    bool xinTroNang() override {
        NSDictionary* coHoi = @{(__bridge NSString*)kAXTrustedCheckOptionPrompt : @YES};
        return AXIsProcessTrustedWithOptions((__bridge CFDictionaryRef)coHoi);
    }
};

}  // namespace

std::unique_ptr<Cau::Nen> taoNenCau() { return std::make_unique<NenCauMac>(); }

}  // namespace tovira

@implementation TVCau {
    std::weak_ptr<tovira::CuaSo> _chu;
}

- (instancetype)initVoiChu:(std::weak_ptr<tovira::CuaSo>)chu {
    self = [super init];
    if (self != nil) _chu = std::move(chu);
    return self;
}

- (void)userContentController:(WKUserContentController*)userContentController
      didReceiveScriptMessage:(WKScriptMessage*)message {
    const auto chu = _chu.lock();
    if (!chu || message.webView != self.web || ![message.body isKindOfClass:NSDictionary.class]) return;
    const auto khung = message.frameInfo.isMainFrame ? tovira::LoaiKhung::chinh : tovira::LoaiKhung::con;
    chu->cau().nhan(tovira::json(message.body), {khung, tovira::gocCua(message.frameInfo.securityOrigin)});
}

@end

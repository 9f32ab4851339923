#if !__has_feature(objc_arc)
#error "This file needs automatic reference counting."
#endif

#import <AppKit/AppKit.h>

#include "ChuMac.h"
#include "NenChungMac.h"

namespace tovira {

namespace {

struct MoDiaChiMac final : MoDiaChi {
    void mo(const std::string& diaChi) override {
        NSURL* url = [NSURL URLWithString:chuMac(diaChi)];
        if (url != nil) [NSWorkspace.sharedWorkspace openURL:url];
    }
};

}  // namespace

std::unique_ptr<MoDiaChi> taoMoDiaChi() { return std::make_unique<MoDiaChiMac>(); }

}  // namespace tovira

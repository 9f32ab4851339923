#if !__has_feature(objc_arc)
#error "This file needs automatic reference counting."
#endif

#import <Foundation/Foundation.h>

#include "ChuMac.h"
#include "NenChungMac.h"

namespace tovira {

namespace {

struct CaiDatMac final : CaiDat {
    std::optional<std::string> doc(const std::string& khoa) const override {
        NSString* giaTri = [NSUserDefaults.standardUserDefaults stringForKey:chuMac(khoa)];
        return giaTri == nil ? std::nullopt : std::optional(chuCpp(giaTri));
    }
    void ghi(const std::string& khoa, const std::string& giaTri) override {
        [NSUserDefaults.standardUserDefaults setObject:chuMac(giaTri) forKey:chuMac(khoa)];
    }
};

}  // namespace

std::unique_ptr<CaiDat> taoCaiDat() { return std::make_unique<CaiDatMac>(); }

}  // namespace tovira

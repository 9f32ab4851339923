#if !__has_feature(objc_arc)
#error "This file needs automatic reference counting."
#endif

#import <ServiceManagement/ServiceManagement.h>

#include "ChuMac.h"
#include "TuKhoiDong.hpp"

namespace tovira {

namespace {

struct TuKhoiDongMac final : TuKhoiDong {
    bool dangBat() override { return SMAppService.mainAppService.status == SMAppServiceStatusEnabled; }

    std::optional<std::string> dat(bool bat) override {
        SMAppService* muc = SMAppService.mainAppService;
        NSError* loi = nil;
        const BOOL duoc = bat ? [muc registerAndReturnError:&loi] : [muc unregisterAndReturnError:&loi];
        // Only the user can approve it, in the settings.
        if (bat && muc.status == SMAppServiceStatusRequiresApproval)
            [SMAppService openSystemSettingsLoginItems];
        if (duoc) return std::nullopt;
        return chuCpp(loi.localizedDescription);
    }
};

}  // namespace

std::unique_ptr<TuKhoiDong> TuKhoiDong::tao() { return std::make_unique<TuKhoiDongMac>(); }

}  // namespace tovira

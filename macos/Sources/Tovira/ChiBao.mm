#if !__has_feature(objc_arc)
#error "This file needs automatic reference counting."
#endif

#include "ChiBao.hpp"

#include "HienDienMac.h"
#include "HinhHocMac.h"
#import "ThanhMac.h"

namespace tovira {

namespace {

class ChiBaoMac final : public ChiBao::Nen {
   public:
    std::optional<ChiBao::ManChinh> manChinh() override {
        NSScreen* man = NSScreen.mainScreen;
        if (man == nil) return std::nullopt;
        return ChiBao::ManChinh{tuMac(man.frame), tuMac(man.visibleFrame)};
    }

    void dungThanh(const KhungHinh& khung, std::function<void()> khiBam) override {
        thanh_ = [[TVThanh alloc] initVoiKhung:sangMac(khung, dinhMac()) khiBam:std::move(khiBam)];
        [thanh_ orderFrontRegardless];
        [NSNotificationCenter.defaultCenter postNotificationName:TVThanhDaHien object:thanh_];
    }

    void goThanh() override {
        // Its own button may be what takes it away, so it lives until that event is over.
        TVThanh* cu = thanh_;
        thanh_ = nil;
        [cu orderOut:nil];
        dispatch_async(dispatch_get_main_queue(), ^{
            static_cast<void>(cu);
        });
    }

   private:
    TVThanh* thanh_ = nil;
};

}  // namespace

std::unique_ptr<ChiBao::Nen> taoNenChiBao() { return std::make_unique<ChiBaoMac>(); }

}  // namespace tovira

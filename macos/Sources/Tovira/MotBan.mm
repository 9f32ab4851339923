#if !__has_feature(objc_arc)
#error "This file needs automatic reference counting."
#endif

#import <AppKit/AppKit.h>

#include "MotBanNen.hpp"

namespace tovira {

namespace {

// Finder and the Dock never start a bundle twice; a terminal does.
class MotBanMac final : public MotBan::Nen {
   public:
    ~MotBanMac() override {
        if (nghe_ != nil) [NSDistributedNotificationCenter.defaultCenter removeObserver:nghe_];
    }

    bool giuCho() override {
        for (NSRunningApplication* ung in NSWorkspace.sharedWorkspace.runningApplications)
            if (laBanKhac(ung)) return false;
        return true;
    }

    void goiBanKia() override {
        [NSDistributedNotificationCenter.defaultCenter postNotificationName:tenLoiGoi
                                                                     object:nil
                                                                   userInfo:nil
                                                         deliverImmediately:YES];
    }

    // The one before ends by itself as soon as the system reports this one running.
    void nhanCho(double) override {}

    void nghe(std::function<void()> khiDuocGoi, std::function<void()>) override {
        nghe_ = [NSDistributedNotificationCenter.defaultCenter addObserverForName:tenLoiGoi
                                                                           object:nil
                                                                            queue:NSOperationQueue.mainQueue
                                                                       usingBlock:^(NSNotification*) {
                                                                           khiDuocGoi();
                                                                       }];
    }

   private:
    static constexpr NSString* tenLoiGoi = @"example.tovira.mac.hien";

    static bool laBanKhac(NSRunningApplication* ung) {
        if (ung.processIdentifier == NSProcessInfo.processInfo.processIdentifier || ung.terminated) return false;
        NSString* dinhDanh = NSBundle.mainBundle.bundleIdentifier;
        if (dinhDanh != nil) return [ung.bundleIdentifier isEqualToString:dinhDanh];
        return [ung.executableURL isEqual:NSBundle.mainBundle.executableURL];
    }

    id nghe_ = nil;
};

}  // namespace

std::unique_ptr<MotBan::Nen> taoNenMotBan() { return std::make_unique<MotBanMac>(); }

}  // namespace tovira

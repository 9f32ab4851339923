#if !__has_feature(objc_arc)
#error "This file needs automatic reference counting."
#endif

#import <Foundation/Foundation.h>

#include <chrono>
#include <deque>
#include <mutex>

#include "GiuCf.h"
#include "NenChungMac.h"

namespace tovira {

namespace {

// What is to run on the main thread. A run-loop source of its own rather than the system's main queue: that
// one stands still while work from it shows an alert, and the page, the capture and the timers must not.
class HangChinh {
   public:
    HangChinh() {
        CFRunLoopSourceContext nguCanh{};
        nguCanh.info = this;
        nguCanh.perform = [](void* toi) { static_cast<HangChinh*>(toi)->lamMotViec(); };
        nguon_.reset(CFRunLoopSourceCreate(kCFAllocatorDefault, 0, &nguCanh));
        CFRunLoopAddSource(CFRunLoopGetMain(), nguon_.get(), kCFRunLoopCommonModes);
    }
    ~HangChinh() { CFRunLoopSourceInvalidate(nguon_.get()); }
    HangChinh(const HangChinh&) = delete;
    HangChinh& operator=(const HangChinh&) = delete;

    void them(std::function<void()> viec) {
        {
            const std::lock_guard khoa(khoa_);
            hang_.push_back(std::move(viec));
        }
        danhThuc();
    }

   private:
    void danhThuc() {
        CFRunLoopSourceSignal(nguon_.get());
        CFRunLoopWakeUp(CFRunLoopGetMain());
    }

    // One piece at a time, the next one announced first: it may have to run beneath an alert that this one
    // shows.
    void lamMotViec() {
        std::function<void()> viec;
        bool con = false;
        {
            const std::lock_guard khoa(khoa_);
            if (hang_.empty()) return;
            viec = std::move(hang_.front());
            hang_.pop_front();
            con = !hang_.empty();
        }
        if (con) danhThuc();
        @autoreleasepool {
            viec();
        }
    }

    GiuCf<CFRunLoopSourceRef> nguon_;
    std::mutex khoa_;
    std::deque<std::function<void()>> hang_;
};

class HenGioMac final : public HenGio {
   public:
    explicit HenGioMac(NSTimer* dongHo) : dongHo_(dongHo) {}
    ~HenGioMac() override { [dongHo_ invalidate]; }

   private:
    NSTimer* dongHo_;
};

class VongLapMac final : public VongLap {
   public:
    void chay(std::function<void()> viec) override { hang_->them(std::move(viec)); }

    void chaySau(double giay, std::function<void()> viec) override {
        const std::weak_ptr<HangChinh> yeu = hang_;
        auto giu = std::make_shared<std::function<void()>>(std::move(viec));
        dispatch_after(dispatch_time(DISPATCH_TIME_NOW, static_cast<int64_t>(giay * NSEC_PER_SEC)),
                       dispatch_get_global_queue(QOS_CLASS_UTILITY, 0), ^{
                           if (const auto hang = yeu.lock()) hang->them(std::move(*giu));
                       });
    }

    std::unique_ptr<HenGio> lapLai(double giay, std::function<void()> viec) override {
        // The block is gone once the timer is; the work may stop the timer and must outlive that.
        auto giu = std::make_shared<std::function<void()>>(std::move(viec));
        NSTimer* dongHo = [NSTimer timerWithTimeInterval:giay
                                                 repeats:YES
                                                   block:^(NSTimer*) {
                                                       const auto lan = giu;
                                                       (*lan)();
                                                   }];
        [NSRunLoop.mainRunLoop addTimer:dongHo forMode:NSRunLoopCommonModes];
        return std::make_unique<HenGioMac>(dongHo);
    }

    double dongHo() const override {
        return std::chrono::duration<double>(std::chrono::steady_clock::now().time_since_epoch()).count();
    }
    double gioTu1970() const override { return [NSDate date].timeIntervalSince1970; }
    bool dangOChinh() const override { return NSThread.isMainThread; }

   private:
    std::shared_ptr<HangChinh> hang_ = std::make_shared<HangChinh>();
};

}  // namespace

std::unique_ptr<VongLap> taoVongLap() { return std::make_unique<VongLapMac>(); }

}  // namespace tovira

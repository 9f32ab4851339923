#if !__has_feature(objc_arc)
#error "This file needs automatic reference counting."
#endif

#include "TinHieuMac.h"

namespace tovira {

namespace {

constexpr int tinHieu[] = {SIGINT, SIGTERM};

}  // namespace

TinHieuMac::TinHieuMac(VongLap& vongLap, std::function<void()> viec) {
    VongLap* chinh = &vongLap;
    for (const int so : tinHieu) {
        std::signal(so, SIG_IGN);  // its source is told of it all the same
        dispatch_source_t nguon =
            dispatch_source_create(DISPATCH_SOURCE_TYPE_SIGNAL, static_cast<uintptr_t>(so), 0, hang_);
        dispatch_source_set_event_handler(nguon, ^{
            chinh->chay(viec);
        });
        dispatch_activate(nguon);
        [nguon_ addObject:nguon];
    }
}

TinHieuMac::~TinHieuMac() {
    for (dispatch_source_t nguon in nguon_) dispatch_source_cancel(nguon);
    // A handler that is running now comes to its end first.
    dispatch_sync(hang_, ^{
                  });
    for (const int so : tinHieu) std::signal(so, SIG_DFL);
}

}  // namespace tovira

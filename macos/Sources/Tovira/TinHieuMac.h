#pragma once
// Main thread. Apple only: the signals that ask the program to end.

#include <csignal>
#include <functional>

#include "HangDoi.hpp"

#import <Foundation/Foundation.h>

namespace tovira {

// While it lives, SIGINT and SIGTERM run `viec` on the main queue instead of ending the process.
class TinHieuMac {
   public:
    TinHieuMac(VongLap& vongLap, std::function<void()> viec);
    ~TinHieuMac();
    TinHieuMac(const TinHieuMac&) = delete;
    TinHieuMac& operator=(const TinHieuMac&) = delete;

   private:
    dispatch_queue_t hang_ = dispatch_queue_create("tv-tin-hieu", DISPATCH_QUEUE_SERIAL);
    NSMutableArray<dispatch_source_t>* nguon_ = [NSMutableArray array];
};

}  // namespace tovira

#pragma once
// Main thread. SIGINT, SIGTERM and SIGHUP as events of the main queue, so that a program that is told to end
// can still let go of what it holds.

#include <QSocketNotifier>
#include <functional>
#include <memory>

namespace tovira {

class TinHieuLinux {
  public:
    // One at a time. Calls `khiDuocBaoKetThuc` on the main thread for each such signal until destroyed.
    explicit TinHieuLinux(std::function<void()> khiDuocBaoKetThuc);
    ~TinHieuLinux();
    TinHieuLinux(const TinHieuLinux&) = delete;
    TinHieuLinux& operator=(const TinHieuLinux&) = delete;

  private:
    int ong_[2] = {-1, -1};
    std::unique_ptr<QSocketNotifier> nghe_;
};

}  // namespace tovira

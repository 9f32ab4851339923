#pragma once
// Main thread. Keeps the desktop session from falling asleep, blanking or locking while it lives.

#include "XcbLinux.hpp"

namespace tovira {

// Asks both who may put a desktop to sleep: the X server (bare window managers) and the session's own screen
// saver service (GNOME, KDE, Xfce and others, which ignore the server's). Whatever is missing is skipped.
// Both take the request back when the connection that made it closes, also after a crash.
class GiuThucLinux {
  public:
    GiuThucLinux();
    ~GiuThucLinux();
    GiuThucLinux(const GiuThucLinux&) = delete;
    GiuThucLinux& operator=(const GiuThucLinux&) = delete;

  private:
    ManX x_;
    bool coBus_ = false;
};

}  // namespace tovira

#pragma once
// Main thread. The About window: one instance, brought to the front when asked again.

namespace tovira {

struct GioiThieuLinux {
    static void hien();
};

}  // namespace tovira

#pragma once
// Main thread. The Help window: one instance, brought to the front when asked again.

namespace tovira {

struct HuongDanLinux {
    static void hien();
};

}  // namespace tovira

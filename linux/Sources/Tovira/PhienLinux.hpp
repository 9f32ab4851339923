#pragma once
// Main thread. What kind of desktop session this is, and what that leaves us.

#include <string>

namespace tovira {

// True in a Wayland session, whose X server (if any) shows and moves only some of its windows. The values of
// XDG_SESSION_TYPE and WAYLAND_DISPLAY; null when unset.
[[nodiscard]] bool laWayland(const char* loaiPhien, const char* manWayland);
// The same of this process's environment.
[[nodiscard]] bool dangOWayland();

// Why input cannot be injected here: one sentence for the user; empty when it can.
[[nodiscard]] std::string lyDoKhongDieuKhien();

}  // namespace tovira

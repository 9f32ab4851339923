#pragma once
// Any thread. What kind of desktop session this is, and what that leaves us.

#include <string>

namespace tovira {

// True in a Wayland session: the X server at hand, if any, shows and moves only some windows.
[[nodiscard]] bool laPhienWayland();

// Why input cannot be injected here: one sentence for the user; empty when it can.
[[nodiscard]] std::string lyDoKhongDieuKhien();

}  // namespace tovira

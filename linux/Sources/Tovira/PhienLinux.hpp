#pragma once
// Any thread. What kind of desktop session this is, and what that leaves us.

#include <functional>
#include <string>

namespace tovira {

// Tells the user what a permission lacks and how to get it; an empty reason: nothing is missing. There is no
// settings page to open instead. Main thread; returns at once.
using NoiThieu = std::function<void(const std::string& lyDo)>;

// True in a Wayland session: the X server at hand, if any, shows and moves only some windows.
[[nodiscard]] bool laPhienWayland();

// Why input cannot be injected here: one sentence for the user; empty when it can.
[[nodiscard]] std::string lyDoKhongDieuKhien();

}  // namespace tovira

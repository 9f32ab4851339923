#pragma once
// Main thread. What the X11 capture source says beyond the calls that every platform has.

#include <memory>
#include <string>

#include "ManHinh.hpp"
#include "PhienLinux.hpp"

namespace tovira {

// Why the screen cannot be captured and what to do about it, in Vietnamese for the user; empty when it can
// be. Tries a real read of one pixel, so it takes a connection to the X server each time.
[[nodiscard]] std::string lyDoKhongGhi();

// The capture source of taoNenManHinh, with somebody to tell what is missing.
[[nodiscard]] std::unique_ptr<ManHinh::Nen> taoNenManHinh(NoiThieu noiThieu);

}  // namespace tovira

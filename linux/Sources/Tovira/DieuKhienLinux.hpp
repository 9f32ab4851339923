#pragma once
// Main thread. What the X11 event stream takes beyond what every platform does.

#include <memory>

#include "DieuKhien.hpp"
#include "PhienLinux.hpp"

namespace tovira {

// The ground of taoNenDieuKhien, with somebody to tell what is missing.
[[nodiscard]] std::unique_ptr<DieuKhien::Nen> taoNenDieuKhien(VongLap& vongLap, NoiThieu noiThieu);

}  // namespace tovira

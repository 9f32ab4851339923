#pragma once
// Main thread. Makes the running system's ground for DieuKhien; each platform has its own body for it.

#include <memory>

#include "DieuKhien.hpp"

namespace tovira {

// Never null. Where nothing can be injected (no display, no XTEST) the ground's duocPhep says so. `vongLap`
// outlives the result: on X11, text with many symbols that no key has waits there for its reader to keep up.
[[nodiscard]] std::unique_ptr<DieuKhien::Nen> taoNenDieuKhien(VongLap& vongLap);

}  // namespace tovira

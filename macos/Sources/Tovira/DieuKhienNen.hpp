#pragma once
// Main thread. Makes the running system's ground for DieuKhien; each platform has its own body for it.

#include <memory>

#include "DieuKhien.hpp"

namespace tovira {

// Never null. Where nothing can be injected (no display, no XTEST) the ground's duocPhep says so.
[[nodiscard]] std::unique_ptr<DieuKhien::Nen> taoNenDieuKhien();

}  // namespace tovira

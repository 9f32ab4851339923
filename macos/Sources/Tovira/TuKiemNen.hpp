#pragma once
// Main thread. Makes the running system's ground for TuKiem; each platform has its own body for it.

#include <memory>

#include "TuKiem.hpp"

namespace tovira {

// Never null; needs no display.
[[nodiscard]] std::unique_ptr<TuKiem::Nen> taoNenTuKiem();

}  // namespace tovira

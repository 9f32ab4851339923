#pragma once
// Main thread. Makes the running system's ground for KiemQuyen; each platform has its own body for it.

#include <memory>

#include "KiemQuyen.hpp"

namespace tovira {

[[nodiscard]] std::unique_ptr<KiemQuyen::Nen> taoNenKiemQuyen();

}  // namespace tovira

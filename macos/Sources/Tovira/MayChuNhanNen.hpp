#pragma once
// Main thread. Makes the running system's ground for MayChuNhan; each platform has its own body for it.

#include <memory>

#include "MayChuNhan.hpp"

namespace tovira {

// Never null.
[[nodiscard]] std::unique_ptr<MayChuNhan::Nen> taoNenMayChuNhan();

}  // namespace tovira

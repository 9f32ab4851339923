#pragma once
// Main thread. Makes the running system's ground for MotBan; each platform has its own body for it.

#include <memory>

#include "MotBan.hpp"

namespace tovira {

// Never null. It holds the place until it is destroyed.
[[nodiscard]] std::unique_ptr<MotBan::Nen> taoNenMotBan();

}  // namespace tovira

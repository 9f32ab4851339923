#pragma once
// Main thread. The platform's capture source; each platform implements this one function.

#include <memory>

#include "ManHinh.hpp"

namespace tovira {

// Makes the capture source. It must outlive the ManHinh that is given it. Never null: a source that cannot
// capture says so through its calls.
[[nodiscard]] std::unique_ptr<ManHinh::Nen> taoNenManHinh();

}  // namespace tovira

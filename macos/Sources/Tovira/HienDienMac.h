#pragma once
// Main thread. Apple only: makes the grounds of the application object, the status item and the control bar.

#include <memory>

#include "ChiBao.hpp"
#include "Khay.hpp"
#include "UngDung.hpp"

namespace tovira {

// Never null.
[[nodiscard]] std::unique_ptr<UngDung::Nen> taoNenUngDung();
[[nodiscard]] std::unique_ptr<Khay::Nen> taoNenKhay();
[[nodiscard]] std::unique_ptr<ChiBao::Nen> taoNenChiBao();

}  // namespace tovira

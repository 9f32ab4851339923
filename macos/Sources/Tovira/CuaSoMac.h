#pragma once
// Main thread. Apple only: makes the grounds of the main window, its web view and its pop-ups.

#include <memory>

#include "CuaSo.hpp"

namespace tovira {

// The three belong together: the window holds the view, and both ask the same delegate.
struct NenWeb {
    virtual ~NenWeb() = default;
    [[nodiscard]] virtual CuaSo::NenCua& cua() = 0;
    [[nodiscard]] virtual CuaSo::NenTrang& trang() = 0;
    [[nodiscard]] virtual CuaSo::NenTach& tach() = 0;
};

// Never null.
[[nodiscard]] std::unique_ptr<NenWeb> taoNenWeb();

}  // namespace tovira

#pragma once
// Main thread. The login item: does the program start with the user's session? The state lives in the system.

#include <memory>
#include <optional>
#include <string>

namespace tovira {

struct TuKhoiDong {
    virtual ~TuKhoiDong() = default;
    // Read anew each time; any state but "enabled" counts as off.
    [[nodiscard]] virtual bool dangBat() = 0;
    // Turns it on or off. Nothing on success, else the reason as the user sees it.
    [[nodiscard]] virtual std::optional<std::string> dat(bool bat) = 0;

    // The running system's own.
    [[nodiscard]] static std::unique_ptr<TuKhoiDong> tao();
};

}  // namespace tovira

#pragma once
// Any thread: pure. Reads the desktop's settings as its settings daemon publishes them (XSETTINGS).

#include <cstdint>
#include <optional>
#include <string_view>

namespace tovira {

// The whole number kept under `ten` in the bytes of an _XSETTINGS_SETTINGS property. Absent when the bytes
// are not such a property or hold no number of that name.
[[nodiscard]] std::optional<std::int32_t> soTrongCaiDatX(std::string_view thuocTinh, std::string_view ten);

}  // namespace tovira

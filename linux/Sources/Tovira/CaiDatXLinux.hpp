#pragma once
// Any thread. Reads the desktop's settings as its settings daemon publishes them (XSETTINGS).

#include <cstdint>
#include <optional>
#include <string_view>

#include "XcbLinux.hpp"

namespace tovira {

// The whole number kept under `ten` in the bytes of an _XSETTINGS_SETTINGS property. Absent when the bytes
// are not such a property or hold no number of that name.
[[nodiscard]] std::optional<std::int32_t> soTrongCaiDatX(std::string_view thuocTinh, std::string_view ten);

// The double-click interval that the display's desktop has set, in seconds; absent when none has.
[[nodiscard]] std::optional<double> khoangBamDupX(xcb_connection_t* c);

}  // namespace tovira

#pragma once
// Main thread. The server's keyboards that matter to injected input.

#include <optional>
#include <vector>

#include "XcbLinux.hpp"

namespace tovira {

struct ThietBiPhim {
    int xtest = 0;             // the device that our key events come from
    std::vector<int> banKhac;  // the other keyboards under the same master: the real ones
};

// Nothing when the server has no XInput 2, which alone tells its devices apart.
[[nodiscard]] std::optional<ThietBiPhim> timThietBiPhim(xcb_connection_t* c);

// The atom of a name; 0 (none) when the server does not answer.
[[nodiscard]] xcb_atom_t nguyenTuX(xcb_connection_t* c, const char* ten);

}  // namespace tovira

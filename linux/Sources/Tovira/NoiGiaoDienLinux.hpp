#pragma once
// Any thread. Where the packaged web application lies.

#include <string>

namespace tovira {

// The installed folder "giao-dien", else the one beside the sources that the program was built from; may not
// exist.
[[nodiscard]] std::string noiGiaoDien();

}  // namespace tovira

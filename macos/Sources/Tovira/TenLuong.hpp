#pragma once
// Any thread. Names the calling thread after its queue, for debuggers and profilers.

#include <string>

namespace tovira {

// Systems with short thread names get the beginning of `nhan`. Never fails: a name is only a convenience.
void datTenLuong(const std::string& nhan);

}  // namespace tovira

#pragma once
// Any thread. Runtime secrets: they live only in memory and are made fresh for each run of a server.

#include <cstddef>
#include <span>
#include <string>

namespace tovira {

// Fills a zeroed buffer with random bytes; what it cannot fill stays zero.
using NguonNgauNhien = void (*)(std::span<std::byte>);

// The system's cryptographic source.
void layNgauNhien(std::span<std::byte> ra);

// `soByte` random bytes as 2 × soByte lower-case hexadecimal characters.
[[nodiscard]] std::string taoBiMat(std::size_t soByte, NguonNgauNhien nguon = layNgauNhien);

}  // namespace tovira

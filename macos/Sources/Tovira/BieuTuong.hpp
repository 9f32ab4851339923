#pragma once
// Any thread: pure, save for the writers, which touch the file system. Draws the application icon pixel by
// pixel from a fixed recipe; the bytes are the same on every platform and compiler.

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "Loi.hpp"

namespace tovira {

struct BieuTuong {
    // Whether the corners are rounded and transparent, or the square is filled and opaque.
    enum class BoGoc { khong, co };

    struct Muc {
        const char* ten;  // file name
        int canh;         // pixels
    };
    static constexpr std::array<Muc, 10> boIcon{{
        {"icon_16x16.png", 16},
        {"icon_16x16@2x.png", 32},
        {"icon_32x32.png", 32},
        {"icon_32x32@2x.png", 64},
        {"icon_128x128.png", 128},
        {"icon_128x128@2x.png", 256},
        {"icon_256x256.png", 256},
        {"icon_256x256@2x.png", 512},
        {"icon_512x512.png", 512},
        {"icon_512x512@2x.png", 1024},
    }};
    static constexpr int canhIOS = 1024;
    // Sizes of the running application's own image.
    static constexpr std::array<int, 6> canhUngDung{32, 64, 128, 256, 512, 1024};

    // `canh` × `canh` pixels, 8-bit RGBA, rows top to bottom, alpha not premultiplied; empty for a `canh`
    // below 1.
    [[nodiscard]] static std::vector<std::uint8_t> rgba(int canh, BoGoc boGoc);

    // The same as a PNG file: 8-bit RGBA with rounded corners, 8-bit RGB without.
    [[nodiscard]] static KetQua<std::vector<std::byte>> png(int canh, BoGoc boGoc);

    // Writes the ten files of boIcon into the folder `vao`, which is made if need be. Stops at the first
    // failure; errors have the domain "BieuTuong".
    [[nodiscard]] static KetQua<void> ghiBoIcon(const std::string& vao);
    // Writes the one opaque icon to the file `vao`.
    [[nodiscard]] static KetQua<void> ghiIconIOS(const std::string& vao);

    // The command-line modes: print what came of it, return the exit status.
    static int chayTaoIcon(const std::string& vao);
    static int chayTaoIconIOS(const std::string& vao);
};

}  // namespace tovira

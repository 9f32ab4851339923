#pragma once
// Any thread: an immutable value. One JPEG framed as a part of a multipart/x-mixed-replace stream.

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <string_view>
#include <vector>

namespace tovira {

// One JPEG between its part header and its trailer, ready to be sent. Immutable.
class KhungMjpeg {
  public:
    static constexpr std::string_view boundary = "khungcuatoi";
    // Room that an encoder leaves free at the front of the buffer for the part header, in bytes.
    static constexpr std::size_t leDau = 96;
    // Spare capacity at the end of the buffer that saves `dong` a reallocation, in bytes.
    static constexpr std::size_t leCuoi = 2;

    // Takes a buffer of leDau free bytes followed by the JPEG, without copying it.
    [[nodiscard]] static std::shared_ptr<const KhungMjpeg> dong(std::vector<std::byte> dem);
    // Copies a JPEG.
    [[nodiscard]] static std::shared_ptr<const KhungMjpeg> tao(std::span<const std::byte> jpeg);

    // The part as it goes over the wire: header, JPEG, CR LF.
    [[nodiscard]] std::span<const std::byte> phan() const { return std::span(dem_).subspan(dau_); }
    // Tells this frame from every other one of the process.
    [[nodiscard]] std::uint64_t so() const { return so_; }

  private:
    KhungMjpeg(std::vector<std::byte> dem, std::size_t dau);
    std::vector<std::byte> dem_;
    std::size_t dau_;
    std::uint64_t so_;
};

}  // namespace tovira

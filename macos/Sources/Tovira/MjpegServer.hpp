#pragma once
// Created and owned on the main thread; its viewers live on its own queue "tv-mjpeg". Serves one share as
// multipart/x-mixed-replace on 127.0.0.1: each frame is one immutable buffer that all viewers share, and a
// viewer that is still busy with a frame misses the ones that arrive meanwhile.

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <span>
#include <string>
#include <vector>

#include "Loi.hpp"

namespace tovira {

// One JPEG between its part header and its trailer, ready to be sent. Immutable.
class KhungMjpeg {
  public:
    // Room that an encoder leaves free at the front of the buffer for the part header.
    static constexpr std::size_t leDau = 96;

    // Takes a buffer of leDau free bytes followed by the JPEG, without copying it.
    [[nodiscard]] static std::shared_ptr<const KhungMjpeg> dong(std::vector<std::byte> dem);
    // Copies a JPEG.
    [[nodiscard]] static std::shared_ptr<const KhungMjpeg> tao(std::span<const std::byte> jpeg);

    // The part as it goes over the wire: header, JPEG, CR LF.
    [[nodiscard]] std::span<const std::byte> phan() const;

  private:
    KhungMjpeg(std::vector<std::byte> dem, std::size_t dau);
    std::vector<std::byte> dem_;
    std::size_t dau_;
};

class MjpegServer {
  public:
    using Khung = std::shared_ptr<const KhungMjpeg>;

    // To whom a frame goes, among the viewers that are not busy.
    enum class Gui { moiNguoi, nguoiChuaCo };

    // Makes a fresh secret: 18 random bytes as 36 lower-case hexadecimal characters.
    MjpegServer();
    ~MjpegServer();
    MjpegServer(const MjpegServer&) = delete;
    MjpegServer& operator=(const MjpegServer&) = delete;

    // Opens the listener on a port of the system's choice; blocks for at most 5 s; harmless when already
    // open. Fails with domain "Tovira", code 1, "Không mở được máy chủ ảnh nội bộ".
    KetQua<void> batDau();
    // Stops listening and disconnects every viewer. `biMat` and `daTungCoKhach` keep their values.
    void dung();

    // Any thread; returns at once. Hands a frame to every viewer that is free (moiNguoi), or only to those
    // free viewers whose last frame is another one (nguoiChuaCo).
    void dangKhung(Khung khung, Gui gui = Gui::moiNguoi);

    // Number of viewers now, asked on the server's queue: never call it from there.
    [[nodiscard]] std::size_t soKhach();
    // Any thread. Is there a viewer that could take a frame now? A hint: it may change at any moment.
    [[nodiscard]] bool coNguoiRanh() const;
    // Any thread. Has any viewer ever been sent the stream header?
    [[nodiscard]] bool daTungCoKhach() const;
    // Any thread. The bound port, 0 while stopped.
    [[nodiscard]] std::uint16_t cong() const;
    [[nodiscard]] const std::string& biMat() const;

    // Set before batDau. Called on "tv-mjpeg" when a viewer has joined, and when a viewer that missed a frame
    // because it was busy is free again.
    std::function<void()> khiCoNguoiRanh;

  private:
    struct Ruot;
    std::shared_ptr<Ruot> ruot_;
};

}  // namespace tovira

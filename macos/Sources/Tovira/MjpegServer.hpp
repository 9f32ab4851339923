#pragma once
// Created and owned on the main thread; its viewers live on its own queue "tv-mjpeg". Serves one share as
// multipart/x-mixed-replace on 127.0.0.1: each frame is one immutable buffer that all viewers share, and a
// viewer that is still busy with a frame misses the ones that arrive meanwhile.

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "KhungMjpeg.hpp"
#include "Loi.hpp"

namespace tovira {

class MjpegServer {
  public:
    using Khung = std::shared_ptr<const KhungMjpeg>;

    // To whom a frame goes, among the viewers that are not busy.
    enum class Gui : std::uint8_t { moiNguoi, nguoiChuaCo, nhacLai };

    // Makes a fresh secret: 18 random bytes as 36 lower-case hexadecimal characters.
    MjpegServer();
    // Waits until the queue's thread has ended: never on that queue.
    ~MjpegServer();
    MjpegServer(const MjpegServer&) = delete;
    MjpegServer& operator=(const MjpegServer&) = delete;

    // Opens the listener on a port of the system's choice; blocks for at most 5 s; harmless when already
    // open. Fails with domain "Tovira", code 1, "Không mở được máy chủ ảnh nội bộ", or with the system's own
    // error when there is no socket to be had.
    KetQua<void> batDau();
    // Stops listening and disconnects every viewer. `biMat` and `daTungCoKhach` keep their values.
    void dung();

    // Any thread; returns at once. Hands a frame to every viewer that is free (moiNguoi), or only to those
    // free viewers that lack it (nguoiChuaCo): whose last frame is another one, or who missed a push since.
    // nhacLai goes to those that have not been sent it twice.
    void dangKhung(Khung khung, Gui gui = Gui::moiNguoi);

    // Any thread; returns at once. Asks for one call of khiCoNguoiRanh as soon as a viewer is free, now if
    // one is: for a frame that the owner holds back while everybody is busy.
    void baoKhiRanh();

    // Number of viewers now, asked on the server's queue: never call it from there.
    [[nodiscard]] std::size_t soKhach();
    // Any thread. Is there a viewer that could take a frame now? A hint: it may change at any moment.
    [[nodiscard]] bool coNguoiRanh() const;
    // Any thread. Has any viewer ever been sent the stream header?
    [[nodiscard]] bool daTungCoKhach() const;
    // Any thread. The bound port, 0 while stopped.
    [[nodiscard]] std::uint16_t cong() const;
    [[nodiscard]] const std::string& biMat() const;

    // Set before batDau. Called on "tv-mjpeg" when a viewer has joined, when a viewer that missed a frame
    // because it was busy is free again, and as baoKhiRanh says. Must not wait for anything.
    std::function<void()> khiCoNguoiRanh;

    // Any thread, pure. What a request head deserves: the status text of a rejection, or nothing when the
    // stream is to be opened.
    [[nodiscard]] static std::optional<std::string_view> xet(std::string_view phanDau,
                                                             std::string_view biMat);

  private:
    struct Ruot;
    std::shared_ptr<Ruot> ruot_;
};

}  // namespace tovira

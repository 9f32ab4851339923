#pragma once
// Created and owned on the main thread; requests are answered on its own queue "tv-giao-dien-kem". Serves the
// packaged web application on 127.0.0.1: one method, a fixed list of paths, no path is ever joined to the
// file system unless it is an entry of that list.

#include <array>
#include <cstdint>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "Loi.hpp"

namespace tovira {

class GiaoDienKem {
  public:
    // The languages whose translations may be served.
    static constexpr std::array<std::string_view, 15> cacTiengNoi{
        "vi", "en", "zh", "ja", "ko", "th", "lo", "ru", "id", "es", "pt", "tr", "pl", "ro", "fil"};

    // Where a target leads: the content type and the file below `thuMuc`, no file for the built-in script.
    struct Tuyen {
        std::string_view kieu;
        std::string tep;
        friend bool operator==(const Tuyen&, const Tuyen&) = default;
    };

    // `taiNguyen` is the application's resource folder, absent when it has none.
    explicit GiaoDienKem(const std::optional<std::filesystem::path>& taiNguyen);
    // Waits until the queue's thread has ended.
    ~GiaoDienKem();
    GiaoDienKem(const GiaoDienKem&) = delete;
    GiaoDienKem& operator=(const GiaoDienKem&) = delete;

    // The packaged folder.
    [[nodiscard]] const std::optional<std::filesystem::path>& thuMuc() const;
    // Is there a packaged page? Asks the file system.
    [[nodiscard]] bool coSan() const;

    // Opens the listener on a port of the system's choice; blocks for at most 5 s; harmless when already
    // open. Fails with domain "Tovira", code 2, "Không tìm thấy giao diện kèm trong gói ứng dụng" or code 3,
    // "Không mở được máy chủ giao diện nội bộ", or with the system's own error when there is no socket to be
    // had.
    KetQua<void> batDau();
    // Stops listening. Requests already accepted are still answered.
    void dung();
    // Any thread. The bound port, 0 while stopped.
    [[nodiscard]] std::uint16_t cong() const;

    // Any thread, pure. Looks a request target up: its query dropped, case-sensitive, nothing decoded.
    [[nodiscard]] static std::optional<Tuyen> tim(std::string_view dich);

    // What a request head asks for.
    enum class Xet : std::uint8_t { yeuCauHong, khongCo, co };
    struct YeuCau {
        Xet xet;
        Tuyen tuyen;  // for `co`
    };
    // Any thread, pure.
    [[nodiscard]] static YeuCau xet(std::string_view phanDau);

  private:
    struct Ruot;
    std::unique_ptr<Ruot> ruot_;
};

}  // namespace tovira

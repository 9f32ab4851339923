#pragma once
// The probe of the rendezvous server: a bare TCP connect, no byte sent. tachDiaChi: any thread, pure.
// song(url, cho): any thread but main. song(url, cho, xong): main thread; the work is done on a short-lived
// thread "tv-do-may-chu".

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "HangDoi.hpp"

namespace tovira {

class DoMayChu {
  public:
    struct DiaChi {
        std::string may;  // without brackets
        std::uint16_t cong = 0;
        friend bool operator==(const DiaChi&, const DiaChi&) = default;
    };

    explicit DoMayChu(VongLap& vongLap);
    // Gives up every probe still under way; their answers never come.
    virtual ~DoMayChu();
    DoMayChu(const DoMayChu&) = delete;
    DoMayChu& operator=(const DoMayChu&) = delete;

    // Splits a server address into host and port; absent when it is not usable.
    [[nodiscard]] static std::optional<DiaChi> tachDiaChi(std::string_view url);

    // Does the server take TCP connections? Blocks for at most `cho` seconds; false when the time runs out.
    // Every address of the host is tried at once. Refused and reset decide as soon as no other address is
    // still being tried; every other error (no route, no such name …) waits the time out.
    [[nodiscard]] static bool song(std::string_view url, double cho);

    // The same without blocking; `xong` runs once on the main queue.
    virtual void song(const std::string& url, double cho, std::function<void(bool)> xong);

  private:
    struct Ruot;
    std::shared_ptr<Ruot> ruot_;
};

}  // namespace tovira

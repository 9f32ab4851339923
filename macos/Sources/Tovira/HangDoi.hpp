#pragma once
// Queues, timers and the clock: the only way in which time and threads enter the logic.

#include <functional>
#include <memory>

namespace tovira {

// A serial queue. Work runs later, one piece at a time, in the order in which it was handed over.
struct HangDoi {
    virtual ~HangDoi() = default;

    // Any thread. Never runs `viec` before returning.
    virtual void chay(std::function<void()> viec) = 0;

    // Any thread. Runs `viec` on the queue once, `giay` seconds from now.
    virtual void chaySau(double giay, std::function<void()> viec) = 0;
};

// A running timer; destroying it stops it (no call after that).
struct HenGio {
    virtual ~HenGio() = default;
};

// The main queue with its timers and clocks. Tests turn it by hand.
struct VongLap : HangDoi {
    // Main thread. Calls `viec` on the main thread every `giay` seconds until the result is destroyed;
    // destroying it from within `viec` is allowed.
    [[nodiscard]] virtual std::unique_ptr<HenGio> lapLai(double giay, std::function<void()> viec) = 0;

    // Any thread. Seconds on a clock that never jumps.
    [[nodiscard]] virtual double dongHo() const = 0;

    // Any thread. Seconds since 1970, the user's wall clock.
    [[nodiscard]] virtual double gioTu1970() const = 0;

    // True on the thread that runs the main queue.
    [[nodiscard]] virtual bool dangOChinh() const = 0;
};

}  // namespace tovira

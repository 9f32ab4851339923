#pragma once
// Made and destroyed on the main thread; carries one thread of its own. The serial queue "tv-khung": frames
// are captured and encoded on it.

#include <asio/executor_work_guard.hpp>
#include <asio/io_context.hpp>
#include <thread>

#include "HangDoi.hpp"

namespace tovira {

class HangDoiKhungLinux final : public HangDoi {
  public:
    HangDoiKhungLinux();
    // Runs the work handed over so far, drops timers and ends the thread.
    ~HangDoiKhungLinux() override;
    HangDoiKhungLinux(const HangDoiKhungLinux&) = delete;
    HangDoiKhungLinux& operator=(const HangDoiKhungLinux&) = delete;

    void chay(std::function<void()> viec) override;
    void chaySau(double giay, std::function<void()> viec) override;

    // For timers and descriptors whose handlers are to run on this queue.
    [[nodiscard]] asio::io_context& io() { return io_; }
    // True on the queue's own thread.
    [[nodiscard]] bool dangODay() const { return std::this_thread::get_id() == luong_.get_id(); }

  private:
    asio::io_context io_{1};
    asio::executor_work_guard<asio::io_context::executor_type> giu_{io_.get_executor()};
    std::thread luong_;
};

}  // namespace tovira

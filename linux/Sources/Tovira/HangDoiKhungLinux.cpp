#include "HangDoiKhungLinux.hpp"

#include <pthread.h>

#include <asio/post.hpp>
#include <asio/steady_timer.hpp>
#include <chrono>
#include <memory>

namespace tovira {

HangDoiKhungLinux::HangDoiKhungLinux() : luong_([this] { io_.run(); }) {
    pthread_setname_np(luong_.native_handle(), "tv-khung");
}

HangDoiKhungLinux::~HangDoiKhungLinux() {
    asio::post(io_, [this] { io_.stop(); });
    luong_.join();
}

void HangDoiKhungLinux::chay(std::function<void()> viec) {
    asio::post(io_, std::move(viec));
}

void HangDoiKhungLinux::chaySau(double giay, std::function<void()> viec) {
    const auto sau =
        std::chrono::duration_cast<std::chrono::steady_clock::duration>(std::chrono::duration<double>(giay));
    auto hen = std::make_shared<asio::steady_timer>(io_, sau);
    hen->async_wait([hen, viec = std::move(viec)](const asio::error_code& ma) {
        if (!ma) viec();
    });
}

}  // namespace tovira

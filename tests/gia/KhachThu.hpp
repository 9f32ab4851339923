#pragma once
// A client over loopback for the servers' tests: every wait is bounded, an end and a reset are told apart.

#include <poll.h>
#include <sys/socket.h>

#include <array>
#include <asio.hpp>
#include <chrono>
#include <functional>
#include <string>
#include <string_view>
#include <thread>

namespace tovira::gia {

// Turns until `dieuKien` holds; false when it does not within 20 s.
inline bool choDen(const std::function<bool()>& dieuKien) {
    const auto han = std::chrono::steady_clock::now() + std::chrono::seconds(20);
    while (!dieuKien()) {
        if (std::chrono::steady_clock::now() > han) return false;
        std::this_thread::yield();
    }
    return true;
}

class KhachThu {
  public:
    enum class Doc { con, het, datLai, quaHan };  // more may come / the end / reset / nothing came in time

    explicit KhachThu(std::uint16_t cong, int coDem = 0) {
        asio::error_code loi;
        so_.open(asio::ip::tcp::v4(), loi);
        if (coDem > 0) so_.set_option(asio::socket_base::receive_buffer_size(coDem), loi);
        so_.connect({asio::ip::address_v4::loopback(), cong}, loi);
        noiDuoc_ = !loi;
        so_.set_option(asio::ip::tcp::no_delay(true), loi);
    }

    [[nodiscard]] bool noiDuoc() const { return noiDuoc_; }
    [[nodiscard]] int so() { return so_.native_handle(); }

    // False when the connection no longer takes bytes.
    bool gui(std::string_view byte) {
        asio::error_code loi;
        asio::write(so_, asio::buffer(byte), loi);
        return !loi;
    }

    // Says that nothing more will be sent.
    void thoiGui() {
        asio::error_code loi;
        so_.shutdown(asio::ip::tcp::socket::shutdown_send, loi);
    }

    void dong() { so_.close(); }

    // Closes with a reset.
    void datLai() {
        asio::error_code loi;
        so_.set_option(asio::socket_base::linger(true, 0), loi);
        so_.close(loi);
    }

    // Adds what comes next to `daDoc`.
    Doc docThem(int miliGiay = 20'000) {
        pollfd cho{so(), POLLIN, 0};
        if (::poll(&cho, 1, miliGiay) == 0) return Doc::quaHan;
        std::array<char, 65536> dem;
        asio::error_code loi;
        const std::size_t n = so_.read_some(asio::buffer(dem), loi);
        daDoc.append(dem.data(), n);
        if (!loi) return Doc::con;
        return loi == asio::error::eof ? Doc::het : Doc::datLai;
    }

    // Reads until the end, a reset, or silence.
    Doc docHet() {
        Doc d = Doc::con;
        while (d == Doc::con)
            d = docThem();
        return d;
    }

    // Reads until `daDoc` holds at least `n` bytes; false when it never does.
    bool docItNhat(std::size_t n) {
        while (daDoc.size() < n) {
            if (docThem() != Doc::con) return false;
        }
        return true;
    }

    // Reads up to and with `dau` and takes all that off `daDoc`; empty when it never comes.
    std::string layToi(std::string_view dau) {
        std::size_t cho = 0;
        while ((cho = daDoc.find(dau)) == std::string::npos) {
            if (docThem() != Doc::con) return {};
        }
        std::string ra = daDoc.substr(0, cho + dau.size());
        daDoc.erase(0, ra.size());
        return ra;
    }

    std::string daDoc;

  private:
    asio::io_context vong_;
    asio::ip::tcp::socket so_{vong_};
    bool noiDuoc_ = false;
};

// One request, read to the end of its connection. "" when the answer does not end in an orderly way.
inline std::string hoi(std::uint16_t cong, std::string_view yeuCau) {
    KhachThu khach(cong);
    if (!khach.gui(yeuCau)) return {};
    return khach.docHet() == KhachThu::Doc::het ? khach.daDoc : std::string();
}

}  // namespace tovira::gia

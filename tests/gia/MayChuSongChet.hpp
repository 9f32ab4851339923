#pragma once
// Main thread. A web server that comes and goes on one port of its own, in every way in which servers do.

#include <arpa/inet.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cstdlib>
#include <string>
#include <utility>
#include <vector>

#include "gia/MayChuTrang.hpp"

namespace tovira::gia {

class MayChuSongChet {
  public:
    // Nobody listens yet: connections are refused. The port stays taken all the while, so that nobody else
    // gets it.
    MayChuSongChet() : giuCho_(buoc(0)) {}
    ~MayChuSongChet() {
        tat();
        ::close(giuCho_);
    }
    MayChuSongChet(const MayChuSongChet&) = delete;
    MayChuSongChet& operator=(const MayChuSongChet&) = delete;

    [[nodiscard]] std::string goc() const { return "http://127.0.0.1:" + std::to_string(cong()); }
    // What it serves, from one life to the next.
    MayChuTrang web;

    void mo() {
        tat();
        const int cam = buoc(cong());
        if (::listen(cam, 64) != 0) std::abort();
        web.mo(cam);
    }
    void tat() {
        web.tat();
        for (const int cam : std::exchange(ngo_, {}))
            ::close(cam);
    }
    // New connections are neither taken nor refused. False where the system takes them all the same.
    bool ngo() {
        tat();
        ngo_.push_back(buoc(cong()));
        if (::listen(ngo_.back(), 1) != 0) std::abort();
        for (int i = 0; i < 64; ++i) {
            ngo_.push_back(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
            const auto dia = diaChi(cong());
            ::connect(ngo_.back(), reinterpret_cast<const sockaddr*>(&dia), sizeof dia);
            pollfd xong{ngo_.back(), POLLOUT, 0};
            if (::poll(&xong, 1, 200) == 0) return true;
        }
        return false;
    }

  private:
    static sockaddr_in diaChi(std::uint16_t cong) {
        sockaddr_in ra{};
        ra.sin_family = AF_INET;
        ra.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        ra.sin_port = htons(cong);
        return ra;
    }
    // A socket on that port, or on one of the system's choice; the port may be shared among this program's
    // own.
    static int buoc(std::uint16_t cong) {
        const int cam = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
        const int co = 1;
        const auto dia = diaChi(cong);
        const bool duoc = cam >= 0 && ::setsockopt(cam, SOL_SOCKET, SO_REUSEPORT, &co, sizeof co) == 0 &&
                          ::bind(cam, reinterpret_cast<const sockaddr*>(&dia), sizeof dia) == 0;
        if (!duoc) std::abort();
        return cam;
    }
    [[nodiscard]] std::uint16_t cong() const {
        sockaddr_in dia{};
        socklen_t dai = sizeof dia;
        if (::getsockname(giuCho_, reinterpret_cast<sockaddr*>(&dia), &dai) != 0) std::abort();
        return ntohs(dia.sin_port);
    }

    int giuCho_;
    std::vector<int> ngo_;  // a listener with a full queue, and who fills it
};

}  // namespace tovira::gia

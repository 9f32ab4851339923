#pragma once
// The least that a server of one thread can do to receive files: no secret, no checks, no other connection
// meanwhile. Each file arrives under another name and is then moved, as whole files must.

#include <arpa/inet.h>
#include <fcntl.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <string>

namespace tovira {

inline int moMayTran() {
    const int nghe = ::socket(AF_INET, SOCK_STREAM, 0);
    sockaddr_in cho{};
    cho.sin_family = AF_INET;
    cho.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    if (::bind(nghe, reinterpret_cast<sockaddr*>(&cho), sizeof cho) != 0 || ::listen(nghe, 512) != 0)
        std::abort();
    return nghe;
}

inline std::uint16_t congMayTran(int nghe) {
    sockaddr_in cho{};
    socklen_t dai = sizeof cho;
    ::getsockname(nghe, reinterpret_cast<sockaddr*>(&cho), &dai);
    return ntohs(cho.sin_port);
}

// Reads one request into `dem` and finds its body; false when it ends early.
inline bool docYeuCau(int noi, char* dem, std::size_t suc, const char*& than, std::size_t& dai) {
    std::size_t co = 0;
    than = nullptr;
    while (than == nullptr || co < static_cast<std::size_t>(than - dem) + dai) {
        const ssize_t so = ::read(noi, dem + co, std::min<std::size_t>(suc - co - 1, 262144));
        if (so <= 0) return false;
        co += static_cast<std::size_t>(so);
        if (than != nullptr) continue;
        dem[co] = 0;
        const char* het = std::strstr(dem, "\r\n\r\n");
        const char* doDai = std::strstr(dem, "Content-Length: ");
        if (het == nullptr || doDai == nullptr) continue;
        than = het + 4;
        dai = std::strtoul(doDai + 16, nullptr, 10);
    }
    return true;
}

[[noreturn]] inline void chayMayTran(int nghe, const char* thuMuc) {
    constexpr std::size_t suc = (std::size_t{64} << 20) + 65536;
    const std::unique_ptr<char[]> dem(new char[suc]);
    const std::string tam = std::string(thuMuc) + "/tep/tam";
    constexpr char tra[] = "HTTP/1.1 200 OK\r\nContent-Length: 11\r\nConnection: close\r\n\r\n{\"ok\":true}";
    for (int so = 0;; ++so) {
        const int noi = ::accept(nghe, nullptr, nullptr);
        const char* than = nullptr;
        std::size_t dai = 0;
        if (docYeuCau(noi, dem.get(), suc, than, dai)) {
            const std::string dich = std::string(thuMuc) + "/tep/" + std::to_string(so);
            const int tep = ::open(tam.c_str(), O_WRONLY | O_CREAT | O_EXCL, 0666);
            const bool du = ::write(tep, than, dai) == static_cast<ssize_t>(dai);
            ::close(tep);
            if (!du || ::rename(tam.c_str(), dich.c_str()) != 0) std::abort();
            if (::write(noi, tra, sizeof tra - 1) < 0) std::abort();
        }
        ::close(noi);
    }
}

}  // namespace tovira

#include "TuKiemKhach.hpp"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>

namespace tovira::tu_kiem {
namespace {

constexpr int hanMiliGiay = 1000;

#ifdef MSG_NOSIGNAL
constexpr int khongTinHieu = MSG_NOSIGNAL;
#else
constexpr int khongTinHieu = 0;
#endif

// Where a send cannot be told not to raise SIGPIPE, the socket can.
void chanTinHieu([[maybe_unused]] int so) {
#ifdef SO_NOSIGPIPE
    const int bat = 1;
    ::setsockopt(so, SOL_SOCKET, SO_NOSIGPIPE, &bat, sizeof bat);
#endif
}

}  // namespace

KhachTuKiem::KhachTuKiem(std::uint16_t cong) : so_(::socket(AF_INET, SOCK_STREAM, 0)) {
    sockaddr_in dich{};
    dich.sin_family = AF_INET;
    dich.sin_port = htons(cong);
    dich.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    if (so_ < 0) return;
    chanTinHieu(so_);
    // To the same machine: taken or refused at once.
    if (::connect(so_, reinterpret_cast<const sockaddr*>(&dich), sizeof dich) == 0) return;
    ::close(so_);
    so_ = -1;
}

KhachTuKiem::~KhachTuKiem() {
    if (so_ >= 0) ::close(so_);
}

bool KhachTuKiem::gui(std::string_view byte) {
    while (!byte.empty()) {
        const ssize_t so = ::send(so_, byte.data(), byte.size(), khongTinHieu);
        if (so < 0 && errno == EINTR) continue;
        if (so <= 0) return false;
        byte.remove_prefix(static_cast<std::size_t>(so));
    }
    return true;
}

long KhachTuKiem::nhan(char* vao, std::size_t toiDa) {
    for (;;) {
        pollfd cho{so_, POLLIN, 0};
        const int co = ::poll(&cho, 1, hanMiliGiay);
        const ssize_t so = co > 0 ? ::recv(so_, vao, toiDa, 0) : -1;
        if (co != 0 && so < 0 && errno == EINTR) continue;
        return static_cast<long>(so);
    }
}

std::string KhachTuKiem::doc(std::size_t soByte) {
    std::string ra(soByte, '\0');
    std::size_t co = 0;
    while (co < soByte) {
        const long so = nhan(ra.data() + co, soByte - co);
        if (so <= 0) break;
        co += static_cast<std::size_t>(so);
    }
    ra.resize(co);
    return ra;
}

bool KhachTuKiem::daDong() {
    char mot = 0;
    return nhan(&mot, 1) == 0;
}

std::optional<std::string> KhachTuKiem::docHet() {
    std::string ra;
    std::array<char, 16384> dem{};
    for (;;) {
        const long so = nhan(dem.data(), dem.size());
        if (so < 0) return std::nullopt;
        if (so == 0) return ra;
        ra.append(dem.data(), static_cast<std::size_t>(so));
    }
}

std::string hoi(std::uint16_t cong, std::string_view yeuCau) {
    KhachTuKiem khach(cong);
    if (!khach.noiDuoc()) return "(không nối được)";
    if (!khach.gui(yeuCau)) return "(không gửi được)";
    return khach.docHet().value_or("(không có câu trả lời trọn vẹn)");
}

}  // namespace tovira::tu_kiem

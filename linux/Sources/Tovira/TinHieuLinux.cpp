#include "TinHieuLinux.hpp"

#include <fcntl.h>
#include <unistd.h>

#include <array>
#include <atomic>
#include <csignal>

#include "BatBien.hpp"

namespace tovira {
namespace {

constexpr std::array cacTinHieu{SIGINT, SIGTERM, SIGHUP};

// All that a signal handler may touch: where to write.
std::atomic<int> dauGhi{-1};

extern "C" void khiTinHieu(int) {
    const int loiCu = errno;
    const char byte = 0;
    [[maybe_unused]] const auto daGhi = ::write(dauGhi.load(), &byte, 1);
    errno = loiCu;
}

}  // namespace

TinHieuLinux::TinHieuLinux(std::function<void()> khiDuocBaoKetThuc) {
    TOVIRA_BUOC(dauGhi.load() == -1);
    TOVIRA_BUOC(::pipe2(ong_, O_CLOEXEC | O_NONBLOCK) == 0);
    dauGhi = ong_[1];
    nghe_ = std::make_unique<QSocketNotifier>(ong_[0], QSocketNotifier::Read);
    QObject::connect(nghe_.get(), &QSocketNotifier::activated,
                     [doc = ong_[0], khi = std::move(khiDuocBaoKetThuc)] {
                         std::array<char, 64> bo{};
                         while (::read(doc, bo.data(), bo.size()) > 0) {
                         }
                         khi();
                     });
    struct sigaction xuLy {};
    xuLy.sa_handler = khiTinHieu;
    xuLy.sa_flags = SA_RESTART;
    for (const int tin : cacTinHieu)
        ::sigaction(tin, &xuLy, nullptr);
}

TinHieuLinux::~TinHieuLinux() {
    for (const int tin : cacTinHieu)
        std::signal(tin, SIG_DFL);
    nghe_.reset();
    dauGhi = -1;
    ::close(ong_[0]);
    ::close(ong_[1]);
}

}  // namespace tovira

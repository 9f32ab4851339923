// Fan-out of frames to viewers over loopback: MjpegServer beside a bare one-thread epoll sender of the same
// bytes, and beside gstreamer and ffmpeg where they are installed. Linux only.
//
//   do_phat_khung [seconds a cell = 5] [rounds = 3] [most viewers = 64]
//
// Every server is a process of its own, measured from outside: processor time of all its threads, resident
// memory. One more viewer than named is connected and never reads, except for ffmpeg, which serves a single
// viewer. The reader drops the images in the kernel (MSG_TRUNC), so that the senders have the machine to
// themselves.

#include <fcntl.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <sys/epoll.h>
#include <sys/eventfd.h>
#include <sys/mman.h>
#include <sys/prctl.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <turbojpeg.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <chrono>
#include <cinttypes>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <deque>
#include <filesystem>
#include <fstream>
#include <functional>
#include <map>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "BatBien.hpp"
#include "MjpegServer.hpp"

using namespace tovira;

namespace {

constexpr int khungMoiGiay = 12;
constexpr std::size_t toiDaKhung = 1 << 16;
constexpr std::size_t choSo =
    6;  // where a frame's number is in its JPEG: behind SOI and the COM segment's head
constexpr std::size_t daiSo = 8;

// What server and reader processes share.
struct Chung {
    std::atomic<int> cong;  // set last: the server is ready
    char dich[128];         // the request target
    std::atomic<bool> thoi;
    std::atomic<std::uint32_t> soKhung;         // frames pushed so far
    std::atomic<std::int64_t> luc[toiDaKhung];  // when each was pushed, ns
};

std::int64_t bayGio() {
    timespec t{};
    ::clock_gettime(CLOCK_MONOTONIC, &t);
    return t.tv_sec * 1'000'000'000LL + t.tv_nsec;
}

void nghi(double giay) {
    std::this_thread::sleep_for(std::chrono::duration<double>(giay));
}

// A valid JPEG of exactly `co` bytes whose first segment is a comment with room for a frame number.
std::vector<std::byte> anhCo(std::size_t co) {
    std::vector<unsigned char> diem(64UL * 64);
    for (std::size_t i = 0; i < diem.size(); ++i)
        diem[i] = static_cast<unsigned char>(i * 7);
    unsigned char* nen = nullptr;
    unsigned long dai = 0;
    const tjhandle may = tjInitCompress();
    TOVIRA_BUOC(tjCompress2(may, diem.data(), 64, 0, 64, TJPF_GRAY, &nen, &dai, TJSAMP_GRAY, 90, 0) == 0);
    tjDestroy(may);
    std::vector<std::byte> ra{std::byte{0xFF}, std::byte{0xD8}};
    std::size_t thieu = co - dai;
    while (thieu > 0) {
        // No segment may be left with less than its own head.
        std::size_t doan = std::min<std::size_t>(thieu, 65'000);
        if (thieu - doan > 0 && thieu - doan < 4) doan -= 4;
        ra.insert(ra.end(), {std::byte{0xFF}, std::byte{0xFE}, std::byte((doan - 2) >> 8),
                             std::byte((doan - 2) & 0xFF)});
        ra.insert(ra.end(), doan - 4, std::byte{'0'});
        thieu -= doan;
    }
    const auto* than = reinterpret_cast<const std::byte*>(nen);
    ra.insert(ra.end(), than + 2, than + dai);
    tjFree(nen);
    TOVIRA_BUOC(ra.size() == co);
    return ra;
}

void ghiSo(std::vector<std::byte>& anh, std::uint32_t so) {
    char chu[16];
    std::snprintf(chu, sizeof chu, "%08" PRIu32, so);
    std::memcpy(anh.data() + choSo, chu, daiSo);
}

// Pushes numbered frames, 12 a second, until told to stop.
void dayKhung(Chung& chung, std::vector<std::byte> anh, const std::function<void(MjpegServer::Khung)>& dang) {
    auto ke = std::chrono::steady_clock::now();
    for (std::uint32_t so = 0; !chung.thoi && so < toiDaKhung; ++so) {
        ghiSo(anh, so);
        auto khung = KhungMjpeg::tao(anh);
        chung.luc[so] = bayGio();
        dang(std::move(khung));
        chung.soKhung = so + 1;
        ke += std::chrono::nanoseconds(1'000'000'000 / khungMoiGiay);
        std::this_thread::sleep_until(ke);
    }
}

// ---- the servers, each the body of a process ----

void mayTovira(Chung& chung, const std::vector<std::byte>& anh) {
    MjpegServer may;
    TOVIRA_BUOC(may.batDau());
    std::snprintf(chung.dich, sizeof chung.dich, "/man-hinh?k=%s", may.biMat().c_str());
    chung.cong = may.cong();
    dayKhung(chung, anh, [&may](MjpegServer::Khung khung) { may.dangKhung(std::move(khung)); });
}

// The least that sends frames to viewers: one thread, epoll, plain sends.
class MayTran {
  public:
    explicit MayTran(Chung& chung) {
        nghe_ = ::socket(AF_INET, SOCK_STREAM | SOCK_NONBLOCK, 0);
        sockaddr_in dc{};
        dc.sin_family = AF_INET;
        dc.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        TOVIRA_BUOC(::bind(nghe_, reinterpret_cast<sockaddr*>(&dc), sizeof dc) == 0 &&
                    ::listen(nghe_, 128) == 0);
        socklen_t dai = sizeof dc;
        ::getsockname(nghe_, reinterpret_cast<sockaddr*>(&dc), &dai);
        theoDoi(EPOLL_CTL_ADD, nghe_, EPOLLIN);
        theoDoi(EPOLL_CTL_ADD, chuong_, EPOLLIN);
        std::snprintf(chung.dich, sizeof chung.dich, "/");
        chung.cong = ntohs(dc.sin_port);
    }

    void dang(MjpegServer::Khung khung) {
        {
            const std::lock_guard khoa(khoa_);
            hang_.push_back(std::move(khung));
        }
        const std::uint64_t mot = 1;
        TOVIRA_BUOC(::write(chuong_, &mot, sizeof mot) == sizeof mot);
    }

    [[noreturn]] void chay() {
        std::array<epoll_event, 64> tin;
        for (;;) {
            const int so = ::epoll_wait(epoll_, tin.data(), static_cast<int>(tin.size()), -1);
            for (int i = 0; i < so; ++i)
                xuLy(tin[static_cast<std::size_t>(i)]);
        }
    }

  private:
    struct Nguoi {
        bool duocDau = false;
        bool choViet = false;
        MjpegServer::Khung khung;
        std::span<const std::byte> con;
    };

    void theoDoi(int viec, int so, unsigned tin) const {
        epoll_event e{};
        e.events = tin;
        e.data.fd = so;
        ::epoll_ctl(epoll_, viec, so, &e);
    }

    void xuLy(const epoll_event& tin) {
        const int so = tin.data.fd;
        if (so == nghe_) {
            const int moi = ::accept4(nghe_, nullptr, nullptr, SOCK_NONBLOCK);
            const int mot = 1;
            ::setsockopt(moi, IPPROTO_TCP, TCP_NODELAY, &mot, sizeof mot);
            theoDoi(EPOLL_CTL_ADD, moi, EPOLLIN);
            nguoi_[moi];
        } else if (so == chuong_) {
            phat();
        } else {
            if ((tin.events & EPOLLIN) != 0) doc(so);
            if ((tin.events & EPOLLOUT) != 0) guiTiep(so, nguoi_[so]);
        }
    }

    void doc(int so) {
        char dem[4096];
        if (::recv(so, dem, sizeof dem, 0) <= 0 || nguoi_[so].duocDau) return;
        constexpr std::string_view dau =
            "HTTP/1.1 200 OK\r\nContent-Type: multipart/x-mixed-replace; boundary=khungcuatoi\r\n\r\n";
        ::send(so, dau.data(), dau.size(), MSG_NOSIGNAL);
        nguoi_[so].duocDau = true;
    }

    void phat() {
        std::uint64_t bo = 0;
        TOVIRA_BUOC(::read(chuong_, &bo, sizeof bo) == sizeof bo);
        std::deque<MjpegServer::Khung> hang;
        {
            const std::lock_guard khoa(khoa_);
            hang.swap(hang_);
        }
        for (const auto& khung : hang) {
            for (auto& [so, n] : nguoi_) {
                if (!n.duocDau || n.khung) continue;
                n.khung = khung;
                n.con = khung->phan();
                guiTiep(so, n);
            }
        }
    }

    void guiTiep(int so, Nguoi& n) {
        while (!n.con.empty()) {
            const ssize_t di = ::send(so, n.con.data(), n.con.size(), MSG_NOSIGNAL);
            if (di < 0) {
                if (!n.choViet) theoDoi(EPOLL_CTL_MOD, so, EPOLLIN | EPOLLOUT);
                n.choViet = true;
                return;
            }
            n.con = n.con.subspan(static_cast<std::size_t>(di));
        }
        n.khung = nullptr;
        if (n.choViet) theoDoi(EPOLL_CTL_MOD, so, EPOLLIN);
        n.choViet = false;
    }

    int epoll_ = ::epoll_create1(0);
    int chuong_ = ::eventfd(0, EFD_NONBLOCK);
    int nghe_ = -1;
    std::map<int, Nguoi> nguoi_;
    std::mutex khoa_;
    std::deque<MjpegServer::Khung> hang_;
};

void mayTran(Chung& chung, const std::vector<std::byte>& anh) {
    MayTran may(chung);
    std::thread([&may] { may.chay(); }).detach();
    dayKhung(chung, anh, [&may](MjpegServer::Khung khung) { may.dang(std::move(khung)); });
    ::_exit(0);
}

// The peers read one still image over and over, which spares them a source: no push times, so no latency.
[[noreturn]] void chayLenh(const std::vector<std::string>& lenh) {
    std::vector<char*> doi;
    for (const std::string& l : lenh)
        doi.push_back(const_cast<char*>(l.c_str()));
    doi.push_back(nullptr);
    const int khong = ::open("/dev/null", O_RDWR);
    for (int so : {0, 1, 2})
        ::dup2(khong, so);
    ::execvp(doi[0], doi.data());
    ::_exit(127);
}

std::vector<std::string> lenhGstreamer(const std::string& anh, int cong) {
    const std::string nhip = "caps=image/jpeg,framerate=" + std::to_string(khungMoiGiay) + "/1";
    return {"gst-launch-1.0",
            "-q",
            "multifilesrc",
            "location=" + anh,
            "loop=true",
            nhip,
            "!",
            "multipartmux",
            "boundary=khungcuatoi",
            "!",
            "tcpserversink",
            "host=127.0.0.1",
            "port=" + std::to_string(cong),
            "sync=true",
            "recover-policy=latest",
            "unit-format=buffers",
            "units-max=3",
            "units-soft-max=2"};
}

std::vector<std::string> lenhFfmpeg(const std::string& anh, int cong) {
    return {"ffmpeg",
            "-loglevel",
            "quiet",
            "-re",
            "-f",
            "image2",
            "-loop",
            "1",
            "-framerate",
            std::to_string(khungMoiGiay),
            "-i",
            anh,
            "-c",
            "copy",
            "-f",
            "mpjpeg",
            "-boundary_tag",
            "khungcuatoi",
            "-listen",
            "1",
            "-chunked_post",
            "0",
            "http://127.0.0.1:" + std::to_string(cong) + "/"};
}

// ---- the readers ----

// All viewers of one cell, read by one thread.
class DocGia {
  public:
    explicit DocGia(Chung& chung) : chung_(chung) {}
    ~DocGia() {
        for (const auto& x : xem_)
            ::close(x.so);
        for (const int so : tac_)
            ::close(so);
        ::close(epoll_);
    }
    DocGia(const DocGia&) = delete;
    DocGia& operator=(const DocGia&) = delete;

    // How an answer is read: frame by frame with their numbers, or merely counted.
    enum class Cach { tungKhung, demByte };

    bool them(Cach cach) {
        const int so = noi();
        if (so < 0) return false;
        xem_.push_back({so, cach, false, 0, 0, 0});
        epoll_event e{};
        e.events = EPOLLIN;
        e.data.u64 = xem_.size() - 1;
        ::epoll_ctl(epoll_, EPOLL_CTL_ADD, so, &e);
        return true;
    }

    bool themTac() {
        tac_.push_back(noi());
        return tac_.back() >= 0;
    }

    // Reads until `den` (ns), or until every viewer has had frame number `cuoi` or a later one.
    void doc(std::int64_t den, std::uint32_t cuoi) {
        std::array<epoll_event, 64> tin;
        while (bayGio() < den) {
            const int so = ::epoll_wait(epoll_, tin.data(), static_cast<int>(tin.size()), 20);
            for (int i = 0; i < so; ++i)
                docMot(xem_[tin[static_cast<std::size_t>(i)].data.u64]);
            if (cuoi != 0 &&
                std::all_of(xem_.begin(), xem_.end(), [cuoi](const Xem& x) { return x.soCuoi >= cuoi; }))
                return;
        }
    }

    // From now on only frames with at least this number count.
    void demTu(std::uint32_t so) {
        tuSo_ = so;
        soKhung = 0;
        byte = 0;
        treNs.clear();
    }

    std::uint64_t soKhung = 0;
    std::uint64_t byte = 0;
    std::vector<std::int64_t> treNs;

  private:
    struct Xem {
        int so;
        Cach cach;
        bool quaDauHttp;
        std::size_t con;      // bytes of the current image still to come
        std::uint32_t khung;  // its number
        std::uint32_t soCuoi;
        std::size_t dai = 0;
    };

    int noi() const {
        const int so = ::socket(AF_INET, SOCK_STREAM, 0);
        sockaddr_in dc{};
        dc.sin_family = AF_INET;
        dc.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        dc.sin_port = htons(static_cast<std::uint16_t>(chung_.cong.load()));
        if (::connect(so, reinterpret_cast<sockaddr*>(&dc), sizeof dc) != 0) {
            ::close(so);
            return -1;
        }
        const std::string hoi = "GET " + std::string(chung_.dich) + " HTTP/1.1\r\nHost: 127.0.0.1\r\n\r\n";
        TOVIRA_BUOC(::send(so, hoi.data(), hoi.size(), MSG_NOSIGNAL) == static_cast<ssize_t>(hoi.size()));
        return so;
    }

    void docMot(Xem& x) {
        if (x.cach == Cach::demByte) {
            const ssize_t den = ::recv(x.so, nullptr, 1 << 20, MSG_TRUNC | MSG_DONTWAIT);
            TOVIRA_BUOC(den != 0);
            byte += static_cast<std::uint64_t>(std::max<ssize_t>(den, 0));
            return;
        }
        if (x.con == 0) return docDau(x);
        const ssize_t den = ::recv(x.so, nullptr, x.con, MSG_TRUNC | MSG_DONTWAIT);
        TOVIRA_BUOC(den != 0);
        if (den < 0) return;
        x.con -= static_cast<std::size_t>(den);
        if (x.con == 0) xongKhung(x);
    }

    void docDau(Xem& x) {
        char dem[1024];
        const ssize_t co = ::recv(x.so, dem, sizeof dem, MSG_PEEK | MSG_DONTWAIT);
        TOVIRA_BUOC(co != 0);
        if (co < 0) return;
        const std::string_view thay(dem, static_cast<std::size_t>(co));
        const std::size_t het = thay.find("\r\n\r\n");
        if (het == std::string_view::npos) return;
        if (!x.quaDauHttp) {
            x.quaDauHttp = true;
            ::recv(x.so, dem, het + 4, 0);
            return;
        }
        if (thay.size() < het + 4 + choSo + daiSo) return;
        const std::size_t dai = thay.find("ength: ");
        TOVIRA_BUOC(dai < het);
        x.dai = x.con = std::strtoul(dem + dai + 7, nullptr, 10);
        x.khung = static_cast<std::uint32_t>(
            std::strtoul(std::string(thay.substr(het + 4 + choSo, daiSo)).c_str(), nullptr, 10));
        ::recv(x.so, dem, het + 4, 0);
    }

    void xongKhung(Xem& x) {
        x.soCuoi = x.khung;
        if (x.khung < tuSo_) return;
        ++soKhung;
        byte += x.dai;
        treNs.push_back(bayGio() - chung_.luc[x.khung]);
    }

    Chung& chung_;
    int epoll_ = ::epoll_create1(0);
    std::deque<Xem> xem_;
    std::vector<int> tac_;
    std::uint32_t tuSo_ = 0;
};

// ---- one cell ----

enum class May { tovira, tran, gstreamer, ffmpeg };
constexpr std::array<const char*, 4> tenMay{"tovira", "bare", "gstreamer", "ffmpeg"};

struct O {
    double cpuMoiGb = 0;  // processor seconds a delivered GB
    std::vector<std::int64_t> treNs;
    std::int64_t mat = 0;  // frames that a reading viewer did not get
    long themKb = 0;       // growth of anonymous resident memory
    bool duoc = false;
};

// Nanoseconds of processor time of all threads of a process.
std::int64_t cpuCua(pid_t pid) {
    std::int64_t tong = 0;
    for (const auto& luong : std::filesystem::directory_iterator("/proc/" + std::to_string(pid) + "/task")) {
        std::ifstream tep(luong.path() / "schedstat");
        std::int64_t ns = 0;
        tep >> ns;
        tong += ns;
    }
    return tong;
}

long boNhoKb(pid_t pid) {
    std::ifstream tep("/proc/" + std::to_string(pid) + "/status");
    for (std::string chu; tep >> chu;) {
        long kb = 0;
        if (chu == "RssAnon:" && tep >> kb) return kb;
    }
    return 0;
}

int congTrong() {
    const int so = ::socket(AF_INET, SOCK_STREAM, 0);
    sockaddr_in dc{};
    dc.sin_family = AF_INET;
    dc.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t dai = sizeof dc;
    TOVIRA_BUOC(::bind(so, reinterpret_cast<sockaddr*>(&dc), dai) == 0);
    ::getsockname(so, reinterpret_cast<sockaddr*>(&dc), &dai);
    ::close(so);
    return ntohs(dc.sin_port);
}

pid_t chayMay(May loai, Chung& chung, const std::vector<std::byte>& anh, const std::string& tepAnh) {
    const bool ngoai = loai == May::gstreamer || loai == May::ffmpeg;
    const int cong = ngoai ? congTrong() : 0;
    const pid_t pid = ::fork();
    if (pid != 0) {
        if (ngoai) {
            std::snprintf(chung.dich, sizeof chung.dich, "/");
            chung.cong = cong;
        }
        return pid;
    }
    ::prctl(PR_SET_PDEATHSIG, SIGKILL);
    if (loai == May::gstreamer) chayLenh(lenhGstreamer(tepAnh, cong));
    if (loai == May::ffmpeg) chayLenh(lenhFfmpeg(tepAnh, cong));
    if (loai == May::tovira)
        mayTovira(chung, anh);
    else
        mayTran(chung, anh);
    ::_exit(0);
}

bool noiHet(DocGia& docGia, May loai, int soNguoi, const Chung& chung) {
    for (int i = 0; i < 500 && chung.cong == 0; ++i)
        nghi(0.01);
    const auto cach =
        loai == May::tovira || loai == May::tran ? DocGia::Cach::tungKhung : DocGia::Cach::demByte;
    for (int i = 0; i < soNguoi; ++i) {
        int lan = 0;
        while (!docGia.them(cach)) {
            if (++lan > 500) return false;
            nghi(0.01);
        }
    }
    return loai == May::ffmpeg || docGia.themTac();
}

O doO(May loai, std::size_t co, int soNguoi, double giay) {
    auto* chung = static_cast<Chung*>(
        ::mmap(nullptr, sizeof(Chung), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0));
    const auto anh = anhCo(co);
    const std::string tepAnh = (std::filesystem::temp_directory_path() / "tovira-do-khung.jpg").string();
    std::ofstream(tepAnh, std::ios::binary)
        .write(reinterpret_cast<const char*>(anh.data()), static_cast<std::streamsize>(co));
    const pid_t pid = chayMay(loai, *chung, anh, tepAnh);
    O o;
    {
        DocGia docGia(*chung);
        const auto sau = [](double g) { return bayGio() + static_cast<std::int64_t>(g * 1e9); };
        if (noiHet(docGia, loai, soNguoi, *chung)) {
            docGia.doc(sau(2), 0);  // warm-up: every buffer on the way has grown to its size
            const bool tuDay = loai == May::tovira || loai == May::tran;
            const std::uint32_t dau = chung->soKhung;
            docGia.demTu(tuDay ? dau : 0);
            const long kb = boNhoKb(pid);
            const std::int64_t cpu = cpuCua(pid);
            const std::int64_t luc = bayGio();
            long caoNhat = kb;
            for (double con = giay; con > 0; con -= 0.25) {
                docGia.doc(sau(std::min(con, 0.25)), 0);
                caoNhat = std::max(caoNhat, boNhoKb(pid));
            }
            const auto trongLuc = static_cast<double>(bayGio() - luc) / 1e9;
            const std::uint32_t cuoi = chung->soKhung;
            if (tuDay && cuoi > dau) docGia.doc(sau(1), cuoi - 1);
            const auto mong = tuDay ? static_cast<double>(cuoi - dau) : trongLuc * khungMoiGiay;
            o.cpuMoiGb = static_cast<double>(cpuCua(pid) - cpu) / static_cast<double>(docGia.byte);
            if (!tuDay) docGia.soKhung = docGia.byte / co;
            o.treNs = std::move(docGia.treNs);
            o.mat = std::max<std::int64_t>(
                0, static_cast<std::int64_t>(mong * soNguoi) - static_cast<std::int64_t>(docGia.soKhung));
            o.themKb = caoNhat - kb;
            o.duoc = docGia.byte > 0;
        }
    }
    chung->thoi = true;
    ::kill(pid, SIGKILL);
    ::waitpid(pid, nullptr, 0);
    ::munmap(chung, sizeof(Chung));
    std::filesystem::remove(tepAnh);
    return o;
}

double phanVi(std::vector<std::int64_t>& ns, double q) {
    if (ns.empty()) return 0;
    const auto cho = ns.begin() + static_cast<std::ptrdiff_t>(q * static_cast<double>(ns.size() - 1));
    std::nth_element(ns.begin(), cho, ns.end());
    return static_cast<double>(*cho) / 1e6;
}

// The rounds of one cell and server, taken together: the median of the costs, all delays, the worst of the
// rest.
struct Gop {
    std::vector<double> cpu;
    std::vector<std::int64_t> tre;
    std::int64_t mat = 0;
    long themKb = 0;

    void them(O o) {
        if (!o.duoc) return;
        cpu.push_back(o.cpuMoiGb);
        tre.insert(tre.end(), o.treNs.begin(), o.treNs.end());
        mat = std::max(mat, o.mat);
        themKb = std::max(themKb, o.themKb);
    }
    double giuaCpu() {
        if (cpu.empty()) return 0;
        std::sort(cpu.begin(), cpu.end());
        return cpu[cpu.size() / 2];
    }
};

bool coLenh(const char* ten) {
    return std::system(("command -v " + std::string(ten) + " >/dev/null").c_str()) == 0;
}

void inDong(May loai, std::size_t co, int nguoi, Gop& g, Gop& tran) {
    const bool tuDay = loai == May::tovira || loai == May::tran;
    std::printf("%-10s %7zu %4d  ", tenMay[static_cast<std::size_t>(loai)], co, nguoi);
    if (g.cpu.empty()) {
        std::printf("does not manage this cell\n");
        return;
    }
    std::printf("%7.4f s/GB (%4.2f x bare)", g.giuaCpu(), g.giuaCpu() / tran.giuaCpu());
    if (tuDay) {
        std::printf("  p50 %7.2f ms  p99 %7.2f ms (%4.2f x bare)", phanVi(g.tre, 0.5), phanVi(g.tre, 0.99),
                    phanVi(g.tre, 0.99) / phanVi(tran.tre, 0.99));
    }
    std::printf("  lost %lld  memory +%ld KB\n", static_cast<long long>(g.mat), g.themKb);
    std::fflush(stdout);
}

}  // namespace

int main(int soDoi, char** doi) {
    const double giay = soDoi > 1 ? std::atof(doi[1]) : 5;
    const int soVong = soDoi > 2 ? std::atoi(doi[2]) : 3;
    const int nhieuNhat = soDoi > 3 ? std::atoi(doi[3]) : 64;
    std::vector<May> cacMay{May::tran, May::tovira};
    if (coLenh("gst-launch-1.0")) cacMay.push_back(May::gstreamer);
    if (coLenh("ffmpeg")) cacMay.push_back(May::ffmpeg);
    std::printf("server       bytes  viewers (one more is stalled)\n");
    for (const std::size_t co : {250'000UL, 1'000'000UL}) {
        for (const int nguoi : {1, 4, 16, 64}) {
            if (nguoi > nhieuNhat) continue;
            std::map<May, Gop> gop;
            for (int vong = 0; vong < soVong; ++vong) {
                for (const May may : cacMay) {
                    if (may == May::ffmpeg && nguoi > 1) continue;
                    gop[may].them(doO(may, co, nguoi, giay));
                }
            }
            for (auto& [may, g] : gop)
                inDong(may, co, nguoi, g, gop[May::tran]);
        }
    }
}

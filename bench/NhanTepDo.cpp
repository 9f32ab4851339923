// What receiving files costs, side by side: this program's server, the nginx on this machine (PUT of its DAV
// module) and a bare server of one thread. Each runs in a process of its own, whose processor time and peak
// memory are read from outside; each round writes into fresh folders.
//
//   do_nhan_tep [rounds [folder]]

#include <poll.h>
#include <signal.h>
#include <sys/wait.h>
#include <time.h>
#include <unistd.h>

#include <algorithm>
#include <asio.hpp>
#include <atomic>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <functional>
#include <map>
#include <string>
#include <thread>
#include <vector>

#include "MayChuNhan.hpp"
#include "MayTran.hpp"

using namespace tovira;
namespace fs = std::filesystem;
using asio::ip::tcp;

namespace {

[[noreturn]] void hong(const std::string& vi) {
    std::fprintf(stderr, "do_nhan_tep: %s\n", vi.c_str());
    std::exit(1);
}

// --- the servers, each in a child process ---

struct NenDo final : MayChuNhan::Nen {
    void hoiThuMuc(const Bang&, std::function<void(std::optional<std::string>)>) override {}
    void danhDauTuXa(int) override {}
};
struct TepDo final : TepNguoiDung {
    std::optional<std::string> thuMucTaiXuong() const override { return std::nullopt; }
    void hien(const std::string&) override {}
};
struct VongLapDo final : VongLap {
    void chay(std::function<void()>) override {}
    void chaySau(double, std::function<void()>) override {}
    std::unique_ptr<HenGio> lapLai(double, std::function<void()>) override { return nullptr; }
    double dongHo() const override { return 0; }
    double gioTu1970() const override { return 0; }
    bool dangOChinh() const override { return true; }
};

// What a child tells its parent once it listens.
struct LoiChao {
    std::uint16_t cong = 0;
    char biMat[49] = {};
};

void chayTovira(const fs::path& thuMuc, ThuMucNhan::DoBen doBen, int ong) {
    NenDo nen;
    TepDo tep;
    VongLapDo vong;
    MayChuNhan may(nen, tep, vong, "https://may.chu", {.doBen = doBen});
    if (!may.batDau(thuMuc.string())) hong("cannot listen");
    LoiChao chao{may.cong(), {}};
    std::memcpy(chao.biMat, may.biMat().c_str(), 48);
    if (::write(ong, &chao, sizeof chao) != sizeof chao) hong("pipe");
    for (;;)
        ::pause();
}

void chayTran(const fs::path& thuMuc, int ong) {
    const int nghe = moMayTran();
    LoiChao chao{congMayTran(nghe), "k"};
    if (::write(ong, &chao, sizeof chao) != sizeof chao) hong("pipe");
    chayMayTran(nghe, thuMuc.c_str());
}

std::uint16_t congRanh() {
    asio::io_context vong;
    return tcp::acceptor(vong, {asio::ip::address_v4::loopback(), 0}).local_endpoint().port();
}

void chayNginx(const fs::path& thuMuc, int ong) {
    const LoiChao chao{congRanh(), {}};
    const fs::path cho = thuMuc.string() + ".nginx";
    fs::create_directories(cho);
    std::ofstream(cho / "conf") << "daemon off; master_process off; worker_processes 1; pid "
                                << (cho / "pid").string() << "; error_log " << (cho / "log").string()
                                << " crit; events { worker_connections 512; }\n"
                                << "http { access_log off; client_max_body_size 100m; client_body_temp_path "
                                << (cho / "than").string() << "; proxy_temp_path " << (cho / "p").string()
                                << "; fastcgi_temp_path " << (cho / "f").string() << "; uwsgi_temp_path "
                                << (cho / "u").string() << "; scgi_temp_path " << (cho / "s").string()
                                << ";\n server { listen 127.0.0.1:" << chao.cong << "; root "
                                << thuMuc.string()
                                << "; location / { dav_methods PUT; create_full_put_path on; } } }\n";
    if (::write(ong, &chao, sizeof chao) != sizeof chao) hong("pipe");
    ::execlp("nginx", "nginx", "-c", (cho / "conf").c_str(), "-e", (cho / "log").c_str(), nullptr);
    hong("nginx is not installed (Debian: nginx-light)");
}

// A server in a child process, ended with this object.
class MayCon {
  public:
    explicit MayCon(const std::function<void(int ong)>& chay) {
        int ong[2];
        if (::pipe(ong) != 0) hong("pipe");
        so_ = ::fork();
        if (so_ == 0) {
            ::close(ong[0]);
            chay(ong[1]);
            std::_Exit(1);
        }
        ::close(ong[1]);
        const bool co = ::read(ong[0], &chao, sizeof chao) == sizeof chao;
        ::close(ong[0]);
        if (!co) hong("a server did not start");
        ::clock_getcpuclockid(so_, &dongHo_);
        for (int i = 0; !noiThu(); ++i) {
            if (i > 500) hong("a server does not answer");
            std::this_thread::sleep_for(std::chrono::milliseconds(10));
        }
    }
    ~MayCon() {
        ::kill(so_, SIGKILL);
        ::waitpid(so_, nullptr, 0);
    }
    MayCon(const MayCon&) = delete;
    MayCon& operator=(const MayCon&) = delete;

    // Processor seconds so far.
    [[nodiscard]] double giay() const {
        timespec t{};
        ::clock_gettime(dongHo_, &t);
        return static_cast<double>(t.tv_sec) + static_cast<double>(t.tv_nsec) / 1e9;
    }
    // Peak resident memory in MiB.
    [[nodiscard]] double dinhMiB() const {
        std::ifstream tep("/proc/" + std::to_string(so_) + "/status");
        for (std::string dong; std::getline(tep, dong);) {
            if (dong.starts_with("VmHWM:")) return std::stod(dong.substr(6)) / 1024;
        }
        return 0;
    }

    LoiChao chao;

  private:
    [[nodiscard]] bool noiThu() const {
        asio::io_context vong;
        tcp::socket so(vong);
        asio::error_code loi;
        so.connect({asio::ip::address_v4::loopback(), chao.cong}, loi);
        return !loi;
    }

    pid_t so_;
    clockid_t dongHo_{};
};

// --- the sender ---

enum class CachGui { post, put };

std::string base64(std::string_view byte) {
    constexpr char bang[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    std::string ra;
    for (std::size_t i = 0; i + 2 < byte.size(); i += 3) {
        unsigned gom = 0;
        for (std::size_t j = 0; j < 3; ++j)
            gom = gom << 8 | static_cast<unsigned char>(byte[i + j]);
        for (int j = 18; j >= 0; j -= 6)
            ra += bang[gom >> j & 63];
    }
    return ra;
}

std::string dau(const MayCon& may, CachGui cach, int so, std::size_t dai) {
    char ten[32];
    std::snprintf(ten, sizeof ten, "tep/%08d", so);  // a multiple of three bytes: no padding
    const std::string chung = " HTTP/1.1\r\nHost: 127.0.0.1\r\nContent-Length: " + std::to_string(dai) +
                              "\r\nConnection: close\r\nOrigin: https://may.chu\r\nAccept: */*\r\n";
    if (cach == CachGui::put) return "PUT /" + std::string(ten) + chung + "\r\n";
    return "POST /ghi?k=" + std::string(may.chao.biMat) + chung + "X-Duong: " + base64(ten) + "\r\n\r\n";
}

void guiMot(const MayCon& may, const std::string& dauYeuCau, const std::string& than) {
    static thread_local asio::io_context vong;
    tcp::socket noi(vong);
    noi.connect({asio::ip::address_v4::loopback(), may.chao.cong});
    noi.set_option(tcp::no_delay(true));
    const std::array<asio::const_buffer, 2> ca{asio::buffer(dauYeuCau), asio::buffer(than)};
    asio::error_code loi;
    asio::write(noi, ca, loi);
    std::string tra;
    asio::read(noi, asio::dynamic_buffer(tra), loi);
    if (!tra.starts_with("HTTP/1.1 20")) hong("refused: " + tra.substr(0, 60));
}

// Sends `soTep` files of `dai` bytes over `soNoi` connections at a time; processor seconds of the server.
double guiHet(const MayCon& may, CachGui cach, int soTep, std::size_t dai, int soNoi) {
    const std::string than(dai, 'x');
    const double truoc = may.giay();
    std::atomic<int> ke{0};
    std::vector<std::thread> nguoi;
    for (int n = 0; n < soNoi; ++n) {
        nguoi.emplace_back([&] {
            for (int i = ke++; i < soTep; i = ke++)
                guiMot(may, dau(may, cach, i, dai), than);
        });
    }
    for (auto& n : nguoi)
        n.join();
    return may.giay() - truoc;
}

// --- the rounds ---

struct Ben {
    const char* ten;
    CachGui cach;
    std::function<void(const fs::path&, int ong)> chay;
};

// Waits for the disk at every file: fewer of them tell enough.
constexpr const char* benBen = "tovira, durable";
constexpr int toiDaTepBen = 500;
// Bytes of a first file, which does not count: what a server needs whatever comes, its code and the buffer
// that heads are read into, has been touched by then. The growth that is shown is the peak beyond that.
constexpr std::size_t lamNong = 200'000;

double giua(std::vector<double> so) {
    std::sort(so.begin(), so.end());
    return so[so.size() / 2];
}

}  // namespace

int main(int soThamSo, char** thamSo) {
    ::signal(SIGPIPE, SIG_IGN);
    std::setvbuf(stdout, nullptr, _IOLBF, 0);
    const int soLuot = soThamSo > 1 ? std::atoi(thamSo[1]) : 5;
    std::string mau =
        (fs::path(soThamSo > 2 ? thamSo[2] : fs::temp_directory_path().c_str()) / "do-nhan-XXXXXX").string();
    if (::mkdtemp(mau.data()) == nullptr) hong("no folder to write to");
    using enum ThuMucNhan::DoBen;
    const std::vector<Ben> cacBen{
        {"tovira", CachGui::post, [](const fs::path& d, int o) { chayTovira(d, tuyHeThong, o); }},
        {"nginx", CachGui::put, chayNginx},
        {"bare", CachGui::post, chayTran},
        {benBen, CachGui::post, [](const fs::path& d, int o) { chayTovira(d, xuongDia, o); }},
    };
    struct Muc {
        const char* ten;
        int soTep;
        std::size_t dai;
        int soNoi;
        double moi;  // what the seconds are a share of: files in millions, or gigabytes, a file
    };
    constexpr Muc cacMuc[] = {
        {"1 KB, 1 connection, µs/file", 10'000, 1024, 1, 1e-6},
        {"1 KB, 6 connections, µs/file", 10'000, 1024, 6, 1e-6},
        {"64 MiB, 1 connection, s/GB", 10, std::size_t{64} << 20, 1, 67108864.0 / 1e9},
    };
    std::printf("processor time, median of %d rounds (smallest … largest)\n", soLuot);
    for (const Muc& muc : cacMuc) {
        std::map<std::string, std::vector<double>> so;
        std::map<std::string, double> dinh;
        // Round -1 warms up and does not count.
        for (int luot = -1; luot < soLuot; ++luot) {
            for (const Ben& ben : cacBen) {
                const fs::path thuMuc = mau + "/" + std::to_string(&muc - cacMuc) + "." +
                                        std::to_string(luot) + "." + std::to_string(&ben - cacBen.data());
                fs::create_directories(thuMuc / "tep");
                const MayCon may([&](int ong) { ben.chay(thuMuc, ong); });
                guiMot(may, dau(may, ben.cach, 99'999'999, lamNong), std::string(lamNong, 'x'));
                const double nen = may.dinhMiB();
                const int soTep = ben.ten == benBen ? std::min(muc.soTep, toiDaTepBen) : muc.soTep;
                const double giay = guiHet(may, ben.cach, soTep, muc.dai, muc.soNoi);
                // Large files go at once, so that every run finds the same memory free. Small ones stay until
                // the end: after many have been removed the next are slower to make.
                if (muc.soTep <= 100) fs::remove_all(thuMuc);
                if (luot < 0) continue;
                so[ben.ten].push_back(giay / (soTep * muc.moi));
                dinh[ben.ten] = std::max(dinh[ben.ten], may.dinhMiB() - nen);
            }
        }
        std::printf("%s\n", muc.ten);
        for (const Ben& ben : cacBen) {
            auto& s = so[ben.ten];
            std::sort(s.begin(), s.end());
            std::printf("  %-16s %8.2f  (%.2f … %.2f)   peak memory +%.2f MiB\n", ben.ten, giua(s), s.front(),
                        s.back(), dinh[ben.ten]);
        }
    }
    fs::remove_all(mau);
}

// The road itself, as users start it: the program, its web engine and an X server.
//   - from a page's call to the X event of its command, one at a time and 2 000 at once, beside a bare client
//     that asks the server for the same events;
//   - from the start of the process to its window with the packaged page, beside a bare view of that page;
//   - the memory of the host process alone.
// Run it on a virtual display:
//   tests/voi-man-hinh.sh --quan-ly-cua-so build/bench/bench/do_duong
// Ends with status 1 when a limit is missed.

#include <poll.h>
#include <xcb/xtest.h>

#include <QApplication>
#include <QFile>
#include <QWebEngineView>
#include <algorithm>
#include <array>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <filesystem>
#include <fstream>
#include <functional>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

#include "BatBien.hpp"
#include "XcbLinux.hpp"
#include "gia/KhachThu.hpp"
#include "gia/ThuMucTam.hpp"
#include "gia/TienTrinh.hpp"
#include "gia/TrangDieuKhien.hpp"

using namespace tovira;

namespace {

constexpr std::size_t soLe = 500;      // commands posted one at a time, 16 ms apart as a remote pointer moves
constexpr std::size_t soDon = 2000;    // commands posted at once
constexpr double tranLe = 5;           // ms, p50
constexpr double tranDon = 1000;       // ms
constexpr double tranKhoiDong = 3000;  // ms from the probe's answer, which is taken to begin with the process
constexpr double hanDo = 1500;         // ms that the probe waits for a server that says nothing
constexpr int soLanKhoiDong = 3;       // each with a profile of its own, as on the very first start
constexpr xcb_keycode_t maA = 38;

enum class Loai { chuot, phim };

// The wall clock, which a page's clock tells as well.
double bayGio() {
    timespec t{};
    clock_gettime(CLOCK_REALTIME, &t);
    return static_cast<double>(t.tv_sec) * 1e3 + static_cast<double>(t.tv_nsec) * 1e-6;
}

double phanVi(std::vector<double> cac, double phan) {
    std::sort(cac.begin(), cac.end());
    return cac[static_cast<std::size_t>(phan * static_cast<double>(cac.size() - 1))];
}

// A client that all input goes to: it covers the display without hiding what is under it.
class BanGhiX {
  public:
    BanGhiX() : x_(moManX()) {
        TOVIRA_BUOC(x_);
        o_ = xcb_generate_id(x_.c());
        const std::uint32_t v[] = {
            1, XCB_EVENT_MASK_KEY_PRESS | XCB_EVENT_MASK_KEY_RELEASE | XCB_EVENT_MASK_POINTER_MOTION};
        xcb_create_window(x_.c(), 0, o_, x_.goc(), 0, 0, x_.man->width_in_pixels, x_.man->height_in_pixels, 0,
                          XCB_WINDOW_CLASS_INPUT_ONLY, XCB_COPY_FROM_PARENT,
                          XCB_CW_OVERRIDE_REDIRECT | XCB_CW_EVENT_MASK, v);
        xcb_map_window(x_.c(), o_);
        xcb_set_input_focus(x_.c(), XCB_INPUT_FOCUS_POINTER_ROOT, o_, XCB_CURRENT_TIME);
        dongBo();
    }
    // When each of the next `so` events of this kind came; fewer when they stop coming.
    std::vector<double> ghi(Loai loai, std::size_t so) {
        std::vector<double> ra;
        while (ra.size() < so) {
            while (const PhanXcb<xcb_generic_event_t> e{xcb_poll_for_event(x_.c())}) {
                const int ma = e->response_type & 0x7F;
                if (loai == Loai::chuot ? ma == XCB_MOTION_NOTIFY
                                        : ma == XCB_KEY_PRESS || ma == XCB_KEY_RELEASE)
                    ra.push_back(bayGio());
            }
            pollfd p{xcb_get_file_descriptor(x_.c()), POLLIN, 0};
            if (ra.size() < so && poll(&p, 1, 10'000) <= 0) break;
        }
        return ra;
    }
    // Forgets what has come so far.
    void boCu() {
        dongBo();
        while (PhanXcb<xcb_generic_event_t>(xcb_poll_for_event(x_.c()))) {
        }
    }
    void dongBo() const {
        PhanXcb<void>(xcb_get_input_focus_reply(x_.c(), xcb_get_input_focus(x_.c()), nullptr));
    }
    [[nodiscard]] const ManX& x() const { return x_; }

  private:
    ManX x_;
    xcb_window_t o_ = 0;
};

struct Do {
    double p50 = 0, p99 = 0, don = 0;  // ms
};

// The physical limit: another client asks the server for the same events.
Do doTran(BanGhiX& ban, Loai loai) {
    const ManX x = moManX();
    TOVIRA_BUOC(x);
    const auto dang = [&](std::size_t i) {
        if (loai == Loai::chuot)
            xcb_test_fake_input(x.c(), XCB_MOTION_NOTIFY, 0, 0, x.goc(),
                                static_cast<std::int16_t>(100 + i % 400), 300, 0);
        else
            xcb_test_fake_input(x.c(), i % 2 == 0 ? XCB_KEY_PRESS : XCB_KEY_RELEASE, maA, 0, 0, 0, 0, 0);
    };
    ban.boCu();
    std::vector<double> cac;
    for (std::size_t i = 0; i < soLe; ++i) {
        const double luc = bayGio();
        dang(i);
        xcb_flush(x.c());
        const auto den = ban.ghi(loai, 1);
        TOVIRA_BUOC(!den.empty());
        cac.push_back(den[0] - luc);
    }
    const double luc = bayGio();
    for (std::size_t i = 0; i < soDon; ++i)
        dang(i + soLe);
    xcb_flush(x.c());
    const auto den = ban.ghi(loai, soDon);
    TOVIRA_BUOC(den.size() == soDon);
    return {phanVi(cac, 0.5), phanVi(cac, 0.99), den.back() - luc};
}

// A reported list of times, on this program's clock.
std::vector<double> docGio(gia::TrangDieuKhien& trang, double lech) {
    std::vector<double> ra;
    std::istringstream dong(trang.doiBao().value_or(""));
    for (std::string mot; std::getline(dong, mot, ',');)
        ra.push_back(std::stod(mot) - lech);
    return ra;
}

// How far the page's fine clock is ahead of the wall clock, which it finds at a tick of its coarse one.
double lechDongHo(gia::TrangDieuKhien& trang) {
    trang.chay(
        "window.gio = () => performance.timeOrigin + performance.now();"
        "let it = Infinity; for (let i = 0; i < 20; i++) { const t = Date.now(); let s; while ((s = "
        "Date.now()) "
        "=== t); it = Math.min(it, gio() - s); } bao(it)");
    return std::stod(trang.doiBao().value_or("0"));
}

Do doTrang(gia::TrangDieuKhien& trang, BanGhiX& ban, Loai loai) {
    const double lech = lechDongHo(trang);
    trang.chay(loai == Loai::chuot
                   ? "window.lenhThu = i => JSON.stringify({t:'mouse_move', x:0.1 + i % 400 / 1000, y:0.5})"
                   : "window.lenhThu = i => JSON.stringify({t: i % 2 ? 'key_up' : 'key_down', code:'KeyA'})");
    ban.boCu();
    trang.chay(
        "{ const g = []; const h = setInterval(() => { g.push(gio()); tovira.guiLenh(lenhThu(g.length - 1));"
        " if (g.length === " +
        std::to_string(soLe) + ") { clearInterval(h); bao(g.join()); } }, 16); }");
    const auto den = ban.ghi(loai, soLe);
    const auto di = docGio(trang, lech);
    TOVIRA_BUOC(den.size() == soLe && di.size() == soLe);
    std::vector<double> cac(soLe);
    std::transform(den.begin(), den.end(), di.begin(), cac.begin(), std::minus<>());

    trang.chay("{ const l = gio(); for (let i = 0; i < " + std::to_string(soDon) +
               "; i++) tovira.guiLenh(lenhThu(i)); bao(l); }");
    const auto denDon = ban.ghi(loai, soDon);
    const auto diDon = docGio(trang, lech);
    TOVIRA_BUOC(denDon.size() == soDon && diDon.size() == 1);
    return {phanVi(cac, 0.5), phanVi(cac, 0.99), denDon.back() - diDon[0]};
}

// A home that nothing was ever started from.
class NhaMoi {
  public:
    NhaMoi() {
        for (const char* bien :
             {"HOME", "XDG_CONFIG_HOME", "XDG_DATA_HOME", "XDG_CACHE_HOME", "XDG_RUNTIME_DIR"})
            setenv(bien, tam_.duong().c_str(), 1);
    }
    [[nodiscard]] std::string tepSanSang() const { return tam_ / "san-sang"; }

  private:
    gia::ThuMucTam tam_;  // for its owner alone, as XDG_RUNTIME_DIR asks
};

// Whether a window stands under the window manager, visible.
bool coCuaSo(const ManX& x, xcb_atom_t danhSach) {
    const PhanXcb<xcb_get_property_reply_t> ds(xcb_get_property_reply(
        x.c(), xcb_get_property(x.c(), 0, x.goc(), danhSach, XCB_ATOM_WINDOW, 0, 64), nullptr));
    if (!ds || xcb_get_property_value_length(ds.get()) < 4) return false;
    const auto o = *static_cast<const xcb_window_t*>(xcb_get_property_value(ds.get()));
    const PhanXcb<xcb_get_window_attributes_reply_t> tt(
        xcb_get_window_attributes_reply(x.c(), xcb_get_window_attributes(x.c(), o), nullptr));
    return tt && tt->map_state == XCB_MAP_STATE_VIEWABLE;
}

// From the start of the process until its window is visible and its page loaded: ms.
double doKhoiDong(const std::vector<std::string>& lenh) {
    constexpr char ten[] = "_NET_CLIENT_LIST";
    const ManX x = moManX();
    const PhanXcb<xcb_intern_atom_reply_t> nguyenTu(
        xcb_intern_atom_reply(x.c(), xcb_intern_atom(x.c(), 0, sizeof ten - 1, ten), nullptr));
    const NhaMoi nha;
    setenv("TOVIRA_TEP_SAN_SANG", nha.tepSanSang().c_str(), 1);
    TOVIRA_BUOC(gia::choDen([&] { return !coCuaSo(x, nguyenTu->atom); }));
    const double luc = bayGio();
    gia::TienTrinh con(lenh);
    double het = 0;
    while (het == 0) {
        std::this_thread::sleep_for(std::chrono::milliseconds(2));
        if (std::filesystem::exists(nha.tepSanSang()) && coCuaSo(x, nguyenTu->atom)) het = bayGio();
        TOVIRA_BUOC(bayGio() - luc < 60'000);
    }
    con.bao(SIGTERM);
    con.doiHet();
    return het - luc;
}

// The peer: nothing but a view of the packaged page. Runs as a process of its own.
int hienTrangTran(int soThamSo, char** thamSo) {
    QApplication ung(soThamSo, thamSo);
    QWebEngineView khung;
    QObject::connect(&khung, &QWebEngineView::loadFinished, &khung, [] {
        QFile tep(qEnvironmentVariable("TOVIRA_TEP_SAN_SANG"));
        TOVIRA_BUOC(tep.open(QIODevice::WriteOnly));
    });
    khung.load(QUrl::fromLocalFile(QStringLiteral(TOVIRA_TRANG_KEM)));
    khung.resize(1180, 760);
    khung.show();
    // Ended by a signal.
    return QApplication::exec();
}

// A field of a /proc file, kB to MB.
double mbCua(pid_t ma, const char* tep, const std::string& truong) {
    std::ifstream dong("/proc/" + std::to_string(ma) + "/" + tep);
    for (std::string d; std::getline(dong, d);)
        if (d.rfind(truong, 0) == 0) return std::stod(d.substr(truong.size())) / 1024;
    return 0;
}

void inBoNho(const char* luc, pid_t ma) {
    std::printf("memory of the host process %-28s resident %.1f MB, its proportional share %.1f MB\n", luc,
                mbCua(ma, "status", "VmRSS:"), mbCua(ma, "smaps_rollup", "Pss:"));
}

// One viewer of the screen, which changes all the time, for three seconds.
void doBoNhoChiaSe(gia::TrangDieuKhien& trang, pid_t ma) {
    trang.chay("tovira.xinManHinh(0)");
    TOVIRA_BUOC(trang.cho("tovira.manHinhDangPhat()"));
    const std::string url = trang.hoi("tovira.manHinh.duongDan");
    const auto hai = url.rfind(':');
    const auto dich = url.find('/', hai);
    gia::KhachThu khach(static_cast<std::uint16_t>(std::stoi(url.substr(hai + 1))));
    TOVIRA_BUOC(khach.gui("GET " + url.substr(dich) + " HTTP/1.1\r\n\r\n"));
    const ManX x = moManX();
    const xcb_window_t o = xcb_generate_id(x.c());
    const std::uint32_t v[] = {0, 1};
    xcb_create_window(x.c(), XCB_COPY_FROM_PARENT, o, x.goc(), 0, 0, 600, 500, 0,
                      XCB_WINDOW_CLASS_INPUT_OUTPUT, XCB_COPY_FROM_PARENT,
                      XCB_CW_BACK_PIXEL | XCB_CW_OVERRIDE_REDIRECT, v);
    xcb_map_window(x.c(), o);
    std::size_t byte = 0;
    const double het = bayGio() + 3000;
    for (std::uint32_t mau = 0; bayGio() < het; mau += 0x010305) {
        xcb_change_window_attributes(x.c(), o, XCB_CW_BACK_PIXEL, &mau);
        xcb_clear_area(x.c(), 0, o, 0, 0, 0, 0);
        xcb_flush(x.c());
        khach.docThem(50);
        byte += khach.daDoc.size();
        khach.daDoc.clear();
    }
    TOVIRA_BUOC(byte > 0);
    inBoNho("sharing with one viewer:", ma);
}

bool inLenh(const char* ten, const Do& ta, const Do& tran) {
    std::printf(
        "%-16s one at a time: p50 %.2f ms (limit %.0f), p99 %.2f ms; bare client p50 %.3f, p99 %.3f ms\n",
        ten, ta.p50, tranLe, ta.p99, tran.p50, tran.p99);
    std::printf("%-16s %zu at once: %.0f ms (limit %.0f); bare client %.1f ms\n", ten, soDon, ta.don, tranDon,
                tran.don);
    return ta.p50 <= tranLe && ta.don <= tranDon;
}

bool doLenhVaBoNho() {
    const NhaMoi nha;
    gia::TrangDieuKhien trang;
    gia::TienTrinh tovira({TOVIRA_CHUONG_TRINH, "--server", trang.goc()});
    TOVIRA_BUOC(trang.cho("window.tovira && tovira.dsManHinh.length"));
    inBoNho("after start:", tovira.ma());
    bool dat = true;
    {
        BanGhiX ban;
        dat &= inLenh("mouse_move", doTrang(trang, ban, Loai::chuot), doTran(ban, Loai::chuot));
        dat &= inLenh("key_down/key_up", doTrang(trang, ban, Loai::phim), doTran(ban, Loai::phim));
    }
    doBoNhoChiaSe(trang, tovira.ma());
    tovira.bao(SIGTERM);
    tovira.doiHet();
    return dat;
}

bool inKhoiDong(const char* ten, const std::vector<std::string>& lenh, double tran) {
    std::vector<double> cac;
    for (int i = 0; i < soLanKhoiDong; ++i)
        cac.push_back(doKhoiDong(lenh));
    const double lau = *std::max_element(cac.begin(), cac.end());
    std::printf("start, %-34s median %.2f s, longest %.2f s", ten, phanVi(cac, 0.5) / 1e3, lau / 1e3);
    if (tran > 0)
        std::printf(" (limit %.1f s)\n", tran / 1e3);
    else
        std::printf(" (no limit: the peer)\n");
    return tran <= 0 || lau <= tran;
}

}  // namespace

int main(int soThamSo, char** thamSo) {
    if (soThamSo > 1 && std::string(thamSo[1]) == "--trang-tran") return hienTrangTran(soThamSo, thamSo);
    setvbuf(stdout, nullptr, _IOLBF, 0);
    bool dat = doLenhVaBoNho();

    // A port that is bound and does not listen refuses; one whose queue is full leaves a connection waiting.
    asio::io_context vong;
    asio::ip::tcp::acceptor tuChoi(vong), imLang(vong);
    for (auto* o : {&tuChoi, &imLang}) {
        o->open(asio::ip::tcp::v4());
        o->bind({asio::ip::address_v4::loopback(), 0});
    }
    imLang.listen(0);
    std::array<asio::ip::tcp::socket, 4> cho{asio::ip::tcp::socket(vong), asio::ip::tcp::socket(vong),
                                             asio::ip::tcp::socket(vong), asio::ip::tcp::socket(vong)};
    for (auto& o : cho)
        o.async_connect(imLang.local_endpoint(), [](const asio::error_code&) {});
    const auto diaChi = [](const auto& o) {
        return "http://127.0.0.1:" + std::to_string(o.local_endpoint().port());
    };
    dat &= inKhoiDong("server refuses:", {TOVIRA_CHUONG_TRINH, "--server", diaChi(tuChoi)}, tranKhoiDong);
    dat &= inKhoiDong("server silent (1.5 s probe):", {TOVIRA_CHUONG_TRINH, "--server", diaChi(imLang)},
                      tranKhoiDong + hanDo);
    inKhoiDong("bare view of the packaged page:", {thamSo[0], "--trang-tran"}, 0);
    return dat ? 0 : 1;
}

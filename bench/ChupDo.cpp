// Capturing a screen in full motion, beside a bare loop of shared-memory reads and libjpeg-turbo over the
// same pictures, and capturing a screen that stands still. Run it on a virtual display of the wanted size:
//   TOVIRA_THU_MAN_HINH=3840x2160x24 tests/voi-man-hinh.sh build/bench/bench/do_chup
// Ends with status 1 when a limit is missed.

#include <pthread.h>
#include <sys/ipc.h>
#include <sys/shm.h>
#include <turbojpeg.h>
#include <xcb/shm.h>

#include <algorithm>
#include <atomic>
#include <cstdio>
#include <ctime>
#include <future>
#include <memory>
#include <optional>
#include <random>
#include <thread>
#include <vector>

#include "BatBien.hpp"
#include "CuaSoAnLinux.hpp"
#include "ManHinhNen.hpp"
#include "XcbLinux.hpp"

using namespace tovira;

namespace {

constexpr int chatLuong = 95;
constexpr int soKhung = 60;  // a round; rounds of the two alternate and the medians are compared
constexpr int soVong = 7;
constexpr double tranTySo = 1.15;
constexpr double tranYen = 0.003;
constexpr int giayYen = 10;

double giayXuLy(clockid_t dongHo) {
    timespec t{};
    clock_gettime(dongHo, &t);
    return static_cast<double>(t.tv_sec) + static_cast<double>(t.tv_nsec) * 1e-9;
}

// Four pictures of a busy desktop that differ everywhere, kept by the server and shown in turn.
class CacTranh {
  public:
    CacTranh() : x_(moManX()) {
        TOVIRA_BUOC(x_);
        gc_ = xcb_generate_id(x_.c());
        const std::uint32_t v[] = {XCB_SUBWINDOW_MODE_INCLUDE_INFERIORS, 0};
        xcb_create_gc(x_.c(), gc_, x_.goc(), XCB_GC_SUBWINDOW_MODE | XCB_GC_GRAPHICS_EXPOSURES, v);
        for (unsigned i = 0; i < 4; ++i)
            tranh_.push_back(ve(i));
    }

    void hienTiep() {
        xcb_copy_area(x_.c(), tranh_[luot_++ % tranh_.size()], x_.goc(), gc_, 0, 0, 0, 0, rong(), cao());
        PhanXcb<void>(xcb_get_input_focus_reply(x_.c(), xcb_get_input_focus(x_.c()), nullptr));
    }
    [[nodiscard]] std::uint16_t rong() const { return x_.man->width_in_pixels; }
    [[nodiscard]] std::uint16_t cao() const { return x_.man->height_in_pixels; }
    [[nodiscard]] const ManX& x() const { return x_; }

  private:
    xcb_pixmap_t ve(unsigned hat) {
        const xcb_pixmap_t ra = xcb_generate_id(x_.c());
        xcb_create_pixmap(x_.c(), x_.man->root_depth, ra, x_.goc(), rong(), cao());
        std::mt19937 ngau(hat + 1);
        constexpr std::uint16_t dai = 40;
        std::vector<std::uint32_t> diem;
        for (std::uint16_t y0 = 0; y0 < cao(); y0 = static_cast<std::uint16_t>(y0 + dai)) {
            const auto hang = std::min<std::uint16_t>(dai, static_cast<std::uint16_t>(cao() - y0));
            veDai(diem, hang, y0, hat, ngau);
            xcb_put_image(x_.c(), XCB_IMAGE_FORMAT_Z_PIXMAP, ra, gc_, rong(), hang, 0,
                          static_cast<std::int16_t>(y0), 0, x_.man->root_depth,
                          static_cast<std::uint32_t>(diem.size() * 4),
                          reinterpret_cast<const std::uint8_t*>(diem.data()));
        }
        return ra;
    }

    // Tiles in turn: something like text, a photograph's noise, a gradient, a plain ground.
    void veDai(std::vector<std::uint32_t>& diem, int hang, int y0, unsigned hat, std::mt19937& ngau) const {
        constexpr int canhO = 160;
        diem.resize(static_cast<std::size_t>(rong()) * static_cast<std::size_t>(hang));
        for (int y = 0; y < hang; ++y) {
            for (int x = 0; x < rong(); ++x) {
                const auto kieu = (static_cast<unsigned>(x / canhO + (y0 + y) / canhO) + hat) % 4;
                const auto ux = static_cast<unsigned>(x);
                const auto uy = static_cast<unsigned>(y0 + y);
                std::uint32_t mau = 0x203040U * (hat + 1);
                if (kieu == 0) mau = uy % 16 < 10 && ngau() % 3 == 0 ? 0x202020 : 0xFAFAFA;
                if (kieu == 1) mau = ((ux + hat * 37) & 0xFFU) << 16U | (uy & 0xFFU) << 8U | (ngau() & 0x1FU);
                if (kieu == 2) mau = 0x010101U * ((ux + uy + hat * 50) / 4 & 0xFFU);
                diem[static_cast<std::size_t>(y) * rong() + ux] = mau & 0xFFFFFFU;
            }
        }
    }

    ManX x_;
    xcb_gcontext_t gc_ = XCB_NONE;
    std::vector<xcb_pixmap_t> tranh_;
    unsigned luot_ = 0;
};

// The bare loop: what the capture cannot do without.
class VongTran {
  public:
    explicit VongTran(CacTranh& tranh) : tranh_(tranh), x_(moManX()) {
        co_ = static_cast<std::size_t>(tranh.rong()) * tranh.cao() * 4;
        const int ma = shmget(IPC_PRIVATE, co_, IPC_CREAT | 0600);
        TOVIRA_BUOC(ma >= 0);
        diem_ = static_cast<unsigned char*>(shmat(ma, nullptr, 0));
        doan_ = xcb_generate_id(x_.c());
        TOVIRA_BUOC(daLam(x_.c(), xcb_shm_attach_checked(x_.c(), doan_, static_cast<std::uint32_t>(ma), 0)));
        shmctl(ma, IPC_RMID, nullptr);
        may_ = tjInitCompress();
        suc_ = tjBufSize(tranh.rong(), tranh.cao(), TJSAMP_420);
        ra_ = tjAlloc(static_cast<int>(suc_));
    }
    ~VongTran() {
        tjFree(ra_);
        tjDestroy(may_);
        shmdt(diem_);
    }
    VongTran(const VongTran&) = delete;
    VongTran& operator=(const VongTran&) = delete;

    // Processor milliseconds a frame.
    double chay() {
        double tong = 0;
        for (int i = 0; i < soKhung; ++i) {
            tranh_.hienTiep();
            const double dau = giayXuLy(CLOCK_THREAD_CPUTIME_ID);
            const auto phieu = xcb_shm_get_image(x_.c(), x_.goc(), 0, 0, tranh_.rong(), tranh_.cao(), ~0U,
                                                 XCB_IMAGE_FORMAT_Z_PIXMAP, doan_, 0);
            TOVIRA_BUOC(PhanXcb<void>(xcb_shm_get_image_reply(x_.c(), phieu, nullptr)));
            unsigned long dai = suc_;
            TOVIRA_BUOC(tjCompress2(may_, diem_, tranh_.rong(), 0, tranh_.cao(), TJPF_BGRX, &ra_, &dai,
                                    TJSAMP_420, chatLuong, TJFLAG_NOREALLOC) == 0);
            tong += giayXuLy(CLOCK_THREAD_CPUTIME_ID) - dau;
            byte_ = dai;
        }
        return tong / soKhung * 1e3;
    }
    [[nodiscard]] std::size_t byte() const { return byte_; }

  private:
    CacTranh& tranh_;
    ManX x_;
    std::size_t co_ = 0;
    unsigned char* diem_ = nullptr;
    xcb_shm_seg_t doan_ = XCB_NONE;
    tjhandle may_ = nullptr;
    unsigned long suc_ = 0;
    unsigned char* ra_ = nullptr;
    std::size_t byte_ = 0;
};

// The program's own capture, as sharing uses it: each frame is encoded on the frame queue.
class ChupCuaTa {
  public:
    explicit ChupCuaTa(int khungMoiGiay) {
        std::promise<std::vector<ManHinh::Nguon>> p;
        nen_->lietKe([&](auto kq) { p.set_value(kq ? kq.giaTri() : std::vector<ManHinh::Nguon>{}); });
        const auto nguon = p.get_future().get().at(0);
        ManHinh::CauHinh cauHinh;
        cauHinh.co = nguon.diemAnh;
        cauHinh.khungMoiGiay = khungMoiGiay;
        auto kq =
            nen_->moLuong(nguon, cauHinh, {[this](auto k) { nhan(*k); }, [](auto) { TOVIRA_BUOC(false); }});
        TOVIRA_BUOC(kq);
        luong_ = std::move(kq).giaTri();
        luong_->batDau([](auto k) { TOVIRA_BUOC(k); });
        cho(1);
    }
    ~ChupCuaTa() { luong_.reset(); }
    ChupCuaTa(const ChupCuaTa&) = delete;
    ChupCuaTa& operator=(const ChupCuaTa&) = delete;

    // Processor milliseconds a frame of everything that the frame queue's thread does while `ve(i)` changes
    // the screen for each frame.
    template <class F>
    double chay(F ve) {
        const double dau = dongHoHangDoi();
        const int tu = so_;
        for (int i = 0; i < soKhung; ++i) {
            const int truoc = so_;
            ve(i);
            cho(truoc + 1);
        }
        const double het = dongHoHangDoi();
        return (het - dau) / (so_ - tu) * 1e3;
    }
    [[nodiscard]] int soKhungDaNhan() const { return so_; }
    [[nodiscard]] std::size_t byte() const { return byte_; }

  private:
    void nhan(ManHinh::Khung& k) {
        std::vector<std::byte> ra;  // a fresh one each time, for a viewer may still be sending the last
        TOVIRA_BUOC(k.maHoa(chatLuong / 100.0, ra));
        byte_ = ra.size();
        ++so_;
        so_.notify_all();
    }
    void cho(int den) {
        for (int nay = so_; nay < den; nay = so_)
            so_.wait(nay);
    }
    double dongHoHangDoi() {
        std::promise<double> p;
        nen_->hangDoiKhung().chay([&] { p.set_value(giayXuLy(CLOCK_THREAD_CPUTIME_ID)); });
        return p.get_future().get();
    }

    std::unique_ptr<ManHinh::Nen> nen_ = taoNenManHinh();
    std::unique_ptr<ManHinh::Luong> luong_;
    std::atomic<int> so_{0};
    std::atomic<std::size_t> byte_{0};
};

double trungVi(std::vector<double> v) {
    std::sort(v.begin(), v.end());
    return v[v.size() / 2];
}

bool doChuyenDong(CacTranh& tranh) {
    VongTran tran(tranh);
    ChupCuaTa ta(1000);
    const auto doiCa = [&](int) { tranh.hienTiep(); };
    static_cast<void>(tran.chay());  // both warm
    static_cast<void>(ta.chay(doiCa));
    std::vector<double> cuaTran;
    std::vector<double> cuaTa;
    std::vector<double> tySo;
    for (int i = 0; i < soVong; ++i) {
        cuaTran.push_back(tran.chay());
        cuaTa.push_back(ta.chay(doiCa));
        tySo.push_back(cuaTa.back() / cuaTran.back());
    }
    const double ty = trungVi(tySo);
    std::printf(
        "full motion %ux%u: ours %.2f ms/frame (%zu KB), bare loop %.2f ms/frame (%zu KB), ratio %.3f (limit "
        "%.2f)\n",
        tranh.rong(), tranh.cao(), trungVi(cuaTa), ta.byte() / 1000, trungVi(cuaTran), tran.byte() / 1000, ty,
        tranTySo);
    return ty <= tranTySo;
}

bool doYen() {
    ChupCuaTa ta(12);
    std::this_thread::sleep_for(std::chrono::seconds(1));  // the last pictures drawn have settled
    const int khung = ta.soKhungDaNhan();
    const double dau = giayXuLy(CLOCK_PROCESS_CPUTIME_ID);
    std::this_thread::sleep_for(std::chrono::seconds(giayYen));
    const double phan = (giayXuLy(CLOCK_PROCESS_CPUTIME_ID) - dau) / giayYen;
    const int them = ta.soKhungDaNhan() - khung;
    std::printf("still screen, %d s: %.5f %% of a core (limit %.1f %%), %d frames pushed\n", giayYen,
                phan * 100, tranYen * 100, them);
    return phan <= tranYen && them == 0;
}

// Small changes, as typing and moving the pointer make them: what remembering encoded bands is worth.
void doDoiNho(CacTranh& tranh) {
    ChupCuaTa ta(1000);
    xcb_gcontext_t gc = xcb_generate_id(tranh.x().c());
    const std::uint32_t v[] = {0x808080, XCB_SUBWINDOW_MODE_INCLUDE_INFERIORS};
    xcb_create_gc(tranh.x().c(), gc, tranh.x().goc(), XCB_GC_FOREGROUND | XCB_GC_SUBWINDOW_MODE, v);
    const double ms = ta.chay([&](int i) {
        const xcb_rectangle_t o{static_cast<std::int16_t>(100 + i * 9), 300, 8, 16};
        xcb_poly_fill_rectangle(tranh.x().c(), tranh.x().goc(), gc, 1, &o);
        xcb_flush(tranh.x().c());
    });
    std::printf("a letter typed %ux%u: ours %.2f ms/frame\n", tranh.rong(), tranh.cao(), ms);
}

}  // namespace

// A window like the control bar, which no picture shows.
class Thanh {
  public:
    Thanh() : x_(moManX()), ma_(xcb_generate_id(x_.c())) {
        const std::uint32_t giaTri[] = {0xFF3B30, 1};
        constexpr std::int16_t rong = 380;
        xcb_create_window(x_.c(), XCB_COPY_FROM_PARENT, ma_, x_.goc(),
                          static_cast<std::int16_t>(x_.man->width_in_pixels / 2 - rong / 2), 8, rong, 40, 0,
                          XCB_WINDOW_CLASS_INPUT_OUTPUT, XCB_COPY_FROM_PARENT,
                          XCB_CW_BACK_PIXEL | XCB_CW_OVERRIDE_REDIRECT, giaTri);
        an_.emplace(x_.c(), x_.goc(), ma_);
        xcb_map_window(x_.c(), ma_);
        PhanXcb<void>(xcb_get_input_focus_reply(x_.c(), xcb_get_input_focus(x_.c()), nullptr));
    }

  private:
    ManX x_;
    xcb_window_t ma_;
    std::optional<CuaSoAnLinux> an_;
};

int main() {
    CacTranh tranh;
    const bool dong = doChuyenDong(tranh);
    doDoiNho(tranh);
    {
        std::puts("the same with the control bar:");
        const Thanh thanh;
        doChuyenDong(tranh);
    }
    const bool yen = doYen();
    return dong && yen ? 0 : 1;
}

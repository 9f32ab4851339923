#include "LuongManHinhLinux.hpp"

#include <algorithm>
#include <asio/posix/stream_descriptor.hpp>
#include <asio/steady_timer.hpp>
#include <chrono>
#include <mutex>
#include <optional>

#include "ConTroLinux.hpp"
#include "DanhSachManHinhLinux.hpp"
#include "KhungLinux.hpp"
#include "TheoDoiManHinhLinux.hpp"

namespace tovira {

namespace {

using DongHo = std::chrono::steady_clock;

Loi matKetNoi() {
    return loiNguonX("Mất kết nối với máy chủ X");
}

Loi manHinhDoi() {
    return {ManHinh::mienNguon, ManHinh::maManHinhDoi, "Màn hình đang chia sẻ đã thay đổi hoặc bị ngắt"};
}

// Nobody else's requests are carried out meanwhile, and every event so far has arrived.
class GiuMayChuX {
  public:
    explicit GiuMayChuX(xcb_connection_t* c) : c_(c) {
        xcb_grab_server(c);
        PhanXcb<void>(xcb_get_input_focus_reply(c, xcb_get_input_focus(c), nullptr));
    }
    ~GiuMayChuX() {
        xcb_ungrab_server(c_);
        xcb_flush(c_);
    }
    GiuMayChuX(const GiuMayChuX&) = delete;
    GiuMayChuX& operator=(const GiuMayChuX&) = delete;

  private:
    xcb_connection_t* c_;
};

}  // namespace

// The part that lives on the frame queue.
class LuongManHinhLinux::Ruot : public std::enable_shared_from_this<Ruot> {
  public:
    Ruot(HangDoiKhungLinux& hangDoi, const ManHinh::Nguon& nguon, const ManHinh::CauHinh& cauHinh,
         ManHinh::PhiaNhan phiaNhan)
        : hangDoi_(hangDoi),
          nguon_(nguon),
          o_{static_cast<int>(nguon.khung.x), static_cast<int>(nguon.khung.y),
             static_cast<int>(nguon.khung.rong), static_cast<int>(nguon.khung.cao)},
          cauHinh_(cauHinh),
          phiaNhan_(std::move(phiaNhan)),
          day_(hangDoi.io()),
          hen_(hangDoi.io()),
          phienBan_(static_cast<std::size_t>(soBang(o_.cao)), 1) {}

    // Any thread. Waits for a running callback of another thread; none runs afterwards.
    void khoaCong() {
        const std::lock_guard khoa(cong_);
        mo_ = false;
    }

    void batDau(const std::function<void(KetQua<void>)>& xong) {
        auto kq = moNguon();
        const bool duoc = static_cast<bool>(kq);
        if (!duoc) dong();
        quaCong([&] { xong(std::move(kq)); });
        if (duoc) xet();
    }

    void doiCauHinh(const ManHinh::CauHinh& cauHinh) {
        cauHinh_ = cauHinh;
        batBuoc_ = true;
        xet();
    }

    void dong() {
        hen_.cancel();
        if (day_.is_open()) day_.release();  // libxcb owns the descriptor
        dem_.clear();
        dai_.dong();
        x_ = {};
    }

  private:
    template <class F>
    void quaCong(F&& viec) {
        const std::lock_guard khoa(cong_);
        if (mo_) viec();
    }

    KetQua<void> moNguon();
    void ketThuc(Loi vi);
    // Why the server no longer answers for this monitor.
    [[nodiscard]] Loi viSaoDung() const {
        return xcb_connection_has_error(x_.c()) != 0 ? matKetNoi() : manHinhDoi();
    }

    void xet();
    void choGio();
    void choSuKien();

    std::shared_ptr<DemAnh> layDemRanh();
    void khiTraDem();
    bool xemThayDoi();
    bool xemCuaSoAn(const CuaSoAnLinux::Giu& giu);
    [[nodiscard]] bool conManHinh(const std::vector<ManHinh::Nguon>& man) const;
    bool xemConTro(xcb_query_pointer_cookie_t viTri, std::optional<xcb_xfixes_get_cursor_image_cookie_t> anh);
    bool danhDau(const OAnh& o);
    void chup(const std::shared_ptr<DemAnh>& dem);

    HangDoiKhungLinux& hangDoi_;
    const ManHinh::Nguon nguon_;
    const OAnh o_;  // the monitor's place on the root window
    ManHinh::CauHinh cauHinh_;
    ManHinh::PhiaNhan phiaNhan_;

    std::recursive_mutex cong_;  // held while a callback runs
    bool mo_ = true;

    ManX x_;
    bool coRandr_ = false;
    TheoDoiManHinh theoDoi_;
    DaiChe dai_;
    asio::posix::stream_descriptor day_;
    asio::steady_timer hen_;
    bool dangChoGio_ = false;
    bool dangChoSuKien_ = false;
    DongHo::time_point luotSau_{};  // not before this is the screen looked at again

    ConTro conTro_;
    OAnh oConTro_;  // where it was when it was last looked at, empty when it is not shown
    PhienBan phienBan_;
    std::uint64_t soPhienBan_ = 1;
    bool batBuoc_ = true;  // a frame is due even if nothing changed
    std::vector<std::shared_ptr<DemAnh>> dem_;
    std::shared_ptr<XuongKhung> xuong_ = std::make_shared<XuongKhung>();
};

KetQua<void> LuongManHinhLinux::Ruot::moNguon() {
    x_ = moManX();
    if (!x_) return loiNguonX("Không kết nối được với máy chủ X");
    if (!docDuocDiemAnh(x_)) return loiNguonX("Màn hình không dùng màu 24 bit");
    coRandr_ = coRandr15(x_);
    if (auto kq = theoDoi_.batDau(x_); !kq) return kq;
    dai_.batDau(x_, o_, TheoDoiManHinh::matNaGoc);
    day_.assign(xcb_get_file_descriptor(x_.c()));
    return {};
}

void LuongManHinhLinux::Ruot::ketThuc(Loi vi) {
    dong();
    quaCong([&] { phiaNhan_.khiBiDung(std::move(vi)); });
}

// The one step that everything leads to: looks at what there is to do and either does it, or waits for the
// moment when it may be done, or for the server to report something.
void LuongManHinhLinux::Ruot::xet() {
    if (!x_) return;
    if (!theoDoi_.docSuKien(dai_)) return ketThuc(matKetNoi());
    if (!batBuoc_ && !theoDoi_.coViec() && !dai_.coViec()) return choSuKien();
    const auto bayGio = DongHo::now();
    if (bayGio < luotSau_) return choGio();
    const auto dem = layDemRanh();
    if (!dem) return choSuKien();  // the frame that gives its buffer back comes here
    luotSau_ = bayGio + std::chrono::duration_cast<DongHo::duration>(
                            std::chrono::duration<double>(1.0 / std::max(1, cauHinh_.khungMoiGiay)));
    const bool thayDoi = xemThayDoi();
    if (x_ && (thayDoi || batBuoc_)) chup(dem);
    if (x_) hangDoi_.chay([t = shared_from_this()] { t->xet(); });
}

// The server's events are left unread meanwhile, however many come.
void LuongManHinhLinux::Ruot::choGio() {
    if (dangChoSuKien_) day_.cancel();
    if (dangChoGio_) return;
    dangChoGio_ = true;
    hen_.expires_at(luotSau_);
    hen_.async_wait([t = shared_from_this()](const asio::error_code&) {
        t->dangChoGio_ = false;
        t->xet();
    });
}

void LuongManHinhLinux::Ruot::choSuKien() {
    xcb_flush(x_.c());
    if (dangChoSuKien_) return;
    dangChoSuKien_ = true;
    day_.async_wait(asio::posix::stream_descriptor::wait_read,
                    [t = shared_from_this()](const asio::error_code&) {
                        t->dangChoSuKien_ = false;
                        t->xet();
                    });
}

// A buffer that no frame holds; the one that was filled last needs the least reading.
std::shared_ptr<DemAnh> LuongManHinhLinux::Ruot::layDemRanh() {
    const auto ranh = [](const std::shared_ptr<DemAnh>& d) { return d.use_count() == 1; };
    const auto it = std::max_element(dem_.begin(), dem_.end(), [&](const auto& a, const auto& b) {
        if (ranh(a) != ranh(b)) return ranh(b);
        return *std::max_element(a->phienBan.begin(), a->phienBan.end()) <
               *std::max_element(b->phienBan.begin(), b->phienBan.end());
    });
    if (it != dem_.end() && ranh(*it)) return *it;
    if (dem_.size() >= static_cast<std::size_t>(std::max(1, cauHinh_.doSauHang))) return nullptr;
    dem_.push_back(std::make_shared<DemAnh>(x_.c(), o_.rong, o_.cao));
    return dem_.back();
}

// Asks everything in one go, so that the server's answers cost one wait. True when rows of this monitor
// differ.
bool LuongManHinhLinux::Ruot::xemThayDoi() {
    auto* c = x_.c();
    std::optional<HoiManHinhX> hoiMan;
    if (theoDoi_.manDoi) hoiMan.emplace(x_, coRandr_);
    const auto hoiViTri = xcb_query_pointer(c, x_.goc());
    std::optional<xcb_xfixes_get_cursor_image_cookie_t> hoiAnh;
    if (theoDoi_.conTroDoiAnh) hoiAnh = xcb_xfixes_get_cursor_image(c);
    std::optional<xcb_xfixes_fetch_region_cookie_t> hoiVung;
    if (theoDoi_.daVe) hoiVung = theoDoi_.hoiVungVe(dai_);
    const auto hoiDai = dai_.hoiThayDoi();
    theoDoi_.conTroDoiAnh = theoDoi_.conTroVuaDung = theoDoi_.manDoi = false;

    if (hoiMan && !conManHinh(hoiMan->dapAn())) {
        ketThuc(viSaoDung());
        return false;
    }
    ++soPhienBan_;
    bool doi = xemConTro(hoiViTri, hoiAnh);
    doi |= dai_.thayDoi(hoiDai) && danhDau(dai_.o());
    doi |= xemCuaSoAn({});
    if (hoiVung)
        for (const auto& o : theoDoi_.layVungVe(*hoiVung))
            doi |= danhDau(o);
    return doi;
}

// Follows the windows that no picture is to show; true when that changes the picture.
bool LuongManHinhLinux::Ruot::xemCuaSoAn(const CuaSoAnLinux::Giu& giu) {
    const OAnh cu = dai_.o();
    if (!dai_.theo(giu.tin())) return false;
    const bool doiCu = danhDau(cu);
    const bool doiMoi = danhDau(dai_.o());
    return doiCu || doiMoi;
}

// True when the monitor still stands where it stood, as large as it was.
bool LuongManHinhLinux::Ruot::conManHinh(const std::vector<ManHinh::Nguon>& man) const {
    return std::any_of(man.begin(), man.end(),
                       [this](const auto& n) { return n.ma == nguon_.ma && n.khung == nguon_.khung; });
}

bool LuongManHinhLinux::Ruot::xemConTro(xcb_query_pointer_cookie_t viTri,
                                        std::optional<xcb_xfixes_get_cursor_image_cookie_t> anh) {
    bool anhMoi = false;
    if (anh) {
        const PhanXcb<xcb_xfixes_get_cursor_image_reply_t> a(
            xcb_xfixes_get_cursor_image_reply(x_.c(), *anh, nullptr));
        if (a) conTro_.datAnh(*a);
        anhMoi = a != nullptr;
    }
    const PhanXcb<xcb_query_pointer_reply_t> v(xcb_query_pointer_reply(x_.c(), viTri, nullptr));
    if (v) conTro_.datViTri(v->root_x, v->root_y);
    const bool hien = cauHinh_.veConTro && v && v->same_screen != 0;
    const OAnh o = hien ? conTro_.o() : OAnh{};
    if (o == oConTro_ && !anhMoi) return false;
    const bool cu = danhDau(oConTro_);
    const bool moi = danhDau(o);
    oConTro_ = o;
    return cu || moi;
}

// Gives the bands that `o` (on the root window) touches a new version; true when it touches any.
bool LuongManHinhLinux::Ruot::danhDau(const OAnh& o) {
    const int tren = std::max(o.y - o_.y, 0);
    const int duoi = std::min(o.y - o_.y + o.cao, o_.cao);
    if (tren >= duoi || o.x >= o_.x + o_.rong || o.x + o.rong <= o_.x) return false;
    std::fill(phienBan_.begin() + tren / caoBang, phienBan_.begin() + soBang(duoi), soPhienBan_);
    return true;
}

void LuongManHinhLinux::Ruot::chup(const std::shared_ptr<DemAnh>& dem) {
    std::vector<DoanHang> cac;
    bool duoc = false;
    {
        const CuaSoAnLinux::Giu giu;
        xemCuaSoAn(giu);
        cac = doanKhac(dem->phienBan, phienBan_, o_.cao);
        duoc = dem->doc(x_.goc(), o_.x, o_.y, cac);
        if (duoc && dai_.trong(cac)) {
            const GiuMayChuX giuMayChu(x_.c());  // or windows come between the look and the reading
            duoc = theoDoi_.docSuKien(dai_);
            dai_.ghep(*dem, cac);
        }
    }
    if (!duoc) return ketThuc(viSaoDung());  // the root window has become smaller than what was asked for
    if (oConTro_ != OAnh{})
        for (const auto& d : cac)
            conTro_.ve(*dem, o_, d);
    dem->phienBan = phienBan_;
    batBuoc_ = false;
    auto khiTra = [yeu = weak_from_this()] {
        if (const auto t = yeu.lock()) t->khiTraDem();
    };
    quaCong([&] {
        phiaNhan_.khiCoKhung(std::make_unique<KhungLinux>(dem, xuong_, cauHinh_.co, std::move(khiTra)));
    });
}

void LuongManHinhLinux::Ruot::khiTraDem() {
    hangDoi_.chay([t = shared_from_this()] { t->xet(); });
}

LuongManHinhLinux::LuongManHinhLinux(HangDoiKhungLinux& hangDoi, const ManHinh::Nguon& nguon,
                                     const ManHinh::CauHinh& cauHinh, ManHinh::PhiaNhan phiaNhan)
    : hangDoi_(hangDoi), ruot_(std::make_shared<Ruot>(hangDoi, nguon, cauHinh, std::move(phiaNhan))) {}

LuongManHinhLinux::~LuongManHinhLinux() {
    dung();
}

void LuongManHinhLinux::batDau(std::function<void(KetQua<void>)> xong) {
    hangDoi_.chay([r = ruot_, xong = std::move(xong)] { r->batDau(xong); });
}

void LuongManHinhLinux::doiCauHinh(const ManHinh::CauHinh& cauHinh) {
    hangDoi_.chay([r = ruot_, cauHinh] { r->doiCauHinh(cauHinh); });
}

void LuongManHinhLinux::dung() {
    ruot_->khoaCong();
    hangDoi_.chay([r = ruot_] { r->dong(); });
}

}  // namespace tovira

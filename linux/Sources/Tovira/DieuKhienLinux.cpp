// The X11 body of DieuKhien's ground. Events wait in one line: text that needs more symbols than the keyboard
// can lend at once stops it until its reader has caught up, and whatever comes later keeps its place behind.

#include <poll.h>
#include <xcb/xtest.h>
#include <xkbcommon/xkbcommon-x11.h>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <deque>
#include <optional>

#include "CaiDatXLinux.hpp"
#include "DanhSachManHinhLinux.hpp"
#include "DieuKhienNen.hpp"
#include "GoChuLinux.hpp"
#include "HoiDocLinux.hpp"
#include "MaPhimLinux.hpp"
#include "PhienLinux.hpp"
#include "TatLapLinux.hpp"
#include "XkbLinux.hpp"

namespace tovira {

namespace {

constexpr double nhipDoi = 0.005;  // seconds between looks for a reader's answer while text waits
constexpr double nhipNghi =
    0.5;  // our keys rest when none was sent for so long; between looks whether they do
constexpr double nghiTruocTra = 2;          // seconds without typing before lent keys go back
constexpr std::size_t doiNhieuNhat = 4096;  // events behind waiting text; more and it no longer waits
constexpr int diemMotNac = 120;             // wheel pixels of one notch
constexpr int nacNhieuNhat = 100;           // notches of one event; nobody's hand does more
constexpr double bamDupMacDinh = 0.4;       // seconds; what toolkits take when no desktop says otherwise

// X buttons of the wheel.
constexpr std::uint8_t cuonLen = 4;
constexpr std::uint8_t cuonXuong = 5;
constexpr std::uint8_t cuonTrai = 6;
constexpr std::uint8_t cuonPhai = 7;

std::uint8_t nutX(NutChuot nut) {
    switch (nut) {
        case NutChuot::trai:
            return 1;
        case NutChuot::giua:
            return 2;
        case NutChuot::phai:
            return 3;
    }
    return 1;
}

// The pixel of a point, as far as the protocol can say it; the server keeps the pointer within its screens.
std::int16_t diemX(double v) {
    return static_cast<std::int16_t>(std::clamp(std::round(v), -32768.0, 32767.0));
}

// Appends the code points of valid UTF-16.
void themChu(std::u32string& ra, const std::u16string& donVi) {
    for (std::size_t i = 0; i < donVi.size(); ++i) {
        const char32_t a = donVi[i];
        const bool doi = a >= 0xD800 && a < 0xDC00 && i + 1 < donVi.size();
        ra.push_back(doi ? 0x10000 + ((a - 0xD800) << 10U) + (donVi[++i] - 0xDC00U) : a);
    }
}

// A display that lets us inject.
class TayX {
  public:
    TayX(ManX x, VongLap& vongLap);
    ~TayX();
    TayX(const TayX&) = delete;
    TayX& operator=(const TayX&) = delete;

    // Takes in what the server has said; false from the moment it is gone.
    bool song();
    bool dang(const SuKien& suKien);
    void go(std::u32string chu);
    void boChuDangCho();
    [[nodiscard]] KhungHinh khungManHinhChinh() const;
    [[nodiscard]] std::optional<double> khoangBamDup() const;

  private:
    using Viec = std::variant<SuKien, std::u32string>;

    void chonSuKien();
    bool them(Viec viec);
    bool chayTiep();
    bool goTiep();
    void doiNguoiDoc();
    void xemNguoiDoc();
    void nghiSau();
    void nghi();
    void choDocLanCuoi();
    void nhanXkb(const xcb_generic_event_t& e);
    void docBan();
    void nhan(std::uint8_t loai, std::uint8_t chiTiet, std::int16_t x, std::int16_t y);
    bool lam(const SuKienChuot& e);
    bool lam(const SuKienCuon& e);
    bool lam(const SuKienPhim& e);
    bool lam(const SuKienChu&) { return false; }  // gathered by the ground; none comes this far
    void lan(int& du, std::int32_t them, std::uint8_t duong, std::uint8_t am);

    ManX x_;
    VongLap& vongLap_;
    std::optional<ThietBiPhim> thietBi_;
    std::optional<TatLapLinux> tatLap_;
    BanPhimLinux ban_;
    bool banCu_ = true;  // the map was changed since it was read
    BamPhimLinux bam_;
    OTrongLinux oTrong_;
    GoChuLinux goChu_;
    HoiDocLinux hoiDoc_;
    int duDoc_ = 0;  // wheel pixels short of a notch
    int duNgang_ = 0;
    std::deque<Viec> hang_;
    std::size_t daGo_ = 0;  // code points typed of the text at the head of hang_
    std::unique_ptr<HenGio> henDoi_;
    std::unique_ptr<HenGio> henNghi_;
    std::optional<double> lucPhim_;  // of our last key, until it was long ago
};

TayX::TayX(ManX x, VongLap& vongLap)
    : x_(std::move(x)),
      vongLap_(vongLap),
      thietBi_(timThietBiPhim(x_.c())),
      bam_(x_.c(), ban_),
      oTrong_(x_.c()),
      goChu_(x_.c(), ban_, oTrong_, bam_),
      hoiDoc_(x_) {
    if (thietBi_) tatLap_.emplace(x_.c(), *thietBi_);
    chonSuKien();
    xcb_flush(x_.c());
}

TayX::~TayX() {
    henDoi_.reset();
    henNghi_.reset();
    if (oTrong_.lucCuoi()) {
        choDocLanCuoi();
        oTrong_.traHet();
    }
    static_cast<void>(bam_.docDangXuong());  // lets go of what the local user has let go of
    tatLap_.reset();
    // The server has done it all once it answers; closing alone would throw away what is still to be sent.
    const PhanXcb<xcb_get_input_focus_reply_t> xong(
        xcb_get_input_focus_reply(x_.c(), xcb_get_input_focus(x_.c()), nullptr));
}

void TayX::chonSuKien() {
    constexpr std::uint16_t loai = XCB_XKB_EVENT_TYPE_NEW_KEYBOARD_NOTIFY | XCB_XKB_EVENT_TYPE_MAP_NOTIFY |
                                   XCB_XKB_EVENT_TYPE_CONTROLS_NOTIFY;
    xcb_xkb_select_events(x_.c(), XCB_XKB_ID_USE_CORE_KBD, loai, 0, loai, 0xFF, 0xFF, nullptr);
}

bool TayX::song() {
    const auto xkb = xcb_get_extension_data(x_.c(), &xcb_xkb_id);
    while (const PhanXcb<xcb_generic_event_t> e{xcb_poll_for_event(x_.c())}) {
        if (xkb != nullptr && (e->response_type & 0x7FU) == xkb->first_event)
            nhanXkb(*e);
        else if (const auto luot = hoiDoc_.dapAn(*e))
            oTrong_.daDoc(*luot);
    }
    return xcb_connection_has_error(x_.c()) == 0;
}

void TayX::nhanXkb(const xcb_generic_event_t& e) {
    const auto& tin = reinterpret_cast<const xcb_xkb_controls_notify_event_t&>(e);
    if (tin.xkbType != XCB_XKB_CONTROLS_NOTIFY)
        banCu_ = true;
    else if (tatLap_ && (tin.enabledControlChanges & XCB_XKB_BOOL_CTRL_REPEAT_KEYS) != 0)
        tatLap_->nhanTin(tin);
}

void TayX::docBan() {
    static_cast<void>(song());
    if (tatLap_) tatLap_->theoDoi(banCu_);
    if (!std::exchange(banCu_, false)) return;
    const int thietBi = thietBi_ ? thietBi_->xtest : xkb_x11_get_core_keyboard_device_id(x_.c());
    if (ban_.doc(x_.c(), thietBi)) oTrong_.capNhat(ban_);
}

bool TayX::dang(const SuKien& suKien) {
    return them(suKien);
}

void TayX::go(std::u32string chu) {
    if (!chu.empty()) them(std::move(chu));
}

bool TayX::them(Viec viec) {
    hang_.push_back(std::move(viec));
    if (hang_.size() > doiNhieuNhat) oTrong_.daDoc(oTrong_.luot());
    if (henDoi_ && hang_.size() <= doiNhieuNhat) return true;
    return chayTiep();
}

// Does what is due; false when the last event could not be made.
bool TayX::chayTiep() {
    bool ra = true;
    henDoi_.reset();
    while (!hang_.empty()) {
        const auto* suKien = std::get_if<SuKien>(&hang_.front());
        if (suKien != nullptr)
            ra = std::visit([this](const auto& e) { return lam(e); }, *suKien);
        else if (!goTiep())
            break;
        hang_.pop_front();
    }
    if (hang_.empty()) hoiDoc_.thoi();
    xcb_flush(x_.c());
    return ra;
}

// True when the text at the head is done.
bool TayX::goTiep() {
    docBan();
    const auto& chu = std::get<std::u32string>(hang_.front());
    const auto luc = vongLap_.dongHo();
    daGo_ += goChu_.go(std::u32string_view(chu).substr(daGo_), luc);
    nghiSau();
    if (daGo_ < chu.size()) {
        doiNguoiDoc();
        return false;
    }
    daGo_ = 0;
    return true;
}

void TayX::doiNguoiDoc() {
    hoiDoc_.hoi(oTrong_.luot());
    henDoi_ = vongLap_.lapLai(nhipDoi, [this] { xemNguoiDoc(); });
}

void TayX::xemNguoiDoc() {
    if (!song()) {
        hang_.clear();
        henDoi_.reset();
    } else if (oTrong_.docHet(vongLap_.dongHo())) {
        chayTiep();
    }
}

void TayX::boChuDangCho() {
    hang_.erase(std::remove_if(hang_.begin(), hang_.end(), [](const Viec& v) { return v.index() == 1; }),
                hang_.end());
    daGo_ = 0;
    chayTiep();
}

void TayX::nghiSau() {
    lucPhim_ = vongLap_.dongHo();
    if (!henNghi_) henNghi_ = vongLap_.lapLai(nhipNghi, [this] { nghi(); });
}

// What our keys changed for everyone goes back when they rest; the lent ones when even the slowest reader is
// done.
void TayX::nghi() {
    if (!hang_.empty() || !song()) return;
    const auto luc = vongLap_.dongHo();
    if (lucPhim_ && luc - *lucPhim_ >= nhipNghi) {
        lucPhim_.reset();
        docBan();
        if (tatLap_) tatLap_->nghi();
    }
    if (oTrong_.lucCuoi() && luc - *oTrong_.lucCuoi() >= nghiTruocTra) oTrong_.traHet();
    xcb_flush(x_.c());
    if (!lucPhim_ && !oTrong_.lucCuoi()) henNghi_.reset();
}

// At the end there is no later: wait for the reader's answer, at most as long as one that gives none is
// given.
void TayX::choDocLanCuoi() {
    using namespace std::chrono;
    const auto conLai = OTrongLinux::han - (vongLap_.dongHo() - oTrong_.lucCuoi().value_or(0));
    const auto han = steady_clock::now() + duration_cast<steady_clock::duration>(duration<double>(conLai));
    hoiDoc_.hoi(oTrong_.luot());
    xcb_flush(x_.c());
    while (song() && !oTrong_.docHet(vongLap_.dongHo())) {
        const auto con = duration_cast<milliseconds>(han - steady_clock::now()).count();
        if (con <= 0) break;
        pollfd p{xcb_get_file_descriptor(x_.c()), POLLIN, 0};
        static_cast<void>(poll(&p, 1, static_cast<int>(con)));
    }
}

void TayX::nhan(std::uint8_t loai, std::uint8_t chiTiet, std::int16_t x, std::int16_t y) {
    xcb_test_fake_input(x_.c(), loai, chiTiet, XCB_CURRENT_TIME,
                        loai == XCB_MOTION_NOTIFY ? x_.goc() : XCB_NONE, x, y, 0);
}

bool TayX::lam(const SuKienChuot& e) {
    nhan(XCB_MOTION_NOTIFY, 0, diemX(e.viTri.x), diemX(e.viTri.y));
    if (e.loai == LoaiChuot::xuong) nhan(XCB_BUTTON_PRESS, nutX(e.nut), 0, 0);
    if (e.loai == LoaiChuot::len) nhan(XCB_BUTTON_RELEASE, nutX(e.nut), 0, 0);
    return true;
}

bool TayX::lam(const SuKienCuon& e) {
    lan(duDoc_, e.doc, cuonLen, cuonXuong);
    lan(duNgang_, e.ngang, cuonTrai, cuonPhai);
    return true;
}

// Whole notches go out, what is short of one stays in `du`.
void TayX::lan(int& du, std::int32_t them, std::uint8_t duong, std::uint8_t am) {
    const auto tong = std::int64_t{du} + them;
    du = static_cast<int>(tong % diemMotNac);
    const auto nac = std::clamp<std::int64_t>(tong / diemMotNac, -nacNhieuNhat, nacNhieuNhat);
    for (std::int64_t i = 0; i < std::abs(nac); ++i) {
        nhan(XCB_BUTTON_PRESS, nac > 0 ? duong : am, 0, 0);
        nhan(XCB_BUTTON_RELEASE, nac > 0 ? duong : am, 0, 0);
    }
}

bool TayX::lam(const SuKienPhim& e) {
    docBan();
    const auto ma = ban_.maCua(e.phim);
    if (ma == 0 || !bam_.docDangXuong()) return false;
    if (e.loai == LoaiPhim::doiCo) {
        nghiSau();
        // The modifier key itself; a repeat of one that is down would be a tap.
        if (!e.xuong)
            bam_.nha(ma);
        else if (!bam_.dangXuong(ma))
            bam_.nhan(ma);
        return true;
    }
    nghiSau();
    std::optional<BamPhimLinux::BoTro> boTro;
    if (e.co) boTro.emplace(bam_, *e.co, ma);
    if (e.xuong)
        bam_.nhan(ma);
    else
        bam_.nha(ma);
    return true;
}

KhungHinh TayX::khungManHinhChinh() const {
    const auto cac = HoiManHinhX(x_, coRandr15(x_)).dapAn();
    const auto chinh = std::find_if(cac.begin(), cac.end(), [](const auto& n) { return n.chinh; });
    return chinh != cac.end() ? chinh->khung : KhungHinh{};
}

std::optional<double> TayX::khoangBamDup() const {
    const auto c = x_.c();
    const PhanXcb<xcb_get_selection_owner_reply_t> chu(
        xcb_get_selection_owner_reply(c, xcb_get_selection_owner(c, nguyenTuX(c, "_XSETTINGS_S0")), nullptr));
    if (!chu || chu->owner == XCB_NONE) return std::nullopt;
    const auto phieu =
        xcb_get_property(c, 0, chu->owner, nguyenTuX(c, "_XSETTINGS_SETTINGS"), XCB_ATOM_ANY, 0, 1U << 16U);
    const PhanXcb<xcb_get_property_reply_t> dap(xcb_get_property_reply(c, phieu, nullptr));
    if (!dap || dap->format != 8) return std::nullopt;
    const std::string_view byte(static_cast<const char*>(xcb_get_property_value(dap.get())),
                                static_cast<std::size_t>(xcb_get_property_value_length(dap.get())));
    const auto ms = soTrongCaiDatX(byte, "Net/DoubleClickTime");
    if (!ms || *ms <= 0) return std::nullopt;
    return *ms / 1000.0;
}

// Opens the display and makes sure, with an event that nobody sees, that it takes our input.
std::unique_ptr<TayX> moTay(VongLap& vongLap) {
    if (dangOWayland()) return nullptr;
    auto x = moManX();
    if (!x || !coMoRong(x.c(), &xcb_test_id)) return nullptr;
    const auto c = x.c();
    if (xkb_x11_setup_xkb_extension(c, XKB_X11_MIN_MAJOR_XKB_VERSION, XKB_X11_MIN_MINOR_XKB_VERSION,
                                    XKB_X11_SETUP_XKB_EXTENSION_NO_FLAGS, nullptr, nullptr, nullptr,
                                    nullptr) == 0)
        return nullptr;
    // Requests of ours are carried out even while another program has grabbed the server.
    xcb_test_grab_control(c, 1);
    const auto phimRoi = xcb_get_setup(c)->min_keycode;
    if (!daLam(c,
               xcb_test_fake_input_checked(c, XCB_KEY_RELEASE, phimRoi, XCB_CURRENT_TIME, XCB_NONE, 0, 0, 0)))
        return nullptr;
    return std::make_unique<TayX>(std::move(x), vongLap);
}

class DieuKhienLinux final : public DieuKhien::Nen {
  public:
    explicit DieuKhienLinux(VongLap& vongLap) : tay_(moTay(vongLap)) {}

    bool duocPhep() override { return tay_ && tay_->song(); }
    KhungHinh khungManHinhChinh() override { return tay_ ? tay_->khungManHinhChinh() : KhungHinh{}; }
    double khoangBamDup() override {
        return tay_ ? tay_->khoangBamDup().value_or(bamDupMacDinh) : bamDupMacDinh;
    }
    bool dang(const SuKien& suKien) override {
        if (!duocPhep()) return false;
        const auto* chu = std::get_if<SuKienChu>(&suKien);
        if (chu == nullptr) return tay_->dang(suKien);
        // A symbol goes down and up at once, when its text is complete.
        if (chu->xuong) themChu(chu_, chu->donVi);
        if (!dangGoChu_) ketThucChu();
        return true;
    }
    void batDauChu() override { dangGoChu_ = true; }
    void ketThucChu() override {
        dangGoChu_ = false;
        if (duocPhep()) tay_->go(std::exchange(chu_, {}));
        chu_.clear();
    }
    void boChuDangCho() override {
        chu_.clear();
        if (tay_) tay_->boChuDangCho();
    }
    void moCaiDatTroNang() override {
        const auto lyDo = lyDoKhongDieuKhien();
        if (!lyDo.empty()) std::fprintf(stderr, "Tovira: %s\n", lyDo.c_str());
    }

  private:
    std::unique_ptr<TayX> tay_;
    std::u32string chu_;  // of the text command at hand
    bool dangGoChu_ = false;
};

}  // namespace

std::unique_ptr<DieuKhien::Nen> taoNenDieuKhien(VongLap& vongLap) {
    return std::make_unique<DieuKhienLinux>(vongLap);
}

}  // namespace tovira

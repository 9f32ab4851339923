#include "TayXLinux.hpp"

#include <poll.h>
#include <xkbcommon/xkbcommon-x11.h>

#include <algorithm>
#include <chrono>
#include <utility>

namespace tovira {

namespace {

constexpr double nhipDoi = 0.005;  // seconds between looks for a reader's answer while text waits
constexpr double nhipNghi =
    0.5;  // our keys rest when none was sent for so long; between looks whether they do
constexpr double nghiTruocTra = 2;          // seconds without typing before lent keys go back
constexpr std::size_t doiNhieuNhat = 1000;  // events and texts in line; more and text no longer waits

}  // namespace

TayXLinux::TayXLinux(ManX x, VongLap& vongLap)
    : x_(std::move(x)),
      vongLap_(vongLap),
      thietBi_(timThietBiPhim(x_.c())),
      bam_(x_.c(), ban_),
      oTrong_(x_.c()),
      goChu_(x_.c(), ban_, oTrong_, bam_),
      hoiDoc_(x_),
      chuot_(x_) {
    if (thietBi_) tatLap_.emplace(x_.c(), *thietBi_);
    chonSuKien();
    xcb_flush(x_.c());
}

TayXLinux::~TayXLinux() {
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

void TayXLinux::chonSuKien() {
    constexpr std::uint16_t loai = XCB_XKB_EVENT_TYPE_NEW_KEYBOARD_NOTIFY | XCB_XKB_EVENT_TYPE_MAP_NOTIFY |
                                   XCB_XKB_EVENT_TYPE_CONTROLS_NOTIFY;
    xcb_xkb_select_events(x_.c(), XCB_XKB_ID_USE_CORE_KBD, loai, 0, loai, 0xFF, 0xFF, nullptr);
}

bool TayXLinux::song() {
    const auto xkb = xcb_get_extension_data(x_.c(), &xcb_xkb_id);
    while (const PhanXcb<xcb_generic_event_t> e{xcb_poll_for_event(x_.c())}) {
        if (xkb != nullptr && (e->response_type & 0x7FU) == xkb->first_event)
            nhanXkb(*e);
        else if (const auto luot = hoiDoc_.dapAn(*e))
            oTrong_.daDoc(*luot);
    }
    return xcb_connection_has_error(x_.c()) == 0;
}

void TayXLinux::nhanXkb(const xcb_generic_event_t& e) {
    const auto& tin = reinterpret_cast<const xcb_xkb_controls_notify_event_t&>(e);
    if (tin.xkbType != XCB_XKB_CONTROLS_NOTIFY)
        banCu_ = true;
    else if (tatLap_ && (tin.enabledControlChanges & XCB_XKB_BOOL_CTRL_REPEAT_KEYS) != 0)
        tatLap_->nhanTin(tin);
}

void TayXLinux::docBan() {
    static_cast<void>(song());
    if (tatLap_) tatLap_->theoDoi(banCu_);
    if (!banCu_) return;
    const int thietBi = thietBi_ ? thietBi_->xtest : xkb_x11_get_core_keyboard_device_id(x_.c());
    if (!ban_.doc(x_.c(), thietBi)) return;
    oTrong_.capNhat(ban_);
    banCu_ = false;
}

bool TayXLinux::them(Viec viec) {
    hang_.push_back(std::move(viec));
    if (hang_.size() > doiNhieuNhat) oTrong_.daDoc(oTrong_.luot());
    if (henDoi_ && hang_.size() <= doiNhieuNhat) return true;
    return chayTiep();
}

// Does what is due; false when the last event could not be made.
bool TayXLinux::chayTiep() {
    bool ra = true;
    henDoi_.reset();
    while (!hang_.empty()) {
        const auto* suKien = std::get_if<SuKien>(&hang_.front());
        if (suKien != nullptr)
            ra = lam(*suKien);
        else if (!goTiep())
            break;
        hang_.pop_front();
    }
    if (hang_.empty()) hoiDoc_.thoi();
    xcb_flush(x_.c());
    return ra;
}

// True when the text at the head is done.
bool TayXLinux::goTiep() {
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

void TayXLinux::doiNguoiDoc() {
    oTrong_.datHan(hoiDoc_.hoi(oTrong_.luot()) ? OTrongLinux::hanCoHoi : OTrongLinux::hanKhongHoi);
    henDoi_ = vongLap_.lapLai(nhipDoi, [this] { xemNguoiDoc(); });
}

void TayXLinux::xemNguoiDoc() {
    if (!song()) {
        hang_.clear();
        henDoi_.reset();
    } else if (oTrong_.docHet(vongLap_.dongHo())) {
        chayTiep();
    }
}

void TayXLinux::boChuDangCho() {
    hang_.erase(std::remove_if(hang_.begin(), hang_.end(), [](const Viec& v) { return v.index() == 1; }),
                hang_.end());
    daGo_ = 0;
    chayTiep();
}

void TayXLinux::nghiSau() {
    lucPhim_ = vongLap_.dongHo();
    if (!henNghi_) henNghi_ = vongLap_.lapLai(nhipNghi, [this] { nghi(); });
}

// What our keys changed for everyone goes back when they rest; the lent ones when even the slowest reader is
// done.
void TayXLinux::nghi() {
    if (!song()) {
        henNghi_.reset();
        return;
    }
    if (!hang_.empty()) return;
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
void TayXLinux::choDocLanCuoi() {
    using namespace std::chrono;
    const auto conLai = OTrongLinux::hanKhongHoi - (vongLap_.dongHo() - oTrong_.lucCuoi().value_or(0));
    const auto han = steady_clock::now() + duration_cast<steady_clock::duration>(duration<double>(conLai));
    static_cast<void>(hoiDoc_.hoi(oTrong_.luot()));
    xcb_flush(x_.c());
    while (song() && !oTrong_.docHet(vongLap_.dongHo())) {
        const auto con = duration_cast<milliseconds>(han - steady_clock::now()).count();
        if (con <= 0) break;
        pollfd p{xcb_get_file_descriptor(x_.c()), POLLIN, 0};
        static_cast<void>(poll(&p, 1, static_cast<int>(con)));
    }
}

bool TayXLinux::lam(const SuKien& e) {
    if (const auto* phim = std::get_if<SuKienPhim>(&e)) return lamPhim(*phim);
    if (const auto* chuot = std::get_if<SuKienChuot>(&e)) chuot_.lam(*chuot);
    if (const auto* cuon = std::get_if<SuKienCuon>(&e)) chuot_.lam(*cuon);
    return true;
}

bool TayXLinux::lamPhim(const SuKienPhim& e) {
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
    // The release of what is up is nothing to hold modifiers for.
    if (!e.xuong && !bam_.dangXuong(ma)) return true;
    std::optional<BamPhimLinux::BoTro> boTro;
    if (e.co) boTro.emplace(bam_, *e.co, ma);
    if (e.xuong)
        bam_.nhan(ma);
    else
        bam_.nha(ma);
    return true;
}

}  // namespace tovira

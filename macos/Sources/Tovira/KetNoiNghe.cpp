#include "KetNoiNghe.hpp"

#include <poll.h>

#include <algorithm>
#include <utility>

namespace tovira {
namespace {

// Pause between two reads of a viewer's bytes that nobody wants: a flood costs next to nothing.
constexpr auto nghiKhiBoDi = std::chrono::milliseconds(100);
// Between two looks at a peer whose bytes must stay unread: while they do, nothing tells that it has gone.
constexpr auto nhipCanh = std::chrono::milliseconds(100);
// The last bytes leave together with the end of the connection: one packet, one wake-up of the peer.
#if defined(MSG_MORE)
constexpr asio::socket_base::message_flags guiCungKetThuc = MSG_MORE;
#else
constexpr asio::socket_base::message_flags guiCungKetThuc = 0;
#endif
// What poll says of a peer that has finished or gone, unread bytes or not.
#if defined(POLLRDHUP)
constexpr short daMat = POLLRDHUP | POLLHUP | POLLERR;
#else
constexpr short daMat = POLLHUP | POLLERR;
#endif

}  // namespace

KetNoiNghe::KetNoiNghe(SoKetNoi& so, SoKetNoi::CoSo coSo)
    : chu_(&so), so_(std::move(coSo)), gom_(std::in_place, so.cauHinh.luatDau) {}

void KetNoiNghe::batDau() {
    hetHanSau(chu_->cauHinh.hanDau, KhiHetHan::dong);
    // Most requests are there as soon as their connection is.
    const auto cho = gom_->choDoc();
    asio::error_code loi;
    const std::size_t so = so_->read_some(asio::buffer(cho.data(), cho.size()), loi);
    if (loi == asio::error::would_block) return docDau();
    khiDocDau(loi, so);
}

void KetNoiNghe::doc(std::span<std::byte> vao, std::chrono::milliseconds hanIm, KhiDoc xong) {
    if (!so_) return asio::post(chu_->vong, [xong = std::move(xong)] { xong(0); });
    khiThoiCanh_ = nullptr;
    hetHanSau(hanIm, KhiHetHan::dong);
    so_->async_read_some(
        asio::buffer(vao.data(), vao.size()),
        [toi = shared_from_this(), xong = std::move(xong)](const asio::error_code& loi, std::size_t so) {
            toi->han = SoKetNoi::MocGio::max();
            xong(loi ? 0 : so);
        });
}

std::optional<std::size_t> KetNoiNghe::guiNgay(std::span<const std::byte> dem) {
    return guiNgay(dem, 0);
}

void KetNoiNghe::gui(std::span<const std::byte> dem, KhiGui xong) {
    if (!so_) return asio::post(chu_->vong, [xong = std::move(xong)] { xong(KetCuc::hong); });
    ghi(dem, std::chrono::milliseconds::zero(), std::move(xong));
}

void KetNoiNghe::traRoiDong(std::string cau, YeuCau yeuCau) {
    if (!so_) return;
    cauTra_ = std::move(cau);
    const auto tatCa = std::as_bytes(std::span(cauTra_));
    const auto di = guiNgay(tatCa, guiCungKetThuc);
    if (!di) return huy();
    if (*di == tatCa.size()) return khiTraXong(yeuCau);
    ghi(tatCa.subspan(*di), chu_->cauHinh.hanGui, [toi = shared_from_this(), yeuCau](KetCuc ketCuc) {
        if (ketCuc == KetCuc::xong)
            toi->khiTraXong(yeuCau);
        else
            toi->huy();
    });
}

void KetNoiNghe::theoDoi(std::function<void()> khiMat) {
    khiMat_ = std::move(khiMat);
    boDi();
}

void KetNoiNghe::canh(std::chrono::milliseconds han, KhiThoiCanh xong) {
    if (!so_) return asio::post(chu_->vong, [xong = std::move(xong)] { xong(ThoiCanh::mat); });
    khiThoiCanh_ = std::move(xong);
    hanCanh_ = SoKetNoi::DongHo::now() + han;
    hetHanSau(std::min<std::chrono::milliseconds>(han, nhipCanh), KhiHetHan::nhinLai);
}

void KetNoiNghe::huy() {
    if (!so_) return;
    so_.reset();
    khiMat_ = nullptr;
    khiThoiCanh_ = nullptr;
    gom_.reset();
    // The list's own hold may be the last one.
    const auto toi = std::move(*cho_);
    (dangNan_ ? chu_->dangNan : chu_->dangMo).erase(cho_);
}

void KetNoiNghe::khiHetHan() {
    han = SoKetNoi::MocGio::max();
    switch (khiHetHan_) {
        case KhiHetHan::dong:
            return huy();
        case KhiHetHan::boDiTiep:
            return boDi();
        case KhiHetHan::nhinLai:
            return nhinLai();
    }
}

void KetNoiNghe::hetHanSau(std::chrono::milliseconds sau, KhiHetHan viec) {
    khiHetHan_ = viec;
    chu_->datHan(*this, SoKetNoi::DongHo::now() + sau);
}

void KetNoiNghe::docDau() {
    const auto cho = gom_->choDoc();
    so_->async_read_some(asio::buffer(cho.data(), cho.size()),
                         [toi = shared_from_this()](const asio::error_code& loi, std::size_t so) {
                             if (toi->so_) toi->khiDocDau(loi, so);
                         });
}

void KetNoiNghe::khiDocDau(const asio::error_code& loi, std::size_t so) {
    if (loi) return huy();
    const TrangThaiDau trangThai = gom_->them(so);
    if (trangThai == TrangThaiDau::chuaDu) return docDau();
    han = SoKetNoi::MocGio::max();
    const GomDau gom = std::move(*gom_);
    gom_.reset();
    if (trangThai == TrangThaiDau::quaDai)
        chu_->phiaNhan.khiDauQuaDai(shared_from_this());
    else
        chu_->phiaNhan.khiCoDau(shared_from_this(), gom.phanDau(), gom.thua());
}

std::optional<std::size_t> KetNoiNghe::guiNgay(std::span<const std::byte> dem,
                                               asio::socket_base::message_flags co) {
    if (!so_) return std::nullopt;
    asio::error_code loi;
    const std::size_t so = so_->send(asio::buffer(dem.data(), dem.size()), co, loi);
    if (loi && loi != asio::error::would_block) return std::nullopt;
    return so;
}

// As few and as large writes as the system takes. `hanIm` of no progress closes; zero waits for ever.
void KetNoiNghe::ghi(std::span<const std::byte> con, std::chrono::milliseconds hanIm, KhiGui xong) {
    if (hanIm.count() > 0) hetHanSau(hanIm, KhiHetHan::dong);
    so_->async_write_some(asio::buffer(con.data(), con.size()),
                          [toi = shared_from_this(), con, hanIm, xong = std::move(xong)](
                              const asio::error_code& loi, std::size_t so) mutable {
                              if (loi || !toi->so_) return xong(KetCuc::hong);
                              if (so < con.size()) return toi->ghi(con.subspan(so), hanIm, std::move(xong));
                              xong(KetCuc::xong);
                          });
}

void KetNoiNghe::khiTraXong(YeuCau yeuCau) {
    asio::error_code loi;
    if (yeuCau == YeuCau::docHet && so_->available(loi) == 0 && !loi) return huy();
    nan();
}

void KetNoiNghe::nan() {
    asio::error_code loi;
    so_->shutdown(asio::ip::tcp::socket::shutdown_send, loi);
    if (loi) return huy();
    dangNan_ = true;
    chu_->chuyenSangNan(cho_);
    hetHanSau(chu_->cauHinh.hanNan, KhiHetHan::dong);
    boDi();
}

void KetNoiNghe::boDi() {
    if (!so_) return;
    so_->async_read_some(asio::buffer(chu_->thungRac),
                         [toi = shared_from_this()](const asio::error_code& loi, std::size_t) {
                             if (toi->so_) toi->khiBoDi(loi);
                         });
}

void KetNoiNghe::khiBoDi(const asio::error_code& loi) {
    if (!loi) {
        if (dangNan_) return boDi();
        return hetHanSau(nghiKhiBoDi, KhiHetHan::boDiTiep);
    }
    if (dangNan_) return huy();
    const auto khiMat = std::exchange(khiMat_, nullptr);
    if (khiMat) khiMat();
}

void KetNoiNghe::nhinLai() {
    pollfd nhin{so_->native_handle(), daMat, 0};
    const bool mat = ::poll(&nhin, 1, 0) != 0;
    const auto con = std::chrono::ceil<std::chrono::milliseconds>(hanCanh_ - SoKetNoi::DongHo::now());
    if (!mat && con.count() > 0) return hetHanSau(std::min(con, nhipCanh), KhiHetHan::nhinLai);
    const auto xong = std::exchange(khiThoiCanh_, nullptr);
    if (xong) xong(mat ? ThoiCanh::mat : ThoiCanh::quaHan);
}

}  // namespace tovira

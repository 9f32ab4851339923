#include "LangNghe.hpp"

#include <fcntl.h>

#include <algorithm>
#include <array>
#include <asio.hpp>
#include <atomic>
#include <limits>
#include <list>
#include <thread>
#include <vector>

#include "BatBien.hpp"
#include "TenLuong.hpp"

namespace tovira {
namespace {

using asio::ip::tcp;
using BoChay = asio::io_context::executor_type;
using CoSo = asio::basic_stream_socket<tcp, BoChay>;
using CuaNhan = asio::basic_socket_acceptor<tcp, BoChay>;
using DongHo = std::chrono::steady_clock;
using Hen = asio::basic_waitable_timer<DongHo, asio::wait_traits<DongHo>, BoChay>;
using MocGio = DongHo::time_point;

constexpr auto hanMoCua = std::chrono::seconds(5);
constexpr auto hanDungCua = std::chrono::seconds(1);
// Pause before accepting again after accepting failed, out of descriptors for instance.
constexpr auto nghiKhiNhanHong = std::chrono::milliseconds(100);
// Pause between two reads of a viewer's bytes that nobody wants: a flood costs next to nothing.
constexpr auto nghiKhiBoDi = std::chrono::milliseconds(100);
constexpr std::size_t toiDaDangNan = 64;
// The last bytes leave together with the end of the connection: one packet, one wake-up of the peer.
#if defined(MSG_MORE)
constexpr asio::socket_base::message_flags guiCungKetThuc = MSG_MORE;
#else
constexpr asio::socket_base::message_flags guiCungKetThuc = 0;
#endif

// Children that the program starts must not keep its sockets open.
void dongKhiExec(int so) {
    ::fcntl(so, F_SETFD, FD_CLOEXEC);
}

}  // namespace

// The listener's inside. `cong` and the thread apart, all of it belongs to the queue.
struct LangNghe::Ruot {
    Ruot(CauHinh c, PhiaNhan p) : cauHinh(std::move(c)), phiaNhan(std::move(p)) {}

    bool chayLuong();
    asio::error_code mo();
    void dongCua();
    void nhan();
    void khiNhanXong(const asio::error_code& loi, CoSo so);
    void tiepNhan(CoSo so);
    bool nhuongCho();
    void datHan(KetNoiTcp& noi, MocGio luc);
    void henQuetLuc(MocGio luc);
    void quet();
    void dongHet(std::list<std::shared_ptr<KetNoiTcp>>& ds);
    void tat();

    CauHinh cauHinh;
    PhiaNhan phiaNhan;
    asio::io_context vong{1};
    std::optional<asio::executor_work_guard<BoChay>> giuVong;
    std::thread luong;
    std::atomic<bool> daChay{false};
    std::atomic<std::thread::id> maLuong{};
    std::atomic<std::uint16_t> cong{0};

    std::optional<CuaNhan> cua;
    std::uint64_t luotMo = 0;  // tells the handlers of an acceptor that is gone from those of this one
    Hen henNhan{vong};
    // One timer for all connections, armed for the nearest deadline or an earlier moment.
    Hen henQuet{vong};
    MocGio lucQuet = MocGio::max();
    std::list<std::shared_ptr<KetNoiTcp>> dangMo;   // oldest first
    std::list<std::shared_ptr<KetNoiTcp>> dangNan;  // answered, oldest first
    // Where unwanted bytes land. Nobody looks at them, so all connections share it.
    std::array<std::byte, 65536> thungRac;
};

class LangNghe::KetNoiTcp final : public KetNoi, public std::enable_shared_from_this<KetNoiTcp> {
  public:
    KetNoiTcp(Ruot& chu, CoSo so)
        : chu_(&chu), so_(std::move(so)), gom_(std::in_place, chu.cauHinh.luatDau) {}

    void batDau() {
        hetHanSau(chu_->cauHinh.hanDau, KhiHetHan::dong);
        // Most requests are there as soon as their connection is.
        const auto cho = gom_->choDoc();
        asio::error_code loi;
        const std::size_t so = so_->read_some(asio::buffer(cho.data(), cho.size()), loi);
        if (loi == asio::error::would_block) return docDau();
        khiDocDau(loi, so);
    }

    void doc(std::span<std::byte> vao, std::chrono::milliseconds hanIm, KhiDoc xong) override {
        if (!so_) return asio::post(chu_->vong, [xong = std::move(xong)] { xong(0); });
        hetHanSau(hanIm, KhiHetHan::dong);
        so_->async_read_some(
            asio::buffer(vao.data(), vao.size()),
            [toi = shared_from_this(), xong = std::move(xong)](const asio::error_code& loi, std::size_t so) {
                toi->han = MocGio::max();
                xong(loi ? 0 : so);
            });
    }

    std::optional<std::size_t> guiNgay(std::span<const std::byte> dem) override { return guiNgay(dem, 0); }

    void gui(std::span<const std::byte> dem, KhiGui xong) override {
        if (!so_) return asio::post(chu_->vong, [xong = std::move(xong)] { xong(KetCuc::hong); });
        ghi(dem, std::chrono::milliseconds::zero(), std::move(xong));
    }

    void traRoiDong(std::string cau, YeuCau yeuCau) override {
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

    void theoDoi(std::function<void()> khiMat) override {
        khiMat_ = std::move(khiMat);
        boDi();
    }

    void huy() override {
        if (!so_) return;
        so_.reset();
        khiMat_ = nullptr;
        gom_.reset();
        // The list's own hold may be the last one.
        const auto toi = std::move(*cho_);
        (dangNan_ ? chu_->dangNan : chu_->dangMo).erase(cho_);
    }

    [[nodiscard]] bool chuaCoDau() const { return gom_.has_value(); }
    void datCho(std::list<std::shared_ptr<KetNoiTcp>>::iterator cho) { cho_ = cho; }

    void khiHetHan() {
        han = MocGio::max();
        if (khiHetHan_ == KhiHetHan::dong)
            huy();
        else
            boDi();
    }

    // The deadline that Ruot watches.
    MocGio han = MocGio::max();

  private:
    enum class KhiHetHan : std::uint8_t { dong, boDiTiep };

    void hetHanSau(std::chrono::milliseconds sau, KhiHetHan viec) {
        khiHetHan_ = viec;
        chu_->datHan(*this, DongHo::now() + sau);
    }

    void docDau() {
        const auto cho = gom_->choDoc();
        so_->async_read_some(asio::buffer(cho.data(), cho.size()),
                             [toi = shared_from_this()](const asio::error_code& loi, std::size_t so) {
                                 if (toi->so_) toi->khiDocDau(loi, so);
                             });
    }

    void khiDocDau(const asio::error_code& loi, std::size_t so) {
        if (loi) return huy();
        const TrangThaiDau trangThai = gom_->them(so);
        if (trangThai == TrangThaiDau::chuaDu) return docDau();
        han = MocGio::max();
        const GomDau gom = std::move(*gom_);
        gom_.reset();
        if (trangThai == TrangThaiDau::quaDai)
            chu_->phiaNhan.khiDauQuaDai(shared_from_this());
        else
            chu_->phiaNhan.khiCoDau(shared_from_this(), gom.phanDau(), gom.thua());
    }

    std::optional<std::size_t> guiNgay(std::span<const std::byte> dem, asio::socket_base::message_flags co) {
        if (!so_) return std::nullopt;
        asio::error_code loi;
        const std::size_t so = so_->send(asio::buffer(dem.data(), dem.size()), co, loi);
        if (loi && loi != asio::error::would_block) return std::nullopt;
        return so;
    }

    // As few and as large writes as the system takes. `hanIm` of no progress closes; zero waits for ever.
    void ghi(std::span<const std::byte> con, std::chrono::milliseconds hanIm, KhiGui xong) {
        if (hanIm.count() > 0) hetHanSau(hanIm, KhiHetHan::dong);
        so_->async_write_some(asio::buffer(con.data(), con.size()),
                              [toi = shared_from_this(), con, hanIm, xong = std::move(xong)](
                                  const asio::error_code& loi, std::size_t so) mutable {
                                  if (loi || !toi->so_) return xong(KetCuc::hong);
                                  if (so < con.size())
                                      return toi->ghi(con.subspan(so), hanIm, std::move(xong));
                                  xong(KetCuc::xong);
                              });
    }

    void khiTraXong(YeuCau yeuCau) {
        asio::error_code loi;
        if (yeuCau == YeuCau::docHet && so_->available(loi) == 0 && !loi) return huy();
        nan();
    }

    void nan() {
        asio::error_code loi;
        so_->shutdown(tcp::socket::shutdown_send, loi);
        if (loi) return huy();
        chu_->dangNan.splice(chu_->dangNan.end(), chu_->dangMo, cho_);
        dangNan_ = true;
        if (chu_->dangNan.size() > toiDaDangNan) chu_->dangNan.front()->huy();
        hetHanSau(chu_->cauHinh.hanNan, KhiHetHan::dong);
        boDi();
    }

    void boDi() {
        if (!so_) return;
        so_->async_read_some(asio::buffer(chu_->thungRac),
                             [toi = shared_from_this()](const asio::error_code& loi, std::size_t) {
                                 if (toi->so_) toi->khiBoDi(loi);
                             });
    }

    void khiBoDi(const asio::error_code& loi) {
        if (!loi) {
            if (dangNan_) return boDi();
            return hetHanSau(nghiKhiBoDi, KhiHetHan::boDiTiep);
        }
        if (dangNan_) return huy();
        const auto khiMat = std::exchange(khiMat_, nullptr);
        if (khiMat) khiMat();
    }

    Ruot* chu_;
    std::optional<CoSo> so_;     // absent once closed
    std::optional<GomDau> gom_;  // present until the head is complete
    std::list<std::shared_ptr<KetNoiTcp>>::iterator cho_;
    bool dangNan_ = false;
    KhiHetHan khiHetHan_ = KhiHetHan::dong;
    std::string cauTra_;
    std::function<void()> khiMat_;
};

bool LangNghe::Ruot::chayLuong() {
    if (daChay) return true;
    giuVong.emplace(vong.get_executor());
    try {
        luong = std::thread([this] {
            maLuong = std::this_thread::get_id();
            datTenLuong(cauHinh.nhan);
            vong.run();
        });
    } catch (const std::system_error&) {
        giuVong.reset();
        return false;
    }
    daChay = true;
    return true;
}

// Leaves `cong` at 0 when the socket exists but cannot listen; an error means that there is no socket.
asio::error_code LangNghe::Ruot::mo() {
    asio::error_code loi;
    cua.emplace(vong);
    cua->open(tcp::v4(), loi);
    if (loi) return loi;
    dongKhiExec(cua->native_handle());
    const auto datTuyChon = [&] {
        cua->set_option(CuaNhan::reuse_address(true), loi);
        // Its connections inherit this.
        if (!loi) cua->set_option(tcp::no_delay(true), loi);
    };
    const auto gan = [&] { cua->bind({asio::ip::address_v4::loopback(), 0}, loi); };
    const auto nghe = [&] { cua->listen(asio::socket_base::max_listen_connections, loi); };
    datTuyChon();
    if (!loi) gan();
    if (!loi) nghe();
    if (loi) return {};
    cong = cua->local_endpoint(loi).port();
    nhan();
    return {};
}

void LangNghe::Ruot::dongCua() {
    ++luotMo;
    cua.reset();
    cong = 0;
}

void LangNghe::Ruot::nhan() {
    cua->async_accept([this, luot = luotMo](const asio::error_code& loi, CoSo so) {
        if (luot == luotMo) khiNhanXong(loi, std::move(so));
    });
}

void LangNghe::Ruot::khiNhanXong(const asio::error_code& loi, CoSo so) {
    if (!loi) {
        tiepNhan(std::move(so));
        return nhan();
    }
    // Out of descriptors or memory: somebody who has not asked for anything yet makes room. Trying again at
    // once would only spin.
    if (loi == asio::error::no_descriptors || loi == asio::error::no_buffer_space ||
        loi == asio::error::no_memory || loi == std::errc::too_many_files_open_in_system)
        nhuongCho();
    henNhan.expires_after(nghiKhiNhanHong);
    henNhan.async_wait([this, luot = luotMo](const asio::error_code& huy) {
        if (!huy && luot == luotMo) nhan();
    });
}

void LangNghe::Ruot::tiepNhan(CoSo so) {
    dongKhiExec(so.native_handle());
    asio::error_code khongSao;
    so.non_blocking(true, khongSao);
    if (dangMo.size() >= cauHinh.toiDaKetNoi && !nhuongCho()) return;
    dangMo.push_back(std::make_shared<KetNoiTcp>(*this, std::move(so)));
    dangMo.back()->datCho(std::prev(dangMo.end()));
    // The list's hold on it may end meanwhile.
    const auto noi = dangMo.back();
    noi->batDau();
}

// Closes the oldest connection without a complete head, when there is one.
bool LangNghe::Ruot::nhuongCho() {
    const auto noi = std::find_if(dangMo.begin(), dangMo.end(), [](const auto& n) { return n->chuaCoDau(); });
    if (noi == dangMo.end()) return false;
    (*noi)->huy();
    return true;
}

void LangNghe::Ruot::datHan(KetNoiTcp& noi, MocGio luc) {
    noi.han = luc;
    if (luc < lucQuet) henQuetLuc(luc);
}

void LangNghe::Ruot::henQuetLuc(MocGio luc) {
    lucQuet = luc;
    henQuet.expires_at(luc);
    henQuet.async_wait([this](const asio::error_code& huy) {
        if (!huy) quet();
    });
}

void LangNghe::Ruot::quet() {
    const MocGio gio = DongHo::now();
    MocGio ganNhat = MocGio::max();
    std::vector<std::shared_ptr<KetNoiTcp>> het;
    for (const auto* ds : {&dangMo, &dangNan}) {
        for (const auto& noi : *ds) {
            if (noi->han <= gio)
                het.push_back(noi);
            else
                ganNhat = std::min(ganNhat, noi->han);
        }
    }
    lucQuet = MocGio::max();
    if (ganNhat != MocGio::max()) henQuetLuc(ganNhat);
    for (const auto& noi : het)
        noi->khiHetHan();
}

void LangNghe::Ruot::dongHet(std::list<std::shared_ptr<KetNoiTcp>>& ds) {
    while (!ds.empty())
        ds.front()->huy();
}

void LangNghe::Ruot::tat() {
    dongCua();
    dongHet(dangMo);
    dongHet(dangNan);
    henNhan.cancel();
    henQuet.cancel();
    giuVong.reset();
}

LangNghe::LangNghe(CauHinh cauHinh, PhiaNhan phiaNhan)
    : ruot_(std::make_unique<Ruot>(std::move(cauHinh), std::move(phiaNhan))) {}

LangNghe::~LangNghe() {
    if (!coHang()) return;
    chay([r = ruot_.get()] { r->tat(); });
    ruot_->luong.join();
}

KetQua<void> LangNghe::batDau(const Loi& khongMoDuoc) {
    if (cong() != 0) return {};
    if (!ruot_->chayLuong()) return khongMoDuoc;
    const auto loi = hoi([r = ruot_.get()] { return r->mo(); }, hanMoCua);
    if (cong() != 0) return {};
    dung();
    if (loi && *loi) return Loi{loi->category().name(), loi->value(), loi->message()};
    return khongMoDuoc;
}

void LangNghe::dung() {
    ruot_->cong = 0;
    const auto dongCua = [r = ruot_.get()] {
        r->dongCua();
        return true;
    };
    static_cast<void>(hoi(dongCua, hanDungCua));
}

void LangNghe::dongKetNoi() {
    TOVIRA_BUOC(dangOHang());
    ruot_->dongHet(ruot_->dangMo);
}

std::uint16_t LangNghe::cong() const {
    return ruot_->cong;
}

bool LangNghe::dangOHang() const {
    return std::this_thread::get_id() == ruot_->maLuong.load();
}

void LangNghe::chay(std::function<void()> viec) {
    asio::post(ruot_->vong, std::move(viec));
}

bool LangNghe::coHang() const {
    TOVIRA_BUOC(!dangOHang());
    return ruot_->daChay;
}

}  // namespace tovira

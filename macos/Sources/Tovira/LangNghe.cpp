#include "LangNghe.hpp"

#include <fcntl.h>

#include <asio.hpp>
#include <atomic>
#include <thread>

#include "BatBien.hpp"
#include "SoKetNoi.hpp"
#include "TenLuong.hpp"

namespace tovira {
namespace {

using asio::ip::tcp;
using BoChay = SoKetNoi::BoChay;
using CuaNhan = asio::basic_socket_acceptor<tcp, BoChay>;

constexpr auto hanMoCua = std::chrono::seconds(5);
constexpr auto hanDungCua = std::chrono::seconds(1);
// Pause before accepting again after accepting failed, out of descriptors for instance.
constexpr auto nghiKhiNhanHong = std::chrono::milliseconds(100);

}  // namespace

// The listener's inside. `cong` and the thread apart, all of it belongs to the queue.
struct LangNghe::Ruot {
    Ruot(CauHinh c, PhiaNhan p) : cauHinh(std::move(c)), phiaNhan(std::move(p)) {}

    bool chayLuong();
    asio::error_code mo();
    void dongCua();
    void nhan();
    void khiNhanXong(const asio::error_code& loi, SoKetNoi::CoSo moi);
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
    SoKetNoi::Hen henNhan{vong};
    SoKetNoi so{vong, cauHinh, phiaNhan};
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
    // Children that the program starts must not keep it open.
    ::fcntl(cua->native_handle(), F_SETFD, FD_CLOEXEC);
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
    cua->async_accept([this, luot = luotMo](const asio::error_code& loi, SoKetNoi::CoSo moi) {
        if (luot == luotMo) khiNhanXong(loi, std::move(moi));
    });
}

void LangNghe::Ruot::khiNhanXong(const asio::error_code& loi, SoKetNoi::CoSo moi) {
    if (!loi) {
        so.tiepNhan(std::move(moi));
        return nhan();
    }
    // Out of descriptors or memory: somebody who has not asked for anything yet makes room. Trying again at
    // once would only spin.
    if (loi == asio::error::no_descriptors || loi == asio::error::no_buffer_space ||
        loi == asio::error::no_memory || loi == std::errc::too_many_files_open_in_system)
        so.nhuongCho();
    henNhan.expires_after(nghiKhiNhanHong);
    henNhan.async_wait([this, luot = luotMo](const asio::error_code& huy) {
        if (!huy && luot == luotMo) nhan();
    });
}

void LangNghe::Ruot::tat() {
    dongCua();
    so.tat();
    henNhan.cancel();
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
    ruot_->so.dongChuaTra();
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

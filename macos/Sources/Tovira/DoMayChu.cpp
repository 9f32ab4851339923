#include "DoMayChu.hpp"

#include <netdb.h>

#include <algorithm>
#include <asio.hpp>
#include <chrono>
#include <list>
#include <mutex>
#include <system_error>
#include <thread>
#include <vector>

#include "BatBien.hpp"
#include "KyTu.hpp"
#include "TenLuong.hpp"

namespace tovira {
namespace {

using asio::ip::tcp;
using CacDiaChi = std::vector<tcp::endpoint>;

// However many addresses a name has, this many are tried.
constexpr std::size_t toiDaDiaChi = 16;

// The next piece of `chu` between separators, empty pieces skipped; `chu` keeps what follows it.
std::string_view layManh(std::string_view& chu, char ngan) {
    chu.remove_prefix(std::min(chu.find_first_not_of(ngan), chu.size()));
    const auto manh = chu.substr(0, chu.find(ngan));
    chu.remove_prefix(manh.size());
    return manh;
}

struct GiaiPhongDiaChi {
    void operator()(addrinfo* p) const { freeaddrinfo(p); }
};

// Asks the system's resolver, for as long as it takes. Families alternate, so that the cap leaves both.
CacDiaChi hoiTen(const std::string& may, std::uint16_t cong) {
    addrinfo goiY{};
    goiY.ai_socktype = SOCK_STREAM;
    addrinfo* tho = nullptr;
    if (getaddrinfo(may.c_str(), nullptr, &goiY, &tho) != 0) return {};
    const std::unique_ptr<addrinfo, GiaiPhongDiaChi> dau(tho);
    CacDiaChi ho[2];
    for (const addrinfo* p = dau.get(); p != nullptr; p = p->ai_next) {
        tcp::endpoint diem;
        if (p->ai_addrlen > diem.capacity() || (p->ai_family != AF_INET && p->ai_family != AF_INET6))
            continue;
        std::copy_n(reinterpret_cast<const unsigned char*>(p->ai_addr), p->ai_addrlen,
                    reinterpret_cast<unsigned char*>(diem.data()));
        diem.resize(p->ai_addrlen);
        diem.port(cong);
        ho[p->ai_family == AF_INET6 ? 0 : 1].push_back(diem);
    }
    CacDiaChi ra;
    for (std::size_t i = 0; ra.size() < toiDaDiaChi && i < std::max(ho[0].size(), ho[1].size()); ++i) {
        for (const auto& h : ho) {
            if (i < h.size()) ra.push_back(h[i]);
        }
    }
    return ra;
}

// Where a resolver that may answer late, or never, leaves its answer: closed once nobody waits any more.
class HopThu {
  public:
    explicit HopThu(asio::io_context& io) : io_(&io) {}

    void dong() {
        const std::lock_guard khoa(khoa_);
        io_ = nullptr;
    }
    void gui(std::function<void()> viec) {
        const std::lock_guard khoa(khoa_);
        if (io_ != nullptr) asio::post(*io_, std::move(viec));
    }

  private:
    std::mutex khoa_;
    asio::io_context* io_;
};

// One probe. `chay` on one thread, once; `huy` on any.
class LanDo {
  public:
    LanDo(DoMayChu::DiaChi diaChi, double cho)
        : diaChi_(std::move(diaChi)), cho_(cho), hopThu_(std::make_shared<HopThu>(io_)) {}
    ~LanDo() { hopThu_->dong(); }
    LanDo(const LanDo&) = delete;
    LanDo& operator=(const LanDo&) = delete;

    bool chay() {
        const auto giu = asio::make_work_guard(io_);
        timDiaChi();
        io_.run_for(
            std::chrono::duration_cast<std::chrono::nanoseconds>(std::chrono::duration<double>(cho_)));
        return song_;
    }

    void huy() { io_.stop(); }

  private:
    void timDiaChi() {
        asio::error_code loi;
        const auto so = asio::ip::make_address(diaChi_.may, loi);
        if (!loi) return thu({tcp::endpoint(so, diaChi_.cong)});
        try {
            std::thread([this, hopThu = hopThu_, diaChi = diaChi_] {
                auto cac = hoiTen(diaChi.may, diaChi.cong);
                hopThu->gui([this, cac = std::move(cac)] { thu(cac); });
            }).detach();
        } catch (const std::system_error&) {
            // No thread to be had: nothing can be told about the server, which is what running out of time
            // means.
        }
    }

    void thu(const CacDiaChi& cac) {
        conThu_ = cac.size();
        for (const auto& diem : cac) {
            auto& o = o_.emplace_back(io_);
            o.async_connect(diem, [this](const asio::error_code& loi) { khiXong(loi); });
        }
    }

    void khiXong(const asio::error_code& loi) {
        --conThu_;
        if (!loi) {
            song_ = true;
            io_.stop();
            return;
        }
        if (loi == asio::error::connection_refused || loi == asio::error::connection_reset) tuChoi_ = true;
        if (conThu_ == 0 && tuChoi_) io_.stop();
    }

    const DoMayChu::DiaChi diaChi_;
    const double cho_;
    asio::io_context io_;
    std::shared_ptr<HopThu> hopThu_;
    std::list<tcp::socket> o_;
    std::size_t conThu_ = 0;
    bool tuChoi_ = false;
    bool song_ = false;
};

// Absent where no connection is to be tried at all.
std::shared_ptr<LanDo> taoLanDo(std::string_view url, double cho) {
    auto diaChi = DoMayChu::tachDiaChi(url);
    if (!diaChi || diaChi->may.empty() || diaChi->cong == 0) return nullptr;
    try {
        return std::make_shared<LanDo>(std::move(*diaChi), cho);
    } catch (const std::system_error&) {
        return nullptr;  // out of descriptors: nobody can be asked, and that is no reason to end
    }
}

}  // namespace

std::optional<DoMayChu::DiaChi> DoMayChu::tachDiaChi(std::string_view url) {
    constexpr std::string_view https = "https://", http = "http://";
    const bool coS = url.starts_with(https);
    if (!coS && !url.starts_with(http)) return std::nullopt;
    url.remove_prefix(coS ? https.size() : http.size());

    std::string_view may, cong;
    std::string_view noiDen = layManh(url, '/');
    const auto dongNgoac = noiDen.find(']');
    if (noiDen.starts_with('[') && dongNgoac != noiDen.npos) {
        may = noiDen.substr(1, dongNgoac - 1);
        noiDen.remove_prefix(dongNgoac + 1);
        if (noiDen.starts_with(':')) cong = noiDen.substr(1);
    } else {
        may = layManh(noiDen, ':');
        if (may.empty()) return std::nullopt;
        cong = layManh(noiDen, ':');
    }
    return DiaChi{std::string(may),
                  static_cast<std::uint16_t>(docSo(cong, UINT16_MAX).value_or(coS ? 443 : 80))};
}

bool DoMayChu::song(std::string_view url, double cho) {
    const auto lan = taoLanDo(url, cho);
    return lan && lan->chay();
}

// The probes under way. Touched on the main thread only.
struct DoMayChu::Ruot {
    explicit Ruot(VongLap& v) : vongLap(v) {}
    ~Ruot() {
        for (auto& muc : cac)
            muc.lan->huy();
        for (auto& muc : cac)
            if (muc.luong.joinable()) muc.luong.join();
    }
    Ruot(const Ruot&) = delete;
    Ruot& operator=(const Ruot&) = delete;

    struct Muc {
        std::shared_ptr<LanDo> lan;
        std::thread luong;
    };

    VongLap& vongLap;
    std::list<Muc> cac;
};

DoMayChu::DoMayChu(VongLap& vongLap) : ruot_(std::make_shared<Ruot>(vongLap)) {}
DoMayChu::~DoMayChu() = default;

void DoMayChu::song(const std::string& url, double cho, std::function<void(bool)> xong) {
    TOVIRA_BUOC(ruot_->vongLap.dangOChinh());
    auto lan = taoLanDo(url, cho);
    if (!lan) {
        ruot_->vongLap.chay([xong = std::move(xong)] { xong(false); });
        return;
    }
    const auto muc = ruot_->cac.insert(ruot_->cac.end(), {lan, {}});
    const std::weak_ptr<Ruot> yeu = ruot_;
    // The entry outlives its thread: it is joined here, once the answer has come, or with the rest at the
    // end.
    const auto traLoi = [yeu, muc, xong = std::move(xong)](bool ketQua) {
        const auto ruot = yeu.lock();
        if (!ruot) return;
        if (muc->luong.joinable()) muc->luong.join();
        ruot->cac.erase(muc);
        xong(ketQua);
    };
    try {
        muc->luong = std::thread([lan, traLoi, &vongLap = ruot_->vongLap] {
            datTenLuong("tv-do-may-chu");
            const bool ketQua = lan->chay();
            vongLap.chay([traLoi, ketQua] { traLoi(ketQua); });
        });
    } catch (const std::system_error&) {
        ruot_->vongLap.chay([traLoi] { traLoi(false); });
    }
}

}  // namespace tovira

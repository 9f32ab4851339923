#include "MjpegServer.hpp"

#include <algorithm>
#include <atomic>
#include <map>
#include <vector>

#include "BatBien.hpp"
#include "BiMat.hpp"
#include "DauYeuCau.hpp"
#include "LangNghe.hpp"

namespace tovira {
namespace {

constexpr std::size_t soByteBiMat = 18;
constexpr LuatDau luatDau{65536, 8192, LuatDau::Luc::sauKhiGhep};

constexpr std::string_view yeuCauHong = "400 Bad Request";
constexpr std::string_view khongCo = "404 Not Found";
constexpr std::string_view dauQuaDai = "431 Request Header Fields Too Large";

const std::string& dauDong() {
    static const std::string dau =
        "HTTP/1.1 200 OK\r\nAccess-Control-Allow-Origin: *\r\nCache-Control: no-store, no-cache, "
        "must-revalidate\r\nPragma: no-cache\r\nConnection: close\r\n"
        "Content-Type: multipart/x-mixed-replace; boundary=" +
        std::string(KhungMjpeg::boundary) + "\r\n\r\n";
    return dau;
}

std::string cauTuChoi(std::string_view trangThai) {
    return "HTTP/1.1 " + std::string(trangThai) +
           "\r\nAccess-Control-Allow-Origin: *\r\nContent-Length: 0\r\nConnection: close\r\n\r\n";
}

using Noi = std::shared_ptr<KetNoi>;

// One attached viewer.
struct Khach {
    Noi noi;
    bool dangGui = false;          // a frame write is outstanding
    bool boLo = false;             // missed a frame since its last one was sent
    std::uint64_t khungTruoc = 0;  // the frame it was sent last, 0 before the first
    bool haiLan = false;           // it was sent that frame more than once

    // Is this viewer meant by a push of frame number `so`?
    [[nodiscard]] bool duocGui(std::uint64_t so, MjpegServer::Gui gui) const {
        switch (gui) {
            case MjpegServer::Gui::moiNguoi:
                return true;
            case MjpegServer::Gui::nguoiChuaCo:
                return boLo || khungTruoc != so;
            case MjpegServer::Gui::nhacLai:
                return khungTruoc != so || !haiLan;
        }
        return false;
    }
};

}  // namespace

struct MjpegServer::Ruot {
    explicit Ruot(MjpegServer& chu) : may(chu) {}

    void khiCoDau(const Noi& noi, std::string_view phanDau);
    void moDong(const Noi& noi);
    void nhanKhach(const Noi& noi);
    void dangKhung(const Khung& khung, Gui gui);
    KetNoi::KetCuc guiKhung(Khach& khach, const Khung& khung);
    void khiGuiXong(const Noi& noi, KetNoi::KetCuc ketCuc);
    void dongKhach(const Noi& noi);
    void demRanh();
    void baoRanh();

    MjpegServer& may;
    const std::string biMat = taoBiMat(soByteBiMat);
    std::atomic<bool> daTungCoKhach{false};
    std::atomic<bool> coNguoiRanh{false};
    std::map<KetNoi*, Khach> khach;  // on the queue only
    bool hoiRanh = false;            // baoKhiRanh waits for a free viewer; on the queue only
    // The last member: while it ends, its completions still find the others.
    LangNghe langNghe{{.nhan = "tv-mjpeg", .luatDau = luatDau},
                      {.khiCoDau = [this](Noi noi, const std::string& phanDau,
                                          std::span<const std::byte>) { khiCoDau(noi, phanDau); },
                       .khiDauQuaDai = [](const Noi& noi) { noi->traRoiDong(cauTuChoi(dauQuaDai)); }}};
};

void MjpegServer::Ruot::khiCoDau(const Noi& noi, std::string_view phanDau) {
    if (const auto tuChoi = xet(phanDau, biMat))
        noi->traRoiDong(cauTuChoi(*tuChoi));
    else
        moDong(noi);
}

void MjpegServer::Ruot::moDong(const Noi& noi) {
    noi->gui(std::as_bytes(std::span(dauDong())), [this, noi](KetNoi::KetCuc ketCuc) {
        if (ketCuc == KetNoi::KetCuc::xong)
            nhanKhach(noi);
        else
            noi->huy();
    });
}

void MjpegServer::Ruot::nhanKhach(const Noi& noi) {
    khach.emplace(noi.get(), Khach{noi});
    daTungCoKhach = true;
    demRanh();
    noi->theoDoi([this, yeu = std::weak_ptr(noi)] {
        if (const Noi con = yeu.lock()) dongKhach(con);
    });
    baoRanh();
}

void MjpegServer::Ruot::baoRanh() {
    hoiRanh = false;
    if (may.khiCoNguoiRanh) may.khiCoNguoiRanh();
}

void MjpegServer::Ruot::dangKhung(const Khung& khung, Gui gui) {
    std::vector<Noi> hong;
    for (auto& [_, k] : khach) {
        if (!k.duocGui(khung->so(), gui)) continue;
        if (k.dangGui)
            k.boLo = true;
        else if (guiKhung(k, khung) == KetNoi::KetCuc::hong)
            hong.push_back(k.noi);
    }
    for (const Noi& noi : hong)
        dongKhach(noi);
    demRanh();
}

// A frame that fits on its way at once leaves its viewer free: frames that have piled up behind a busy
// machine are then all sent, one after the other, and none is lost to a viewer that reads.
KetNoi::KetCuc MjpegServer::Ruot::guiKhung(Khach& k, const Khung& khung) {
    const auto phan = khung->phan();
    k = Khach{k.noi, false, false, khung->so(), k.khungTruoc == khung->so()};
    const auto di = k.noi->guiNgay(phan);
    if (!di) return KetNoi::KetCuc::hong;
    if (*di < phan.size()) {
        k.dangGui = true;
        // The closure keeps the frame alive until its last byte is handed over.
        k.noi->gui(phan.subspan(*di),
                   [this, khung, noi = k.noi](KetNoi::KetCuc ketCuc) { khiGuiXong(noi, ketCuc); });
    }
    return KetNoi::KetCuc::xong;
}

void MjpegServer::Ruot::khiGuiXong(const Noi& noi, KetNoi::KetCuc ketCuc) {
    if (ketCuc == KetNoi::KetCuc::hong) return dongKhach(noi);
    const auto o = khach.find(noi.get());
    if (o == khach.end()) return;
    o->second.dangGui = false;
    demRanh();
    if (o->second.boLo || hoiRanh) baoRanh();
}

void MjpegServer::Ruot::dongKhach(const Noi& noi) {
    khach.erase(noi.get());
    noi->huy();
    demRanh();
}

void MjpegServer::Ruot::demRanh() {
    coNguoiRanh =
        std::any_of(khach.begin(), khach.end(), [](const auto& muc) { return !muc.second.dangGui; });
}

MjpegServer::MjpegServer() : ruot_(std::make_shared<Ruot>(*this)) {}

MjpegServer::~MjpegServer() = default;

KetQua<void> MjpegServer::batDau() {
    return ruot_->langNghe.batDau(Loi{mienTovira, 1, "Không mở được máy chủ ảnh nội bộ"});
}

void MjpegServer::dung() {
    ruot_->langNghe.dung();
    ruot_->langNghe.chay([r = ruot_.get()] {
        r->khach.clear();
        r->langNghe.dongKetNoi();
        r->demRanh();
    });
}

void MjpegServer::dangKhung(Khung khung, Gui gui) {
    TOVIRA_BUOC(khung != nullptr);
    ruot_->langNghe.chay([r = ruot_.get(), khung = std::move(khung), gui] { r->dangKhung(khung, gui); });
}

void MjpegServer::baoKhiRanh() {
    ruot_->langNghe.chay([r = ruot_.get()] {
        r->hoiRanh = true;
        if (r->coNguoiRanh) r->baoRanh();
    });
}

std::size_t MjpegServer::soKhach() {
    return ruot_->langNghe.hoi([r = ruot_.get()] { return r->khach.size(); }).value_or(0);
}

bool MjpegServer::coNguoiRanh() const {
    return ruot_->coNguoiRanh;
}
bool MjpegServer::daTungCoKhach() const {
    return ruot_->daTungCoKhach;
}
std::uint16_t MjpegServer::cong() const {
    return ruot_->langNghe.cong();
}
const std::string& MjpegServer::biMat() const {
    return ruot_->biMat;
}

std::optional<std::string_view> MjpegServer::xet(std::string_view phanDau, std::string_view biMat) {
    std::string_view dong;
    while (dong.empty() && !phanDau.empty())
        dong = layDong(phanDau);
    if (!dong.starts_with("GET ")) return yeuCauHong;
    const auto tu = haiTuDau(dong);
    if (!tu) return yeuCauHong;
    const std::string_view dich = tu->second;
    if (dich.starts_with("/man-hinh") && dich.find("k=" + std::string(biMat)) != std::string_view::npos)
        return std::nullopt;
    return khongCo;
}

}  // namespace tovira

#include "GiaoDienKem.hpp"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>

#include "DauYeuCau.hpp"
#include "LangNghe.hpp"
#include "SoTep.hpp"
#include "SocketIoThay.hpp"

namespace tovira {
namespace {

constexpr LuatDau luatDau{65536, 8192, LuatDau::Luc::sauKhiGhep};

constexpr std::string_view duoc = "200 OK";
constexpr std::string_view yeuCauHong = "400 Bad Request";
constexpr std::string_view khongCo = "404 Not Found";
constexpr std::string_view dauQuaDai = "431 Request Header Fields Too Large";

constexpr std::string_view kieuHtml = "text/html; charset=utf-8";
constexpr std::string_view kieuJs = "text/javascript; charset=utf-8";
constexpr std::string_view kieuJson = "application/json; charset=utf-8";
constexpr std::string_view kieuThuong = "text/plain; charset=utf-8";

struct MucTuyen {
    std::string_view duong;
    std::string_view kieu;
    std::string_view tep;
};

constexpr MucTuyen bangTuyen[] = {
    {"/", kieuHtml, "app.html"},
    {"/app", kieuHtml, "app.html"},
    {"/app.html", kieuHtml, "app.html"},
    {"/crypto.js", kieuJs, "crypto.js"},
    {"/local-store.js", kieuJs, "local-store.js"},
    {"/i18n.js", kieuJs, "i18n.js"},
    {"/vendor/socket.io.min.js", kieuJs, ""},
};

// The text before the first "?", leading question marks skipped; a target of nothing else stays what it is.
std::string_view boTruyVan(std::string_view dich) {
    const std::size_t dau = dich.find_first_not_of('?');
    if (dau == std::string_view::npos) return dich;
    const std::string_view con = dich.substr(dau);
    return con.substr(0, con.find('?'));
}

// The bytes of an ordinary file, wherever they end while it is being read. Never waits for a pipe.
std::optional<std::string> docTep(const std::filesystem::path& duong) {
    const SoTep tep(::open(duong.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK));
    struct stat tt {};
    if (!tep || ::fstat(tep.so(), &tt) != 0 || !S_ISREG(tt.st_mode)) return std::nullopt;
    std::string ra;
    // One byte more than it should hold, so that the end is seen without growing.
    ra.resize(static_cast<std::size_t>(tt.st_size) + 1);
    for (std::size_t co = 0;;) {
        const ssize_t so = ::read(tep.so(), ra.data() + co, ra.size() - co);
        if (so < 0 && errno == EINTR) continue;
        if (so < 0) return std::nullopt;
        co += static_cast<std::size_t>(so);
        if (so == 0) {
            ra.resize(co);
            return ra;
        }
        if (co == ra.size()) ra.resize(2 * co);
    }
}

std::string cauTra(std::string_view trangThai, std::string_view kieu = kieuThuong,
                   std::string_view than = {}) {
    std::string ra;
    ra.reserve(192 + than.size());
    ra.append("HTTP/1.1 ").append(trangThai).append("\r\nContent-Type: ").append(kieu);
    ra.append("\r\nContent-Length: ").append(std::to_string(than.size()));
    ra.append("\r\nCache-Control: no-store\r\nConnection: close\r\n\r\n").append(than);
    return ra;
}

}  // namespace

struct GiaoDienKem::Ruot {
    [[nodiscard]] std::string traLoi(std::string_view phanDau) const {
        const YeuCau yeuCau = GiaoDienKem::xet(phanDau);
        if (yeuCau.xet == Xet::yeuCauHong) return cauTra(yeuCauHong);
        if (yeuCau.xet == Xet::khongCo) return cauTra(khongCo);
        if (yeuCau.tuyen.tep.empty()) return cauTra(duoc, yeuCau.tuyen.kieu, socketIoThay);
        const auto than = thuMuc ? docTep(*thuMuc / yeuCau.tuyen.tep) : std::nullopt;
        return than ? cauTra(duoc, yeuCau.tuyen.kieu, *than) : cauTra(khongCo);
    }

    std::optional<std::filesystem::path> thuMuc;
    // The last member: while it ends, its completions still find the others.
    LangNghe langNghe{
        {.nhan = "tv-giao-dien-kem", .luatDau = luatDau},
        {.khiCoDau = [this](const std::shared_ptr<KetNoi>& noi, const std::string& phanDau,
                            std::span<const std::byte>) { noi->traRoiDong(traLoi(phanDau)); },
         .khiDauQuaDai = [](const std::shared_ptr<KetNoi>& noi) { noi->traRoiDong(cauTra(dauQuaDai)); }}};
};

GiaoDienKem::GiaoDienKem(const std::optional<std::filesystem::path>& taiNguyen)
    : ruot_(std::make_unique<Ruot>()) {
    if (taiNguyen) ruot_->thuMuc = *taiNguyen / "giao-dien";
}

GiaoDienKem::~GiaoDienKem() = default;

const std::optional<std::filesystem::path>& GiaoDienKem::thuMuc() const {
    return ruot_->thuMuc;
}

bool GiaoDienKem::coSan() const {
    std::error_code khongCoTep;
    return ruot_->thuMuc && std::filesystem::exists(*ruot_->thuMuc / "app.html", khongCoTep);
}

KetQua<void> GiaoDienKem::batDau() {
    if (cong() != 0) return {};
    if (!coSan()) return Loi{mienTovira, 2, "Không tìm thấy giao diện kèm trong gói ứng dụng"};
    return ruot_->langNghe.batDau(Loi{mienTovira, 3, "Không mở được máy chủ giao diện nội bộ"});
}

void GiaoDienKem::dung() {
    ruot_->langNghe.dung();
}

std::uint16_t GiaoDienKem::cong() const {
    return ruot_->langNghe.cong();
}

std::optional<GiaoDienKem::Tuyen> GiaoDienKem::tim(std::string_view dich) {
    const std::string_view duong = boTruyVan(dich);
    for (const MucTuyen& muc : bangTuyen) {
        if (duong == muc.duong) return Tuyen{muc.kieu, std::string(muc.tep)};
    }
    constexpr std::string_view dau = "/i18n/";
    constexpr std::string_view cuoi = ".json";
    if (!duong.starts_with(dau) || !duong.ends_with(cuoi) || duong.size() < dau.size() + cuoi.size())
        return std::nullopt;
    const std::string_view ma = duong.substr(dau.size(), duong.size() - dau.size() - cuoi.size());
    if (std::find(cacTiengNoi.begin(), cacTiengNoi.end(), ma) == cacTiengNoi.end()) return std::nullopt;
    return Tuyen{kieuJson, "i18n/" + std::string(ma) + ".json"};
}

GiaoDienKem::YeuCau GiaoDienKem::xet(std::string_view phanDau) {
    const std::string_view dong = layDong(phanDau);
    if (!dong.starts_with("GET ")) return {Xet::yeuCauHong, {}};
    const auto tu = haiTuDau(dong);
    auto tuyen = tu ? tim(tu->second) : std::nullopt;
    if (!tuyen) return {Xet::khongCo, {}};
    return {Xet::co, std::move(*tuyen)};
}

}  // namespace tovira

#include "MayChuNhan.hpp"

#include <sys/stat.h>

#include <algorithm>
#include <atomic>
#include <mutex>
#include <span>
#include <utility>
#include <vector>

#include "BatBien.hpp"
#include "BiMat.hpp"
#include "KhoDem.hpp"
#include "LangNghe.hpp"
#include "YeuCauNhan.hpp"

namespace tovira {
namespace {

constexpr std::size_t soByteBiMat = 24;
constexpr std::int64_t toiDaThan = 67108864;
constexpr std::size_t moiLanDocThan = 262144;
constexpr LuatDau luatDau{16384, 65536, LuatDau::Luc::truocKhiDoc};

constexpr const char* loiHuy = "huy";
constexpr const char* loiKhongCon = "khong-con";

using Noi = std::shared_ptr<KetNoi>;

// One time that a folder is open.
struct Luot {
    std::string biMat;
    ThuMucNhan thuMuc;  // on the queue, its path apart
};

bool laThuMuc(const std::string& duong) {
    struct stat tt {};
    return ::stat(duong.c_str(), &tt) == 0 && S_ISDIR(tt.st_mode);
}

}  // namespace

struct MayChuNhan::Ruot {
    Ruot(Nen& n, std::string goc, const CauHinh& c)
        : nen(n), gocMayChu(std::move(goc)), cauHinh(c), kho(c.toiDaDem) {}

    // A body that is still on its way.
    struct DangNhan {
        Noi noi;
        std::shared_ptr<Luot> luot;
        ThuMucNhan::Dich dich;
        KhoDem::Dem dem;
        std::size_t daCo = 0;
    };
    using Nhan = std::shared_ptr<DangNhan>;

    void xuLy(const Noi& noi, std::string_view phanDau, std::span<const std::byte> thanDaCo);
    void nhanThan(Nhan nhan, std::size_t doDai, std::span<const std::byte> thanDaCo);
    void docThan(const Nhan& nhan);
    void traKetCuc(const Noi& noi, ThuMucNhan::KetCuc ketCuc);
    void tra(const Noi& noi, TrangThaiNhan trangThai) const {
        noi->traRoiDong(cauTraNhan(trangThai, gocMayChu));
    }
    [[nodiscard]] std::shared_ptr<Luot> luotNay() const {
        const std::lock_guard giu(khoa);
        return luot;
    }
    void datLuot(std::shared_ptr<Luot> moi) {
        const std::lock_guard giu(khoa);
        luot = std::move(moi);
    }

    Nen& nen;
    const std::string gocMayChu;
    const CauHinh cauHinh;
    const ThuMucNhan::DanhDau danhDau = [this](int tep) { nen.danhDauTuXa(tep); };
    mutable std::mutex khoa;     // held for an instant, around luot alone
    std::shared_ptr<Luot> luot;  // absent while stopped
    std::atomic<std::int64_t> daGhi{0};
    KhoDem kho;  // on the queue
    // The last member: while it ends, its completions still find the others.
    LangNghe langNghe{{.nhan = "tv-nhan", .luatDau = luatDau},
                      {.khiCoDau = [this](const Noi& noi, const std::string& phanDau,
                                          std::span<const std::byte> thua) { xuLy(noi, phanDau, thua); },
                       .khiDauQuaDai = [this](const Noi& noi) { tra(noi, TrangThaiNhan::dauQuaDai); }}};
};

void MayChuNhan::Ruot::xuLy(const Noi& noi, std::string_view phanDau, std::span<const std::byte> thanDaCo) {
    const auto nay = luotNay();
    const YeuCauNhan yeuCau = xetYeuCauNhan(phanDau, nay ? nay->biMat : std::string_view());
    if (yeuCau.traNgay) return tra(noi, *yeuCau.traNgay);
    const auto daCo = static_cast<std::int64_t>(thanDaCo.size());
    if (yeuCau.doDai >= 0 && yeuCau.doDai <= std::min(daCo, toiDaThan)) {
        const auto than = thanDaCo.first(static_cast<std::size_t>(yeuCau.doDai));
        return traKetCuc(noi, nay->thuMuc.nhan(yeuCau.duong, than, danhDau));
    }
    auto dich = nay->thuMuc.giaiDuongDan(yeuCau.duong);
    if (!dich) return tra(noi, TrangThaiNhan::yeuCauHong);
    if (yeuCau.doDai < 0 || yeuCau.doDai > toiDaThan) return tra(noi, TrangThaiNhan::thanQuaDai);
    nhanThan(std::make_shared<DangNhan>(DangNhan{noi, nay, std::move(*dich), {}}),
             static_cast<std::size_t>(yeuCau.doDai), thanDaCo);
}

void MayChuNhan::Ruot::nhanThan(Nhan nhan, std::size_t doDai, std::span<const std::byte> thanDaCo) {
    std::vector<std::byte> phanDau(thanDaCo.begin(), thanDaCo.end());
    kho.muon(doDai, [this, nhan = std::move(nhan), phanDau = std::move(phanDau)](KhoDem::Dem dem) {
        if (dem.vung().empty()) return tra(nhan->noi, TrangThaiNhan::loiMayChu);
        nhan->dem = std::move(dem);
        std::copy(phanDau.begin(), phanDau.end(), nhan->dem.vung().begin());
        nhan->daCo = phanDau.size();
        docThan(nhan);
    });
}

void MayChuNhan::Ruot::docThan(const Nhan& nhan) {
    const auto con = nhan->dem.vung().subspan(nhan->daCo);
    nhan->noi->doc(con.first(std::min(con.size(), moiLanDocThan)), cauHinh.hanIm,
                   [this, nhan](std::size_t so) {
                       if (so == 0) return nhan->noi->huy();
                       nhan->daCo += so;
                       if (nhan->daCo < nhan->dem.vung().size()) return docThan(nhan);
                       const bool duoc = nhan->luot->thuMuc.ghi(nhan->dich, nhan->dem.vung(), danhDau);
                       traKetCuc(nhan->noi, duoc ? ThuMucNhan::KetCuc::duoc : ThuMucNhan::KetCuc::hong);
                   });
}

void MayChuNhan::Ruot::traKetCuc(const Noi& noi, ThuMucNhan::KetCuc ketCuc) {
    if (ketCuc == ThuMucNhan::KetCuc::duongXau) return tra(noi, TrangThaiNhan::yeuCauHong);
    const bool duoc = ketCuc == ThuMucNhan::KetCuc::duoc;
    if (duoc) ++daGhi;
    noi->traRoiDong(cauTraNhan(duoc ? TrangThaiNhan::duoc : TrangThaiNhan::loiMayChu, gocMayChu),
                    KetNoi::YeuCau::docHet);
}

MayChuNhan::MayChuNhan(Nen& nen, TepNguoiDung& tep, VongLap& vongLap, std::string gocMayChu)
    : MayChuNhan(nen, tep, vongLap, std::move(gocMayChu), CauHinh{}) {}

MayChuNhan::MayChuNhan(Nen& nen, TepNguoiDung& tep, VongLap& vongLap, std::string gocMayChu, CauHinh cauHinh)
    : nen_(nen),
      tep_(tep),
      vongLap_(vongLap),
      ruot_(std::make_unique<Ruot>(nen, std::move(gocMayChu), cauHinh)) {}

MayChuNhan::~MayChuNhan() = default;

void MayChuNhan::chonThuMuc(std::function<void(TraLoi)> xong) {
    hoiThuMuc([this, xong = std::move(xong)](const std::optional<std::string>& duong) {
        xong(duong ? moRoiTraLoi(*duong) : TraLoi{"", 0, "", loiHuy});
    });
}

void MayChuNhan::chiChonThuMuc(std::function<void(std::string duong, std::string loi)> xong) {
    hoiThuMuc([xong = std::move(xong)](const std::optional<std::string>& duong) {
        xong(duong.value_or(""), duong ? "" : loiHuy);
    });
}

void MayChuNhan::hoiThuMuc(KhiChon xong) {
    vongLap_.chay([yeu = std::weak_ptr(conSong_), xong = std::move(xong)]() mutable {
        const auto con = yeu.lock();
        if (!con) return;
        MayChuNhan& toi = **con;
        toi.choHoi_.push_back(std::move(xong));
        if (toi.choHoi_.size() == 1) toi.hoiTiep();
    });
}

void MayChuNhan::hoiTiep() {
    nen_.hoiThuMuc({"Chọn thư mục", "Chọn thư mục để lưu các tệp nhận được"},
                   [yeu = std::weak_ptr(conSong_)](std::optional<std::string> duong) {
                       const auto con = yeu.lock();
                       if (!con) return;
                       MayChuNhan& toi = **con;
                       // The answer may ask again: by then this panel counts as closed.
                       const KhiChon xong = std::move(toi.choHoi_.front());
                       toi.choHoi_.pop_front();
                       xong(std::move(duong));
                       if (!toi.choHoi_.empty()) toi.hoiTiep();
                   });
}

MayChuNhan::TraLoi MayChuNhan::moTaiDuong(const std::string& duong) {
    return laThuMuc(duong) ? moRoiTraLoi(duong) : TraLoi{"", 0, "", loiKhongCon};
}

void MayChuNhan::moTaiDuong(const std::string& duong, std::function<void(TraLoi)> xong) {
    xong(moTaiDuong(duong));
}

MayChuNhan::TraLoi MayChuNhan::moRoiTraLoi(const std::string& duong) {
    if (const auto mo = batDau(duong); !mo) return {"", 0, "", mo.loi().moTa};
    return {goc().value_or(""), cong(), biMat(), ""};
}

void MayChuNhan::dongThuMuc() {
    dung();
}

void MayChuNhan::hienTrongFinder(const std::string& duong, const std::string& ten) {
    vongLap_.chay([yeu = std::weak_ptr(conSong_), duong, ten] {
        const auto con = yeu.lock();
        if (!con) return;
        struct stat tt {};
        const std::string muc = duong + '/' + ten;
        (*con)->tep_.hien(!ten.empty() && ::stat(muc.c_str(), &tt) == 0 ? muc : duong);
    });
}

KetQua<void> MayChuNhan::batDau(const std::string& goc) {
    dung();
    ruot_->datLuot(
        std::make_shared<Luot>(Luot{taoBiMat(soByteBiMat), ThuMucNhan(goc, ruot_->cauHinh.doBen)}));
    ruot_->daGhi = 0;
    auto mo = ruot_->langNghe.batDau(Loi{mienTovira, 2, "Không mở được máy chủ nhận tệp"});
    if (!mo) dung();
    return mo;
}

void MayChuNhan::dung() {
    // First of all, so that no head is accepted from here on.
    ruot_->datLuot(nullptr);
    ruot_->langNghe.dung();
    ruot_->langNghe.chay([r = ruot_.get()] { r->kho.buong(); });
}

std::optional<std::string> MayChuNhan::goc() const {
    const auto nay = ruot_->luotNay();
    return nay ? std::optional(nay->thuMuc.goc()) : std::nullopt;
}

std::string MayChuNhan::biMat() const {
    const auto nay = ruot_->luotNay();
    return nay ? nay->biMat : std::string();
}

std::uint16_t MayChuNhan::cong() const {
    return ruot_->langNghe.cong();
}

std::int64_t MayChuNhan::daGhi() const {
    return ruot_->daGhi;
}

}  // namespace tovira

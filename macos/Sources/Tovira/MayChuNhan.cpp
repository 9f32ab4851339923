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
// Bytes in a second. A page on this machine brings a thousand times as many; who brings fewer keeps memory
// only as long as nobody waits for it.
constexpr std::int64_t chamNhatKhiCoNguoiCho = std::int64_t{1} << 20;
constexpr LuatDau luatDau{16384, 65536, LuatDau::Luc::truocKhiDoc};

constexpr const char* loiHuy = "huy";
constexpr const char* loiKhongCon = "khong-con";

using Noi = std::shared_ptr<KetNoi>;
using DongHo = std::chrono::steady_clock;

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
        std::unique_ptr<KhoDem::Than> than;
        std::size_t conThieu = 0;           // bytes that have not come yet
        std::span<const std::byte> thua{};  // what came with the head, until it has its place
        std::vector<std::byte> giuThua{};   // holds that while there is none
        std::span<std::byte> cho{};         // the rest of the last piece
        std::int64_t daDoc = 0;
        DongHo::duration lucDoc{};  // spent on reading that
    };
    using Nhan = std::shared_ptr<DangNhan>;

    void xuLy(const Noi& noi, std::string_view phanDau, std::span<const std::byte> thanDaCo);
    void nhanThan(const Nhan& nhan);
    void xinCho(const Nhan& nhan);
    void docThan(const Nhan& nhan);
    void khiDocThan(const Nhan& nhan, std::size_t so);
    [[nodiscard]] bool nenNhuong(const DangNhan& nhan) const;
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
    const auto doDai = static_cast<std::size_t>(yeuCau.doDai);
    nhanThan(
        std::make_shared<DangNhan>(DangNhan{noi, nay, std::move(*dich), kho.moThan(doDai), doDai, thanDaCo}));
}

void MayChuNhan::Ruot::nhanThan(const Nhan& nhan) {
    xinCho(nhan);
    if (!nhan->than->dangCho()) return;
    nhan->giuThua.assign(nhan->thua.begin(), nhan->thua.end());
    nhan->thua = nhan->giuThua;
}

// Asks for the next piece and goes on reading; waits for it with an eye on the peer.
void MayChuNhan::Ruot::xinCho(const Nhan& nhan) {
    nhan->than->xinManh([this, nhan](std::span<std::byte> cho) {
        if (cho.empty()) return tra(nhan->noi, TrangThaiNhan::loiMayChu);
        std::copy(nhan->thua.begin(), nhan->thua.end(), cho.begin());
        nhan->cho = cho.subspan(nhan->thua.size());
        nhan->conThieu -= nhan->thua.size();
        nhan->thua = {};
        nhan->giuThua = {};
        docThan(nhan);
    });
    if (!nhan->than->dangCho()) return;
    nhan->noi->canh(cauHinh.hanCho, [this, nhan](KetNoi::ThoiCanh viSao) {
        nhan->than->thoiCho();
        if (viSao == KetNoi::ThoiCanh::mat) return nhan->noi->huy();
        tra(nhan->noi, TrangThaiNhan::loiMayChu);
    });
}

void MayChuNhan::Ruot::docThan(const Nhan& nhan) {
    nhan->noi->doc(nhan->cho.first(std::min(nhan->cho.size(), moiLanDocThan)), cauHinh.hanIm,
                   [this, nhan, tu = DongHo::now()](std::size_t so) {
                       nhan->lucDoc += DongHo::now() - tu;
                       khiDocThan(nhan, so);
                   });
}

void MayChuNhan::Ruot::khiDocThan(const Nhan& nhan, std::size_t so) {
    if (so == 0) return nhan->noi->huy();
    nhan->daDoc += static_cast<std::int64_t>(so);
    nhan->conThieu -= so;
    nhan->cho = nhan->cho.subspan(so);
    if (nhan->conThieu == 0) {
        const bool duoc = nhan->luot->thuMuc.ghi(nhan->dich, nhan->than->cacManh(), danhDau);
        return traKetCuc(nhan->noi, duoc ? ThuMucNhan::KetCuc::duoc : ThuMucNhan::KetCuc::hong);
    }
    if (nenNhuong(*nhan)) return nhan->noi->huy();
    if (nhan->cho.empty()) return xinCho(nhan);
    docThan(nhan);
}

// Does somebody wait for memory that a sender holds who, silence allowed for once, is too slow?
bool MayChuNhan::Ruot::nenNhuong(const DangNhan& nhan) const {
    const auto duocPhep = cauHinh.hanIm + std::chrono::seconds(nhan.daDoc / chamNhatKhiCoNguoiCho);
    return kho.soDangCho() > 0 && nhan.lucDoc > duocPhep;
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
    hoiThuMuc(ViecHoi::moRoiNhan, [this, xong = std::move(xong)](const std::optional<std::string>& duong) {
        xong(duong ? moRoiTraLoi(*duong) : TraLoi{"", 0, "", loiHuy});
    });
}

void MayChuNhan::chiChonThuMuc(std::function<void(std::string duong, std::string loi)> xong) {
    hoiThuMuc(ViecHoi::chiChon, [xong = std::move(xong)](const std::optional<std::string>& duong) {
        xong(duong.value_or(""), duong ? "" : loiHuy);
    });
}

// A page that asks again while the answer is open has forgotten what it asked before.
void MayChuNhan::hoiThuMuc(ViecHoi viec, KhiChon xong) {
    vongLap_.chay([yeu = std::weak_ptr(conSong_), viec, xong = std::move(xong)]() mutable {
        const auto con = yeu.lock();
        if (!con) return;
        auto& cho = (*con)->choHoi_;
        const auto cu =
            std::find_if(cho.begin(), cho.end(), [viec](const auto& h) { return h.viec == viec; });
        if (cu != cho.end()) {
            std::swap(cu->xong, xong);
            return xong(std::nullopt);
        }
        cho.push_back({viec, std::move(xong)});
        if (!(*con)->dangHoi_) (*con)->hoiTiep();
    });
}

void MayChuNhan::hoiTiep() {
    dangHoi_ = std::move(choHoi_.front().xong);
    choHoi_.pop_front();
    nen_.hoiThuMuc({"Chọn thư mục", "Chọn thư mục để lưu các tệp nhận được"},
                   [yeu = std::weak_ptr(conSong_)](std::optional<std::string> duong) {
                       const auto con = yeu.lock();
                       if (!con) return;
                       MayChuNhan& toi = **con;
                       // The answer may ask again: by then this panel counts as closed.
                       const KhiChon xong = std::exchange(toi.dangHoi_, nullptr);
                       xong(std::move(duong));
                       if (!toi.dangHoi_ && !toi.choHoi_.empty()) toi.hoiTiep();
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

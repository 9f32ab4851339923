#include "ThuMucNhan.hpp"

#include <fcntl.h>
#include <utf8proc.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <memory>

#include "BiMat.hpp"
#include "DiTheoThuMuc.hpp"
#include "DuongDanNhan.hpp"

namespace tovira {
namespace {

constexpr std::size_t soByteTenTam = 8;

bool motNoi(const struct stat& mot, const struct stat& hai) {
    return mot.st_dev == hai.st_dev && mot.st_ino == hai.st_ino;
}

// Absolute, without links as far as it exists.
std::string duongThat(std::string_view goc) {
    const std::string duong(goc);
    if (const std::unique_ptr<char, decltype(&std::free)> that{::realpath(duong.c_str(), nullptr),
                                                               &std::free})
        return that.get();
    if (duong.starts_with('/')) return giaiLienKet("/", tachTheoGach(duong));
    const std::unique_ptr<char, decltype(&std::free)> day{::realpath(".", nullptr), &std::free};
    return giaiLienKet(day ? day.get() : "/", tachTheoGach(duong));
}

using DoiChu = utf8proc_uint8_t* (*)(const utf8proc_uint8_t*);

utf8proc_uint8_t* doiHoa(const utf8proc_uint8_t* chu) {
    utf8proc_uint8_t* ra = nullptr;
    const auto sangHoa = [](utf8proc_int32_t ma, void*) { return utf8proc_toupper(ma); };
    utf8proc_map_custom(chu, 0, &ra, UTF8PROC_NULLTERM, sangHoa, nullptr);
    return ra;
}

utf8proc_uint8_t* doiThuong(const utf8proc_uint8_t* chu) {
    utf8proc_uint8_t* ra = nullptr;
    const auto sangThuong = [](utf8proc_int32_t ma, void*) { return utf8proc_tolower(ma); };
    utf8proc_map_custom(chu, 0, &ra, UTF8PROC_NULLTERM, sangThuong, nullptr);
    return ra;
}

// Does another spelling of the last name of `duong` lead to the same place?
bool coCachVietKhac(const std::string& duong) {
    struct stat that {};
    if (::lstat(duong.c_str(), &that) != 0) return false;
    const std::size_t cho = duong.rfind('/') + 1;
    const std::string cha = duong.substr(0, cho);
    const std::string ten = duong.substr(cho);
    for (const DoiChu doi : {&doiHoa, &doiThuong, &utf8proc_NFC, &utf8proc_NFD}) {
        const std::unique_ptr<utf8proc_uint8_t, decltype(&std::free)> khac{
            doi(reinterpret_cast<const utf8proc_uint8_t*>(ten.c_str())), &std::free};
        if (!khac) continue;
        const std::string tenKhac = reinterpret_cast<const char*>(khac.get());
        struct stat tt {};
        if (tenKhac != ten && ::lstat((cha + tenKhac).c_str(), &tt) == 0 && motNoi(tt, that)) return true;
    }
    return false;
}

// Asked of every folder on the way: each may lie on a file system of its own.
ThuMucNhan::SoNoi cachSoNoi(const std::string& goc) {
    for (std::size_t cuoi = goc.find('/', 1);; cuoi = goc.find('/', cuoi + 1)) {
        if (coCachVietKhac(goc.substr(0, cuoi))) return ThuMucNhan::SoNoi::theoMaTep;
        if (cuoi == std::string::npos) return ThuMucNhan::SoNoi::theoByte;
    }
}

// A file that is nobody's until it gets its name: without any where the system has such files, so that not
// even a killed process leaves one behind; else, and for the moment in which it replaces another, under a
// name that nobody else has.
class TepTam {
  public:
    enum class Kieu : std::uint8_t { khongTen, coTen };

    TepTam(int thuMuc, const std::string& ten, Kieu kieu)
        : thuMuc_(thuMuc), ten_(ten), kieu_(kieu), tep_(mo()), con_(tep_ && kieu == Kieu::coTen) {}
    ~TepTam() {
        if (con_) ::unlinkat(thuMuc_, ten_.c_str(), 0);
    }
    TepTam(const TepTam&) = delete;
    TepTam& operator=(const TepTam&) = delete;

    explicit operator bool() const { return static_cast<bool>(tep_); }
    [[nodiscard]] int so() const { return tep_.so(); }

    [[nodiscard]] bool ghiHet(ThuMucNhan::CacManh cacManh) const {
        return std::all_of(cacManh.begin(), cacManh.end(), [this](auto manh) { return ghiManh(manh); });
    }

    // A file system that cannot flush is not a failure; one that could not store the bytes is.
    [[nodiscard]] bool xuongDia() const {
        return ::fsync(tep_.so()) == 0 || (errno != EIO && errno != ENOSPC && errno != EDQUOT);
    }

    // Gives it the name `ten`, instead of what has that name.
    [[nodiscard]] bool doiTen(const std::string& ten) {
        if (kieu_ == Kieu::coTen) {
            if (!tep_.dong()) return false;
        } else {
            if (datTen(ten)) return true;
            // A link never replaces anything; a move does.
            con_ = errno == EEXIST && datTen(ten_);
            khongDatDuoc_ = !con_ && tuChoiLienKet(errno);
            if (!con_) return false;
        }
        if (::renameat(thuMuc_, ten_.c_str(), thuMuc_, ten.c_str()) != 0) return false;
        con_ = false;
        return true;
    }

    // Did it fail for being without a name?
    [[nodiscard]] bool nenThuCoTen() const { return kieu_ == Kieu::khongTen && (!tep_ || khongDatDuoc_); }

  private:
    [[nodiscard]] SoTep mo() const {
        if (kieu_ == Kieu::coTen)
            return SoTep(
                ::openat(thuMuc_, ten_.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, 0666));
#if defined(O_TMPFILE)
        return SoTep(::openat(thuMuc_, ".", O_TMPFILE | O_WRONLY | O_CLOEXEC, 0666));
#else
        return SoTep();
#endif
    }

    // Is it giving names this way that the system will not have, whichever the name?
    static bool tuChoiLienKet(int loi) {
        return loi == ENOENT || loi == EPERM || loi == EACCES || loi == EXDEV || loi == ENOTSUP;
    }

    [[nodiscard]] bool datTen(const std::string& ten) const {
        const std::string duong = "/proc/self/fd/" + std::to_string(tep_.so());
        return ::linkat(AT_FDCWD, duong.c_str(), thuMuc_, ten.c_str(), AT_SYMLINK_FOLLOW) == 0;
    }

    [[nodiscard]] bool ghiManh(std::span<const std::byte> con) const {
        while (!con.empty()) {
            const ssize_t so = ::write(tep_.so(), con.data(), con.size());
            if (so < 0 && errno == EINTR) continue;
            if (so <= 0) return false;
            con = con.subspan(static_cast<std::size_t>(so));
        }
        return true;
    }

    int thuMuc_;
    const std::string& ten_;
    Kieu kieu_;
    SoTep tep_;
    bool con_;  // is it there under ten_?
    bool khongDatDuoc_ = false;
};

}  // namespace

ThuMucNhan::ThuMucNhan(std::string_view goc, DoBen doBen, std::optional<SoNoi> soNoi)
    : doBen_(doBen),
      goc_(duongThat(goc)),
      soNoi_(soNoi ? *soNoi : cachSoNoi(goc_)),
      tenTam_(".tv-nhan-" + taoBiMat(soByteTenTam) + '-') {
    gocConDo();
}

DiTheoThuMuc::KhiTao ThuMucNhan::khiTao() const {
    return doBen_ == DoBen::xuongDia ? DiTheoThuMuc::KhiTao::dongBo : DiTheoThuMuc::KhiTao::thoi;
}

// Is the folder still where it was, or missing, so that it can be made again? Opens it when another one has
// taken its place; false when the way to that place leads elsewhere by now.
bool ThuMucNhan::gocConDo() {
    struct stat tt {};
    const bool co = ::lstat(goc_.c_str(), &tt) == 0;
    if (co && tepGoc_ && motNoi(tt, maGoc_)) return true;
    const SoTep cu = std::exchange(tepGoc_, SoTep());
    if (giaiLienKet("/", tachTheoGach(goc_)) != goc_) return false;
    if (co) moGoc();
    return true;
}

// Goes there from the top, making what is missing.
bool ThuMucNhan::moGoc() {
    SoTep dinh(::open("/", O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    DiTheoThuMuc di(dinh.so(), khiTao());
    for (const std::string_view ten : tachTheoGach(goc_)) {
        if (!di.vao(std::string(ten))) return false;
    }
    SoTep o = di.layO();
    tepGoc_ = o ? std::move(o) : std::move(dinh);
    return ::fstat(tepGoc_.so(), &maGoc_) == 0;
}

// The names from the folder down to `duong` (absolute, without links); absent when it lies outside.
std::optional<std::vector<std::string>> ThuMucNhan::phanTrongGoc(const std::string& duong) const {
    const auto tach = [](std::string_view con) {
        const auto cacTen = tachTheoGach(con);
        return std::vector<std::string>(cacTen.begin(), cacTen.end());
    };
    if (soNoi_ == SoNoi::theoByte) {
        if (!duong.starts_with(goc_)) return std::nullopt;
        const auto con = std::string_view(duong).substr(goc_.size());
        if (!con.empty() && con.front() != '/' && goc_ != "/") return std::nullopt;
        return tach(con);
    }
    for (std::size_t cuoi = duong.size();; cuoi = duong.rfind('/', cuoi - 1)) {
        struct stat tt {};
        const std::string cha = cuoi == 0 ? "/" : duong.substr(0, cuoi);
        if (::lstat(cha.c_str(), &tt) == 0 && motNoi(tt, maGoc_)) return tach(duong.substr(cuoi));
        if (cuoi == 0) return std::nullopt;
    }
}

// The folders `cha` below this one with their links resolved; absent when they lead outside.
std::optional<std::vector<std::string>> ThuMucNhan::cacChaThat(
    const std::vector<std::string_view>& cha) const {
    std::string duong;
    for (const std::string_view ten : cha) {
        struct stat tt {};
        duong += ten;
        // From here on nothing exists yet, or nothing can be made: both are seen when writing.
        if (!tepGoc_ || ::fstatat(tepGoc_.so(), duong.c_str(), &tt, AT_SYMLINK_NOFOLLOW) != 0) break;
        if (S_ISLNK(tt.st_mode)) return phanTrongGoc(giaiLienKet(goc_, cha));
        duong += '/';
    }
    return std::vector<std::string>(cha.begin(), cha.end());
}

std::optional<ThuMucNhan::Dich> ThuMucNhan::giaiDuongDan(std::string_view duong) {
    const auto cacTen = tachDuongNhan(duong);
    if (!cacTen || !gocConDo()) return std::nullopt;
    auto cha = cacChaThat({cacTen->begin(), std::prev(cacTen->end())});
    if (!cha) return std::nullopt;
    return Dich{std::move(*cha), std::string(cacTen->back())};
}

bool ThuMucNhan::ghi(const Dich& dich, CacManh than, const DanhDau& danhDau) {
    if (!tepGoc_ && !moGoc()) return false;
    DiTheoThuMuc di(tepGoc_.so(), khiTao());
    for (const std::string& ten : dich.cha) {
        if (!di.vao(ten)) return false;
    }
    return ghiO(di, dich.ten, than, danhDau);
}

ThuMucNhan::KetCuc ThuMucNhan::nhan(std::string_view duong, std::span<const std::byte> than,
                                    const DanhDau& danhDau) {
    const auto cacTen = tachDuongNhan(duong);
    if (!cacTen || !gocConDo()) return KetCuc::duongXau;
    if (tepGoc_) {
        // Where no link is on the way, walking it shows that it leads inside.
        DiTheoThuMuc di(tepGoc_.so(), khiTao());
        const auto vao = [&di](std::string_view ten) { return di.vao(std::string(ten)); };
        if (std::all_of(cacTen->begin(), std::prev(cacTen->end()), vao))
            return ghiO(di, std::string(cacTen->back()), {&than, 1}, danhDau) ? KetCuc::duoc : KetCuc::hong;
    }
    const auto dich = giaiDuongDan(duong);
    if (!dich) return KetCuc::duongXau;
    return ghi(*dich, {&than, 1}, danhDau) ? KetCuc::duoc : KetCuc::hong;
}

// Puts the file `ten` where `di` stands.
bool ThuMucNhan::ghiO(DiTheoThuMuc& di, const std::string& ten, CacManh than, const DanhDau& danhDau) {
    const bool canBen = doBen_ == DoBen::xuongDia;
    const auto ghiVao = [&](TepTam& tam) {
        if (!tam) return false;
        if (danhDau) danhDau(tam.so());
        return tam.ghiHet(than) && (!canBen || tam.xuongDia()) && tam.doiTen(ten);
    };
    const std::string tenTam = tenTam_ + std::to_string(++soTam_);
    TepTam khongTen(di.o(), tenTam, TepTam::Kieu::khongTen);
    if (!ghiVao(khongTen)) {
        if (!khongTen.nenThuCoTen()) return false;
        TepTam coTen(di.o(), tenTam, TepTam::Kieu::coTen);
        if (!ghiVao(coTen)) return false;
    }
    di.giuLai();
    if (canBen) dongBoThuMuc(di.o());
    return true;
}

}  // namespace tovira

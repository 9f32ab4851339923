#include "DiTheoThuMuc.hpp"

#include <fcntl.h>
#include <limits.h>
#include <sys/stat.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <deque>

#include "DuongDanNhan.hpp"

namespace tovira {
namespace {

// Enough for passing through: a folder on the way may forbid to be listed.
#if defined(O_PATH)
constexpr int moDeQua = O_PATH | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC;
#else
constexpr int moDeQua = O_SEARCH | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC;
#endif

constexpr int toiDaLienKet = 40;

// The text of a link; nothing when `duong` is none.
std::string docLienKet(const std::string& duong) {
    std::array<char, PATH_MAX> dem;
    const ssize_t so = ::readlink(duong.c_str(), dem.data(), dem.size());
    return so > 0 ? std::string(dem.data(), static_cast<std::size_t>(so)) : std::string();
}

bool motThuMuc(int cha, const char* ten, int con) {
    struct stat mot {};
    struct stat hai {};
    return ::fstatat(cha, ten, &mot, AT_SYMLINK_NOFOLLOW) == 0 && ::fstat(con, &hai) == 0 &&
           mot.st_dev == hai.st_dev && mot.st_ino == hai.st_ino;
}

}  // namespace

std::string giaiLienKet(const std::string& goc, const std::vector<std::string_view>& con) {
    std::string o = goc == "/" ? std::string() : goc;
    std::deque<std::string> cho(con.begin(), con.end());
    int soLienKet = 0;
    while (!cho.empty()) {
        const std::string ten = std::move(cho.front());
        cho.pop_front();
        if (ten == ".") continue;
        if (ten == "..") {
            o.resize(std::min(o.rfind('/'), o.size()));
            continue;
        }
        std::string duong = o + '/' + ten;
        const std::string toi = soLienKet < toiDaLienKet ? docLienKet(duong) : std::string();
        if (toi.empty()) {
            o = std::move(duong);
            continue;
        }
        ++soLienKet;
        if (toi.front() == '/') o.clear();
        const auto phan = tachTheoGach(toi);
        cho.insert(cho.begin(), phan.begin(), phan.end());
    }
    return o.empty() ? "/" : o;
}

void dongBoThuMuc(int thuMuc) {
    const SoTep doc(::openat(thuMuc, ".", O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (doc) ::fsync(doc.so());
}

DiTheoThuMuc::~DiTheoThuMuc() {
    while (!daTao_.empty()) {
        SoTep cha(::openat(o(), "..", moDeQua));
        const char* ten = daTao_.back().c_str();
        // Moved elsewhere meanwhile: no longer this walk's to remove.
        if (!cha || !motThuMuc(cha.so(), ten, o())) return;
        if (::unlinkat(cha.so(), ten, AT_REMOVEDIR) != 0) return;
        daTao_.pop_back();
        o_ = std::move(cha);
    }
}

bool DiTheoThuMuc::vao(const std::string& ten) {
    SoTep toi(::openat(o(), ten.c_str(), moDeQua));
    if (!toi && errno == ENOENT) {
        const bool daTao = ::mkdirat(o(), ten.c_str(), 0777) == 0;
        if (!daTao && errno != EEXIST) return false;
        if (daTao && khiTao_ == KhiTao::dongBo) dongBoThuMuc(o());
        toi = SoTep(::openat(o(), ten.c_str(), moDeQua));
        if (daTao && !toi) ::unlinkat(o(), ten.c_str(), AT_REMOVEDIR);
        if (daTao && toi) daTao_.push_back(ten);
    }
    if (!toi) return false;
    o_ = std::move(toi);
    return true;
}

SoTep DiTheoThuMuc::layO() {
    giuLai();
    return std::move(o_);
}

}  // namespace tovira

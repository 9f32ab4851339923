#include "TuKhoiDongLinux.hpp"

#include <fcntl.h>
#include <pwd.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <string_view>

#include "SoTep.hpp"

namespace tovira {
namespace {

namespace fs = std::filesystem;

std::string loiHeThong(int so) {
    return std::string("Không ghi được mục tự khởi động: ") + std::strerror(so);
}

// An argument of Exec, quoted twice over: once for the command line (where "%" begins a field code) and once
// for the text value that carries it.
std::string trichDan(const std::string& doiSo) {
    std::string ra = "\"";
    for (const char c : doiSo) {
        switch (c) {
            case '"':
            case '`':
            case '$':
                ra.append("\\\\").push_back(c);
                break;
            case '\\':
                ra.append("\\\\\\\\");
                break;
            case '%':
                ra.append("%%");
                break;
            case '\n':
                ra.append("\\n");
                break;
            case '\t':
                ra.append("\\t");
                break;
            case '\r':
                ra.append("\\r");
                break;
            default:
                ra.push_back(c);
        }
    }
    return ra + '"';
}

// 0, or the errno of the step that failed.
int ghiHet(int tep, const std::string& noiDung) {
    std::size_t da = 0;
    while (da < noiDung.size()) {
        const auto n = ::write(tep, noiDung.data() + da, noiDung.size() - da);
        if (n < 0 && errno == EINTR) continue;
        if (n < 0) return errno;
        da += static_cast<std::size_t>(n);
    }
    return ::fsync(tep) == 0 ? 0 : errno;
}

// Makes what was done to the entries of a folder last. A file system that cannot is no failure.
void giuThuMuc(const fs::path& thuMuc) {
    const SoTep mo(::open(thuMuc.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (mo) ::fsync(mo.so());
}

// Whole or not at all, whatever happens to the machine meanwhile: written beside the target, then moved over
// it.
int ghiNguyenVen(const fs::path& dich, const std::string& noiDung) {
    std::string tam = dich.string() + ".XXXXXX";
    int loi = 0;
    {
        const SoTep tep(::mkostemp(tam.data(), O_CLOEXEC));
        if (!tep) return errno;
        loi = ghiHet(tep.so(), noiDung);
        if (loi == 0 && ::fchmod(tep.so(), 0644) != 0) loi = errno;
    }
    if (loi == 0 && ::rename(tam.c_str(), dich.c_str()) != 0) loi = errno;
    if (loi != 0) {
        ::unlink(tam.c_str());
    } else {
        giuThuMuc(dich.parent_path());
    }
    return loi;
}

fs::path thuMucCauHinh() {
    const char* xdg = std::getenv("XDG_CONFIG_HOME");
    if (xdg != nullptr && fs::path(xdg).is_absolute()) return xdg;
    if (const char* nha = std::getenv("HOME"); nha != nullptr && *nha != 0) return fs::path(nha) / ".config";
    const passwd* ho = ::getpwuid(::getuid());
    return fs::path(ho != nullptr ? ho->pw_dir : "/") / ".config";
}

}  // namespace

TuKhoiDongXdg::TuKhoiDongXdg(fs::path thuMuc, std::string chuongTrinh)
    : thuMuc_(std::move(thuMuc)), tep_(thuMuc_ / "tovira.desktop"), chuongTrinh_(std::move(chuongTrinh)) {}

std::string TuKhoiDongXdg::lapMuc(const std::string& chuongTrinh) {
    return "[Desktop Entry]\n"
           "Type=Application\n"
           "Name=Tovira\n"
           "Exec=" +
           trichDan(chuongTrinh) +
           " --ngam\n"
           "Terminal=false\n"
           "X-GNOME-Autostart-enabled=true\n";
}

// Desktops switch an entry off by a line in it rather than by removing it.
bool TuKhoiDongXdg::dangBat() {
    std::ifstream vao(tep_);
    if (!vao) return false;
    for (std::string dong; std::getline(vao, dong);) {
        if (dong == "Hidden=true" || dong == "X-GNOME-Autostart-enabled=false") return false;
    }
    return true;
}

std::optional<std::string> TuKhoiDongXdg::dat(bool bat) {
    if (!bat) {
        if (::unlink(tep_.c_str()) != 0 && errno != ENOENT) return loiHeThong(errno);
        giuThuMuc(thuMuc_);
        return std::nullopt;
    }
    std::error_code loi;
    fs::create_directories(thuMuc_, loi);
    if (loi) return loiHeThong(loi.value());
    if (const int so = ghiNguyenVen(tep_, lapMuc(chuongTrinh_)); so != 0) return loiHeThong(so);
    return std::nullopt;
}

std::string TuKhoiDongXdg::chuongTrinhNay(const fs::path& lienKet) {
    constexpr std::string_view daXoa = " (deleted)";
    std::error_code loi;
    std::string ra = fs::read_symlink(lienKet, loi).string();
    if (loi) return "tovira";
    // The system's remark, unless there really is a file of that name.
    if (std::string_view(ra).ends_with(daXoa) && !fs::exists(ra, loi)) ra.resize(ra.size() - daXoa.size());
    return ra;
}

std::unique_ptr<TuKhoiDong> TuKhoiDong::tao() {
    return std::make_unique<TuKhoiDongXdg>(thuMucCauHinh() / "autostart",
                                           TuKhoiDongXdg::chuongTrinhNay("/proc/self/exe"));
}

}  // namespace tovira

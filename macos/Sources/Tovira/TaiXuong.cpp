#include "TaiXuong.hpp"

#include <utf8proc.h>

#include <algorithm>
#include <array>
#include <cstdlib>
#include <filesystem>
#include <memory>

namespace tovira {
namespace {

constexpr std::string_view tenMacDinh = "tep-nhan-duoc";
constexpr int soLonNhat = 999;

// Characters that keep what follows the last dot from being an extension: the space and the marks that steer
// the direction of text, with which a name can be made to look like another.
constexpr std::array<std::string_view, 13> khongTrongDuoi{" ",      "\u061c", "\u200e", "\u200f", "\u202a",
                                                          "\u202b", "\u202c", "\u202d", "\u202e", "\u2066",
                                                          "\u2067", "\u2068", "\u2069"};

// Trailing slashes do not count, so that "a/b/" ends in "b".
std::string_view thanhPhanCuoi(std::string_view duong) {
    while (!duong.empty() && duong.back() == '/')
        duong.remove_suffix(1);
    const auto cheo = duong.rfind('/');
    return cheo == std::string_view::npos ? duong : duong.substr(cheo + 1);
}

// Two names that some file systems take for one are equal under this: case, composition and width do not
// count.
std::string gapChu(const std::string& duong) {
    const auto* tho = reinterpret_cast<const utf8proc_uint8_t*>(duong.c_str());
    const std::unique_ptr<utf8proc_uint8_t, decltype(&std::free)> gap(utf8proc_NFKC_Casefold(tho),
                                                                      &std::free);
    return gap ? std::string(reinterpret_cast<const char*>(gap.get())) : duong;
}

std::string tenSach(std::string_view goiY) {
    const std::string_view ten = thanhPhanCuoi(goiY);
    if (ten.empty() || ten == "." || ten == "..") return std::string(tenMacDinh);
    return std::string(ten);
}

}  // namespace

std::string_view duoiTep(std::string_view ten) {
    const auto cham = ten.rfind('.');
    if (cham == std::string_view::npos || cham == 0 || cham + 1 == ten.size() || ten.substr(0, 2) == "..") {
        return {};
    }
    const std::string_view duoi = ten.substr(cham + 1);
    const bool coDauLa = std::any_of(khongTrongDuoi.begin(), khongTrongDuoi.end(),
                                     [duoi](std::string_view dau) { return duoi.find(dau) != duoi.npos; });
    return coDauLa ? std::string_view() : duoi;
}

std::string TaiXuong::thuMucLuu(const CaiDat& caiDat, const TepNguoiDung& tep) {
    std::error_code loi;
    const auto daChon = caiDat.doc(khoaThuMucLuu);
    if (daChon && !daChon->empty() && std::filesystem::is_directory(*daChon, loi)) return *daChon;
    if (auto taiXuong = tep.thuMucTaiXuong()) return *taiXuong;
    const auto tam = std::filesystem::temp_directory_path(loi);
    return loi ? "/tmp" : tam.string();
}

std::string TaiXuong::chon(MaTai ma, const std::string& thuMuc, std::string_view tenGoiY,
                           const TonTai& tonTai) {
    const std::string ten = tenSach(tenGoiY);
    const std::string_view duoi = duoiTep(ten);
    const std::string goc = duoi.empty() ? ten : ten.substr(0, ten.size() - duoi.size() - 1);
    const std::string truoc = thuMuc.ends_with('/') ? thuMuc : thuMuc + "/";

    const std::string dauTien = truoc + ten;
    std::string duong = dauTien;
    for (int n = 2; tonTai(duong) || daHua(duong); ++n) {
        if (n > soLonNhat) {
            duong = dauTien;
            break;
        }
        duong = truoc + goc + " (" + std::to_string(n) + ")";
        if (!duoi.empty()) duong.append(".").append(duoi);
    }
    tepDangTai_[ma] = duong;
    return duong;
}

std::optional<std::string> TaiXuong::lay(MaTai ma) {
    const auto nut = tepDangTai_.extract(ma);
    if (nut.empty()) return std::nullopt;
    return nut.mapped();
}

bool TaiXuong::daHua(const std::string& duong) const {
    return std::any_of(tepDangTai_.begin(), tepDangTai_.end(),
                       [gap = gapChu(duong)](const auto& muc) { return gapChu(muc.second) == gap; });
}

bool coTep(const std::string& duong) {
    std::error_code loi;
    const auto loai = std::filesystem::symlink_status(duong, loi).type();
    return loai != std::filesystem::file_type::not_found && loai != std::filesystem::file_type::none;
}

}  // namespace tovira

#pragma once
// A folder of a test's own, gone with everything in it when the test ends, and the shortest ways to look into
// it.

#include <stdlib.h>

#include <filesystem>
#include <fstream>
#include <set>
#include <string>
#include <string_view>

#include "BatBien.hpp"

namespace tovira::gia {

class ThuMucTam {
  public:
    ThuMucTam() {
        std::string mau = (std::filesystem::temp_directory_path() / "tv-thu-XXXXXX").string();
        TOVIRA_BUOC(::mkdtemp(mau.data()) != nullptr);
        duong_ = std::filesystem::canonical(mau);
    }
    ~ThuMucTam() {
        std::error_code khongSao;
        std::filesystem::remove_all(duong_, khongSao);
    }
    ThuMucTam(const ThuMucTam&) = delete;
    ThuMucTam& operator=(const ThuMucTam&) = delete;

    [[nodiscard]] const std::filesystem::path& duong() const { return duong_; }
    [[nodiscard]] std::filesystem::path operator/(std::string_view con) const { return duong_ / con; }

  private:
    std::filesystem::path duong_;
};

inline std::string docTep(const std::filesystem::path& tep) {
    std::ifstream dong(tep, std::ios::binary);
    std::string ra;
    while (dong) {
        const std::size_t co = ra.size();
        ra.resize(co + 65536);
        dong.read(ra.data() + co, 65536);
        ra.resize(co + static_cast<std::size_t>(dong.gcount()));
    }
    return ra;
}

inline void ghiTep(const std::filesystem::path& tep, std::string_view noiDung) {
    std::ofstream(tep, std::ios::binary) << noiDung;
}

// Everything below a folder, paths relative to it. Links are named, not followed.
inline std::set<std::string> lietKe(const std::filesystem::path& thuMuc) {
    std::set<std::string> ra;
    for (const auto& muc : std::filesystem::recursive_directory_iterator(thuMuc))
        ra.insert(muc.path().lexically_relative(thuMuc).string());
    return ra;
}

}  // namespace tovira::gia

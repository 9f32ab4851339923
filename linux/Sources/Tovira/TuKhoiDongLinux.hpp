#pragma once
// Main thread. The login item as an XDG autostart entry.

#include <filesystem>
#include <string>

#include "TuKhoiDong.hpp"

namespace tovira {

class TuKhoiDongXdg final : public TuKhoiDong {
  public:
    // `thuMuc`: the autostart folder, made when needed. `chuongTrinh`: the absolute path that is started.
    TuKhoiDongXdg(std::filesystem::path thuMuc, std::string chuongTrinh);

    bool dangBat() override;
    std::optional<std::string> dat(bool bat) override;

    // The entry's text.
    [[nodiscard]] static std::string lapMuc(const std::string& chuongTrinh);
    // Where the program that this link of /proc points to is, or its successor: an upgrade puts another file
    // in the place of the one that runs. "tovira", to be found in PATH, when that cannot be told.
    [[nodiscard]] static std::string chuongTrinhNay(const std::filesystem::path& lienKet);

  private:
    std::filesystem::path thuMuc_;
    std::filesystem::path tep_;
    std::string chuongTrinh_;
};

}  // namespace tovira

#pragma once
// Main thread; duoiTep: any thread, pure. Where downloads go: the save folder, the naming rule, and which
// places are already promised to downloads that are still under way.

#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <string_view>

#include "NenChung.hpp"

namespace tovira {

// The platform's identity of one download; never reused.
using MaTai = std::uint64_t;

// What NSString takes for a file name's extension, without the dot; empty for ".bashrc", "a." and "a.b c".
[[nodiscard]] std::string_view duoiTep(std::string_view ten);

class TaiXuong {
  public:
    static constexpr const char* khoaThuMucLuu = "thuMucLuuTep";

    // Is there already something at this absolute path? Tests answer by a list.
    using TonTai = std::function<bool(const std::string&)>;

    // The folder of the user default where that is an existing directory, else Downloads, else the system's
    // temporary directory.
    [[nodiscard]] static std::string thuMucLuu(const CaiDat& caiDat, const TepNguoiDung& tep);

    // Chooses an absolute path in `thuMuc` for a download that suggests `tenGoiY`, and remembers it until
    // `lay`. A name is taken when `tonTai` says so or another download under way has it.
    std::string chon(MaTai ma, const std::string& thuMuc, std::string_view tenGoiY, const TonTai& tonTai);

    // The place that was chosen for a download, once: it has ended. Absent when none was.
    [[nodiscard]] std::optional<std::string> lay(MaTai ma);

  private:
    [[nodiscard]] bool daHua(const std::string& duong) const;

    std::map<MaTai, std::string> tepDangTai_;
};

// The real file system's answer to TonTai; a dangling link counts as something.
[[nodiscard]] bool coTep(const std::string& duong);

}  // namespace tovira

#include "NoiGiaoDienLinux.hpp"

#include <filesystem>

namespace tovira {

std::string noiGiaoDien() {
    namespace fs = std::filesystem;
    std::error_code loi;
    const fs::path nha = fs::read_symlink("/proc/self/exe", loi).parent_path();
    const fs::path daCai = (nha / "../share/tovira/giao-dien").lexically_normal();
    for (const fs::path& cho : {daCai, nha / "../../resources/giao-dien"}) {
        if (fs::is_directory(cho, loi)) return fs::canonical(cho, loi).string();
    }
    return daCai.string();
}

}  // namespace tovira

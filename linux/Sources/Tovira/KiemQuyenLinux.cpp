#include <filesystem>

#include "KiemQuyenNen.hpp"

namespace tovira {

namespace {

// A Linux program has no bundle and no code signature: its folder stands for the bundle, and nothing else is
// known.
class NenKiemQuyenLinux final : public KiemQuyen::Nen {
  public:
    KiemQuyen::Goi docGoi() override {
        std::error_code ma;
        const auto tep = std::filesystem::read_symlink("/proc/self/exe", ma);
        return {tep.parent_path().string(), std::nullopt, std::nullopt};
    }
};

}  // namespace

std::unique_ptr<KiemQuyen::Nen> taoNenKiemQuyen() {
    return std::make_unique<NenKiemQuyenLinux>();
}

}  // namespace tovira

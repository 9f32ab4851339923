#include "CuaSoTach.hpp"

#include <cmath>

namespace tovira {
namespace {

constexpr double rongMacDinh = 980, caoMacDinh = 640;
// Window systems count in 16 bits; a page may ask for anything.
constexpr double lonNhat = 32000;

double kichCo(std::optional<double> xin, double macDinh) {
    return xin && std::isfinite(*xin) && *xin > 0 && *xin <= lonNhat ? *xin : macDinh;
}

}  // namespace

bool CuaSoTach::moNgoai(std::string_view diaChi) {
    return !diaChi.empty() && diaChi != "about:blank";
}

MoTach CuaSoTach::mo(std::optional<double> rong, std::optional<double> cao) {
    if (const auto cu = cuaSoTach_) {
        nen_.dong(*cu);
        cuaSoTach_.reset();
    }
    cuaSoTach_ = ++truoc_;
    return {*cuaSoTach_, kichCo(rong, rongMacDinh), kichCo(cao, caoMacDinh)};
}

void CuaSoTach::khiSapDong(MaTach ma) {
    nen_.chay(ma, "window.close()");
}

void CuaSoTach::khiTuDong(MaTach ma) {
    if (cuaSoTach_ != ma) return;
    nen_.an(ma);
    cuaSoTach_.reset();
}

}  // namespace tovira

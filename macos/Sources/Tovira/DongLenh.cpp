#include "DongLenh.hpp"

#include <algorithm>

namespace tovira {

namespace {

struct Muc {
    const char* co;
    CheDo cheDo;
    const char* dichMacDinh;  // nullptr: the mode takes no argument
};

constexpr Muc bangCheDo[] = {
    {"--tu-kiem", CheDo::tuKiem, nullptr},
    {"--quyen", CheDo::quyen, nullptr},
    {"--tao-icon", CheDo::taoIcon, "Tovira.iconset"},
    {"--tao-icon-ios", CheDo::taoIconIOS, "AppIcon-ios.png"},
};

}  // namespace

DongLenh DongLenh::chon(const std::vector<std::string>& thamSo) {
    for (const Muc& muc : bangCheDo) {
        const auto cho = std::find(thamSo.begin(), thamSo.end(), muc.co);
        if (cho == thamSo.end()) continue;
        if (muc.dichMacDinh == nullptr) return {muc.cheDo, {}};
        const auto sau = std::next(cho);
        return {muc.cheDo, sau != thamSo.end() ? *sau : std::string(muc.dichMacDinh)};
    }
    return {};
}

bool DongLenh::ngam(const std::vector<std::string>& thamSo) {
    return std::find(thamSo.begin(), thamSo.end(), "--ngam") != thamSo.end();
}

}  // namespace tovira

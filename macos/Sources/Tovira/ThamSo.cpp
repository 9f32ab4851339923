#include "ThamSo.hpp"

#include <algorithm>
#include <optional>

#include "DiaChiUrl.hpp"

namespace tovira {

namespace {

std::string chonUngVien(const std::vector<std::string>& thamSo, const CaiDat& caiDat) {
    const auto cho = std::find(thamSo.begin(), thamSo.end(), "--server");
    if (cho != thamSo.end() && std::next(cho) != thamSo.end()) return *std::next(cho);
    if (auto daLuu = caiDat.doc("mayChu"); daLuu && !daLuu->empty()) return *daLuu;
    return ThamSo::mayChuMacDinh();
}

std::string tinhGoc(const std::string& mayChu) {
    const auto url = DiaChiUrl::tach(mayChu);
    if (!url || url->giaoThuc.empty() || url->may.empty()) return mayChu;
    std::string goc = url->giaoThuc + "://" + url->may;
    if (url->cong) goc += ":" + std::to_string(*url->cong);
    return goc;
}

}  // namespace

const char* ThamSo::mayChuMacDinh() {
    return TOVIRA_MAY_CHU_MAC_DINH;
}

ThamSo ThamSo::tinh(const std::vector<std::string>& thamSo, const CaiDat& caiDat) {
    ThamSo kq;
    kq.mayChu = chonUngVien(thamSo, caiDat);
    while (!kq.mayChu.empty() && kq.mayChu.back() == '/')
        kq.mayChu.pop_back();
    // An address without a scheme cannot be loaded, whatever else it may be.
    const auto app = DiaChiUrl::tach(kq.mayChu + "/app");
    kq.duongDanApp =
        app && !app->giaoThuc.empty() ? kq.mayChu + "/app" : std::string(mayChuMacDinh()) + "/app";
    kq.gocMayChu = tinhGoc(kq.mayChu);
    return kq;
}

std::optional<std::string> ThamSo::nhacDiaChi() const {
    const auto url = DiaChiUrl::tach(gocMayChu);
    if (!url || url->giaoThuc.empty() || url->may.empty())
        return "Địa chỉ máy chủ “" + mayChu + "” không dùng được: hãy viết đủ, như https://vi.du.";
    const std::string giaoThuc = chuThuong(url->giaoThuc);
    std::string nenViet = giaoThuc + "://" + chuThuong(url->may);
    const std::uint32_t congRieng = giaoThuc == "https" ? 443 : 80;
    if (url->cong && *url->cong != congRieng) nenViet += ":" + std::to_string(*url->cong);
    if (nenViet == gocMayChu) return std::nullopt;
    return "Trang của máy chủ sẽ không được dùng chuột, bàn phím và màn hình của máy này, vì địa chỉ máy chủ "
           "viết là “" +
           gocMayChu + "”. Hãy viết “" + nenViet + "”: chữ thường, không ghi cổng mặc định.";
}

}  // namespace tovira

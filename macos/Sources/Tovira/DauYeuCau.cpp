#include "DauYeuCau.hpp"

#include <algorithm>
#include <cstdint>

#include "BatBien.hpp"

namespace tovira {
namespace {

constexpr std::string_view xuongDong = "\r\n";
constexpr std::string_view dongTrong = "\r\n\r\n";

// What a leading byte promises: how many bytes follow and the range of the first of them, which is where
// overlong forms, surrogates and code points beyond U+10FFFF are told apart.
struct DangUtf8 {
    int soByteSau;
    unsigned char thap;
    unsigned char cao;
};

DangUtf8 dangCua(unsigned char dau) {
    if (dau < 0x80) return {0, 0, 0};
    if (dau < 0xC2) return {-1, 0, 0};
    if (dau < 0xE0) return {1, 0x80, 0xBF};
    if (dau < 0xF0)
        return {2, static_cast<unsigned char>(dau == 0xE0 ? 0xA0 : 0x80),
                static_cast<unsigned char>(dau == 0xED ? 0x9F : 0xBF)};
    if (dau < 0xF5)
        return {3, static_cast<unsigned char>(dau == 0xF0 ? 0x90 : 0x80),
                static_cast<unsigned char>(dau == 0xF4 ? 0x8F : 0xBF)};
    return {-1, 0, 0};
}

}  // namespace

std::span<char> GomDau::choDoc() {
    if (sucChua_ - so_ < luat_.moiLanDoc) {
        // Raw memory on purpose: a buffer that a read is about to fill need not be zeroed.
        const std::size_t moi = std::max(2 * so_, so_ + luat_.moiLanDoc);
        std::unique_ptr<char[]> dem(new char[moi]);
        std::copy_n(dem_.get(), so_, dem.get());
        dem_ = std::move(dem);
        sucChua_ = moi;
    }
    return {dem_.get() + so_, luat_.moiLanDoc};
}

TrangThaiDau GomDau::them(std::size_t so) {
    TOVIRA_BUOC(so <= sucChua_ - so_);
    // The blank line may have begun in the bytes before.
    const std::size_t timTu = so_ < dongTrong.size() ? 0 : so_ - (dongTrong.size() - 1);
    so_ += so;
    const bool quaDai = so_ > luat_.toiDa;
    if (quaDai && luat_.luc == LuatDau::Luc::sauKhiGhep) return TrangThaiDau::quaDai;
    cuoiDau_ = std::string_view(dem_.get(), so_).find(dongTrong, timTu);
    if (cuoiDau_ != std::string_view::npos) return TrangThaiDau::daDu;
    return quaDai ? TrangThaiDau::quaDai : TrangThaiDau::chuaDu;
}

std::string GomDau::phanDau() const {
    return docUtf8({dem_.get(), cuoiDau_});
}

std::span<const std::byte> GomDau::thua() const {
    return std::as_bytes(std::span<const char>(dem_.get(), so_)).subspan(cuoiDau_ + dongTrong.size());
}

std::string docUtf8(std::string_view byte) {
    std::string ra;
    ra.reserve(byte.size());
    for (std::size_t i = 0; i < byte.size();) {
        const DangUtf8 dang = dangCua(static_cast<unsigned char>(byte[i]));
        std::size_t dai = 1;
        int con = dang.soByteSau;
        for (; con > 0 && i + dai < byte.size(); --con, ++dai) {
            const auto b = static_cast<unsigned char>(byte[i + dai]);
            const bool laDauTien = dai == 1;
            if (b < (laDauTien ? dang.thap : 0x80) || b > (laDauTien ? dang.cao : 0xBF)) break;
        }
        if (con == 0)
            ra += byte.substr(i, dai);
        else
            ra += "\xEF\xBF\xBD";
        i += dai;
    }
    return ra;
}

std::string_view layDong(std::string_view& conLai) {
    const std::size_t cuoi = conLai.find(xuongDong);
    const std::string_view dong = conLai.substr(0, cuoi);
    conLai = cuoi == std::string_view::npos ? std::string_view() : conLai.substr(cuoi + xuongDong.size());
    return dong;
}

std::optional<std::pair<std::string_view, std::string_view>> haiTuDau(std::string_view dong) {
    const auto layTu = [&dong] {
        dong.remove_prefix(std::min(dong.find_first_not_of(' '), dong.size()));
        const std::string_view tu = dong.substr(0, dong.find(' '));
        dong.remove_prefix(tu.size());
        return tu;
    };
    const std::string_view mot = layTu();
    const std::string_view hai = layTu();
    if (hai.empty()) return std::nullopt;
    return std::pair(mot, hai);
}

}  // namespace tovira

#include "YeuCauNhan.hpp"

#include <algorithm>

#include "BatBien.hpp"
#include "DauYeuCau.hpp"
#include "DuongDanNhan.hpp"
#include "KyTu.hpp"

namespace tovira {
namespace {

constexpr std::string_view dichGhi = "/ghi?";

std::string_view tenTrangThai(TrangThaiNhan trangThai) {
    switch (trangThai) {
        case TrangThaiNhan::duoc:
            return "200 OK";
        case TrangThaiNhan::khongNoiDung:
            return "204 No Content";
        case TrangThaiNhan::yeuCauHong:
            return "400 Bad Request";
        case TrangThaiNhan::biTuChoi:
            return "403 Forbidden";
        case TrangThaiNhan::khongCo:
            return "404 Not Found";
        case TrangThaiNhan::saiPhuongThuc:
            return "405 Method Not Allowed";
        case TrangThaiNhan::thanQuaDai:
            return "413 Payload Too Large";
        case TrangThaiNhan::dauQuaDai:
            return "431 Request Header Fields Too Large";
        case TrangThaiNhan::loiMayChu:
            return "500 Internal Server Error";
    }
    TOVIRA_BUOC(false);
}

std::string_view thanCua(TrangThaiNhan trangThai) {
    if (trangThai == TrangThaiNhan::duoc) return R"({"ok":true})";
    if (trangThai == TrangThaiNhan::khongNoiDung) return "";
    return R"({"ok":false})";
}

// The part of `chu` before the first `dau`; what is left, without it, stays in `chu`.
std::string_view catTai(std::string_view& chu, char dau) {
    const std::string_view truoc = chu.substr(0, chu.find(dau));
    chu.remove_prefix(std::min(truoc.size() + 1, chu.size()));
    return truoc;
}

std::string_view boTrang(std::string_view chu) {
    constexpr std::string_view trang = " \t";
    chu.remove_prefix(std::min(chu.find_first_not_of(trang), chu.size()));
    return chu.substr(0, chu.find_last_not_of(trang) + 1);
}

bool laTen(std::string_view chu, std::string_view thuong) {
    return std::equal(chu.begin(), chu.end(), thuong.begin(), thuong.end(), [](char a, char b) {
        return (a >= 'A' && a <= 'Z' ? static_cast<char>(a - 'A' + 'a') : a) == b;
    });
}

}  // namespace

std::string cauTraNhan(TrangThaiNhan trangThai, std::string_view gocMayChu) {
    const std::string_view than = thanCua(trangThai);
    std::string ra;
    ra.reserve(320 + gocMayChu.size());
    ra.append("HTTP/1.1 ").append(tenTrangThai(trangThai));
    ra.append("\r\nContent-Length: ").append(std::to_string(than.size()));
    ra.append("\r\nContent-Type: application/json\r\nAccess-Control-Allow-Origin: ").append(gocMayChu);
    ra.append("\r\nAccess-Control-Allow-Headers: x-duong, content-type\r\n");
    ra.append("Access-Control-Allow-Methods: POST, OPTIONS\r\nConnection: close\r\n\r\n").append(than);
    return ra;
}

YeuCauNhan xetYeuCauNhan(std::string_view phanDau, std::string_view biMat) {
    const auto tra = [](TrangThaiNhan trangThai) { return YeuCauNhan{trangThai, {}, -1}; };
    const auto tu = haiTuDau(layDong(phanDau));
    if (!tu) return tra(TrangThaiNhan::yeuCauHong);
    const auto [phuongThuc, dich] = *tu;
    if (phuongThuc == "OPTIONS") return tra(TrangThaiNhan::khongNoiDung);
    if (phuongThuc != "POST") return tra(TrangThaiNhan::saiPhuongThuc);
    if (!dich.starts_with(dichGhi)) return tra(TrangThaiNhan::khongCo);
    if (biMat.empty() || !soBang(layThamSo(dich.substr(dichGhi.size()), "k"), biMat))
        return tra(TrangThaiNhan::biTuChoi);
    const TuDienDau tuDien(phanDau);
    const auto maHoa = tuDien.lay("x-duong");
    auto duong = maHoa ? giaiBase64(*maHoa) : std::nullopt;
    if (!duong || !laUtf8(*duong)) return tra(TrangThaiNhan::yeuCauHong);
    return {std::nullopt, std::move(*duong), docSo(tuDien.lay("content-length").value_or("")).value_or(-1)};
}

std::string_view layThamSo(std::string_view truyVan, std::string_view ten) {
    while (!truyVan.empty()) {
        std::string_view giaTri = catTai(truyVan, '&');
        if (giaTri.find('=') == std::string_view::npos) continue;
        if (catTai(giaTri, '=') == ten) return giaTri;
    }
    return {};
}

bool soBang(std::string_view mot, std::string_view hai) {
    if (mot.size() != hai.size()) return false;
    // Volatile, so that no compiler may stop early.
    volatile unsigned char khac = 0;
    for (std::size_t i = 0; i < mot.size(); ++i)
        khac = static_cast<unsigned char>(khac | (mot[i] ^ hai[i]));
    return khac == 0;
}

std::optional<std::string_view> TuDienDau::lay(std::string_view ten) const {
    std::optional<std::string_view> ra;
    for (std::string_view con = cacDong_; !con.empty();) {
        std::string_view dong = layDong(con);
        if (dong.find(':') == std::string_view::npos) continue;
        if (laTen(boTrang(catTai(dong, ':')), ten)) ra = boTrang(dong);
    }
    return ra;
}

}  // namespace tovira

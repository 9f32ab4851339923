// Input commands, one a line, against an event stream that only remembers: nothing from the remote side ends
// the process, save the wheel amount that is meant to, and the verdict agrees with what is carried out.

#include <cmath>
#include <cstdint>
#include <string_view>

#include "BatBien.hpp"
#include "DieuKhien.hpp"
#include "Json.hpp"
#include "PhimMac.hpp"
#include "gia/NenDieuKhienGia.hpp"
#include "gia/VongLapGia.hpp"

namespace {

using tovira::DieuKhien;
using tovira::DoiTuongJson;

constexpr double hai63 = 9223372036854775808.0;

// Acceptable, yet meant to end the process or to post nothing.
bool laCuonQua(const DoiTuongJson& lenh) {
    const auto qua = [&](const char* khoa) {
        return std::abs(std::round(lenh.so(khoa).value_or(0))) >= hai63;
    };
    return lenh.chu("t") == "mouse_wheel" && (qua("dx") || qua("dy"));
}

bool laLenhRong(const DoiTuongJson& lenh) {
    if (lenh.chu("t") == "mouse_wheel")
        return lenh.so("dx").value_or(0) == 0 && lenh.so("dy").value_or(0) == 0;
    if (lenh.chu("t") == "text") return false;
    return lenh.co("code") && !tovira::PhimMac::maPhim(lenh.chu("code").value_or(""));
}

void thuMotLenh(std::string_view chu, DieuKhien& dk, tovira::gia::NenDieuKhienGia& nen) {
    const bool hopLe = DieuKhien::hopLe(chu);
    const auto lenh = DoiTuongJson::doc(chu);
    TOVIRA_BUOC(lenh || !hopLe);
    if (hopLe && laCuonQua(*lenh)) return;
    const auto giu = dk.dangGiu();
    const bool dang = dk.lam(chu);
    const auto suKien = nen.lay();
    TOVIRA_BUOC(dang == !suKien.empty());
    TOVIRA_BUOC(dang == (hopLe && !laLenhRong(*lenh)));
    TOVIRA_BUOC(dang || dk.dangGiu() == giu);
    for (const auto& sk : suKien) {
        const auto* chuot = std::get_if<tovira::SuKienChuot>(&sk);
        if (chuot == nullptr) continue;
        TOVIRA_BUOC(chuot->viTri.x >= 0 && chuot->viTri.x <= nen.manHinhChinh.rong);
        TOVIRA_BUOC(chuot->viTri.y >= 0 && chuot->viTri.y <= nen.manHinhChinh.cao);
        TOVIRA_BUOC(!chuot->soLanBam || (*chuot->soLanBam >= 1 && *chuot->soLanBam <= 3));
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* duLieu, std::size_t dai) {
    static tovira::gia::VongLapGia vong;
    tovira::gia::NenDieuKhienGia nen;
    DieuKhien dk(nen, vong);
    std::string_view conLai(reinterpret_cast<const char*>(duLieu), dai);
    while (!conLai.empty()) {
        const auto dong = conLai.substr(0, conLai.find('\n'));
        thuMotLenh(dong, dk, nen);
        conLai.remove_prefix(std::min(conLai.size(), dong.size() + 1));
    }
    const auto giu = dk.dangGiu();
    dk.nhaHet();
    TOVIRA_BUOC(nen.lay().size() == giu && dk.dangGiu() == 0);
    return 0;
}

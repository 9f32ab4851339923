// Request heads: gathering under both laws, decoding, splitting and the verdicts of the servers on them.

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <set>
#include <string>

#include "BatBien.hpp"
#include "DauYeuCau.hpp"
#include "GiaoDienKem.hpp"
#include "MjpegServer.hpp"

using namespace tovira;

namespace {

// Small limits, so that short inputs reach them.
constexpr LuatDau cacLuat[] = {{64, 16, LuatDau::Luc::sauKhiGhep}, {48, 24, LuatDau::Luc::truocKhiDoc}};

struct KetQuaGom {
    TrangThaiDau trangThai;
    std::string dau;
    std::string thua;
};

// The same law once more, on all bytes of a read at once and without memory of earlier reads.
KetQuaGom mauMuc(const LuatDau& luat, std::string_view daCo) {
    const std::size_t cuoi = daCo.find("\r\n\r\n");
    const bool quaDai = daCo.size() > luat.toiDa;
    if (quaDai && (luat.luc == LuatDau::Luc::sauKhiGhep || cuoi == std::string_view::npos))
        return {TrangThaiDau::quaDai, "", ""};
    if (cuoi == std::string_view::npos) return {TrangThaiDau::chuaDu, "", ""};
    return {TrangThaiDau::daDu, docUtf8(daCo.substr(0, cuoi)), std::string(daCo.substr(cuoi + 4))};
}

// Gathers `byte` in reads whose sizes follow `nhip`, each step held against the model.
void gom(const LuatDau& luat, std::uint8_t nhip, std::string_view byte) {
    GomDau gom(luat);
    std::size_t daCo = 0;
    for (std::size_t buoc = 1; daCo < byte.size(); ++buoc) {
        const auto cho = gom.choDoc();
        const std::size_t so = std::min({cho.size(), byte.size() - daCo, 1 + buoc * nhip % luat.moiLanDoc});
        std::memcpy(cho.data(), byte.data() + daCo, so);
        daCo += so;
        const KetQuaGom mong = mauMuc(luat, byte.substr(0, daCo));
        TOVIRA_BUOC(gom.them(so) == mong.trangThai);
        if (mong.trangThai == TrangThaiDau::chuaDu) continue;
        if (mong.trangThai == TrangThaiDau::daDu) {
            const auto thua = gom.thua();
            TOVIRA_BUOC(gom.phanDau() == mong.dau);
            TOVIRA_BUOC(std::string(reinterpret_cast<const char*>(thua.data()), thua.size()) == mong.thua);
        }
        return;
    }
}

// A route never leads anywhere but into the packaged folder's own list.
void soTuyen(const GiaoDienKem::Tuyen& tuyen) {
    static const std::set<std::string> cacTep = [] {
        std::set<std::string> ra{"", "app.html", "crypto.js", "local-store.js", "i18n.js"};
        for (const auto ma : GiaoDienKem::cacTiengNoi)
            ra.insert("i18n/" + std::string(ma) + ".json");
        return ra;
    }();
    TOVIRA_BUOC(cacTep.contains(tuyen.tep));
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* duLieu, std::size_t dai) {
    if (dai < 1) return 0;
    const std::string_view byte(reinterpret_cast<const char*>(duLieu) + 1, dai - 1);
    for (const LuatDau& luat : cacLuat)
        gom(luat, duLieu[0], byte);

    const std::string chu = docUtf8(byte);
    TOVIRA_BUOC(docUtf8(chu) == chu);

    std::string_view con = chu;
    for (std::size_t tong = 0; !con.empty();) {
        const std::size_t truoc = con.size();
        const auto dong = layDong(con);
        TOVIRA_BUOC(dong.find("\r\n") == std::string_view::npos);
        tong += truoc - con.size();
        TOVIRA_BUOC(tong + con.size() == chu.size());
    }
    if (const auto tu = haiTuDau(chu)) {
        TOVIRA_BUOC(!tu->first.empty() && tu->first.find(' ') == std::string_view::npos);
        TOVIRA_BUOC(!tu->second.empty() && tu->second.find(' ') == std::string_view::npos);
    }

    const std::string biMat = "0123";
    if (!MjpegServer::xet(chu, biMat)) {
        TOVIRA_BUOC(chu.find("GET ") != std::string::npos && chu.find("/man-hinh") != std::string::npos);
        TOVIRA_BUOC(chu.find("k=" + biMat) != std::string::npos);
    }
    const auto yeuCau = GiaoDienKem::xet(chu);
    if (yeuCau.xet == GiaoDienKem::Xet::co) soTuyen(yeuCau.tuyen);
    if (const auto tuyen = GiaoDienKem::tim(byte)) soTuyen(*tuyen);
    return 0;
}

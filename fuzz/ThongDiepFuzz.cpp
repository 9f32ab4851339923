// Whatever a page posts, the host stands, and nothing but a number that no page can mean ends it.

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string_view>

#include "Json.hpp"
#include "gia/WebGia.hpp"

using namespace tovira;

namespace {

struct Phong : gia::PhongWeb {
    Phong() { cuaSo.dung(); }
};

// The one message that is allowed to end the process.
bool ketThucDuoc(std::string_view json) {
    const auto than = DoiTuongJson::doc(json);
    return than && than->chu("k") == "caoManHinh" && !(std::abs(than->so("cao").value_or(0)) < 9e18);
}

bool cuonQuaLon(std::string_view json) {
    const auto than = DoiTuongJson::doc(json);
    const auto trong =
        than && than->chu("k") == "lenh" ? DoiTuongJson::doc(than->chu("json").value_or("")) : std::nullopt;
    return trong &&
           (std::abs(trong->so("dx").value_or(0)) >= 9e18 || std::abs(trong->so("dy").value_or(0)) >= 9e18);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* dau, std::size_t dai) {
    static Phong phong;
    const std::string_view json(reinterpret_cast<const char*>(dau), dai);
    if (ketThucDuoc(json) || cuonQuaLon(json)) return 0;
    phong.gui(json);
    phong.vong.xa();
    phong.trang.layJs();
    phong.trang.layTai();
    phong.trang.kichBan.clear();
    phong.khac.lay();
    phong.cua.lay();
    phong.nenNhap.lay();
    phong.nenMan.luong.clear();
    phong.caiDat.kho.clear();
    phong.doMayChu.lan.clear();

    // The escaped form of any text is one literal: nothing in it can close it.
    const auto nhay = Cau::nhayJS(json);
    for (std::size_t i = 1; i + 1 < nhay.size(); ++i) {
        if (nhay[i] == '\\') {
            ++i;
        } else if (nhay[i] == '"' || static_cast<std::uint8_t>(nhay[i]) < 0x20) {
            std::abort();
        }
    }
    if (nhay.size() < 2 || nhay.front() != '"' || nhay.back() != '"') std::abort();
    return 0;
}

// Prints a script that the host runs in the page. in_kich_ban NAME [ARGUMENT…]

#include <cstdio>
#include <cstdlib>
#include <functional>
#include <map>
#include <string>
#include <vector>

#include "Cau.hpp"
#include "KichBanTrang.hpp"

using namespace tovira;
namespace kb = kich_ban_trang;

int main(int so, char** thamSo) {
    const auto a = [&](int i) { return so > i + 1 ? std::string(thamSo[i + 1]) : std::string(); };
    const std::map<std::string, std::function<std::string()>> cac{
        {"kichBan", [&] { return Cau::kichBan(a(1), a(2)); }},
        {"nhayJS", [&] { return Cau::nhayJS(a(1)); }},
        {"trangThai", [&] { return kb::trangThai(a(1) == "true"); }},
        {"troNang", [&] { return kb::troNang(a(1) == "true"); }},
        {"manHinh", [&] { return kb::manHinh(a(1), a(2), a(3) == "true"); }},
        {"dsManHinh",
         [&] {
             const std::vector<MucManHinh> ds{{0, a(1), 1920, 1080, true}, {1, a(2), 800, 600, false}};
             return kb::dsManHinh(ds);
         }},
        {"traLoiNhan",
         [&] {
             return kb::traLoiNhan({a(1), 8080, a(2), a(3)});
         }},
        {"traLoiLuu", [&] { return kb::traLoiLuu(a(1), a(2)); }},
        {"matKetNoi", [&] { return kb::matKetNoi(a(1) == "true"); }},
        {"mayChuSongLai", [] { return kb::mayChuSongLai(); }},
        {"daTai", [&] { return kb::daTai(a(1), a(2)); }},
        {"taiHong", [&] { return kb::taiHong(a(1)); }},
        {"bamDung", [] { return kb::bamDung(); }},
        {"chiONoiTin",
         [&] {
             return kb::chiONoiTin(std::vector<std::string>{a(2), a(3)}, a(1));
         }},
    };
    const auto cho = cac.find(a(0));
    if (cho == cac.end()) return EXIT_FAILURE;
    const std::string js = cho->second();
    std::fwrite(js.data(), 1, js.size(), stdout);
    return EXIT_SUCCESS;
}

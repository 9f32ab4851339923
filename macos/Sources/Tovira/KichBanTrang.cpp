#include "KichBanTrang.hpp"

#include <initializer_list>

namespace tovira::kich_ban_trang {
namespace {

std::string noi(std::initializer_list<std::string_view> phan) {
    std::string ra;
    for (const auto p : phan)
        ra += p;
    return ra;
}

std::string_view logic(bool b) {
    return b ? "true" : "false";
}

std::string muc(const MucManHinh& m) {
    return noi({"{chiSo:", std::to_string(m.chiSo), ",ten:", Cau::nhayJS(m.ten), ",rong:",
                std::to_string(m.rong), ",cao:", std::to_string(m.cao), ",chinh:", logic(m.chinh), "}"});
}

}  // namespace

std::string trangThai(bool autostart) {
    return noi(
        {"(function(){ if (!window.tovira) return;\n"
         "  window.tovira.trangThai = { autostart: ",
         logic(autostart), ", service: ", logic(false),
         " };\n"
         "  if (typeof window.__tvTrangThai === 'function') window.__tvTrangThai(window.tovira.trangThai);\n"
         "})();"});
}

std::string troNang(bool duocPhep) {
    return noi(
        {"(function(){ if (!window.tovira) return;\n"
         "  window.tovira.troNang = ",
         logic(duocPhep),
         ";\n"
         "  if (typeof window.__tvAndroidDoi === 'function') window.__tvAndroidDoi();\n"
         "})();"});
}

std::string manHinh(std::string_view duongDan, std::string_view loi, bool dangPhat) {
    return noi(
        {"(function(){ if (!window.tovira) return;\n"
         "  window.tovira.manHinh = { duongDan: ",
         Cau::nhayJS(duongDan), ", loi: ", Cau::nhayJS(loi),
         " };\n"
         "  window.tovira.dangPhat = ",
         logic(dangPhat),
         ";\n"
         "  if (typeof window.__tvAndroidDoi === 'function') window.__tvAndroidDoi();\n"
         "})();"});
}

std::string dsManHinh(std::span<const MucManHinh> danhSach) {
    std::string ra = "(function(){ if (window.tovira) window.tovira.dsManHinh = [";
    for (const auto& m : danhSach) {
        if (&m != danhSach.data()) ra += ",";
        ra += muc(m);
    }
    return ra + "]; })();";
}

std::string traLoiNhan(const Cau::NhanTep::TraLoi& traLoi) {
    return noi(
        {"(function(){ if (!window.tovira) return;\n"
         "  var f = window.tovira.__nhanCho;\n"
         "  window.tovira.__nhanCho = null;\n"
         "  if (typeof f === 'function') f({\n"
         "    goc: ",
         Cau::nhayJS(traLoi.goc),
         ",\n"
         "    cong: ",
         std::to_string(traLoi.cong),
         ",\n"
         "    biMat: ",
         Cau::nhayJS(traLoi.biMat),
         ",\n"
         "    loi: ",
         Cau::nhayJS(traLoi.loi),
         "\n"
         "  });\n"
         "})();"});
}

std::string traLoiLuu(std::string_view duong, std::string_view loi) {
    return noi(
        {"(function(){ if (!window.tovira) return;\n"
         "  var f = window.tovira.__luuCho;\n"
         "  window.tovira.__luuCho = null;\n"
         "  if (typeof f === 'function') f({ duong: ",
         Cau::nhayJS(duong), ", loi: ", Cau::nhayJS(loi),
         " });\n"
         "})();"});
}

std::string matKetNoi(bool mat) {
    return noi({"(function(){ if (typeof window.__tvMatKetNoi === 'function') window.__tvMatKetNoi(",
                logic(mat), "); })();"});
}

std::string mayChuSongLai() {
    return "(function(){ if (typeof window.__tvMayChuSongLai === 'function') window.__tvMayChuSongLai(); "
           "})();";
}

std::string daTai(std::string_view thuMuc, std::string_view ten) {
    return noi(
        {"(function(){ if (typeof window.__tvDaTai === 'function')\n"
         "  window.__tvDaTai(",
         Cau::nhayJS(thuMuc), ", ", Cau::nhayJS(ten),
         ");\n"
         "})();"});
}

std::string taiHong(std::string_view moTa) {
    return noi(
        {"(function(){ if (typeof window.__tvTaiHong === 'function')\n"
         "  window.__tvTaiHong(",
         Cau::nhayJS(moTa),
         ");\n"
         "})();"});
}

std::string bamDung() {
    return "(function(){ var b = document.getElementById('bc-stop'); if (b) b.click(); })();";
}

std::string chiONoiTin(std::span<const std::string> gocTin, std::string_view js) {
    std::string ra = "if (false";
    for (const auto& goc : gocTin)
        ra += " || location.origin === " + Cau::nhayJS(goc);
    return ra.append(") ").append(js);
}

}  // namespace tovira::kich_ban_trang

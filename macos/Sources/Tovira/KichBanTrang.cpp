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
    return noi({R"js((function(){ if (!window.tovira) return;
  window.tovira.trangThai = { autostart: )js",
                logic(autostart), ", service: ", logic(false),
                R"js( };
  if (typeof window.__tvTrangThai === 'function') window.__tvTrangThai(window.tovira.trangThai);
})();)js"});
}

std::string troNang(bool duocPhep) {
    return noi({R"js((function(){ if (!window.tovira) return;
  window.tovira.troNang = )js",
                logic(duocPhep),
                R"js(;
  if (typeof window.__tvAndroidDoi === 'function') window.__tvAndroidDoi();
})();)js"});
}

std::string manHinh(std::string_view duongDan, std::string_view loi, bool dangPhat) {
    return noi({R"js((function(){ if (!window.tovira) return;
  window.tovira.manHinh = { duongDan: )js",
                Cau::nhayJS(duongDan), ", loi: ", Cau::nhayJS(loi),
                R"js( };
  window.tovira.dangPhat = )js",
                logic(dangPhat),
                R"js(;
  if (typeof window.__tvAndroidDoi === 'function') window.__tvAndroidDoi();
})();)js"});
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
    return noi({R"js((function(){ if (!window.tovira) return;
  var f = window.tovira.__nhanCho;
  window.tovira.__nhanCho = null;
  if (typeof f === 'function') f({
    goc: )js",
                Cau::nhayJS(traLoi.goc),
                R"js(,
    cong: )js",
                std::to_string(traLoi.cong),
                R"js(,
    biMat: )js",
                Cau::nhayJS(traLoi.biMat),
                R"js(,
    loi: )js",
                Cau::nhayJS(traLoi.loi),
                R"js(
  });
})();)js"});
}

std::string traLoiLuu(std::string_view duong, std::string_view loi) {
    return noi({R"js((function(){ if (!window.tovira) return;
  var f = window.tovira.__luuCho;
  window.tovira.__luuCho = null;
  if (typeof f === 'function') f({ duong: )js",
                Cau::nhayJS(duong), ", loi: ", Cau::nhayJS(loi),
                R"js( });
})();)js"});
}

std::string matKetNoi(bool mat) {
    return noi({"(function(){ if (typeof window.__tvMatKetNoi === 'function') window.__tvMatKetNoi(",
                logic(mat), "); })();"});
}

std::string mayChuSongLai() {
    return R"js((function(){ if (typeof window.__tvMayChuSongLai === 'function') window.__tvMayChuSongLai(); })();)js";
}

std::string daTai(std::string_view thuMuc, std::string_view ten) {
    return noi({R"js((function(){ if (typeof window.__tvDaTai === 'function')
  window.__tvDaTai()js",
                Cau::nhayJS(thuMuc), ", ", Cau::nhayJS(ten),
                R"js();
})();)js"});
}

std::string taiHong(std::string_view moTa) {
    return noi({R"js((function(){ if (typeof window.__tvTaiHong === 'function')
  window.__tvTaiHong()js",
                Cau::nhayJS(moTa),
                R"js();
})();)js"});
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

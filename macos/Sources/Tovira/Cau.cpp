#include "Cau.hpp"

#include <array>
#include <cmath>
#include <cstdio>
#include <optional>
#include <string>

#include "BatBien.hpp"
#include "CuaSo.hpp"
#include "DieuKhien.hpp"
#include "Json.hpp"
#include "KichBanTrang.hpp"
#include "KyTu.hpp"
#include "ManHinh.hpp"
#include "ThamSo.hpp"

namespace tovira {
namespace {

// What follows the list of trusted origins, up to the version.
constexpr const char* sauHopLe = R"js(].filter(Boolean);
  // Trust is a whole origin, never a prefix of the address: "https://host" also begins an address on
  // "host.elsewhere" and one that carries "host" as the user name before an "@". A page trusted by mistake could
  // type and click on this machine. location.origin is what the browser itself made of the parsed address.
  if (hopLe.indexOf(String(location.origin)) < 0) return;
  var gui = function (o) {
    try { window.webkit.messageHandlers.tv.postMessage(o); } catch (e) {}
  };
  window.ipc = { postMessage: function (s) { gui({ k: 'ipc', s: String(s) }); } };
  window.tovira = {
    native: true,
    phienBan: )js";

constexpr const char* sauPhienBan = R"js(,
    nenTang: 'macos',
    trangThai: { autostart: false, service: false },
    manHinh: { duongDan: '', loi: '' },
    dsManHinh: [],
    troNang: false,
    xinManHinh: function (n) {
      window.tovira.manHinh = { duongDan: '', loi: '' };
      gui({ k: 'manHinhBat', n: (n | 0) });
    },
    datCaoManHinh: function (cao) { gui({ k: 'caoManHinh', cao: (cao | 0) }); },
    dungManHinh: function () {
      window.tovira.manHinh = { duongDan: '', loi: '' };
      gui({ k: 'manHinhTat' });
    },
    dat: function (ten, bat) { gui({ k: 'dat', ten: String(ten), bat: !!bat }); },
    datNgonNgu: function (ma) { gui({ k: 'ngonNgu', ma: String(ma) }); },
    guiLenh: function (json) {
      gui({ k: 'lenh', json: String(json) });
      return !!window.tovira.troNang;
    },
    troNangDaBat: function () { return !!window.tovira.troNang; },
    moCaiDatTroNang: function () { gui({ k: 'moTroNang' }); },
    manHinhDangPhat: function () { return !!window.tovira.dangPhat; },
    moThuMucNhan: function () {
      return new Promise(function (xong) {
        window.tovira.__nhanCho = xong;
        gui({ k: 'moThuMucNhan' });
      });
    },
    dongThuMucNhan: function () { gui({ k: 'dongThuMucNhan' }); },
    chonThuMucLuu: function () {
      return new Promise(function (xong) {
        window.tovira.__luuCho = xong;
        gui({ k: 'chonThuMucLuu' });
      });
    },
    moThuMucTai: function (duong) {
      return new Promise(function (xong) {
        window.tovira.__nhanCho = xong;
        gui({ k: 'moThuMucTai', duong: String(duong || '') });
      });
    },
    hienTrongFinder: function (duong, ten) {
      gui({ k: 'hienTrongFinder', duong: String(duong || ''), ten: String(ten || '') });
    }
  };
  var baoNap = function () { gui({ k: 'napXong' }); };
  if (document.readyState === 'loading') {
    document.addEventListener('DOMContentLoaded', baoNap);
  } else {
    baoNap();
  }
})();
)js";

std::string chuHoac(const DoiTuongJson& than, std::string_view khoa) {
    return std::string(than.chu(khoa).value_or(""));
}

// A whole number that 64 bits can hold; absent for anything else, a number with a fraction included.
std::optional<std::int64_t> nguyen(std::optional<double> so) {
    constexpr double hai63 = 9223372036854775808.0;
    if (!so || !(*so >= -hai63 && *so < hai63) || std::trunc(*so) != *so) return std::nullopt;
    return static_cast<std::int64_t>(*so);
}

// The two characters of a short escape, or nothing.
const char* thoatNgan(std::uint8_t c) {
    switch (c) {
        case '"':
            return "\\\"";
        case '\\':
            return "\\\\";
        case '\n':
            return "\\n";
        case '\r':
            return "\\r";
        case '\t':
            return "\\t";
        case '\b':
            return "\\b";
        case '\f':
            return "\\f";
        default:
            return nullptr;
    }
}

}  // namespace

Cau::Cau(CuaSo& cuaSo, NhanTep& nhanTep, Nen& nen) : cuaSo_(cuaSo), nhanTep_(nhanTep), nen_(nen) {}

std::string Cau::kichBan(std::string_view gocMayChu, std::string_view gocKem) {
    return "(function () {\n  var hopLe = [" + nhayJS(gocMayChu) + ", " + nhayJS(gocKem) + sauHopLe +
           nhayJS(phienBanTovira) + sauPhienBan;
}

std::string Cau::nhayJS(std::string_view chu) {
    if (!laUtf8(chu)) return "\"\"";
    std::string ra = "\"";
    ra.reserve(chu.size() + 2);
    for (const char c : chu) {
        const auto byte = static_cast<std::uint8_t>(c);
        if (const char* ngan = thoatNgan(byte)) {
            ra += ngan;
        } else if (byte < 0x20) {
            std::array<char, 8> dem{};
            std::snprintf(dem.data(), dem.size(), "\\u%04x", byte);
            ra += dem.data();
        } else {
            ra += c;
        }
    }
    return ra + '"';
}

void Cau::nhan(std::string_view json, const NguoiGui& nguoiGui) {
    struct Loai {
        std::string_view k;
        void (Cau::*lam)(const DoiTuongJson&);
    };
    static constexpr std::array<Loai, 14> bang{{
        {"lenh", &Cau::lenh},
        {"napXong", &Cau::napXong},
        {"manHinhBat", &Cau::manHinhBat},
        {"caoManHinh", &Cau::caoManHinh},
        {"manHinhTat", &Cau::manHinhTat},
        {"dat", &Cau::dat},
        {"ngonNgu", &Cau::ngonNgu},
        {"ipc", &Cau::ipc},
        {"moThuMucNhan", &Cau::moThuMucNhan},
        {"dongThuMucNhan", &Cau::dongThuMucNhan},
        {"chonThuMucLuu", &Cau::chonThuMucLuu},
        {"moThuMucTai", &Cau::moThuMucTai},
        {"hienTrongFinder", &Cau::hienTrongFinder},
        {"moTroNang", &Cau::moTroNang},
    }};
    if (nguoiGui.khung != LoaiKhung::chinh || !cuaSo_.gocCauDuoc(nguoiGui.goc)) return;
    const auto than = DoiTuongJson::doc(json);
    if (!than) return;
    const auto k = than->chu("k");
    for (const auto& loai : bang) {
        if (k == loai.k) return (this->*loai.lam)(*than);
    }
}

void Cau::napXong(const DoiTuongJson&) {
    cuaSo_.trangDaNap();
}

void Cau::manHinhBat(const DoiTuongJson& than) {
    ManHinh::chung().batDau(nguyen(than.so("n")).value_or(0));
}

void Cau::caoManHinh(const DoiTuongJson& than) {
    const auto cao = nguyen(std::trunc(than.so("cao").value_or(0)));
    if (!cao) {
        DieuKhien::chung().nhaHet();
        TOVIRA_BUOC(cao.has_value());
    }
    ManHinh::chung().datCanh(*cao);
}

void Cau::manHinhTat(const DoiTuongJson&) {
    ManHinh::chung().dung();
    DieuKhien::chung().nhaHet();
    cuaSo_.boDo();
}

void Cau::dat(const DoiTuongJson& than) {
    cuaSo_.datTuyChon(chuHoac(than, "ten"), than.so("bat") == 1.0);
}

void Cau::ngonNgu(const DoiTuongJson& than) {
    if (const auto ma = than.chu("ma")) cuaSo_.luuNgonNgu(std::string(*ma));
}

void Cau::lenh(const DoiTuongJson& than) {
    if (const auto json = than.chu("json")) DieuKhien::chung().lam(*json);
}

void Cau::ipc(const DoiTuongJson& than) {
    const auto s = than.chu("s");
    if (s == "thu-lai") {
        cuaSo_.veMayChuThat();
    } else if (s == "hien-cua-so") {
        cuaSo_.hien();
    }
}

std::function<void(Cau::NhanTep::TraLoi)> Cau::traLoiNhan() {
    return [yeu = cuaSo_.yeu()](const NhanTep::TraLoi& traLoi) {
        if (const auto cuaSo = yeu.lock()) cuaSo->chayNoiTin(kich_ban_trang::traLoiNhan(traLoi));
    };
}

void Cau::moThuMucNhan(const DoiTuongJson&) {
    nhanTep_.chonThuMuc(traLoiNhan());
}

void Cau::dongThuMucNhan(const DoiTuongJson&) {
    nhanTep_.dongThuMuc();
}

void Cau::chonThuMucLuu(const DoiTuongJson&) {
    nhanTep_.chiChonThuMuc([yeu = cuaSo_.yeu()](const std::string& duong, const std::string& loi) {
        if (const auto cuaSo = yeu.lock()) cuaSo->dayThuMucLuu(duong, loi);
    });
}

void Cau::moThuMucTai(const DoiTuongJson& than) {
    nhanTep_.moTaiDuong(chuHoac(than, "duong"), traLoiNhan());
}

void Cau::hienTrongFinder(const DoiTuongJson& than) {
    nhanTep_.hienTrongFinder(chuHoac(than, "duong"), chuHoac(than, "ten"));
}

void Cau::moTroNang(const DoiTuongJson&) {
    if (!nen_.xinTroNang()) DieuKhien::chung().moCaiDatTroNang();
}

}  // namespace tovira

// The three loopback servers and the probe, over real sockets.

#include <array>
#include <fstream>
#include <iterator>

#include "DoMayChu.hpp"
#include "GiaoDienKem.hpp"
#include "MayChuNhan.hpp"
#include "MjpegServer.hpp"
#include "SocketIoThay.hpp"
#include "TuKiemKhach.hpp"
#include "TuKiemMuc.hpp"
#include "VongLapMotLan.hpp"

namespace tovira::tu_kiem {
namespace {

namespace fs = std::filesystem;

// What an answer begins with, and whether it holds a line.
bool batDauBang(const std::string& nhan, std::string_view trangThai) {
    return nhan.starts_with("HTTP/1.1 " + std::string(trangThai) + "\r\n");
}

KetLuan traTrangThai(const std::string& nhan, std::string_view trangThai) {
    return buoc(batDauBang(nhan, trangThai),
                "mong " + std::string(trangThai) + ", nhận \"" + rutGon(nhan) + "\"");
}

bool laHex(std::string_view chu, std::size_t dai) {
    return chu.size() == dai && chu.find_first_not_of("0123456789abcdef") == std::string_view::npos;
}

// --- The screen stream ---

template <class F>
KetLuan voiMayChuAnh(F lam) {
    MjpegServer may;
    const auto mo = may.batDau();
    return mo ? lam(may) : TuKiem::hong(mo.loi().moTa);
}

std::string layAnh(std::string_view phuongThuc, std::string_view biMat) {
    return std::string(phuongThuc) + " /man-hinh?k=" + std::string(biMat) +
           " HTTP/1.1\r\nHost: 127.0.0.1\r\n\r\n";
}

std::string tuChoiAnh(std::string_view trangThai) {
    return "HTTP/1.1 " + std::string(trangThai) +
           "\r\nAccess-Control-Allow-Origin: *\r\nContent-Length: 0\r\nConnection: close\r\n\r\n";
}

constexpr std::string_view dauDongAnh =
    "HTTP/1.1 200 OK\r\nAccess-Control-Allow-Origin: *\r\nCache-Control: no-store, no-cache, "
    "must-revalidate\r\nPragma: no-cache\r\nConnection: close\r\n"
    "Content-Type: multipart/x-mixed-replace; boundary=khungcuatoi\r\n\r\n";

KetLuan anhBiMat(const ChoDua&) {
    return voiMayChuAnh([](const MjpegServer& may) {
        return buoc(laHex(may.biMat(), 36) && may.biMat() != MjpegServer().biMat(),
                    "mã bí mật \"" + may.biMat() + "\"");
    });
}

KetLuan anhSaiBiMat(const ChoDua&) {
    return voiMayChuAnh([](const MjpegServer& may) {
        return cungChu(hoi(may.cong(), layAnh("GET", "sai")), tuChoiAnh("404 Not Found"));
    });
}

KetLuan anhSaiPhuongThuc(const ChoDua&) {
    return voiMayChuAnh([](const MjpegServer& may) {
        return cungChu(hoi(may.cong(), layAnh("POST", may.biMat())), tuChoiAnh("400 Bad Request"));
    });
}

KetLuan anhMotKhung(const ChoDua&) {
    constexpr std::string_view jpeg = "\xFF\xD8tu kiem\xFF\xD9";
    const auto khung = KhungMjpeg::tao(std::as_bytes(std::span(jpeg)));
    MjpegServer may;
    // Pushed when the viewer can take it: until then a frame would pass it by.
    may.khiCoNguoiRanh = [&] { may.dangKhung(khung, MjpegServer::Gui::nguoiChuaCo); };
    if (const auto mo = may.batDau(); !mo) return TuKiem::hong(mo.loi().moTa);
    KhachTuKiem khach(may.cong());
    khach.gui(layAnh("GET", may.biMat()));
    const std::string mong =
        std::string(dauDongAnh) +
        "--khungcuatoi\r\nContent-Type: image/jpeg\r\nContent-Length: " + std::to_string(jpeg.size()) +
        "\r\n\r\n" + std::string(jpeg) + "\r\n";
    return cungChu(khach.doc(mong.size()), mong);
}

KetLuan anhDung(const ChoDua&) {
    return voiMayChuAnh([](MjpegServer& may) {
        KhachTuKiem khach(may.cong());
        khach.gui(layAnh("GET", may.biMat()));
        if (khach.doc(dauDongAnh.size()) != dauDongAnh) return TuKiem::hong("không vào xem được");
        const auto cong = may.cong();
        may.dung();
        if (!khach.daDong()) return TuKiem::hong("người xem chưa bị ngắt");
        return buoc(!KhachTuKiem(cong).noiDuoc(), "cổng vẫn nhận kết nối");
    });
}

constexpr std::array cacMayChuAnh{
    Muc{"máy chủ ảnh: mã bí mật 36 ký tự, mỗi lần một khác", anhBiMat},
    Muc{"máy chủ ảnh: sai mã bí mật thì 404", anhSaiBiMat},
    Muc{"máy chủ ảnh: POST thì 400", anhSaiPhuongThuc},
    Muc{"máy chủ ảnh: phần đầu luồng và một khung đúng từng byte", anhMotKhung},
    Muc{"máy chủ ảnh: dừng thì ngắt người xem và đóng cổng", anhDung},
};

// --- The packaged interface ---

template <class F>
KetLuan voiGiaoDien(const ChoDua& choDua, F lam) {
    GiaoDienKem may(fs::path(choDua.nen.thuMucGiaoDien()).parent_path());
    const auto mo = may.batDau();
    return mo ? lam(may) : TuKiem::hong(mo.loi().moTa);
}

std::string lay(std::string_view dich) {
    return "GET " + std::string(dich) + " HTTP/1.1\r\nHost: 127.0.0.1\r\n\r\n";
}

std::string docTep(const fs::path& duong) {
    std::ifstream tep(duong, std::ios::binary);
    return {std::istreambuf_iterator<char>(tep), {}};
}

std::string mongTraLoi(std::string_view kieu, std::string_view than) {
    return "HTTP/1.1 200 OK\r\nContent-Type: " + std::string(kieu) +
           "; charset=utf-8\r\nContent-Length: " + std::to_string(than.size()) +
           "\r\nCache-Control: no-store\r\nConnection: close\r\n\r\n" + std::string(than);
}

KetLuan kemDuTep(const ChoDua& choDua) {
    const fs::path goc = choDua.nen.thuMucGiaoDien();
    for (const char* ten : {"app.html", "crypto.js", "i18n.js", "local-store.js"})
        if (docTep(goc / ten).empty()) return TuKiem::hong("thiếu " + (goc / ten).string());
    return TuKiem::dat();
}

KetLuan kemDuTiengNoi(const ChoDua& choDua) {
    const fs::path goc = fs::path(choDua.nen.thuMucGiaoDien()) / "i18n";
    for (const auto ma : GiaoDienKem::cacTiengNoi) {
        const fs::path tep = goc / (std::string(ma) + ".json");
        if (!docTep(tep).starts_with("{")) return TuKiem::hong("thiếu hoặc hỏng " + tep.string());
    }
    return buoc(GiaoDienKem::cacTiengNoi.size() == 15, "không đủ 15 tiếng");
}

KetLuan kemTrang(const ChoDua& choDua) {
    return voiGiaoDien(choDua, [](const GiaoDienKem& may) {
        const std::string mong = mongTraLoi("text/html", docTep(*may.thuMuc() / "app.html"));
        for (const char* duong : {"/", "/app", "/app.html", "/app?lang=vi"}) {
            if (hoi(may.cong(), lay(duong)) != mong) return TuKiem::hong(std::string("sai ở ") + duong);
        }
        return TuKiem::dat();
    });
}

KetLuan kemKichBan(const ChoDua& choDua) {
    return voiGiaoDien(choDua, [](const GiaoDienKem& may) {
        for (const char* ten : {"crypto.js", "local-store.js", "i18n.js"}) {
            const std::string mong = mongTraLoi("text/javascript", docTep(*may.thuMuc() / ten));
            if (hoi(may.cong(), lay("/" + std::string(ten))) != mong)
                return TuKiem::hong(std::string("sai ở ") + ten);
        }
        return TuKiem::dat();
    });
}

KetLuan kemTiengNoi(const ChoDua& choDua) {
    return voiGiaoDien(choDua, [](const GiaoDienKem& may) {
        for (const auto ma : GiaoDienKem::cacTiengNoi) {
            const std::string tep = "i18n/" + std::string(ma) + ".json";
            if (hoi(may.cong(), lay("/" + tep)) !=
                mongTraLoi("application/json", docTep(*may.thuMuc() / tep)))
                return TuKiem::hong("sai ở " + tep);
        }
        return TuKiem::dat();
    });
}

KetLuan kemSocketIo(const ChoDua& choDua) {
    return voiGiaoDien(choDua, [](const GiaoDienKem& may) {
        if (socketIoThay.size() != 1296) return TuKiem::hong(std::to_string(socketIoThay.size()) + " byte");
        return cungChu(hoi(may.cong(), lay("/vendor/socket.io.min.js")),
                       mongTraLoi("text/javascript", socketIoThay));
    });
}

KetLuan kemKhongRaNgoai(const ChoDua& choDua) {
    return voiGiaoDien(choDua, [](const GiaoDienKem& may) {
        for (const char* duong : {"/../app.html", "/i18n/../app.html", "/i18n/%2e%2e/app.html",
                                  "/i18n/../../../../etc/passwd", "/i18n/xx.json", "/APP"}) {
            if (!batDauBang(hoi(may.cong(), lay(duong)), "404 Not Found"))
                return TuKiem::hong(std::string("không phải 404 ở ") + duong);
        }
        return TuKiem::dat();
    });
}

KetLuan kemSaiPhuongThuc(const ChoDua& choDua) {
    return voiGiaoDien(choDua, [](const GiaoDienKem& may) {
        return traTrangThai(hoi(may.cong(), "POST /app HTTP/1.1\r\n\r\n"), "400 Bad Request");
    });
}

KetLuan kemDung(const ChoDua& choDua) {
    return voiGiaoDien(choDua, [](GiaoDienKem& may) {
        const auto cong = may.cong();
        may.dung();
        return buoc(!KhachTuKiem(cong).noiDuoc(), "cổng vẫn nhận kết nối");
    });
}

constexpr std::array cacGiaoDienKem{
    Muc{"giao diện kèm: đủ trang và kịch bản trong gói", kemDuTep},
    Muc{"giao diện kèm: đủ 15 tiếng trong gói", kemDuTiengNoi},
    Muc{"giao diện kèm: trang trả về đúng từng byte, no-store", kemTrang},
    Muc{"giao diện kèm: kịch bản trả về đúng từng byte", kemKichBan},
    Muc{"giao diện kèm: 15 tiếng trả về đúng từng byte", kemTiengNoi},
    Muc{"giao diện kèm: kịch bản thay thế 1296 byte", kemSocketIo},
    Muc{"giao diện kèm: không ra ngoài danh sách (404)", kemKhongRaNgoai},
    Muc{"giao diện kèm: POST thì 400", kemSaiPhuongThuc},
    Muc{"giao diện kèm: dừng thì đóng cổng", kemDung},
};

// --- File receiving ---

struct NenNhanKin final : MayChuNhan::Nen {
    void hoiThuMuc(const Bang&, std::function<void(std::optional<std::string>)> xong) override { xong({}); }
    void danhDauTuXa(int) override {}
};

struct TepKin final : TepNguoiDung {
    [[nodiscard]] std::optional<std::string> thuMucTaiXuong() const override { return std::nullopt; }
    void hien(const std::string&) override {}
};

// A server on a folder of its own within the temporary one.
template <class F>
KetLuan voiNhan(const ChoDua& choDua, F lam) {
    if (choDua.thuMucTam.empty()) return TuKiem::hong("không tạo được thư mục tạm");
    const fs::path thuMuc = choDua.thuMucTam / "nhan";
    fs::remove_all(thuMuc);
    fs::create_directories(thuMuc);
    NenNhanKin nen;
    TepKin tep;
    VongLapMotLan vongLap;
    MayChuNhan may(nen, tep, vongLap, "https://tu.kiem", {.doBen = ThuMucNhan::DoBen::tuyHeThong});
    const auto mo = may.batDau(thuMuc.string());
    return mo ? lam(may, thuMuc) : TuKiem::hong(mo.loi().moTa);
}

constexpr std::string_view tenMaHoa = "YW5oL3RlcC50eHQ=";  // anh/tep.txt
constexpr std::string_view ngoaiMaHoa = "Li4vbmdvYWk=";    // ../ngoai

std::string ghi(std::string_view biMat, std::string_view duong, std::string_view than) {
    return "POST /ghi?k=" + std::string(biMat) + " HTTP/1.1\r\nX-Duong: " + std::string(duong) +
           "\r\nContent-Length: " + std::to_string(than.size()) + "\r\n\r\n" + std::string(than);
}

KetLuan nhanGhi(const ChoDua& choDua) {
    return voiNhan(choDua, [](const MayChuNhan& may, const fs::path& thuMuc) {
        const std::string than("xin ch\xC3\xA0o\0\r\n\xFF", 14);
        const std::string nhan = hoi(may.cong(), ghi(may.biMat(), tenMaHoa, than));
        if (!batDauBang(nhan, "200 OK")) return traTrangThai(nhan, "200 OK");
        if (!nhan.ends_with("\r\n\r\n{\"ok\":true}")) return TuKiem::hong("thân trả lời lạ");
        return cungChu(docTep(thuMuc / "anh" / "tep.txt"), than);
    });
}

KetLuan nhanBiMat(const ChoDua& choDua) {
    return voiNhan(choDua, [](const MayChuNhan& may, const fs::path&) {
        return buoc(laHex(may.biMat(), 48), "mã bí mật \"" + may.biMat() + "\"");
    });
}

KetLuan nhanSaiBiMat(const ChoDua& choDua) {
    return voiNhan(choDua, [](const MayChuNhan& may, const fs::path& thuMuc) {
        const auto tra = traTrangThai(hoi(may.cong(), ghi("sai", tenMaHoa, "x")), "403 Forbidden");
        return fs::is_empty(thuMuc) ? tra : TuKiem::hong("vẫn ghi tệp");
    });
}

KetLuan nhanRaNgoai(const ChoDua& choDua) {
    return voiNhan(choDua, [](const MayChuNhan& may, const fs::path& thuMuc) {
        const auto tra = traTrangThai(hoi(may.cong(), ghi(may.biMat(), ngoaiMaHoa, "x")), "400 Bad Request");
        return fs::exists(thuMuc.parent_path() / "ngoai") ? TuKiem::hong("đã ghi ra ngoài thư mục") : tra;
    });
}

// Larger than the piece that memory is lent in.
KetLuan nhanTepTo(const ChoDua& choDua) {
    return voiNhan(choDua, [](const MayChuNhan& may, const fs::path& thuMuc) {
        std::string than(2'500'000, 'x');
        for (std::size_t i = 0; i < than.size(); i += 1000)
            than[i] = static_cast<char>(i / 1000);
        const auto tra = traTrangThai(hoi(may.cong(), ghi(may.biMat(), tenMaHoa, than)), "200 OK");
        return docTep(thuMuc / "anh" / "tep.txt") == than ? tra : TuKiem::hong("tệp ghi ra khác thân đã gửi");
    });
}

KetLuan nhanQuaLienKet(const ChoDua& choDua) {
    return voiNhan(choDua, [](const MayChuNhan& may, const fs::path& thuMuc) {
        fs::create_directory_symlink(thuMuc.parent_path(), thuMuc / "anh");
        const auto tra = traTrangThai(hoi(may.cong(), ghi(may.biMat(), tenMaHoa, "x")), "400 Bad Request");
        return fs::exists(thuMuc.parent_path() / "tep.txt") ? TuKiem::hong("đã ghi ra ngoài thư mục") : tra;
    });
}

KetLuan nhanSaiPhuongThuc(const ChoDua& choDua) {
    return voiNhan(choDua, [](const MayChuNhan& may, const fs::path&) {
        return traTrangThai(hoi(may.cong(), lay("/ghi?k=" + may.biMat())), "405 Method Not Allowed");
    });
}

KetLuan nhanSaiDuong(const ChoDua& choDua) {
    return voiNhan(choDua, [](const MayChuNhan& may, const fs::path&) {
        return traTrangThai(hoi(may.cong(), "POST /khac HTTP/1.1\r\n\r\n"), "404 Not Found");
    });
}

KetLuan nhanQuaDai(const ChoDua& choDua) {
    return voiNhan(choDua, [](const MayChuNhan& may, const fs::path&) {
        const std::string yeuCau = "POST /ghi?k=" + may.biMat() +
                                   " HTTP/1.1\r\nX-Duong: " + std::string(tenMaHoa) +
                                   "\r\nContent-Length: 999999999999999\r\n\r\n";
        return traTrangThai(hoi(may.cong(), yeuCau), "413 Payload Too Large");
    });
}

KetLuan nhanOptions(const ChoDua& choDua) {
    return voiNhan(choDua, [](const MayChuNhan& may, const fs::path&) {
        const std::string nhan = hoi(may.cong(), "OPTIONS /ghi HTTP/1.1\r\n\r\n");
        if (nhan.find("\r\nAccess-Control-Allow-Origin: https://tu.kiem\r\n") == std::string::npos)
            return TuKiem::hong("không nêu đúng gốc được đọc: \"" + rutGon(nhan) + "\"");
        return traTrangThai(nhan, "204 No Content");
    });
}

KetLuan nhanDung(const ChoDua& choDua) {
    return voiNhan(choDua, [](MayChuNhan& may, const fs::path&) {
        const auto cong = may.cong();
        may.dung();
        return buoc(!KhachTuKiem(cong).noiDuoc() && may.biMat().empty(), "cổng vẫn nhận kết nối");
    });
}

constexpr std::array cacNhanTep{
    Muc{"nhận tệp: ghi đúng từng byte vào thư mục con", nhanGhi},
    Muc{"nhận tệp: mã bí mật 48 ký tự", nhanBiMat},
    Muc{"nhận tệp: sai mã bí mật thì 403 và không ghi", nhanSaiBiMat},
    Muc{"nhận tệp: \"../\" thì 400 và không ra ngoài", nhanRaNgoai},
    Muc{"nhận tệp: liên kết dẫn ra ngoài thì 400", nhanQuaLienKet},
    Muc{"nhận tệp: tệp 2,5 MB đúng từng byte", nhanTepTo},
    Muc{"nhận tệp: GET thì 405", nhanSaiPhuongThuc},
    Muc{"nhận tệp: đường khác thì 404", nhanSaiDuong},
    Muc{"nhận tệp: thân quá dài thì 413", nhanQuaDai},
    Muc{"nhận tệp: OPTIONS thì 204 kèm gốc được đọc", nhanOptions},
    Muc{"nhận tệp: dừng thì đóng cổng và bỏ mã bí mật", nhanDung},
};

// --- The probe ---

std::string tai(std::uint16_t cong) {
    return "http://127.0.0.1:" + std::to_string(cong);
}

KetLuan doSong(const ChoDua&) {
    return voiMayChuAnh(
        [](const MjpegServer& may) { return buoc(DoMayChu::song(tai(may.cong()), 1.0), "báo là chết"); });
}

KetLuan doChet(const ChoDua&) {
    return voiMayChuAnh([](MjpegServer& may) {
        const auto cong = may.cong();
        may.dung();
        return buoc(!DoMayChu::song(tai(cong), 1.0), "báo là sống");
    });
}

KetLuan doTach(const ChoDua&) {
    using DiaChi = DoMayChu::DiaChi;
    const std::pair<const char*, std::optional<DiaChi>> bang[] = {
        {"http://localhost:9009/app", DiaChi{"localhost", 9009}},
        {"https://vi.du/app", DiaChi{"vi.du", 443}},
        {"http://vi.du", DiaChi{"vi.du", 80}},
        {"http://[::1]:9009", DiaChi{"::1", 9009}},
        {"http://vi.du:65536", DiaChi{"vi.du", 80}},
        {"ftp://vi.du", std::nullopt},
        {"http://", std::nullopt},
        {"", std::nullopt},
    };
    return moiHang(bang, [](const auto& url, const auto& mong) { return DoMayChu::tachDiaChi(url) == mong; });
}

constexpr std::array cacDoMayChu{
    Muc{"dò máy chủ: tách máy và cổng", doTach},
    Muc{"dò máy chủ: cổng đang nghe thì sống", doSong},
    Muc{"dò máy chủ: cổng đã đóng thì chết", doChet},
};

}  // namespace

std::span<const Muc> mucMayChuAnh() {
    return cacMayChuAnh;
}
std::span<const Muc> mucGiaoDienKem() {
    return cacGiaoDienKem;
}
std::span<const Muc> mucNhanTep() {
    return cacNhanTep;
}
std::span<const Muc> mucDoMayChu() {
    return cacDoMayChu;
}

}  // namespace tovira::tu_kiem

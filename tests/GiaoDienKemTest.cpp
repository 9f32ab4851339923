#include "GiaoDienKem.hpp"

#include <gtest/gtest.h>

#include <sys/stat.h>

#include <cstdlib>
#include <fstream>

#include "SocketIoThay.hpp"
#include "gia/KhachThu.hpp"

using namespace tovira;

namespace {

// A packaged folder of its own, gone with the test.
struct GoiGia {
    GoiGia() {
        std::string mau = (std::filesystem::temp_directory_path() / "tovira-goi-XXXXXX").string();
        goc = ::mkdtemp(mau.data());
        std::filesystem::create_directories(goc / "giao-dien/i18n");
        for (const char* ten : {"app.html", "crypto.js", "i18n.js", "local-store.js"})
            ghi(ten, ten);
        for (const auto ma : GiaoDienKem::cacTiengNoi)
            ghi("i18n/" + std::string(ma) + ".json", ma);
        std::ofstream(goc / "ngoai.json") << "bí mật";
    }
    ~GoiGia() { std::filesystem::remove_all(goc); }
    void ghi(const std::string& ten, std::string_view noiDung) const {
        std::ofstream(goc / "giao-dien" / ten, std::ios::binary) << noiDung;
    }
    std::filesystem::path goc;
};

std::string lay(std::string_view dich) {
    return "GET " + std::string(dich) + " HTTP/1.1\r\nHost: x\r\n\r\n";
}

std::string traLoi(std::string_view trangThai, std::string_view kieu, std::string_view than) {
    return "HTTP/1.1 " + std::string(trangThai) + "\r\nContent-Type: " + std::string(kieu) +
           "\r\nContent-Length: " + std::to_string(than.size()) +
           "\r\nCache-Control: no-store\r\nConnection: close\r\n\r\n" + std::string(than);
}

std::string khongThan(std::string_view trangThai) {
    return traLoi(trangThai, "text/plain; charset=utf-8", "");
}

constexpr std::string_view html = "text/html; charset=utf-8";
constexpr std::string_view js = "text/javascript; charset=utf-8";
constexpr std::string_view json = "application/json; charset=utf-8";

}  // namespace

TEST(GiaoDienKem, timTheoBang) {
    using T = GiaoDienKem::Tuyen;
    const std::pair<std::string_view, std::optional<T>> bang[] = {
        {"/", T{html, "app.html"}},
        {"/app", T{html, "app.html"}},
        {"/app.html", T{html, "app.html"}},
        {"/app?x=1", T{html, "app.html"}},
        {"/app?x=1?y", T{html, "app.html"}},
        {"?/app", T{html, "app.html"}},  // empty pieces are dropped
        {"/crypto.js", T{js, "crypto.js"}},
        {"/local-store.js", T{js, "local-store.js"}},
        {"/i18n.js?v=2", T{js, "i18n.js"}},
        {"/vendor/socket.io.min.js", T{js, ""}},
        {"/i18n/fil.json", T{json, "i18n/fil.json"}},
        {"/i18n/khong-co.json", {}},
        {"/i18n/.json", {}},
        {"/i18n/json", {}},
        {"/i18n/VI.json", {}},
        {"/i18n/vi.json/", {}},
        {"/i18n/%2e%2e/vi.json", {}},
        {"/i18n/../../../etc/passwd.json", {}},
        {"/../../server/data.json", {}},
        {"/../client/crypto.js", {}},
        {"/APP", {}},
        {"/app/", {}},
        {"//app", {}},
        {"/bat-ky", {}},
        {"app", {}},
        {"?", {}},
        {"", {}},
    };
    for (const auto& [dich, mong] : bang)
        EXPECT_EQ(GiaoDienKem::tim(dich), mong) << dich;
    for (const auto ma : GiaoDienKem::cacTiengNoi) {
        const std::string tep = "i18n/" + std::string(ma) + ".json";
        EXPECT_EQ(GiaoDienKem::tim("/" + tep), (T{json, tep}));
    }
}

TEST(GiaoDienKem, khongCoGoiThiKhongMo) {
    const Loi mong{mienTovira, 2, "Không tìm thấy giao diện kèm trong gói ứng dụng"};
    GiaoDienKem khongThuMuc(std::nullopt);
    EXPECT_FALSE(khongThuMuc.coSan());
    EXPECT_FALSE(khongThuMuc.thuMuc());
    EXPECT_EQ(khongThuMuc.batDau().loi(), mong);
    GoiGia goi;
    std::filesystem::remove(goi.goc / "giao-dien/app.html");
    GiaoDienKem thieuTrang(goi.goc);
    EXPECT_EQ(thieuTrang.thuMuc(), goi.goc / "giao-dien");
    EXPECT_EQ(thieuTrang.batDau().loi(), mong);
    goi.ghi("app.html", "về");
    EXPECT_TRUE(thieuTrang.batDau());
    EXPECT_NE(thieuTrang.cong(), 0);
}

TEST(GiaoDienKem, traTungTepDungTungByte) {
    GoiGia goi;
    goi.ghi("crypto.js", std::string("\0\r\n\r\nđ", 7));
    goi.ghi("local-store.js", std::string(2'000'000, 'l'));
    goi.ghi("i18n.js", "");
    GiaoDienKem may(goi.goc);
    ASSERT_TRUE(may.batDau());
    const auto cong = may.cong();
    EXPECT_EQ(gia::hoi(cong, lay("/app?lang=vi")), traLoi("200 OK", html, "app.html"));
    EXPECT_EQ(gia::hoi(cong, lay("/crypto.js")), traLoi("200 OK", js, std::string("\0\r\n\r\nđ", 7)));
    EXPECT_TRUE(gia::hoi(cong, lay("/local-store.js")) == traLoi("200 OK", js, std::string(2'000'000, 'l')));
    EXPECT_EQ(gia::hoi(cong, lay("/i18n.js")), traLoi("200 OK", js, ""));
    EXPECT_EQ(gia::hoi(cong, lay("/i18n/th.json")), traLoi("200 OK", json, "th"));
    EXPECT_EQ(gia::hoi(cong, lay("/vendor/socket.io.min.js")), traLoi("200 OK", js, socketIoThay));
    EXPECT_EQ(gia::hoi(cong, lay("/ngoai.json")), khongThan("404 Not Found"));

    EXPECT_EQ(gia::hoi(cong, "POST /app HTTP/1.1\r\n\r\n"), khongThan("400 Bad Request"));
    EXPECT_EQ(gia::hoi(cong, "get /app HTTP/1.1\r\n\r\n"), khongThan("400 Bad Request"));
    EXPECT_EQ(gia::hoi(cong, "\r\n\r\n"), khongThan("400 Bad Request"));
    EXPECT_EQ(gia::hoi(cong, "\r\nGET /app\r\n\r\n"), khongThan("400 Bad Request"));
    EXPECT_EQ(gia::hoi(cong, "GET  \r\n\r\n"), khongThan("404 Not Found"));
    EXPECT_EQ(gia::hoi(cong, std::string(65537, 'x')), khongThan("431 Request Header Fields Too Large"));
    EXPECT_EQ(gia::hoi(cong, "GET /app " + std::string(65532 - 9, 'x') + "\r\n\r\n"),
              traLoi("200 OK", html, "app.html"));
}

TEST(GiaoDienKem, tepThayDoiGiuaHaiLanHoi) {
    GoiGia goi;
    GiaoDienKem may(goi.goc);
    ASSERT_TRUE(may.batDau());
    goi.ghi("crypto.js", "mới");
    EXPECT_EQ(gia::hoi(may.cong(), lay("/crypto.js")), traLoi("200 OK", js, "mới"));
    const auto tep = goi.goc / "giao-dien/crypto.js";
    std::filesystem::remove(tep);
    EXPECT_EQ(gia::hoi(may.cong(), lay("/crypto.js")), khongThan("404 Not Found"));
    std::filesystem::create_directory(tep);
    EXPECT_EQ(gia::hoi(may.cong(), lay("/crypto.js")), khongThan("404 Not Found"));
    std::filesystem::remove(tep);
    ASSERT_EQ(::mkfifo(tep.c_str(), 0600), 0);  // nobody will ever write into it
    EXPECT_EQ(gia::hoi(may.cong(), lay("/crypto.js")), khongThan("404 Not Found"));
}

TEST(GiaoDienKem, dungRoiMoLai) {
    GoiGia goi;
    GiaoDienKem may(goi.goc);
    ASSERT_TRUE(may.batDau());
    const auto cong = may.cong();
    ASSERT_TRUE(may.batDau());
    EXPECT_EQ(may.cong(), cong);
    may.dung();
    EXPECT_EQ(may.cong(), 0);
    EXPECT_FALSE(gia::KhachThu(cong).noiDuoc());
    ASSERT_TRUE(may.batDau());
    EXPECT_EQ(gia::hoi(may.cong(), lay("/")), traLoi("200 OK", html, "app.html"));
}

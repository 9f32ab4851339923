#include "Cau.hpp"

#include <gtest/gtest.h>

#include "KichBanTrang.hpp"
#include "gia/WebGia.hpp"

using namespace tovira;
using Cac = std::vector<std::string>;

TEST(NhayJS, theoTungKyTu) {
    const std::pair<std::string, std::string> bang[] = {
        {"", R"("")"},
        {"a\"b\\c\n/d", R"("a\"b\\c\n/d")"},
        {"\r\t\b\f", R"("\r\t\b\f")"},
        {std::string("\0\x01\x1f\x7f", 4), "\"\\u0000\\u0001\\u001f\x7f\""},
        {"</script>'", R"("</script>'")"},
        {"ảnh 🇻🇳 \u2028", "\"ảnh 🇻🇳 \u2028\""},
        {"hỏng \xff", R"("")"},
        {"\xed\xa0\x80", R"("")"},  // a surrogate
        {"\xc0\xaf", R"("")"},      // an overlong slash
        {"\xe1\xba", R"("")"},      // cut short
    };
    for (const auto& [chu, mong] : bang)
        EXPECT_EQ(Cau::nhayJS(chu), mong) << chu;
}

TEST(KichBan, gocDuocTinDungDauVaPhienBan) {
    const auto k = Cau::kichBan("https://vi.du", "");
    EXPECT_TRUE(k.starts_with("(function () {\n  var hopLe = [\"https://vi.du\", \"\"].filter(Boolean);"))
        << k;
    EXPECT_NE(k.find("if (hopLe.indexOf(String(location.origin)) < 0) return;"), k.npos);
    EXPECT_NE(k.find("var gui = function (o) {\n    try { window.webkit.messageHandlers.tv.postMessage(o); } "
                     "catch (e) {}\n  };"),
              k.npos);
    EXPECT_NE(k.find("phienBan: \"1.0.3\","), k.npos);
    EXPECT_NE(Cau::kichBan("https://vi.du", "http://127.0.0.1:9")
                  .find("[\"https://vi.du\", \"http://127.0.0.1:9\"]"),
              k.npos);
    EXPECT_NE(Cau::kichBan("\"];alert(1)//", "").find("[\"\\\"];alert(1)//\", \"\"]"), k.npos)
        << "a broken server address stays a text";
}

// The texts letter for letter.
TEST(KichBanTrang, tungChu) {
    namespace kb = kich_ban_trang;
    const MucManHinh ds[] = {{0, "Một \"A\"", 1920, 1080, true}, {1, "B", 800, 600, false}};
    const std::pair<std::string, std::string> bang[] = {
        {kb::trangThai(true),
         "(function(){ if (!window.tovira) return;\n  window.tovira.trangThai = { autostart: true, service: "
         "false };\n"
         "  if (typeof window.__tvTrangThai === 'function') "
         "window.__tvTrangThai(window.tovira.trangThai);\n})();"},
        {kb::troNang(false),
         "(function(){ if (!window.tovira) return;\n  window.tovira.troNang = false;\n"
         "  if (typeof window.__tvAndroidDoi === 'function') window.__tvAndroidDoi();\n})();"},
        {kb::manHinh("http://a/?k=1", "l\"", true),
         "(function(){ if (!window.tovira) return;\n"
         "  window.tovira.manHinh = { duongDan: \"http://a/?k=1\", loi: \"l\\\"\" };\n  "
         "window.tovira.dangPhat = true;\n"
         "  if (typeof window.__tvAndroidDoi === 'function') window.__tvAndroidDoi();\n})();"},
        {kb::dsManHinh(ds),
         "(function(){ if (window.tovira) window.tovira.dsManHinh = ["
         "{chiSo:0,ten:\"Một \\\"A\\\"\",rong:1920,cao:1080,chinh:true},"
         "{chiSo:1,ten:\"B\",rong:800,cao:600,chinh:false}]; })();"},
        {kb::dsManHinh({}), "(function(){ if (window.tovira) window.tovira.dsManHinh = []; })();"},
        {kb::traLoiNhan({"/a", 65535, "bm", "l"}),
         "(function(){ if (!window.tovira) return;\n  var f = window.tovira.__nhanCho;\n  "
         "window.tovira.__nhanCho = null;\n"
         "  if (typeof f === 'function') f({\n    goc: \"/a\",\n    cong: 65535,\n    biMat: \"bm\",\n    "
         "loi: \"l\"\n  });\n})();"},
        {kb::traLoiLuu("/a", ""),
         "(function(){ if (!window.tovira) return;\n  var f = window.tovira.__luuCho;\n  "
         "window.tovira.__luuCho = null;\n"
         "  if (typeof f === 'function') f({ duong: \"/a\", loi: \"\" });\n})();"},
        {kb::matKetNoi(true),
         "(function(){ if (typeof window.__tvMatKetNoi === 'function') window.__tvMatKetNoi(true); })();"},
        {kb::mayChuSongLai(),
         "(function(){ if (typeof window.__tvMayChuSongLai === 'function') window.__tvMayChuSongLai(); "
         "})();"},
        {kb::daTai("/t", "a.txt"),
         "(function(){ if (typeof window.__tvDaTai === 'function')\n  window.__tvDaTai(\"/t\", "
         "\"a.txt\");\n})();"},
        {kb::taiHong("đứt"),
         "(function(){ if (typeof window.__tvTaiHong === 'function')\n  window.__tvTaiHong(\"đứt\");\n})();"},
        {kb::bamDung(), "(function(){ var b = document.getElementById('bc-stop'); if (b) b.click(); })();"},
    };
    for (const auto& [co, mong] : bang)
        EXPECT_EQ(co, mong);
}

namespace {

class CauTest : public testing::Test, public gia::PhongWeb {};

}  // namespace

TEST_F(CauTest, chiNgheKhungChinhCuaTrangDuocTin) {
    constexpr auto tin = R"({"k":"dat","ten":"autostart","bat":true})";
    const NguoiGui la[] = {
        {LoaiKhung::con, mayChu},
        {LoaiKhung::chinh, "https://vi.du.xau.vn"},
        {LoaiKhung::chinh, "https://vi.du:444"},
        {LoaiKhung::chinh, "http://vi.du"},
        {LoaiKhung::chinh, "https://vi.d"},
        {LoaiKhung::chinh, "null"},
        {LoaiKhung::chinh, ""},
        {LoaiKhung::chinh, "http://127.0.0.1:0"},
    };
    for (const auto& ai : la) {
        gui(tin, ai);
        EXPECT_FALSE(khac.batKhoiDong) << ai.goc;
        EXPECT_EQ(js(), Cac{}) << ai.goc;
    }
    gui(tin);
    EXPECT_TRUE(khac.batKhoiDong);

    thamSo.gocMayChu = "null";  // a server address that is no address
    khac.batKhoiDong = false;
    gui(tin, {LoaiKhung::chinh, "null"});
    EXPECT_FALSE(khac.batKhoiDong) << "every opaque origin spells itself so";
}

TEST_F(CauTest, gocKemChiDuocTinKhiDangDung) {
    coGiaoDien();
    cuaSo.hienGiaoDienKem();
    const NguoiGui kem{LoaiKhung::chinh, gocKem()};
    constexpr auto bat = R"({"k":"dat","ten":"autostart","bat":1})";
    gui(bat, {LoaiKhung::chinh, "http://127.0.0.1:1"});
    EXPECT_FALSE(khac.batKhoiDong);
    gui(bat, kem);
    EXPECT_TRUE(khac.batKhoiDong);
    cuaSo.veMayChuThat();
    gui(R"({"k":"dat","ten":"autostart","bat":false})", kem);
    EXPECT_TRUE(khac.batKhoiDong) << "the page may still be there, but it is no longer trusted";
}

TEST_F(CauTest, thuKhongPhaiPhongBiThiBo) {
    for (const char* tin : {"", "\"lenh\"", "[1]", "null", "{}", R"({"k":1})", R"({"k":"khong-co"})",
                            R"({"k":"IPC","s":"thu-lai"})", R"({"k":"ipc"})", R"({"k":"ipc","s":"khac"})",
                            R"({"k":"lenh"})", R"({"k":"lenh","json":{}})", R"({"k":"ngonNgu"})",
                            R"({"k":"ngonNgu","ma":5})", R"({"k":"dat"} x)", "{\"k\":\"dat\xff\"}"}) {
        gui(tin);
        EXPECT_EQ(js(), Cac{}) << tin;
        EXPECT_TRUE(trang.tai_.empty() && caiDat.kho.empty() && khac.viec.empty()) << tin;
    }
}

TEST_F(CauTest, napXongDayMoiTrangThaiTheoThuTu) {
    nenMan.ketQuaLietKe =
        std::vector<ManHinh::Nguon>{{1, "Một", 1920, 1080, {1920, 1080}, {0, 0, 1920, 1080}, true}};
    khac.batKhoiDong = true;
    gui(R"({"k":"napXong"})");
    EXPECT_TRUE(trang.js.empty()) << "never within the handling of the message";
    const MucManHinh mot[] = {{0, "Một", 1920, 1080, true}};
    EXPECT_EQ(js(), (Cac{kich_ban_trang::trangThai(true), kich_ban_trang::troNang(true),
                         kich_ban_trang::dsManHinh(mot)}));
}

TEST_F(CauTest, soManHinhLaSoNguyenHoacKhong) {
    nenMan.ketQuaLietKe =
        std::vector<ManHinh::Nguon>{{7, "A", 800, 600, {800, 600}, {0, 0, 800, 600}, true},
                                    {8, "B", 800, 600, {800, 600}, {800, 0, 800, 600}, false}};
    const std::pair<const char*, std::uint32_t> bang[] = {
        {R"({"k":"manHinhBat","n":1})", 8},    {R"({"k":"manHinhBat"})", 7},
        {R"({"k":"manHinhBat","n":"1"})", 7},  {R"({"k":"manHinhBat","n":1.7})", 7},
        {R"({"k":"manHinhBat","n":true})", 8}, {R"({"k":"manHinhBat","n":1.0})", 8},
        {R"({"k":"manHinhBat","n":null})", 7}, {R"({"k":"manHinhBat","n":1e300})", 7},
        {R"({"k":"manHinhBat","n":-5})", 7},   {R"({"k":"manHinhBat","n":99999})", 8},
    };
    for (const auto& [tin, ma] : bang) {
        gui(tin);
        vong.xa();
        ASSERT_FALSE(nenMan.luong.empty()) << tin;
        EXPECT_EQ(nenMan.luong.back()->nguon.ma, ma) << tin;
        manHinh.dung();
        vong.xa();
        nenMan.luong.clear();
    }
}

TEST_F(CauTest, caoManHinhCatPhanLe) {
    const std::pair<const char*, std::int64_t> bang[] = {
        {R"({"k":"caoManHinh","cao":719.9})", 719},
        {R"({"k":"caoManHinh","cao":1e18})", ManHinh::caoTranCung},
        {R"({"k":"caoManHinh"})", ManHinh::caoSan},
        {R"({"k":"caoManHinh","cao":2000})", 2000},
        {R"({"k":"caoManHinh","cao":"720"})", ManHinh::caoSan},
    };
    for (const auto& [tin, mong] : bang) {
        gui(tin);
        EXPECT_EQ(manHinh.caoToiDa(), mong) << tin;
    }
}

TEST_F(CauTest, caoKhongThanhSoNguyenThiKetThucSauKhiNha) {
    gui(R"({"k":"lenh","json":"{\"t\":\"mouse_down\",\"x\":0.5,\"y\":0.5,\"button\":\"left\"}"})");
    ASSERT_EQ(dieuKhien.dangGiu(), 1U);
    for (const char* tin :
         {R"({"k":"caoManHinh","cao":1e300})", R"({"k":"caoManHinh","cao":-1e300})",
          R"({"k":"caoManHinh","cao":9223372036854775808})", R"({"k":"caoManHinh","cao":-1e19})"}) {
        nenNhap.khiDang = [](const SuKien&) { std::fputs("da-nha ", stderr); };
        EXPECT_DEATH(gui(tin), "da-nha Tovira") << tin;
    }
}

TEST_F(CauTest, lenhDenNguyenVanVaTatThiNhaHet) {
    phat();
    gui(R"({"k":"lenh","json":"{\"t\":\"key_down\",\"code\":\"KeyA\"}"})");
    EXPECT_EQ(dieuKhien.dangGiu(), 1U);
    cuaSo.khiXinDong();
    ASSERT_TRUE(manHinh.dangPhat());
    cua.lay();
    gui(R"({"k":"manHinhTat"})");
    EXPECT_FALSE(manHinh.dangPhat());
    EXPECT_EQ(dieuKhien.dangGiu(), 0U);
    EXPECT_EQ(cua.lay(), (Cac{"veCho", "an"})) << "the parked window goes home";
    gui(R"({"k":"manHinhTat"})");
    EXPECT_EQ(cua.lay(), Cac{});
}

TEST_F(CauTest, tuyChonLuonDuocDayLai) {
    khac.loiKhoiDong = "bị từ chối";
    gui(R"({"k":"dat","ten":"autostart","bat":true})");
    EXPECT_TRUE(khac.viec.empty()) << "the alert waits for its turn";
    EXPECT_EQ(js(), Cac{kich_ban_trang::trangThai(false)});
    EXPECT_EQ(khac.lay(), Cac{"canhBao Không đổi được mục khởi động|bị từ chối"});

    gui(R"({"k":"dat","ten":"service","bat":true})");
    EXPECT_EQ(js(), Cac{kich_ban_trang::trangThai(false)});
    EXPECT_EQ(khac.lay(), Cac{"canhBao Chưa hỗ trợ màn hình khoá trên macOS|Chạy được từ màn hình đăng nhập "
                              "cần một tiến trình nền quyền "
                              "root nằm trong phiên loginwindow. Phần này chưa làm — máy vẫn nhận điều khiển "
                              "bình thường sau khi bạn đã "
                              "đăng nhập."});

    khac.loiKhoiDong.reset();
    khac.batKhoiDong = true;
    gui(R"({"k":"dat"})");
    gui(R"({"k":"dat","ten":"autostart","bat":"true"})");
    EXPECT_FALSE(khac.batKhoiDong) << "a text is not a yes";
    EXPECT_EQ(js(), (Cac{kich_ban_trang::trangThai(true), kich_ban_trang::trangThai(false)}));
}

TEST_F(CauTest, ipcNgonNguVaTroNang) {
    gui(R"({"k":"ipc","s":"thu-lai"})");
    EXPECT_EQ(trang.layTai(), (std::vector<std::pair<std::string, double>>{{"https://vi.du/app", 60}}));
    gui(R"({"k":"ipc","s":"hien-cua-so"})");
    EXPECT_EQ(cua.lay(), Cac{"hien"});
    gui(R"({"k":"ngonNgu","ma":"fil"})");
    EXPECT_EQ(caiDat.kho["ngonNgu"], "fil");
    gui(R"({"k":"moTroNang"})");
    EXPECT_EQ(khac.lay(), Cac{"xinTroNang"});
    EXPECT_EQ(nenNhap.soLanMoCaiDat, 1);
    khac.tinSauKhiXin = true;
    gui(R"({"k":"moTroNang"})");
    EXPECT_EQ(nenNhap.soLanMoCaiDat, 1) << "granted in the prompt";
}

TEST_F(CauTest, thuMucNhanTraLoiMotLanVeSau) {
    for (const char* tin : {R"({"k":"moThuMucNhan"})", R"({"k":"moThuMucTai","duong":"/cũ"})"}) {
        gui(tin);
        khac.choNhan({"/goc", 8080, "bm", ""});
        EXPECT_TRUE(trang.js.empty());
        EXPECT_EQ(js(), Cac{noiTin(kich_ban_trang::traLoiNhan({"/goc", 8080, "bm", ""}))});
    }
    gui(R"({"k":"moThuMucTai"})");
    gui(R"({"k":"dongThuMucNhan"})");
    gui(R"({"k":"hienTrongFinder","duong":"/goc","ten":"a"})");
    gui(R"({"k":"hienTrongFinder","ten":1})");
    EXPECT_EQ(khac.lay(), (Cac{"moTaiDuong /cũ", "moTaiDuong ", "dongThuMuc", "hienTrongFinder /goc|a",
                               "hienTrongFinder |"}));
}

TEST_F(CauTest, thuMucLuuHuyThiKhongGhi) {
    gui(R"({"k":"chonThuMucLuu"})");
    khac.choChon("", "huy");
    EXPECT_EQ(js(), Cac{kich_ban_trang::traLoiLuu("", "huy")});
    EXPECT_FALSE(caiDat.kho.contains("thuMucLuuTep"));
    gui(R"({"k":"chonThuMucLuu"})");
    khac.choChon("/chọn", "");
    EXPECT_EQ(js(), Cac{kich_ban_trang::traLoiLuu("/chọn", "")});
    EXPECT_EQ(caiDat.kho["thuMucLuuTep"], "/chọn");
}

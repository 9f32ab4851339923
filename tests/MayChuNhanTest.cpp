#include "MayChuNhan.hpp"

#include <gtest/gtest.h>

#include <atomic>
#include <list>
#include <map>
#include <thread>

#include "gia/KhachThu.hpp"
#include "gia/ThuMucTam.hpp"
#include "gia/VongLapGia.hpp"

using namespace tovira;
using namespace std::chrono_literals;
namespace fs = std::filesystem;
using gia::choDen;
using gia::docTep;
using gia::KhachThu;
using gia::lietKe;
using CacTen = std::set<std::string>;

namespace {

constexpr const char* gocTrang = "https://may.chu:8443";

std::string cauTra(const std::string& trangThai, const std::string& than) {
    return "HTTP/1.1 " + trangThai + "\r\nContent-Length: " + std::to_string(than.size()) +
           "\r\nContent-Type: application/json\r\nAccess-Control-Allow-Origin: https://may.chu:8443\r\n"
           "Access-Control-Allow-Headers: x-duong, content-type\r\n"
           "Access-Control-Allow-Methods: POST, OPTIONS\r\nConnection: close\r\n\r\n" +
           than;
}

const std::string tra200 = cauTra("200 OK", R"({"ok":true})");
const std::string tra204 = cauTra("204 No Content", "");
const std::string tra400 = cauTra("400 Bad Request", R"({"ok":false})");
const std::string tra403 = cauTra("403 Forbidden", R"({"ok":false})");
const std::string tra404 = cauTra("404 Not Found", R"({"ok":false})");
const std::string tra405 = cauTra("405 Method Not Allowed", R"({"ok":false})");
const std::string tra413 = cauTra("413 Payload Too Large", R"({"ok":false})");
const std::string tra431 = cauTra("431 Request Header Fields Too Large", R"({"ok":false})");
const std::string tra500 = cauTra("500 Internal Server Error", R"({"ok":false})");

std::string base64(std::string_view byte) {
    constexpr char bang[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    std::string ra;
    for (std::size_t i = 0; i < byte.size(); i += 3) {
        unsigned gom = 0;
        for (std::size_t j = 0; j < 3; ++j)
            gom = gom << 8 | (i + j < byte.size() ? static_cast<unsigned char>(byte[i + j]) : 0);
        for (std::size_t j = 0; j < 4; ++j)
            ra += i + j > byte.size() ? '=' : bang[gom >> (18 - 6 * j) & 63];
    }
    return ra;
}

struct NenGia final : MayChuNhan::Nen {
    void hoiThuMuc(const Bang& bang, std::function<void(std::optional<std::string>)> xong) override {
        bangMo.push_back(bang.nut + "|" + bang.loiNhan);
        dangHoi = std::move(xong);
    }
    void danhDauTuXa(int) override {
        ++soDanhDau;
        if (khiDanhDau) khiDanhDau();
    }
    // Closes the panel that is open.
    void tra(std::optional<std::string> duong) { std::exchange(dangHoi, nullptr)(std::move(duong)); }

    std::vector<std::string> bangMo;
    std::function<void(std::optional<std::string>)> dangHoi;
    std::atomic<int> soDanhDau{0};
    std::function<void()> khiDanhDau;  // on the queue
};

struct TepGia final : TepNguoiDung {
    std::optional<std::string> thuMucTaiXuong() const override { return std::nullopt; }
    void hien(const std::string& duong) override { daHien.push_back(duong); }
    std::vector<std::string> daHien;
};

struct MayChuNhanTest : testing::Test {
    explicit MayChuNhanTest(MayChuNhan::CauHinh cauHinh = {.doBen = ThuMucNhan::DoBen::tuyHeThong})
        : may(nen, tep, vong, gocTrang, cauHinh) {
        fs::create_directories(goc);
        fs::create_directories(ngoai);
    }

    void mo() { ASSERT_TRUE(may.batDau(goc.string())); }
    std::string dongDau() const { return "POST /ghi?k=" + may.biMat() + " HTTP/1.1\r\nHost: 127.0.0.1\r\n"; }
    std::string dau(std::string_view duong, std::size_t doDai) const {
        return dongDau() + "X-Duong: " + base64(duong) + "\r\nContent-Length: " + std::to_string(doDai) +
               "\r\n\r\n";
    }
    std::string yeuCau(std::string_view duong, std::string_view than) const {
        return dau(duong, than.size()).append(than);
    }
    std::string hoi(std::string_view byte) const { return gia::hoi(may.cong(), byte); }

    gia::ThuMucTam tam;
    fs::path goc = tam / "nhận";
    fs::path ngoai = tam / "ngoài";
    NenGia nen;
    TepGia tep;
    gia::VongLapGia vong;
    MayChuNhan may;
};

}  // namespace

TEST_F(MayChuNhanTest, moDongMoLai) {
    EXPECT_EQ(may.cong(), 0);
    EXPECT_EQ(may.biMat(), "");
    EXPECT_FALSE(may.goc());
    mo();
    const auto cong = may.cong();
    const std::string biMat = may.biMat();
    EXPECT_NE(cong, 0);
    EXPECT_EQ(biMat.size(), 48U);
    EXPECT_EQ(biMat.find_first_not_of("0123456789abcdef"), std::string::npos);
    EXPECT_EQ(may.goc(), goc);
    EXPECT_EQ(hoi(yeuCau("a", "một")), tra200);
    EXPECT_EQ(may.daGhi(), 1);

    ASSERT_TRUE(may.batDau(ngoai.string()));
    EXPECT_NE(may.biMat(), biMat);
    EXPECT_EQ(may.daGhi(), 0);
    EXPECT_EQ(hoi("POST /ghi?k=" + biMat + "\r\nX-Duong: YQ==\r\nContent-Length: 0\r\n\r\n"), tra403);
    EXPECT_EQ(hoi(yeuCau("b", "hai")), tra200);
    EXPECT_EQ(lietKe(goc), CacTen{"a"});
    EXPECT_EQ(lietKe(ngoai), CacTen{"b"});

    const auto congHai = may.cong();
    may.dung();
    may.dung();
    EXPECT_EQ(may.cong(), 0);
    EXPECT_EQ(may.biMat(), "");
    EXPECT_FALSE(may.goc());
    EXPECT_FALSE(KhachThu(congHai).noiDuoc());
}

TEST_F(MayChuNhanTest, tungTrangThaiTungByte) {
    mo();
    fs::create_directory(goc / "là thư mục");
    fs::create_directory_symlink(ngoai, goc / "loi-ra");
    const std::string k = "/ghi?k=" + may.biMat();
    const std::string duong = "X-Duong: YQ==\r\n";
    const std::pair<std::string, std::string> bang[] = {
        {"OPTIONS /bat/ky?k=sai HTTP/1.1\r\nOrigin: x\r\n\r\n", tra204},
        {yeuCau("ảnh/hè 2026/bãi biển.txt", "sóng\0biển"), tra200},
        {yeuCau("trống", ""), tra200},
        {dau("thừa", 3) + "abcd và nữa", tra200},
        {"\r\n\r\n", tra400},
        {"POST\r\n\r\n", tra400},
        {dongDau() + "\r\n", tra400},
        {dongDau() + "X-Duong: ?\r\nContent-Length: 1\r\n\r\na", tra400},
        {yeuCau("../a", "x"), tra400},
        {yeuCau("/a", "x"), tra400},
        {yeuCau("~a", "x"), tra400},
        {yeuCau("a/./b", "x"), tra400},
        {yeuCau(std::string_view("a\0b", 3), "x"), tra400},
        {yeuCau("loi-ra/qua-lien-ket.txt", "x"), tra400},
        {yeuCau("loi-ra/a", std::string(67108865, 'x')), tra400},  // the path comes before the length
        {"POST /ghi?k=sai HTTP/1.1\r\nContent-Length: 99999999\r\n\r\n", tra403},
        {"POST /ghi HTTP/1.1\r\n\r\n", tra404},
        {"POST /khac?k=" + may.biMat() + " HTTP/1.1\r\n\r\n", tra404},
        {"GET " + k + " HTTP/1.1\r\n\r\n", tra405},
        {"GET /khac HTTP/1.1\r\n\r\n", tra405},
        {"POST " + k + "\r\n" + duong + "\r\n", tra413},
        {"POST " + k + "\r\n" + duong + "Content-Length: +1\r\n\r\na", tra413},
        {"POST " + k + "\r\n" + duong + "Content-Length: -1\r\n\r\na", tra413},
        {"POST " + k + "\r\n" + duong + "Content-Length: 67108865\r\n\r\n", tra413},
        {"POST " + k + "\r\n" + duong + "Content-Length: 18446744073709551616\r\n\r\n", tra413},
        {std::string(16385, 'a'), tra431},
        {yeuCau("là thư mục", "x"), tra500},
        {yeuCau("trống/a", "x"), tra500},
        {yeuCau("mới/" + std::string(300, 'd'), "x"), tra500},
    };
    for (const auto& [gui, dung] : bang)
        EXPECT_EQ(hoi(gui), dung) << gui.substr(0, 200);
    EXPECT_EQ(may.daGhi(), 3);
    EXPECT_EQ(nen.soDanhDau, 5);  // a file without a name of its own yet is marked too
    EXPECT_EQ(lietKe(goc), (CacTen{"là thư mục", "loi-ra", "ảnh", "ảnh/hè 2026", "ảnh/hè 2026/bãi biển.txt",
                                   "trống", "thừa"}));
    EXPECT_EQ(docTep(goc / "thừa"), "abc");
    EXPECT_EQ(lietKe(ngoai), CacTen{});
}

TEST_F(MayChuNhanTest, dauDaiHetMuc) {
    mo();
    // More than 16384 bytes may come with the read that brings the end; the length is tested before reading.
    const std::string dai = dongDau() + "X-Duong: YQ==\r\nContent-Length: 2\r\nDem: ";
    EXPECT_EQ(hoi(dai + std::string(16000 - dai.size(), 'x') + "\r\n\r\nab"), tra200);
    for (const auto& [du, dung] : {std::pair{16384, tra200}, std::pair{16385, tra431}}) {
        KhachThu khach(may.cong());
        khach.gui(dai + std::string(static_cast<std::size_t>(du) - dai.size(), 'x'));
        // A whole exchange in between: the server has read the first part.
        ASSERT_EQ(hoi(yeuCau("giữa", "x")), tra200);
        khach.gui("\r\n\r\nab");
        ASSERT_EQ(khach.docHet(), KhachThu::Doc::het);
        EXPECT_EQ(khach.daDoc, dung) << du;
    }
}

TEST_F(MayChuNhanTest, catOMoiByteCungRaMotTep) {
    mo();
    const std::string gui = yeuCau("thư mục/tệp.txt", "nội dung");
    for (std::size_t cat = 1; cat < gui.size(); ++cat) {
        KhachThu khach(may.cong());
        khach.gui(std::string_view(gui).substr(0, cat));
        ASSERT_EQ(hoi("OPTIONS * HTTP/1.1\r\n\r\n"), tra204);
        khach.gui(std::string_view(gui).substr(cat));
        ASSERT_EQ(khach.docHet(), KhachThu::Doc::het) << cat;
        ASSERT_EQ(khach.daDoc, tra200) << cat;
        ASSERT_EQ(docTep(goc / "thư mục/tệp.txt"), "nội dung") << cat;
        fs::remove_all(goc / "thư mục");
    }
}

TEST_F(MayChuNhanTest, than64MiBVuaDu) {
    mo();
    std::string than(67108864, 'x');
    for (std::size_t i = 0; i < than.size(); i += 4096)
        than[i] = static_cast<char>(i >> 12);
    EXPECT_EQ(hoi(yeuCau("to", than)), tra200);
    EXPECT_TRUE(docTep(goc / "to") == than);
    std::reverse(than.begin(), than.end());
    EXPECT_EQ(hoi(yeuCau("to", than)), tra200);  // the buffer of the first one, filled anew
    EXPECT_TRUE(docTep(goc / "to") == than);
    EXPECT_EQ(lietKe(goc), CacTen{"to"});
}

TEST_F(MayChuNhanTest, nguoiGuiBoGiuaChungKhongDeLaiGi) {
    mo();
    ASSERT_EQ(hoi(yeuCau("cũ", "nguyên")), tra200);
    enum class Bo { thoiGui, datLai };
    for (const Bo bo : {Bo::thoiGui, Bo::datLai}) {
        KhachThu khach(may.cong());
        khach.gui(dau("cũ", 1'000'000) + std::string(999'999, 'x'));
        if (bo == Bo::thoiGui) {
            khach.thoiGui();
            EXPECT_EQ(khach.docHet(), KhachThu::Doc::het);
        } else {
            khach.datLai();
        }
        EXPECT_EQ(khach.daDoc, "");
        ASSERT_EQ(hoi(yeuCau("sau", "x")), tra200);
    }
    EXPECT_EQ(docTep(goc / "cũ"), "nguyên");
    EXPECT_EQ(lietKe(goc), (CacTen{"cũ", "sau"}));
}

TEST_F(MayChuNhanTest, nguoiGuiChamKhongChanNguoiKhac) {
    mo();
    std::list<KhachThu> cham;
    // Together they have promised more than the cap; they hold what they have sent.
    for (int i = 0; i < 30; ++i)
        cham.emplace_back(may.cong()).gui(dau("chậm " + std::to_string(i), 60'000'000) + "đầu");
    for (int i = 0; i < 20; ++i)
        ASSERT_EQ(hoi(yeuCau("nhanh/" + std::to_string(i), std::string(300'000, 'x'))), tra200);
    EXPECT_EQ(may.daGhi(), 20);
}

TEST_F(MayChuNhanTest, nhieuNguoiGuiCungLuc) {
    mo();
    constexpr int soNguoi = 6;
    constexpr int soTep = 60;
    std::atomic<int> hong{0};
    std::vector<std::thread> nguoi;
    for (int n = 0; n < soNguoi; ++n) {
        nguoi.emplace_back([&, n] {
            for (int i = 0; i < soTep; ++i) {
                const std::string ten =
                    std::to_string(n) + "/" + std::to_string(i % 7) + "/" + std::to_string(i);
                hong +=
                    hoi(yeuCau(ten, ten + std::string(static_cast<std::size_t>(i) * 3000, 'x'))) != tra200;
                // All write this one; it is always someone's whole.
                hong += hoi(yeuCau("chung", std::string(100'000, static_cast<char>('a' + n)))) != tra200;
                const std::string chung = docTep(goc / "chung");
                hong += chung.size() != 100'000 || chung.find_first_not_of(chung[0]) != std::string::npos;
            }
        });
    }
    for (auto& n : nguoi)
        n.join();
    EXPECT_EQ(hong, 0);
    EXPECT_EQ(may.daGhi(), 2 * soNguoi * soTep);
    EXPECT_EQ(lietKe(goc).size(), static_cast<std::size_t>(soNguoi * (soTep + 7 + 1) + 1));
    EXPECT_TRUE(docTep(goc / "3/2/58") == "3/2/58" + std::string(174'000, 'x'));
}

// While files are posted below "đổi/con", its first folder keeps turning into a link outward and back.
TEST_F(MayChuNhanTest, doiThuMucThanhLienKetNgayLucNhan) {
    mo();
    fs::create_directories(goc / "đổi/con");
    fs::create_directories(ngoai / "con");
    fs::create_directory_symlink(ngoai, tam / "lối ra");
    std::atomic<bool> thoi{false};
    std::atomic<int> soLanDoi{0};
    std::thread keDoi([&] {
        // In the moment when there is no "đổi" the server may make one; it has to go out of the way.
        int soRac = 0;
        const auto doi = [&](const char* tu, const char* den) {
            while (::rename((tam / tu).c_str(), (tam / den).c_str()) != 0)
                ::rename((tam / den).c_str(), (goc / ("rác " + std::to_string(++soRac))).c_str());
        };
        while (!thoi) {
            doi("nhận/đổi", "nhận/cất");
            doi("lối ra", "nhận/đổi");
            doi("nhận/đổi", "lối ra");
            doi("nhận/cất", "nhận/đổi");
            ++soLanDoi;
        }
    });
    std::map<std::string, int> dem;
    for (int i = 0; i < 1'000'000 && (i < 1000 || soLanDoi < 3000); ++i) {
        const std::string ra = hoi(yeuCau("đổi/con/" + std::to_string(i % 200), "x"));
        ++dem[ra.substr(0, ra.find('\r'))];
    }
    thoi = true;
    keDoi.join();
    EXPECT_EQ(lietKe(ngoai), CacTen{"con"});
    EXPECT_GE(soLanDoi, 3000);
    // Each way of ending was met, and none but these: written inside, seen as a link, or met one on the way.
    EXPECT_GT(dem["HTTP/1.1 200 OK"], 0);
    EXPECT_GT(dem["HTTP/1.1 400 Bad Request"], 0);
    dem.erase("HTTP/1.1 500 Internal Server Error");
    EXPECT_EQ(dem.size(), 2U);
    for (const std::string& ten : lietKe(goc))
        EXPECT_EQ(ten.find(".tv-nhan"), std::string::npos) << ten;
}

TEST_F(MayChuNhanTest, yeuCauDaDuocNhanTruocKhiDungVanXongVaoThuMucCuaNo) {
    mo();
    KhachThu dangGui(may.cong());
    dangGui.gui(dau("thư mục/dở", 1000) + std::string(500, 'x'));
    KhachThu chuaCoDau(may.cong());
    const std::string con = yeuCau("sau-khi-dong.txt", "x");
    chuaCoDau.gui(con.substr(0, 20));
    ASSERT_EQ(hoi(yeuCau("giữa", "x")), tra200);  // so both have been read
    ASSERT_TRUE(may.batDau(ngoai.string()));
    may.dung();
    dangGui.gui(std::string(500, 'x'));
    chuaCoDau.gui(con.substr(20));
    EXPECT_EQ(dangGui.docHet(), KhachThu::Doc::het);
    EXPECT_EQ(chuaCoDau.docHet(), KhachThu::Doc::het);
    EXPECT_EQ(dangGui.daDoc, tra200);
    EXPECT_EQ(chuaCoDau.daDoc, tra403);
    EXPECT_EQ(lietKe(goc), (CacTen{"giữa", "thư mục", "thư mục/dở"}));
    EXPECT_EQ(lietKe(ngoai), CacTen{});
}

TEST_F(MayChuNhanTest, huyLucConNhieuNguoiDangGui) {
    mo();
    std::list<KhachThu> khach;
    for (int i = 0; i < 20; ++i)
        khach.emplace_back(may.cong()).gui(dau(std::to_string(i), 60'000'000) + "đầu");
    ASSERT_EQ(hoi(yeuCau("giữa", "x")), tra200);
    // The fixture ends the server: whoever sends, and whoever waits to send, is let go.
}

// Where the memory is as good as gone: bodies of one piece, room for one of them.
struct MayChuNhanItDemTest : MayChuNhanTest {
    explicit MayChuNhanItDemTest(std::chrono::milliseconds im = 60s, std::chrono::milliseconds cho = 60s)
        : MayChuNhanTest({mega, im, cho, ThuMucNhan::DoBen::tuyHeThong}) {
        mo();
    }
    // Holds all the memory there is.
    void giuHet(KhachThu& khach) {
        khach.gui(dau("giữ", mega) + "x");
        // Two whole exchanges: by the second one the server has asked for the first one's memory.
        for (int i = 0; i < 2; ++i)
            ASSERT_EQ(hoi(yeuCau("giữa", "x")), tra200);
    }
    static constexpr std::size_t mega = std::size_t{1} << 20;
};

TEST_F(MayChuNhanItDemTest, thanVuotMucThiChoDenLuot) {
    KhachThu mot(may.cong());
    giuHet(mot);
    KhachThu hai(may.cong());
    hai.gui(yeuCau("hai", std::string(700'000, 'y')));
    EXPECT_EQ(hai.docThem(250), KhachThu::Doc::quaHan);  // and is left alone while it waits
    EXPECT_EQ(lietKe(goc), CacTen{"giữa"});
    // What needs no memory of its own goes by.
    EXPECT_EQ(hoi(yeuCau("nhỏ", "x")), tra200);
    mot.gui(std::string(mega - 1, 'x'));
    EXPECT_EQ(mot.docHet(), KhachThu::Doc::het);
    EXPECT_EQ(hai.docHet(), KhachThu::Doc::het);
    EXPECT_EQ(mot.daDoc, tra200);
    EXPECT_EQ(hai.daDoc, tra200);
    EXPECT_EQ(docTep(goc / "hai"), std::string(700'000, 'y'));
}

TEST_F(MayChuNhanItDemTest, nguoiChoBoDiThiMatCho) {
    KhachThu mot(may.cong());
    giuHet(mot);
    enum class Bo { thoiGui, datLai };
    for (const Bo bo : {Bo::thoiGui, Bo::datLai}) {
        KhachThu hai(may.cong());
        hai.gui(dau("hai", 500) + "y");
        ASSERT_EQ(hoi(yeuCau("giữa", "x")), tra200);
        if (bo == Bo::datLai) {
            hai.datLai();
            continue;
        }
        // It is let go of long before its turn, unread bytes or not.
        hai.thoiGui();
        EXPECT_NE(hai.docHet(), KhachThu::Doc::quaHan);
        EXPECT_EQ(hai.daDoc, "");
    }
    mot.gui(std::string(mega - 1, 'x'));
    EXPECT_EQ(mot.docHet(), KhachThu::Doc::het);
    EXPECT_EQ(mot.daDoc, tra200);
    EXPECT_EQ(lietKe(goc), (CacTen{"giữa", "giữ"}));
}

struct MayChuNhanChoItTest : MayChuNhanItDemTest {
    MayChuNhanChoItTest() : MayChuNhanItDemTest(60s, 40ms) {}
};

TEST_F(MayChuNhanChoItTest, choQuaLauThiDuocBao) {
    KhachThu mot(may.cong());
    giuHet(mot);
    KhachThu hai(may.cong());
    hai.gui(dau("hai", 500) + "y");
    EXPECT_EQ(hai.docHet(), KhachThu::Doc::het);
    EXPECT_EQ(hai.daDoc, tra500);
    mot.gui(std::string(mega - 1, 'x'));
    EXPECT_EQ(mot.docHet(), KhachThu::Doc::het);
    EXPECT_EQ(mot.daDoc, tra200);
}

struct MayChuNhanVoiTest : MayChuNhanItDemTest {
    MayChuNhanVoiTest() : MayChuNhanItDemTest(150ms) {}
};

TEST_F(MayChuNhanVoiTest, imLangGiuaThanThiMatCho) {
    KhachThu im(may.cong());
    im.gui(dau("im", mega) + "x");
    KhachThu sau(may.cong());
    sau.gui(yeuCau("sau", std::string(700'000, 'y')));
    EXPECT_NE(im.docHet(), KhachThu::Doc::quaHan);
    EXPECT_EQ(im.daDoc, "");
    EXPECT_EQ(sau.docHet(), KhachThu::Doc::het);
    EXPECT_EQ(sau.daDoc, tra200);
    EXPECT_EQ(lietKe(goc), CacTen{"sau"});
}

// Never silent for long, and never done: that is borne until somebody else wants the memory.
TEST_F(MayChuNhanVoiTest, nhoGiotThiNhuongChoNguoiDangCho) {
    KhachThu cham(may.cong());
    cham.gui(dau("chậm", mega));
    const auto nhoGiot = [&cham] {
        cham.gui("x");
        return cham.docThem(5) == KhachThu::Doc::quaHan;
    };
    const auto tu = std::chrono::steady_clock::now();
    while (std::chrono::steady_clock::now() - tu < 400ms)
        ASSERT_TRUE(nhoGiot());
    KhachThu sau(may.cong());
    sau.gui(yeuCau("sau", std::string(700'000, 'y')));
    EXPECT_TRUE(choDen([&] { return !nhoGiot(); }));
    EXPECT_EQ(cham.daDoc, "");
    EXPECT_EQ(sau.docHet(), KhachThu::Doc::het);
    EXPECT_EQ(sau.daDoc, tra200);
    EXPECT_EQ(lietKe(goc), CacTen{"sau"});
}

TEST_F(MayChuNhanTest, bangChonThuMuc) {
    std::vector<Cau::NhanTep::TraLoi> tra;
    std::vector<std::string> chiChon;
    const auto ghiTra = [&](Cau::NhanTep::TraLoi t) { tra.push_back(std::move(t)); };
    may.chonThuMuc(ghiTra);
    may.chiChonThuMuc([&](const std::string& duong, const std::string& loi) {
        chiChon.push_back(duong + "|" + loi);
        if (chiChon.size() == 1) may.chonThuMuc(ghiTra);
    });
    EXPECT_TRUE(nen.bangMo.empty());  // later, from the main queue
    vong.xa();
    EXPECT_EQ(nen.bangMo.size(), 1U);  // one at a time
    nen.tra(goc.string());
    ASSERT_EQ(tra.size(), 1U);
    EXPECT_EQ(tra[0].goc, goc);
    EXPECT_EQ(tra[0].cong, may.cong());
    EXPECT_EQ(tra[0].biMat, may.biMat());
    EXPECT_EQ(tra[0].loi, "");
    EXPECT_EQ(hoi(yeuCau("a", "x")), tra200);

    EXPECT_EQ(nen.bangMo.size(), 2U);
    nen.tra(ngoai.string());
    EXPECT_EQ(chiChon, std::vector<std::string>{ngoai.string() + "|"});
    EXPECT_EQ(may.goc(), goc);  // choosing alone starts nothing
    vong.xa();
    nen.tra(std::nullopt);
    ASSERT_EQ(tra.size(), 2U);
    EXPECT_EQ(tra[1].goc + tra[1].biMat + std::to_string(tra[1].cong) + tra[1].loi, "0huy");
    may.chiChonThuMuc(
        [&](const std::string& duong, const std::string& loi) { chiChon.push_back(duong + "|" + loi); });
    vong.xa();
    nen.tra(std::nullopt);
    EXPECT_EQ(chiChon.back(), "|huy");
    EXPECT_EQ(nen.bangMo, std::vector<std::string>(4, "Chọn thư mục|Chọn thư mục để lưu các tệp nhận được"));
    may.dongThuMuc();
    EXPECT_EQ(may.cong(), 0);
}

// A page that keeps asking while a panel is open: the newest request of each kind waits, every older one is
// answered once, as given up.
TEST_F(MayChuNhanTest, hoiDonDapChiGiuMotNguoiChoMoiLoai) {
    std::map<std::string, std::string> tra;
    const auto nhan = [&](const std::string& ten) {
        may.chonThuMuc([&tra, ten](const Cau::NhanTep::TraLoi& t) { tra[ten] += t.goc + t.loi; });
    };
    const auto chi = [&](const std::string& ten) {
        may.chiChonThuMuc(
            [&tra, ten](const std::string& duong, const std::string& loi) { tra[ten] += duong + loi; });
    };
    nhan("mở");
    for (int i = 0; i < 100; ++i) {
        nhan("nhận " + std::to_string(i));
        chi("chỉ " + std::to_string(i));
    }
    vong.xa();
    EXPECT_EQ(nen.bangMo.size(), 1U);
    EXPECT_EQ(tra.size(), 198U);
    for (const auto& [ten, traLoi] : tra)
        EXPECT_EQ(traLoi, "huy") << ten;
    nen.tra(goc.string());
    nen.tra(ngoai.string());
    nen.tra(goc.string());
    EXPECT_FALSE(nen.dangHoi);
    EXPECT_EQ(tra["mở"], goc);
    EXPECT_EQ(tra["nhận 99"], ngoai);
    EXPECT_EQ(tra["chỉ 99"], goc);
    EXPECT_EQ(tra.size(), 201U);
}

TEST_F(MayChuNhanTest, moTaiDuongNhoTuTruoc) {
    gia::ghiTep(tam / "tệp", "x");
    fs::create_directory_symlink(goc, tam / "tên khác");
    for (const std::string& duong : {std::string(), (tam / "không có").string(), (tam / "tệp").string()}) {
        const auto tra = may.moTaiDuong(duong);
        EXPECT_EQ(tra.goc + tra.biMat + std::to_string(tra.cong) + tra.loi, "0khong-con") << duong;
    }
    EXPECT_EQ(may.cong(), 0);
    const auto tra = may.moTaiDuong((tam / "tên khác").string());
    EXPECT_EQ(tra.goc, goc);
    EXPECT_EQ(tra.cong, may.cong());
    EXPECT_EQ(tra.loi, "");
    EXPECT_EQ(hoi(yeuCau("a", "x")), tra200);
    // A folder that is gone leaves what is open alone.
    EXPECT_EQ(may.moTaiDuong("").loi, "khong-con");
    EXPECT_EQ(may.cong(), tra.cong);
}

TEST_F(MayChuNhanTest, hienTrongTrinhDuyetTep) {
    gia::ghiTep(goc / "có", "x");
    for (const char* ten : {"có", "không có", ""})
        may.hienTrongFinder(goc.string(), ten);
    EXPECT_TRUE(tep.daHien.empty());
    vong.xa();
    EXPECT_EQ(tep.daHien, (std::vector<std::string>{(goc / "có").string(), goc.string(), goc.string()}));
}

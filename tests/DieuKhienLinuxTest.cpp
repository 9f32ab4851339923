// Remote input on a real X server, from the command's text to what a program reads.

#include <gtest/gtest.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <chrono>
#include <cstdlib>
#include <fstream>
#include <sstream>

#include "BanPhimLinux.hpp"
#include "CaiDatXLinux.hpp"
#include "DieuKhienLinux.hpp"
#include "DieuKhienNen.hpp"
#include "KhachX.hpp"
#include "MaPhimLinux.hpp"
#include "OTrongLinux.hpp"
#include "PhienLinux.hpp"
#include "gia/VongLapGia.hpp"

using namespace tovira;
using gia::KhachX;

namespace {

std::string sangUtf8(char32_t c) {
    std::string ra;
    const auto byte = [&](unsigned v) { ra += static_cast<char>(v); };
    if (c < 0x80) {
        byte(c);
    } else if (c < 0x800) {
        byte(0xC0 | c >> 6);
        byte(0x80 | (c & 0x3F));
    } else if (c < 0x10000) {
        byte(0xE0 | c >> 12);
        byte(0x80 | (c >> 6 & 0x3F));
        byte(0x80 | (c & 0x3F));
    } else {
        byte(0xF0 | c >> 18);
        byte(0x80 | (c >> 12 & 0x3F));
        byte(0x80 | (c >> 6 & 0x3F));
        byte(0x80 | (c & 0x3F));
    }
    return ra;
}

// `so` different Chinese characters.
std::string chuHan(int so) {
    std::string ra;
    for (int i = 0; i < so; ++i)
        ra += sangUtf8(static_cast<char32_t>(0x4E00 + i));
    return ra;
}

std::vector<xcb_keysym_t> banLoi(xcb_connection_t* c, int* rong = nullptr) {
    const PhanXcb<xcb_get_keyboard_mapping_reply_t> dap(
        xcb_get_keyboard_mapping_reply(c, xcb_get_keyboard_mapping(c, 8, 248), nullptr));
    const auto* dau = xcb_get_keyboard_mapping_keysyms(dap.get());
    if (rong != nullptr) *rong = dap->keysyms_per_keycode;
    return {dau, dau + xcb_get_keyboard_mapping_keysyms_length(dap.get())};
}

int soMaTrong(xcb_connection_t* c) {
    int rong = 0;
    const auto ban = banLoi(c, &rong);
    int so = 0;
    for (std::size_t i = 0; i < ban.size(); i += static_cast<std::size_t>(rong))
        so += std::all_of(ban.begin() + static_cast<long>(i), ban.begin() + static_cast<long>(i) + rong,
                          [](auto k) { return k == 0; });
    return so;
}

bool dangXuong(xcb_connection_t* c, int ma) {
    const PhanXcb<xcb_query_keymap_reply_t> dap(xcb_query_keymap_reply(c, xcb_query_keymap(c), nullptr));
    return (dap->keys[ma / 8] >> (ma % 8) & 1) != 0;
}

unsigned mucKhoa(xcb_connection_t* c) {
    const PhanXcb<xcb_xkb_get_state_reply_t> dap(
        xcb_xkb_get_state_reply(c, xcb_xkb_get_state(c, XCB_XKB_ID_USE_CORE_KBD), nullptr));
    return dap->lockedMods;
}

void khoaMuc(xcb_connection_t* c, std::uint8_t muc) {
    xcb_xkb_latch_lock_state(c, XCB_XKB_ID_USE_CORE_KBD, 0xFF, muc, 0, 0, 0, 0, 0);
    xcb_flush(c);
}

bool coLapChung(xcb_connection_t* c) {
    const PhanXcb<xcb_get_keyboard_control_reply_t> dap(
        xcb_get_keyboard_control_reply(c, xcb_get_keyboard_control(c), nullptr));
    return dap->global_auto_repeat != 0;
}

constexpr int kcA = 38, kcB = 56, kcK = 45, kcF12 = 96, kcShift = 50, kcCtrl = 37;

}  // namespace

class DieuKhienX : public testing::Test {
  protected:
    void SetUp() override {
        signal(SIGPIPE, SIG_IGN);
        tao();
    }
    void tao() {
        nen = taoNenDieuKhien(vong);
        ASSERT_TRUE(nen->duocPhep()) << lyDoKhongDieuKhien();
        dk.emplace(*nen, vong);
    }
    void bo() {
        dk.reset();
        nen.reset();
    }
    bool lenh(const std::string& json) { return dk->lam(json); }
    void phim(const char* t, const char* ma, const char* boTro = "") {
        EXPECT_TRUE(
            lenh(std::string(R"({"t":")") + t + R"(","code":")" + ma + R"(","modifiers":[)" + boTro + "]}"));
    }
    void go(const std::string& chu) { EXPECT_TRUE(lenh(R"({"t":"text","value":")" + chu + "\"}")); }
    // Everything posted so far has come to the program once it has read the key F12.
    void docHet() {
        phim("key_down", "F12");
        phim("key_up", "F12");
        const auto laF12 = [](const auto& e) { return e.chiTiet == kcF12 && e.loai == XCB_KEY_RELEASE; };
        khach.docToi([&] { return std::any_of(khach.suKien.begin(), khach.suKien.end(), laF12); });
        std::erase_if(khach.suKien, [](const auto& e) { return e.chiTiet == kcF12; });
    }
    std::string keMoi() {
        docHet();
        const auto ra = khach.keLai();
        khach.suKien.clear();
        return ra;
    }

    // What follows the last event seen may still be on its way to the server.
    void choPhim(int ma, bool xuong) {
        khach.docToi([&] { return dangXuong(khach.c(), ma) == xuong; });
    }

    gia::VongLapGia vong;
    KhachX khach;
    std::unique_ptr<DieuKhien::Nen> nen;
    std::optional<DieuKhien> dk;
};

TEST_F(DieuKhienX, bangPhimKhopTenVaSo) {
    BanPhimLinux ban;
    ASSERT_TRUE(ban.doc(khach.c(), xkb_x11_get_core_keyboard_device_id(khach.c())));
    for (const auto& h : bangPhimX)
        EXPECT_EQ(ban.maCua(h.phim), h.evdev + evdevThanhX) << h.ten;
}

TEST_F(DieuKhienX, conTroDungDiemAnh) {
    struct Ca {
        const char* xy;
        int x, y;
    };
    // The virtual screen is 1280 × 800.
    for (const auto& ca : {Ca{R"("x":0,"y":0)", 0, 0}, Ca{R"("x":0.5,"y":0.25)", 640, 200},
                           Ca{R"("x":0.1002,"y":0.9)", 128, 720}, Ca{R"("x":1,"y":1)", 1279, 799}}) {
        ASSERT_TRUE(lenh(std::string(R"({"t":"mouse_move",)") + ca.xy + "}"));
        docHet();
        ASSERT_FALSE(khach.suKien.empty());
        EXPECT_EQ(khach.suKien.back().x, ca.x);
        EXPECT_EQ(khach.suKien.back().y, ca.y);
    }
    EXPECT_EQ(nen->khungManHinhChinh(), (KhungHinh{0, 0, 1280, 800}));
}

TEST_F(DieuKhienX, nutVaNacCuon) {
    for (const char* nut : {"left", "middle", "right"})
        for (const char* t : {"mouse_down", "mouse_up"})
            ASSERT_TRUE(lenh(std::string(R"({"t":")") + t + R"(","x":0.5,"y":0.5,"button":")" + nut + "\"}"));
    EXPECT_EQ(keMoi(), "+1/0 -1/0 +2/0 -2/0 +3/0 -3/0");
    const auto cuon = [&](const char* d) {
        ASSERT_TRUE(lenh(std::string(R"({"t":"mouse_wheel","x":0.5,"y":0.5,)") + d + "}"));
    };
    cuon(R"("dy":120)");
    cuon(R"("dy":-240)");
    cuon(R"("dx":120)");
    cuon(R"("dx":-120)");
    EXPECT_EQ(keMoi(), "+5/0 -5/0 +4/0 -4/0 +4/0 -4/0 +7/0 -7/0 +6/0 -6/0");
    for (int i = 0; i < 5; ++i)
        cuon(R"("dy":50,"dx":30)");  // 250 and 150 pixels
    EXPECT_EQ(keMoi(), "+5/0 -5/0 +7/0 -7/0 +5/0 -5/0");
    // An absurd amount is no flood.
    cuon(R"("dy":1e15)");
    docHet();
    EXPECT_LE(khach.suKien.size(), 300U);
}

TEST_F(DieuKhienX, boTroCuaLenhLaToanBoSuThat) {
    struct Ca {
        const char* boTro;
        const char* thay;
    };
    constexpr std::array<Ca, 6> bang{{{"", "+45/0 -45/0"},
                                      {R"("shift")", "+45/1 -45/1"},
                                      {R"("ctrl")", "+45/4 -45/4"},
                                      {R"("alt")", "+45/8 -45/8"},
                                      {R"("meta")", "+45/64 -45/64"},
                                      {R"("ctrl","alt","shift","meta")", "+45/77 -45/77"}}};
    const auto thu = [&](const std::string& ai) {
        for (const auto& ca : bang) {
            phim("key_down", "KeyK", ca.boTro);
            phim("key_up", "KeyK", ca.boTro);
            EXPECT_EQ(keMoi(), ca.thay) << ai << " [" << ca.boTro << "]";
        }
    };
    thu("nothing held");
    phim("key_down", "ShiftLeft");
    phim("key_down", "MetaRight");
    thu("the remote side holds Shift and Super");
    choPhim(kcShift, true);
    choPhim(134, true);
    phim("key_up", "MetaRight");
    phim("key_up", "ShiftLeft");
    choPhim(kcShift, false);

    khach.banPhimThat(true, kcCtrl);
    thu("the local user holds Control");
    choPhim(kcCtrl, true);
    khach.banPhimThat(false, kcCtrl);
    choPhim(kcCtrl, false);
    thu("the local user has let go");
}

TEST_F(DieuKhienX, phimGiuKhongTuLapVaLapCuaTuXaThanhPhimMoi) {
    constexpr std::array<std::uint8_t, 32> tungPhim{};
    xcb_xkb_set_controls(khach.c(), XCB_XKB_ID_USE_CORE_KBD, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0,
                         XCB_XKB_BOOL_CTRL_REPEAT_KEYS, 20, 5, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0,
                         tungPhim.data());
    const auto demNhan = [&] {
        return std::count_if(khach.suKien.begin(), khach.suKien.end(),
                             [](const auto& e) { return e.loai == XCB_KEY_PRESS && e.chiTiet == kcA; });
    };
    const auto tuLap = [&](const char* luc) {
        SCOPED_TRACE(luc);
        khach.suKien.clear();
        xcb_test_fake_input(khach.c(), XCB_KEY_PRESS, kcA, 0, 0, 0, 0, 0);
        xcb_flush(khach.c());
        khach.docToi([&] { return demNhan() >= 4; }, 5);
        xcb_test_fake_input(khach.c(), XCB_KEY_RELEASE, kcA, 0, 0, 0, 0, 0);
        khach.dongBo();
    };
    bo();
    EXPECT_TRUE(coLapChung(khach.c()));
    // Without us the server repeats, from the very device that we use.
    tuLap("before");

    tao();
    for (const bool doiBan : {false, true}) {
        if (doiBan) {
            ASSERT_EQ(std::system("setxkbmap us -variant intl"), 0);
        }
        docHet();
        khach.suKien.clear();
        phim("key_down", "KeyA");
        // Ten times the delay; a repeat would end the wait.
        pollfd p{-1, 0, 0};
        for (int i = 0; i < 20 && demNhan() < 2; ++i) {
            poll(&p, 1, 10);
            khach.docCo();
        }
        EXPECT_EQ(demNhan(), 1);
        phim("key_down", "KeyA");
        phim("key_down", "KeyA");
        phim("key_up", "KeyA");
        EXPECT_EQ(keMoi(), "+38/0 -38/0 +38/0 -38/0 +38/0 -38/0");
    }
    // The local user's keys repeat as ever, and once ours rest everyone sees that keys repeat.
    khach.banPhimThat(true, kcA);
    khach.docToi([&] { return demNhan() >= 4; }, 5);
    khach.banPhimThat(false, kcA);
    docHet();
    EXPECT_FALSE(coLapChung(khach.c()));
    vong.tien(1.1);
    khach.docToi([&] { return coLapChung(khach.c()); });

    bo();
    EXPECT_TRUE(coLapChung(khach.c()));
    tuLap("after");
    ASSERT_EQ(std::system("setxkbmap us"), 0);
}

TEST_F(DieuKhienX, goMoiThuChuDungThuTu) {
    const auto truoc = banLoi(khach.c());
    const std::string chu =
        "Xin chào, Việt Nam! ĐƯỜNG Ồ {}~| 漢字仮名 مرحبا привет 한국어 "
        "😀👩‍👩‍👧🇻🇳 "
        "é";
    go(chu + R"(\r\nb\tc\nd)");
    khach.docToi([&] {
        vong.tien(0.005);
        return khach.chu.size() >= chu.size() + 6;
    });
    EXPECT_EQ(khach.chu, chu + "\rb\tc\rd");
    docHet();
    // Typed again at once, known symbols need no new map.
    khach.chu.clear();
    const int soLan = khach.soLanDocBan;
    go("ệ😀");
    docHet();
    EXPECT_LE(khach.soLanDocBan, soLan + 1);
    // After a rest the map is as it was.
    EXPECT_NE(banLoi(khach.c()), truoc);
    vong.tien(5);
    docHet();
    EXPECT_EQ(banLoi(khach.c()), truoc);
    go("漢字");
    docHet();
    EXPECT_NE(banLoi(khach.c()), truoc);
    bo();
    EXPECT_EQ(banLoi(khach.c()), truoc);
}

TEST_F(DieuKhienX, nhieuKyHieuHonPhimTrongDoiNguoiDoc) {
    const auto chu = chuHan(600);
    go(chu);
    // What comes while text waits keeps its place behind it.
    phim("key_down", "KeyA");
    phim("key_up", "KeyA");
    khach.docToi([&] {
        vong.tien(0.001);  // far too little for the time limit: only the program's answers carry it on
        return khach.chu.size() > chu.size();
    });
    EXPECT_EQ(khach.chu, chu + "a");
    EXPECT_LT(vong.dongHo(), OTrongLinux::hanKhongHoi * 600 / soMaTrong(khach.c()));
}

TEST_F(DieuKhienX, chuongTrinhKhongTraLoiThiDoiHetHan) {
    bo();
    KhachX cham(KhachX::Ping::khongBiet);
    const int trong = soMaTrong(cham.c());
    ASSERT_GT(trong, 4);
    tao();
    const int so = trong * 3 + 2;
    const auto chu = chuHan(so);
    go(chu);
    for (int i = 1; i <= 4; ++i) {
        // Every spare key is lent once, and no key twice, before the time is over.
        const auto toi = static_cast<std::size_t>(std::min(so, trong * i)) * 3;
        cham.docToi([&] { return cham.chu.size() >= toi; });
        vong.tien(OTrongLinux::hanKhongHoi - 0.05);
        cham.dongBo();
        cham.docCo();
        EXPECT_EQ(cham.chu.size(), toi);
        vong.tien(0.06);
    }
    EXPECT_EQ(cham.chu, chu);
}

TEST_F(DieuKhienX, ketThucDieuKhienThiBoChuConCho) {
    bo();
    KhachX cham(KhachX::Ping::khongBiet);
    const auto trong = static_cast<std::size_t>(soMaTrong(cham.c()));
    tao();
    phim("key_down", "KeyB");
    go(chuHan(200));
    phim("key_down", "KeyK");
    dk->nhaHet();
    cham.docToi([&] { return !dangXuong(cham.c(), kcB) && !dangXuong(cham.c(), kcK); });
    vong.tien(3);
    khach.layTieuDiem();
    docHet();
    cham.docCo();
    EXPECT_EQ(cham.chu, "b" + chuHan(static_cast<int>(trong)) + "k");
}

TEST_F(DieuKhienX, phimGiuVaPhimKhoaKhongDoiChu) {
    constexpr std::uint8_t khoa = XCB_MOD_MASK_LOCK | XCB_MOD_MASK_2;  // Caps Lock, Num Lock
    khoaMuc(khach.c(), khoa);
    phim("key_down", "ShiftLeft");
    phim("key_down", "ControlLeft");
    khach.banPhimThat(true, 64);  // and the local user holds Alt
    khach.chu.clear();
    go("aBc1! ệỆ漢");
    docHet();
    EXPECT_EQ(khach.chu, "aBc1! ệỆ漢");
    choPhim(kcShift, true);
    choPhim(kcCtrl, true);
    choPhim(64, true);
    khach.docToi([&] { return mucKhoa(khach.c()) == khoa; });
    khach.banPhimThat(false, 64);
    choPhim(64, false);
    dk->nhaHet();
    docHet();
    for (const int ma : {kcShift, kcCtrl, 64})
        choPhim(ma, false);
    khoaMuc(khach.c(), 0);
}

TEST_F(DieuKhienX, boTriKhacThiPhimTheoChoChuTheoKyHieu) {
    struct Ca {
        const char* boTri;
        std::uint8_t nhom;  // which of its layouts the user has chosen
        const char* phimA;  // what the key in the place of A types
    };
    for (const auto& ca :
         {Ca{"fr", 0, "q"}, Ca{"ru", 0, "ф"}, Ca{"de,ru", 1, "ф"}, Ca{"de,ru", 0, "a"}, Ca{"us", 0, "a"}}) {
        ASSERT_EQ(std::system((std::string("setxkbmap ") + ca.boTri).c_str()), 0);
        xcb_xkb_latch_lock_state(khach.c(), XCB_XKB_ID_USE_CORE_KBD, 0, 0, 1, ca.nhom, 0, 0, 0);
        khach.dongBo();
        khach.chu.clear();
        khach.suKien.clear();
        phim("key_down", "KeyA");
        phim("key_up", "KeyA");
        go("aZ1@€ßф");
        EXPECT_EQ(keMoi().substr(0, 11), "+38/0 -38/0") << ca.boTri;
        EXPECT_EQ(khach.chu, std::string(ca.phimA) + "aZ1@€ßф") << ca.boTri;
    }
}

TEST_F(DieuKhienX, khoangBamDupTheoManHinh) {
    EXPECT_DOUBLE_EQ(nen->khoangBamDup(), 0.4);
    using namespace std::string_literals;
    const auto so = "\x00\x00\x13\x00Net/DoubleClickTime\x00\x01\x00\x00\x00\xFA\x00\x00\x00"s;
    const auto chu =
        "\x01\x00\x08\x00Net/Them\x01\x00\x00\x00\x03\x00\x00\x00"
        "abc\x00"s;
    const auto tin = "\x00\x00\x00\x00\x07\x00\x00\x00\x02\x00\x00\x00"s + chu + so;
    EXPECT_EQ(soTrongCaiDatX(tin, "Net/DoubleClickTime"), 250);
    EXPECT_EQ(soTrongCaiDatX(tin, "Net/Them"), std::nullopt);
    for (std::size_t i = 0; i < tin.size(); ++i)
        EXPECT_EQ(soTrongCaiDatX(tin.substr(0, i), "Net/DoubleClickTime"), std::nullopt) << i;

    const auto nguyenTu = [&](const std::string& ten) {
        const PhanXcb<xcb_intern_atom_reply_t> dap(xcb_intern_atom_reply(
            khach.c(), xcb_intern_atom(khach.c(), 0, static_cast<std::uint16_t>(ten.size()), ten.c_str()),
            nullptr));
        return dap->atom;
    };
    const auto chon = nguyenTu("_XSETTINGS_S0"), thuocTinh = nguyenTu("_XSETTINGS_SETTINGS");
    xcb_change_property(khach.c(), XCB_PROP_MODE_REPLACE, khach.cuaSo(), thuocTinh, thuocTinh, 8,
                        static_cast<std::uint32_t>(tin.size()), tin.data());
    xcb_set_selection_owner(khach.c(), khach.cuaSo(), chon, XCB_CURRENT_TIME);
    khach.dongBo();
    EXPECT_DOUBLE_EQ(nen->khoangBamDup(), 0.25);
}

// A terminal of the machine's own, `cat` in it, and the bytes that reach the file.
TEST_F(DieuKhienX, goVaoXterm) {
    std::string tep = testing::TempDir() + "tovira-xterm-XXXXXX";
    close(mkstemp(tep.data()));
    const std::string lenhCat = "exec cat > " + tep;
    const pid_t con = fork();
    if (con == 0) {
        setenv("LC_ALL", "C.utf8", 1);
        execlp("xterm", "xterm", "-u8", "-e", "sh", "-c", lenhCat.c_str(), nullptr);
        _exit(127);
    }
    xcb_window_t xterm = 0;
    const auto han = std::chrono::steady_clock::now() + std::chrono::seconds(20);
    const auto nhip = [] {
        pollfd p{-1, 0, 0};
        poll(&p, 1, 10);
    };
    while (xterm == 0 && std::chrono::steady_clock::now() < han) {
        nhip();
        xterm = khach.cuaSoCo("xterm");
    }
    ASSERT_NE(xterm, 0U);
    xcb_set_input_focus(khach.c(), XCB_INPUT_FOCUS_POINTER_ROOT, xterm, XCB_CURRENT_TIME);
    khach.dongBo();
    const auto docTep = [&] {
        std::ifstream f(tep, std::ios::binary);
        std::ostringstream ra;
        ra << f.rdbuf();
        return ra.str();
    };
    std::string mong;
    phim("key_down", "ShiftLeft");
    for (const std::string dong :
         {"Xin chào thế giới 1234", "漢字仮名交じり文", "مرحبا привет", "😀🎉 {[|~]}", "ÀẢÃÁẠ ếệ"}) {
        go(dong + "\\n");
        mong += dong + "\n";
        while (docTep() != mong && std::chrono::steady_clock::now() < han)
            nhip();
        ASSERT_EQ(docTep(), mong);
        vong.tien(
            OTrongLinux::hanKhongHoi);  // it has read all: the time limit of a program that answers nothing
    }
    phim("key_up", "ShiftLeft");
    phim("key_down", "KeyD", R"("ctrl")");
    phim("key_up", "KeyD", R"("ctrl")");
    int trangThai = -1;
    while (waitpid(con, &trangThai, WNOHANG) == 0) {
        if (std::chrono::steady_clock::now() > han) kill(con, SIGKILL);
        nhip();
    }
    EXPECT_EQ(trangThai, 0);  // Control+D ended cat, cat's end the terminal
    unlink(tep.c_str());
}

// However many commands come at once, each is carried out, in order, with its own modifiers.
TEST_F(DieuKhienX, haiNghinLenhDuVaDungThuTu) {
    std::string mong;
    for (int i = 0; i < 1000; ++i) {
        const char chu = static_cast<char>('a' + i * 7 % 26);
        const bool hoa = i % 3 == 0;
        mong += static_cast<char>(hoa ? chu - 'a' + 'A' : chu);
        const std::string ma = std::string("Key") + static_cast<char>(chu - 'a' + 'A');
        phim("key_down", ma.c_str(), hoa ? R"("shift")" : "");
        phim("key_up", ma.c_str());
    }
    docHet();
    EXPECT_EQ(khach.chu, mong);
}

TEST(DieuKhienKhongX, khongManHinhThiKhongDuocPhep) {
    gia::VongLapGia vong;
    const std::string man = getenv("DISPLAY");
    const auto thu = [&] {
        std::string noi;
        const auto nen = taoNenDieuKhien(vong, [&](const std::string& lyDo) { noi = lyDo; });
        EXPECT_FALSE(nen->duocPhep());
        EXPECT_FALSE(nen->dang(SuKienPhim{0, true, LoaiPhim::phim, {}}));
        EXPECT_EQ(nen->khungManHinhChinh(), KhungHinh{});
        EXPECT_GT(nen->khoangBamDup(), 0);
        EXPECT_NE(lyDoKhongDieuKhien().find("phiên X11"), std::string::npos) << "how to get it";
        nen->moCaiDatTroNang();
        EXPECT_EQ(noi, lyDoKhongDieuKhien());
    };
    unsetenv("DISPLAY");
    thu();
    setenv("DISPLAY", ":9999", 1);
    thu();
    setenv("DISPLAY", man.c_str(), 1);
    setenv("XDG_SESSION_TYPE", "wayland", 1);
    thu();
    setenv("XDG_SESSION_TYPE", "x11", 1);
    setenv("WAYLAND_DISPLAY", "wayland-0", 1);
    thu();
    unsetenv("WAYLAND_DISPLAY");
    EXPECT_EQ(lyDoKhongDieuKhien(), "");
    EXPECT_TRUE(taoNenDieuKhien(vong)->duocPhep());
}

// The server dies under us: from then on nothing is permitted, and nothing falls.
TEST(DieuKhienKhongX, mayChuChetThiThoi) {
    signal(SIGPIPE, SIG_DFL);
    const std::string man = getenv("DISPLAY");
    std::array<int, 2> ong{};
    ASSERT_EQ(pipe(ong.data()), 0);
    const pid_t may = fork();
    if (may == 0) {
        dup2(ong[1], 3);
        execlp("Xvfb", "Xvfb", "-displayfd", "3", "-nolisten", "tcp", nullptr);
        _exit(127);
    }
    close(ong[1]);
    std::string so;
    char c = 0;
    while (read(ong[0], &c, 1) == 1 && c != '\n')
        so += c;
    close(ong[0]);
    setenv("DISPLAY", (":" + so).c_str(), 1);
    gia::VongLapGia vong;
    const auto nen = taoNenDieuKhien(vong);
    setenv("DISPLAY", man.c_str(), 1);
    ASSERT_TRUE(nen->duocPhep());
    nen->batDauChu();
    for (int i = 0; i < 60; ++i)
        EXPECT_TRUE(nen->dang(SuKienChu{std::u16string(1, static_cast<char16_t>(0x4E00 + i)), true}));
    nen->ketThucChu();
    kill(may, SIGKILL);
    waitpid(may, nullptr, 0);
    vong.tien(1);  // the text that waited
    EXPECT_FALSE(nen->duocPhep());
    EXPECT_FALSE(nen->dang(SuKienPhim{0, true, LoaiPhim::phim, std::uint64_t{0x20000}}));
    EXPECT_FALSE(nen->dang(SuKienChuot{}));
    nen->boChuDangCho();
    EXPECT_EQ(nen->khungManHinhChinh(), KhungHinh{});
}

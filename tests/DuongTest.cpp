// The road itself: the program as users start it, a real web engine, real X clients and real pixels.

#include <gtest/gtest.h>
#include <xcb/xtest.h>

#include <atomic>
#include <filesystem>
#include <fstream>
#include <functional>
#include <sstream>
#include <thread>

#include "KhachX.hpp"
#include "ThietBiLinux.hpp"
#include "gia/KhachThu.hpp"
#include "x11/AnhJpeg.hpp"
#include "x11/CuaMau.hpp"
#include "x11/PhongDuong.hpp"

using namespace tovira;
using gia::choDen;
using gia::docTep;
using gia::TienTrinh;
using thu::AnhJpeg;
using thu::CuaMau;
using thu::Mau;

namespace {

using DuongTest = thu::PhongDuong;

std::uint16_t congCua(const std::string& url) {
    return static_cast<std::uint16_t>(std::stoi(url.substr(std::string("http://127.0.0.1:").size())));
}

// The next frame of a stream.
AnhJpeg layKhung(gia::KhachThu& khach) {
    const std::string dau = khach.layToi("\r\n\r\n");
    const auto cho = dau.find("Content-Length: ");
    if (cho == std::string::npos) return AnhJpeg({});
    const std::size_t dai = std::stoul(dau.substr(cho + 16));
    if (!khach.docItNhat(dai + 2)) return AnhJpeg({});
    const AnhJpeg anh(std::as_bytes(std::span(khach.daDoc.data(), dai)));
    khach.daDoc.erase(0, dai + 2);
    return anh;
}

// WM_CLASS of the window that has the keyboard.
std::string lopCuaTieuDiem(const ManX& x) {
    const PhanXcb<xcb_get_input_focus_reply_t> diem(
        xcb_get_input_focus_reply(x.c(), xcb_get_input_focus(x.c()), nullptr));
    if (!diem) return {};
    const PhanXcb<xcb_get_property_reply_t> lop(xcb_get_property_reply(
        x.c(), xcb_get_property(x.c(), 0, diem->focus, XCB_ATOM_WM_CLASS, XCB_ATOM_STRING, 0, 64), nullptr));
    if (!lop) return {};
    return {static_cast<const char*>(xcb_get_property_value(lop.get())),
            static_cast<std::size_t>(xcb_get_property_value_length(lop.get()))};
}

// Reads a stream to its end on a thread of its own.
class NguoiXem {
  public:
    // `xet` says whether a picture is as it must be.
    NguoiXem(const std::string& url, std::function<bool(const AnhJpeg&)> xet) : khach_(congCua(url)) {
        khach_.gui("GET " + url.substr(url.find("/man-hinh")) + " HTTP/1.1\r\n\r\n");
        luong_ = std::thread([this, xet = std::move(xet)] {
            khach_.layToi("\r\n\r\n");
            for (AnhJpeg anh({}); (anh = layKhung(khach_)).rong != 0; ++soKhung)
                if (!xet(anh)) ++soHong;
        });
    }
    ~NguoiXem() { luong_.join(); }
    NguoiXem(const NguoiXem&) = delete;
    NguoiXem& operator=(const NguoiXem&) = delete;

    std::atomic<int> soKhung = 0;
    std::atomic<int> soHong = 0;

  private:
    gia::KhachThu khach_;
    std::thread luong_;
};

// Where the control bar stands; absent while it does not.
std::optional<OAnh> timThanh(const ManX& x) {
    const PhanXcb<xcb_query_tree_reply_t> cay(
        xcb_query_tree_reply(x.c(), xcb_query_tree(x.c(), x.goc()), nullptr));
    if (!cay) return {};
    for (int i = 0; i < xcb_query_tree_children_length(cay.get()); ++i) {
        const auto cua = xcb_query_tree_children(cay.get())[i];
        const PhanXcb<xcb_get_geometry_reply_t> cho(
            xcb_get_geometry_reply(x.c(), xcb_get_geometry(x.c(), cua), nullptr));
        const PhanXcb<xcb_get_window_attributes_reply_t> thuoc(
            xcb_get_window_attributes_reply(x.c(), xcb_get_window_attributes(x.c(), cua), nullptr));
        if (cho && thuoc && cho->width == 380 && cho->height == 40 && cho->y == 8 &&
            thuoc->override_redirect != 0 && thuoc->map_state == XCB_MAP_STATE_VIEWABLE)
            return OAnh{cho->x, cho->y, cho->width, cho->height};
    }
    return {};
}

bool laMauThanh(Mau mau) {
    return (mau.rgb >> 16U) > 180 && (mau.rgb >> 8U & 0xFFU) < 100 && (mau.rgb & 0xFFU) < 100;
}

// What stands on the screen at that place.
Mau mauTrenMan(const ManX& x, int cx, int cy) {
    const PhanXcb<xcb_get_image_reply_t> anh(xcb_get_image_reply(
        x.c(),
        xcb_get_image(x.c(), XCB_IMAGE_FORMAT_Z_PIXMAP, x.goc(), static_cast<std::int16_t>(cx),
                      static_cast<std::int16_t>(cy), 1, 1, ~0U),
        nullptr));
    if (!anh) return {};
    const auto* p = xcb_get_image_data(anh.get());
    return {static_cast<std::uint32_t>(p[2] << 16 | p[1] << 8 | p[0])};
}

void bamChuot(const ManX& x, int cx, int cy) {
    xcb_test_fake_input(x.c(), XCB_MOTION_NOTIFY, 0, 0, x.goc(), static_cast<std::int16_t>(cx),
                        static_cast<std::int16_t>(cy), 0);
    for (const auto loai : {XCB_BUTTON_PRESS, XCB_BUTTON_RELEASE})
        xcb_test_fake_input(x.c(), static_cast<std::uint8_t>(loai), 1, 0, x.goc(), 0, 0, 0);
    xcb_flush(x.c());
}

PhanXcb<xcb_get_property_reply_t> docThuocTinh(const ManX& x, xcb_window_t cua, xcb_atom_t ten) {
    return PhanXcb<xcb_get_property_reply_t>(
        xcb_get_property_reply(x.c(), xcb_get_property(x.c(), 0, cua, ten, XCB_ATOM_ANY, 0, 1024), nullptr));
}

// The program's main window, if the window manager has it.
xcb_window_t timCuaSoChinh(const ManX& x) {
    const auto cac = docThuocTinh(x, x.goc(), nguyenTuX(x.c(), "_NET_CLIENT_LIST"));
    if (!cac) return XCB_NONE;
    const auto* cua = static_cast<const xcb_window_t*>(xcb_get_property_value(cac.get()));
    for (int i = 0; i < xcb_get_property_value_length(cac.get()) / 4; ++i) {
        const auto lop = docThuocTinh(x, cua[i], XCB_ATOM_WM_CLASS);
        if (!lop) continue;
        const std::string_view ten(static_cast<const char*>(xcb_get_property_value(lop.get())),
                                   static_cast<std::size_t>(xcb_get_property_value_length(lop.get())));
        if (ten.find("tovira") != ten.npos) return cua[i];
    }
    return XCB_NONE;
}

// How it stands there: normal, minimised or (absent) hidden.
enum class Hien { thuong, thuNho };
std::optional<Hien> cuaSoChinh(const ManX& x) {
    const auto tt = docThuocTinh(x, timCuaSoChinh(x), nguyenTuX(x.c(), "WM_STATE"));
    if (!tt || xcb_get_property_value_length(tt.get()) < 4) return {};
    return *static_cast<const std::uint32_t*>(xcb_get_property_value(tt.get())) == 1 ? Hien::thuong
                                                                                     : Hien::thuNho;
}

// From here on every key arrives at `khach`, wherever the window manager puts the focus when windows come and
// go.
void giuBanPhim(const gia::KhachX& khach) {
    ASSERT_TRUE(choDen([&] {
        const PhanXcb<xcb_grab_keyboard_reply_t> tra(
            xcb_grab_keyboard_reply(khach.c(),
                                    xcb_grab_keyboard(khach.c(), 0, khach.cuaSo(), XCB_CURRENT_TIME,
                                                      XCB_GRAB_MODE_ASYNC, XCB_GRAB_MODE_ASYNC),
                                    nullptr));
        return tra && tra->status == XCB_GRAB_STATUS_SUCCESS;
    }));
}

}  // namespace

TEST_F(DuongTest, manHinhThatVaDungThat) {
    const ManX x = moManX();
    moTovira();
    EXPECT_EQ(trang.hoi("tovira.nenTang + tovira.phienBan + tovira.native"), "macos1.0.3true");
    EXPECT_EQ(trang.hoi("tovira.troNangDaBat()"), "true");
    EXPECT_EQ(
        trang.hoi("tovira.dsManHinh[0].rong + 'x' + tovira.dsManHinh[0].cao + tovira.dsManHinh[0].chinh"),
        std::to_string(x.man->width_in_pixels) + "x" + std::to_string(x.man->height_in_pixels) + "true");
    const CuaMau o(x.c(), x.goc(), 0x00AA33, {200, 300, 120, 90});
    const std::string url = chiaSe();
    ASSERT_EQ(url.rfind("http://127.0.0.1:", 0), 0U) << url;
    const std::string dich = url.substr(url.find("/man-hinh"));

    EXPECT_EQ(gia::hoi(congCua(url), "GET /man-hinh?k=sai-be-bet HTTP/1.1\r\n\r\n"),
              "HTTP/1.1 404 Not Found\r\nAccess-Control-Allow-Origin: *\r\nContent-Length: 0\r\n"
              "Connection: close\r\n\r\n");
    gia::KhachThu khach(congCua(url));
    ASSERT_TRUE(khach.gui("GET " + dich + " HTTP/1.1\r\n\r\n"));
    EXPECT_NE(khach.layToi("\r\n\r\n").find("boundary=khungcuatoi"), std::string::npos);
    for (const std::uint32_t mau : {0x00AA33U, 0xCC2200U, 0x1133DDU}) {
        o.to(mau);
        AnhJpeg anh({});
        ASSERT_TRUE(choDen([&] {
            anh = layKhung(khach);
            return anh.rong == 0 || anh.tai(260, 345) == Mau{mau};
        })) << std::hex
            << mau;
        ASSERT_EQ(anh.rong, x.man->width_in_pixels);
        ASSERT_EQ(anh.cao, x.man->height_in_pixels);
    }

    // The page stops: the stream ends, and its port with it.
    trang.chay("document.getElementById('bc-stop').click()");
    EXPECT_NE(khach.docHet(), gia::KhachThu::Doc::quaHan);
    ASSERT_TRUE(choDen([&] { return !gia::KhachThu(congCua(url)).noiDuoc(); }));
    // A fresh share has a fresh secret.
    const std::string url2 = chiaSe();
    ASSERT_EQ(url2.rfind("http://127.0.0.1:", 0), 0U);
    EXPECT_NE(url2.substr(url2.find("k=")), url.substr(url.find("k=")));
    tovira->bao(SIGTERM);
    EXPECT_EQ(tovira->doiHet(), 0);
}

TEST_F(DuongTest, lenhCuaTrangDieuKhienMayNay) {
    moTovira();
    ASSERT_FALSE(chiaSe().empty());
    gia::KhachX khach;  // covers the whole display
    giuBanPhim(khach);
    khach.suKien.clear();
    lenh(R"({"t":"mouse_move","x":0.25,"y":0.5})");
    const int rong = khach.x().man->width_in_pixels;
    const int cao = khach.x().man->height_in_pixels;
    khach.docToi([&] {
        return !khach.suKien.empty() && khach.suKien.back().x == rong / 4 && khach.suKien.back().y == cao / 2;
    });
    lenh(R"({"t":"mouse_down","x":0.25,"y":0.5,"button":"right"})");
    lenh(R"({"t":"mouse_up","x":0.25,"y":0.5,"button":"right"})");
    lenh(R"({"t":"mouse_wheel","x":0.25,"y":0.5,"dy":240})");
    khach.docToi([&] { return khach.keLai() == "+3/0 -3/0 +5/0 -5/0 +5/0 -5/0"; });
    khach.suKien.clear();
    lenh(R"({"t":"key_down","code":"KeyA","modifiers":["shift"]})");
    lenh(R"({"t":"key_up","code":"KeyA"})");
    lenh(R"({"t":"text","value":"xin chào, 世界 🎉"})");
    lenh(R"({"t":"key_down","code":"khong-co"})");
    lenh(R"({"t":"text","value":"."})");
    khach.docToi([&] { return khach.chu == "Axin chào, 世界 🎉."; });
}

// A page that floods the host loses no command and no order.
TEST_F(DuongTest, haiNghinLenhMotLucTheoThuTu) {
    moTovira();
    gia::KhachX khach;
    giuBanPhim(khach);
    std::string mong;
    for (int i = 0; i < 2000; ++i)
        mong += static_cast<char>('a' + i * 7 % 26);
    trang.chay(
        "for (let i = 0; i < 2000; i++) { const c = 'Key' + String.fromCharCode(65 + i * 7 % 26);"
        "tovira.guiLenh(JSON.stringify({t:'key_down', code:c})); tovira.guiLenh(JSON.stringify({t:'key_up', "
        "code:c})); }");
    khach.docToi([&] { return khach.chu.size() >= mong.size(); }, 60);
    EXPECT_EQ(khach.chu, mong);
}

// The bar stands above everything, a full-screen program included, works there without taking the keyboard,
// and the one who looks on never sees it.
TEST_F(DuongTest, thanhDungTrenManHinhDayMaKhongCoTrongKhung) {
    moTovira();
    const ManX x = moManX();
    const std::string url = chiaSe();
    ASSERT_FALSE(url.empty());
    const int giua = x.man->width_in_pixels / 2;
    NguoiXem xem(url, [&](const AnhJpeg& anh) {
        for (int cy = 0; cy < 60; cy += 2)
            for (int cx = giua - 200; cx < giua + 200; cx += 2)
                if (laMauThanh(anh.tai(cx, cy))) return false;
        return true;
    });
    std::optional<OAnh> thanh;
    ASSERT_TRUE(choDen([&] { return (thanh = timThanh(x)).has_value(); }));
    EXPECT_EQ(*thanh, (OAnh{giua - 190, 8, 380, 40}));
    EXPECT_TRUE(choDen([&] { return laMauThanh(mauTrenMan(x, giua, 12)); }));

    const TienTrinh xterm({"xterm", "-fullscreen", "-bg", "#205080"});
    ASSERT_TRUE(choDen([&] {
        return lopCuaTieuDiem(x).find("xterm") != std::string::npos &&
               mauTrenMan(x, 100, 900) == Mau{0x205080};
    }));
    EXPECT_TRUE(choDen([&] { return laMauThanh(mauTrenMan(x, giua, 12)); })) << "covered";
    const CuaMau dong(x.c(), x.goc(), 0x00AA33, {giua - 60, 20, 120, 200});  // below and above it
    std::uint32_t mau = 0;
    EXPECT_TRUE(choDen([&] {
        dong.to((mau += 0x000703) & 0x00FFFFU);
        return xem.soKhung > 10;
    }));
    bamChuot(x, thanh->x + 320, thanh->y + 20);
    EXPECT_TRUE(trang.cho("!tovira.manHinhDangPhat() && lanBam == 1"));
    EXPECT_TRUE(choDen([&] { return !timThanh(x); }));
    EXPECT_NE(lopCuaTieuDiem(x).find("xterm"), std::string::npos);
    EXPECT_EQ(xem.soHong, 0) << "of " << xem.soKhung;
}

// Whichever desktop of the window manager's is being looked at.
TEST_F(DuongTest, thanhDungTrenMoiBanLamViec) {
    const auto xdotool = [](const char* viec, const char* so) {
        EXPECT_EQ(TienTrinh({"xdotool", viec, so}).doiHet(), 0) << viec;
    };
    const ManX x = moManX();
    moTovira();
    const TienTrinh xterm({"xterm", "-fullscreen", "-bg", "#205080"});
    ASSERT_TRUE(choDen([&] { return mauTrenMan(x, 100, 900) == Mau{0x205080}; }));
    ASSERT_FALSE(chiaSe().empty());
    ASSERT_TRUE(choDen([&] { return timThanh(x).has_value(); }));

    xdotool("set_num_desktops", "2");
    xdotool("set_desktop", "1");
    EXPECT_TRUE(choDen([&] { return !(mauTrenMan(x, 100, 900) == Mau{0x205080}); })) << "still on the first";
    const auto thanh = timThanh(x);
    EXPECT_TRUE(thanh);
    if (thanh) {
        EXPECT_TRUE(choDen([&] { return laMauThanh(mauTrenMan(x, thanh->x + 190, thanh->y + 4)); }));
        bamChuot(x, thanh->x + 320, thanh->y + 20);
        EXPECT_TRUE(trang.cho("!tovira.manHinhDangPhat() && lanBam == 1"));
    }
    xdotool("set_desktop", "0");
    xdotool("set_num_desktops", "1");
}

TEST_F(DuongTest, chuDenDungTrongXterm) {
    moTovira();
    const auto tep = tam / "ra.txt";
    setenv("LC_ALL", "C.utf8", 1);
    const TienTrinh xterm(
        {"xterm", "-u8", "-geometry", "80x20+0+0", "-e", "sh", "-c", "exec cat > " + tep.string()});
    const ManX x = moManX();
    ASSERT_TRUE(choDen([&] { return std::filesystem::exists(tep); }));
    // The remote side clicks into the terminal's corner, which nothing covers, until the window manager has
    // given it the keyboard.
    ASSERT_TRUE(choDen([&] {
        if (lopCuaTieuDiem(x).find("xterm") != std::string::npos) return true;
        lenh(R"({"t":"mouse_down","x":0.05,"y":0.06})");
        lenh(R"({"t":"mouse_up","x":0.05,"y":0.06})");
        return trang.hoi("1") != "1";
    }));
    lenh(R"({"t":"text","value":"Tiếng Việt có dấu: ễ ộ ữ\\nдва\\n"})");
    EXPECT_TRUE(choDen([&] { return docTep(tep) == "Tiếng Việt có dấu: ễ ộ ữ\nдва\n"; })) << docTep(tep);
}

// One program for this user on this display, however often it is started.
TEST_F(DuongTest, banThuHaiGoiBanDauVaBanMoiThayBanCu) {
    const ManX x = moManX();
    moTovira({"--ngam"});
    // There is no tray here: the menu stays in reach.
    ASSERT_TRUE(choDen([&] { return cuaSoChinh(x) == Hien::thuNho; }));
    EXPECT_EQ(TienTrinh(dongLenh({"--ngam"})).doiHet(), 0);
    EXPECT_EQ(cuaSoChinh(x), Hien::thuNho);
    EXPECT_EQ(TienTrinh(dongLenh()).doiHet(), 0);
    EXPECT_TRUE(choDen([&] {
        return cuaSoChinh(x) == Hien::thuong && lopCuaTieuDiem(x).find("tovira") != std::string::npos;
    }));
    EXPECT_EQ(trang.hoi("1"), "1");

    trang.chay("localStorage.setItem('nho', 'còn đây')");
    gia::KhachX khach;
    giuBanPhim(khach);
    khach.suKien.clear();
    lenh(R"({"t":"key_down","code":"KeyQ"})");
    khach.docToi([&] { return khach.keLai() == "+24/0"; });
    setenv("TOVIRA_THAY", "1", 1);
    TienTrinh moi(dongLenh());
    unsetenv("TOVIRA_THAY");
    khach.docToi([&] { return khach.keLai() == "+24/0 -24/0"; });
    EXPECT_EQ(tovira->doiHet(), 0);
    trang.chay("0");  // lost with the page that still waited for something to do
    // The new one has the profile to itself, and the place.
    EXPECT_TRUE(trang.cho("window.tovira && localStorage.getItem('nho') === 'còn đây'"));
    EXPECT_EQ(TienTrinh(dongLenh({"--ngam"})).doiHet(), 0);
    moi.bao(SIGTERM);
    EXPECT_EQ(moi.doiHet(), 0);
}

// However the program is told to end, nothing stays pressed.
TEST_F(DuongTest, duocBaoKetThucThiThaHet) {
    const ManX x = moManX();
    struct {
        const char* cach;
        std::function<void()> lam;
        int trangThai;
    } const bang[] = {
        {"SIGINT", [&] { tovira->bao(SIGINT); }, 0},
        {"SIGTERM", [&] { tovira->bao(SIGTERM); }, 0},
        {"SIGHUP", [&] { tovira->bao(SIGHUP); }, 0},
        {"its connection to the display is cut",
         [&] {
             xcb_kill_client(x.c(), timCuaSoChinh(x));
             xcb_flush(x.c());
         },
         1},
    };
    for (const auto& dong : bang) {
        SCOPED_TRACE(dong.cach);
        trang.chay("0");  // lost with the page before, which still waits for something to do
        moTovira();
        ASSERT_FALSE(chiaSe().empty());
        gia::KhachX khach;
        giuBanPhim(khach);
        khach.suKien.clear();
        lenh(R"({"t":"key_down","code":"KeyQ"})");
        lenh(R"({"t":"mouse_down","x":0.5,"y":0.5})");
        khach.docToi([&] { return khach.keLai() == "+24/0 +1/0"; });
        dong.lam();
        khach.docToi([&] {
            const auto ke = khach.keLai();
            return ke.find(" -1/") != std::string::npos && ke.find(" -24/") != std::string::npos;
        });
        EXPECT_EQ(tovira->doiHet(), dong.trangThai);
    }
}

// Long before the share ends by itself.
TEST_F(DuongTest, nguoiXemCuoiDiThiThaPhim) {
    moTovira();
    const std::string url = chiaSe();
    ASSERT_FALSE(url.empty());
    gia::KhachX khach;
    giuBanPhim(khach);
    {
        gia::KhachThu nguoiXem(congCua(url));
        ASSERT_TRUE(nguoiXem.gui("GET " + url.substr(url.find("/man-hinh")) + " HTTP/1.1\r\n\r\n"));
        nguoiXem.layToi("\r\n\r\n");
        ASSERT_GT(layKhung(nguoiXem).rong, 0);
        khach.suKien.clear();
        lenh(R"({"t":"key_down","code":"KeyQ"})");
        khach.docToi([&] { return khach.keLai() == "+24/0"; });
    }
    khach.docToi([&] { return khach.keLai() == "+24/0 -24/0"; });
    EXPECT_EQ(trang.hoi("tovira.manHinhDangPhat()"), "true");
}

// The web host, its real probe and its watch on a real engine, against a server that is started and stopped,
// refuses, hangs, resets and fails: what the page is told, and what is shown. Time passes when the test says
// so.

#include <QCoreApplication>

#include "gia/DongCoWeb.hpp"
#include "gia/MayChuSongChet.hpp"
#include "gia/TienTrinh.hpp"

using namespace tovira;
using gia::cho;

namespace {

// Work runs in Qt's loop, timers by the test's own clock.
class VongLapTay final : public VongLap {
  public:
    void chay(std::function<void()> viec) override { qt_.chay(std::move(viec)); }
    void chaySau(double giay, std::function<void()> viec) override { gio_.chaySau(giay, std::move(viec)); }
    std::unique_ptr<HenGio> lapLai(double giay, std::function<void()> viec) override {
        return gio_.lapLai(giay, std::move(viec));
    }
    double dongHo() const override { return gio_.dongHo(); }
    double gioTu1970() const override { return gio_.gioTu1970(); }
    bool dangOChinh() const override { return qt_.dangOChinh(); }
    void tien(double giay) { gio_.tien(giay); }

  private:
    VongLapLinux qt_;
    gia::VongLapGia gio_;
};

// The real one; its time limits may be cut short.
struct DoMayChuThat final : DoMayChu {
    using DoMayChu::DoMayChu;
    std::vector<double> cacHan;
    double rutGon = 1;
    int dangDo = 0;

    void song(const std::string& url, double han, std::function<void(bool)> xong) override {
        cacHan.push_back(han);
        ++dangDo;
        DoMayChu::song(url, han * rutGon, [this, xong = std::move(xong)](bool song) {
            xong(song);
            --dangDo;
        });
    }
};

// Held apart from the web host, which is made for its address.
struct CoMayChu {
    gia::MayChuSongChet mayChu;
};

class MayChuSongChetLinux : public testing::Test,
                            public CoMayChu,
                            public gia::PhongQt<VongLapTay, DoMayChuThat> {
  protected:
    MayChuSongChetLinux() : PhongQt(mayChu.goc()) { mayChu.web.trang["/app"] = {trangDem("app")}; }

    // A page that writes down every call of a hook.
    static std::string trangDem(const std::string& ten) {
        return "<!doctype html><title>" + ten + R"html(</title><script>
            window.goi = [];
            ['__tvMatKetNoi', '__tvMayChuSongLai', '__tvTrangThai', '__tvAndroidDoi', '__tvDaTai', '__tvTaiHong'].forEach(
                function (t) { window[t] = function () { goi.push(t.slice(4) + JSON.stringify([].slice.call(arguments))); }; });
            </script><script src="/vendor/socket.io.min.js"></script>)html";
    }
    void coGiaoDienKem() {
        std::filesystem::create_directories(tam / "giao-dien");
        gia::ghiTep(tam / "giao-dien" / "app.html", trangDem("kem"));
    }

    void len(const char* ten) {
        cuaSo.dung();
        cuaSo.hien();
        ASSERT_TRUE(choTrang(ten));
    }
    // A page with the bridge is up and has been told how things stand.
    void lenVaChao(const char* ten) {
        len(ten);
        ASSERT_TRUE(choJs("goi.length >= 2"));
        EXPECT_EQ(daGoi(), R"(TrangThai[{"autostart":false,"service":false}] AndroidDoi[])");
    }
    // Lets `so` ticks of the watch pass, each with all that follows from it.
    void nhip(int so) {
        for (int i = 0; i < so; ++i) {
            vong.tien(TheoDoiMayChu::chuKy);
            ASSERT_TRUE(cho([&] { return doMayChu.dangDo == 0; }));
            QCoreApplication::sendPostedEvents();
        }
    }
    // Every hook that was called since the last time this was asked, in order, with its arguments.
    std::string daGoi() { return js("(function () { var g = goi.join(' '); goi = []; return g; })()"); }
    std::string sauNhip(int so) {
        nhip(so);
        return daGoi();
    }
    // The load under way fails, if there is one, and the lost-connection page is up.
    bool choTrangMatKetNoi() {
        return cho([&] { return cuaSo.theoDoi().dangHien() == DangHien::trangKhongKetNoi; }) &&
               choTrang("Tovira");
    }
    // The lost-connection page's own link, under the user's mouse.
    void bamThuLai() {
        const auto truoc = doMayChu.cacHan.size();
        // A page takes no clicks before it has been drawn.
        js("requestAnimationFrame(function () { requestAnimationFrame(function () { window.daVe = true; }); "
           "}); 1");
        ASSERT_TRUE(choJs("window.daVe"));
        const QString noi = QString::fromStdString(
            js("(function () { var o = document.querySelector('a').getBoundingClientRect();"
               "return Math.round(o.left + o.width / 2) + ',' + Math.round(o.top + o.height / 2); })()"));
        const QPoint diem = trang.khungNhin().mapToGlobal(
            QPoint(noi.section(u',', 0, 0).toInt(), noi.section(u',', 1, 1).toInt()));
        ASSERT_EQ(gia::TienTrinh({"xdotool", "mousemove", std::to_string(diem.x()), std::to_string(diem.y()),
                                  "click", "1"})
                      .doiHet(),
                  0);
        ASSERT_TRUE(cho([&] { return doMayChu.cacHan.size() > truoc && doMayChu.dangDo == 0; }));
    }

    static constexpr const char* mat = "MatKetNoi[true]";
    static constexpr const char* ve = "MatKetNoi[false]";
    static constexpr const char* songLai = "MayChuSongLai[]";
};

}  // namespace

TEST_F(MayChuSongChetLinux, trangMayChuDuocBaoDungMotLan) {
    mayChu.mo();
    lenVaChao("app");
    EXPECT_EQ(sauNhip(12), "");
    EXPECT_EQ(doMayChu.cacHan, (std::vector<double>{1.5, 4, 4, 4})) << "a healthy server is asked every 20 s";

    mayChu.tat();
    EXPECT_EQ(sauNhip(4), "") << "one failure is none";
    mayChu.mo();
    EXPECT_EQ(sauNhip(4), "");

    mayChu.tat();
    EXPECT_EQ(sauNhip(4), "");
    EXPECT_EQ(sauNhip(1), mat);
    EXPECT_EQ(sauNhip(3), "");
    mayChu.mo();
    EXPECT_EQ(sauNhip(1), ve);
    EXPECT_EQ(sauNhip(8), "");

    ASSERT_TRUE(mayChu.ngo());
    doMayChu.rutGon = 0.05;
    EXPECT_EQ(sauNhip(5), mat) << "silence counts like a refusal";
    doMayChu.rutGon = 1;
    mayChu.mo();
    EXPECT_EQ(sauNhip(1), ve);

    // The probe asks for a connection and nothing else: what becomes of it afterwards is the page's affair.
    mayChu.web.cat = true;
    EXPECT_EQ(sauNhip(8), "");
    mayChu.web.cat = false;
    mayChu.web.trang["/app"].trangThai = 500;
    EXPECT_EQ(sauNhip(8), "");
    EXPECT_EQ(js("document.title"), "app") << "the page itself decides what to show meanwhile";
}

TEST_F(MayChuSongChetLinux, giaoDienKemDuocBaoSongLaiMotLan) {
    coGiaoDienKem();
    lenVaChao("kem");
    const std::string gocKem = js("location.origin");
    EXPECT_EQ(gocKem, "http://127.0.0.1:" + std::to_string(giaoDienKem.cong()));
    EXPECT_EQ(sauNhip(3), "");
    mayChu.mo();
    EXPECT_EQ(sauNhip(1), songLai);
    EXPECT_EQ(sauNhip(3), "");
    mayChu.tat();
    EXPECT_EQ(sauNhip(3), "") << "the packaged page is not told that the server has gone again";
    mayChu.mo();
    EXPECT_EQ(sauNhip(1), songLai);
    EXPECT_EQ(js("document.title"), "kem") << "it stays until somebody asks";

    js("ipc.postMessage('thu-lai')");
    ASSERT_TRUE(choTrang("app"));
    EXPECT_EQ(giaoDienKem.cong(), 0);
    EXPECT_FALSE(cuaSo.gocCauDuoc(gocKem));
    EXPECT_EQ(js("typeof tovira.guiLenh"), "function");
    ASSERT_TRUE(choJs("goi.length >= 2"));
    daGoi();
    mayChu.tat();
    EXPECT_EQ(sauNhip(5), mat) << "told like any page of the server";
}

// The packaged page has the substitute of its socket client, which answers instead of hanging.
TEST_F(MayChuSongChetLinux, socketThayTrongDongCoThat) {
    coGiaoDienKem();
    lenVaChao("kem");
    js(R"js(window.ra = []; (function () {
        var s = io('http://khong-dung'), tra = function (d) { ra.push(JSON.stringify(d)); };
        ra.push(s.on('connect_error', function (e) { ra.push(e instanceof Error, e.message); throw e; }) === s,
                s.once('connect_error', function (e) { ra.push('lan nua'); }) === s,
                s.off() === s, s.emit('a', 1, tra) === s, s.emit('b') === s, s.disconnect() === s, s.connected,
                s !== io(), typeof s.io.on, typeof s.io.off, s.io.on('x'));
        ra.push('het luot');
    })(); fetch('/vendor/socket.io.min.js').then(r => r.arrayBuffer()).then(function (b) { window.dai = b.byteLength; }); 1)js");
    EXPECT_TRUE(choJs("ra.indexOf('lan nua') > 0 && window.dai"));
    EXPECT_EQ(
        js("ra.join('|')"),
        R"({"ok":false,"error":"Đang chạy không có máy chủ","code":"khong_may_chu"}|true|true|true|true|true|)"
        R"(true|false|true|function|function||het luot|true|Đang chạy không có máy chủ|lan nua)");
    EXPECT_EQ(js("dai"), "1296");
}

TEST_F(MayChuSongChetLinux, taiHongRoiTuVe) {
    mayChu.mo();
    lenVaChao("app");
    const auto napLai = [&] { js("ipc.postMessage('thu-lai')"); };

    // Refused, reset, silent: the lost-connection page, and back by itself once there is an answer.
    mayChu.tat();
    napLai();
    ASSERT_TRUE(choTrangMatKetNoi());
    EXPECT_TRUE(cuaSo.theoDoi().dangMatKetNoi());
    nhip(3);
    EXPECT_EQ(js("document.title"), "Tovira");
    mayChu.mo();
    nhip(1);
    ASSERT_TRUE(choTrang("app"));

    mayChu.web.cat = true;
    napLai();
    ASSERT_TRUE(choTrangMatKetNoi()) << "reset";
    nhip(1);
    ASSERT_TRUE(choTrangMatKetNoi()) << "the connection is taken, the page is not to be had";
    mayChu.web.cat = false;
    nhip(1);
    ASSERT_TRUE(choTrang("app"));

    mayChu.web.trang["/app"].treo = true;
    trang.tai(thamSo.duongDanApp, 0.3);
    ASSERT_TRUE(choTrangMatKetNoi()) << "silent";
    mayChu.web.trang["/app"].treo = false;
    nhip(1);
    ASSERT_TRUE(choTrang("app"));

    mayChu.web.trang["/app"] = {"<title>nam-tram</title>", "text/html", "", 500};
    napLai();
    ASSERT_TRUE(choTrang("nam-tram")) << "an answer is an answer";
    EXPECT_FALSE(cuaSo.theoDoi().dangMatKetNoi());
}

// The lost-connection page leads out in both ways, whatever it took the place of.
TEST_F(MayChuSongChetLinux, khongCoNgoCut) {
    len("Tovira");
    EXPECT_FALSE(cuaSo.theoDoi().dangDungGiaoDienKem()) << "there is no packaged interface";
    nhip(2);
    coGiaoDienKem();
    bamThuLai();
    ASSERT_TRUE(choTrang("kem")) << "there is one now";

    // The packaged interface fails, and its server with it.
    const auto hongKem = [&] {
        giaoDienKem.dung();
        page().triggerAction(QWebEnginePage::Reload);
        ASSERT_TRUE(choTrang("Tovira"));
        EXPECT_TRUE(cuaSo.theoDoi().dangDungGiaoDienKem()) << "what is shown is known apart from the flags";
        EXPECT_EQ(cuaSo.theoDoi().dangHien(), DangHien::trangKhongKetNoi);
    };
    hongKem();
    bamThuLai();
    ASSERT_TRUE(choTrang("kem")) << "by its link";
    ASSERT_TRUE(choJs("typeof tovira === 'object'"));
    hongKem();
    nhip(3);
    EXPECT_EQ(js("document.title"), "Tovira");
    mayChu.mo();
    nhip(1);
    ASSERT_TRUE(choTrang("app")) << "by itself";
    EXPECT_FALSE(cuaSo.theoDoi().dangDungGiaoDienKem());
}

// The server is well, only its page kills the engine: given up after the second time, and not tried again by
// the watch before a minute is over.
TEST_F(MayChuSongChetLinux, trangGietDongCoKhongThanhVongLap) {
    mayChu.mo();
    lenVaChao("app");
    for (int i = 0; i < 2; ++i) {
        const auto truoc = mayChu.web.daHoi.size();
        page().load(QUrl(QStringLiteral("chrome://crash")));
        if (i == 0) {
            ASSERT_TRUE(cho([&] { return mayChu.web.daHoi.size() > truoc; })) << "reloaded once";
            ASSERT_TRUE(choTrang("app"));
        }
    }
    ASSERT_TRUE(choTrangMatKetNoi());
    const auto truoc = mayChu.web.daHoi.size();
    nhip(11);
    EXPECT_EQ(mayChu.web.daHoi.size(), truoc);
    EXPECT_EQ(js("document.title"), "Tovira");
    nhip(2);
    ASSERT_TRUE(choTrang("app"));
}

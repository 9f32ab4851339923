// Downloads on a real engine, checked on disk.

#include <QDir>
#include <QFile>
#include <QWebEngineProfile>

#include "gia/DongCoWeb.hpp"

using namespace tovira;
using gia::cho;

namespace {

class TaiXuongLinuxThu : public testing::Test, public gia::PhongWebLinux {
  protected:
    TaiXuongLinuxThu() {
        may().trang.clear();
        may().trang["/app"] = {R"html(<!doctype html><title>app</title><script>
            window.kq = [];
            window.__tvDaTai = function (d, t) { kq.push(d + '/' + t); };
            window.__tvTaiHong = function (l) { kq.push('hong ' + l); };
            // Follows a link of this address, and saves under this name if there is one.
            window.bam = function (u, ten) {
                var a = document.createElement('a');
                a.href = u;
                if (ten !== undefined) a.download = ten;
                document.body.append(a);
                a.click();
            };
            </script>)html"};
    }
    ~TaiXuongLinuxThu() override { may().tha(); }
    static gia::MayChuTrang& may() { return gia::mayChuTrang(); }

    [[nodiscard]] std::string tepTrongTam() const {
        auto cac = QDir(QString::fromStdString(tam.duong().string())).entryList(QDir::Files, QDir::Name);
        return cac.join(u'|').toStdString();
    }
    [[nodiscard]] std::string docTep(const char* ten) const {
        QFile tep(QString::fromStdString((tam.duong() / ten).string()));
        return tep.open(QIODevice::ReadOnly) ? tep.readAll().toStdString() : "(none)";
    }
    // What the page was told, in the order of the alphabet, without the folder.
    std::string ketQua(std::size_t so) {
        EXPECT_TRUE(choJs("kq.length === " + std::to_string(so))) << js("kq.join()");
        const std::string thuMuc = tam.duong().string() + "/";
        return js("(function () { var k = kq.map(t => t.replace('" + thuMuc +
                  "', '')).sort().join('|'); kq = []; return k; })()");
    }
};

}  // namespace

TEST_F(TaiXuongLinuxThu, moiLoiDeuThanhTep) {
    may().trang["/tep"] = {"mot", "application/octet-stream",
                           "Content-Disposition: attachment; filename=\"../../a.txt\"\r\n"};
    may().trang["/la"] = {"hai", "application/x-la"};
    may().trang["/dut"] = {"ba", "application/octet-stream", "Content-Disposition: attachment\r\n"};
    may().trang["/dut"].thieu = 7;
    may().trang["/app"] = {R"html(<!doctype html><title>app</title><script>
        window.kq = []; window.__tvDaTai = function (d, t) { kq.push(t); };
        window.__tvTaiHong = function (l) { kq.push('hong'); };
        </script><a id="dl" href="data:text/plain,du%20lieu">x</a>)html"};
    len();
    js("location.href = '/tep'; 1");
    EXPECT_TRUE(choJs("kq.length === 1"));
    EXPECT_EQ(js("document.title"), "app") << "a load that became a download replaces nothing";
    // Two at once under one name; then what the engine cannot show; then blob: and data:.
    js("['/tep', '/tep'].forEach(function (u) { var a = document.createElement('a'); a.href = u; a.download "
       "= ''; "
       "document.body.append(a); a.click(); }); 1");
    EXPECT_TRUE(choJs("kq.length === 3"));
    js("location.href = '/la'; 1");
    EXPECT_TRUE(choJs("kq.length === 4"));
    js("location.href = URL.createObjectURL(new Blob(['bon'])); 1");
    EXPECT_TRUE(choJs("kq.length === 5"));
    js("document.getElementById('dl').click(); 1");
    EXPECT_TRUE(choJs("kq.length === 6"));
    EXPECT_EQ(docTep("a.txt") + docTep("a (2).txt") + docTep("a (3).txt"), "motmotmot");
    EXPECT_EQ(docTep("la"), "hai");
    EXPECT_EQ(docTep("tep-nhan-duoc.txt"), "du lieu") << tepTrongTam();
    EXPECT_EQ(js("document.title + typeof window.tovira"), "appobject");
    EXPECT_EQ(khac.viec.size(), 6U) << "each one revealed";
    js("location.href = '/dut'; 1");
    EXPECT_TRUE(choJs("kq.length === 7"));
    EXPECT_EQ(js("kq[6]"), "hong");
}

TEST_F(TaiXuongLinuxThu, cungLucCungTenKhongBaoGioMotTep) {
    const char* dinhKem = "Content-Disposition: attachment; filename=\"a.txt\"\r\n";
    for (const char* duong : {"/mot", "/hai", "/ba"}) {
        may().trang[duong] = {std::string(300'000, duong[1]), "application/octet-stream", dinhKem};
        may().trang[duong].giuLai = true;
    }
    len();
    int xin = 0;
    QObject moc;
    QObject::connect(&gia::hoSoChung().hoSo(), &QWebEngineProfile::downloadRequested, &moc, [&] { ++xin; });
    int mong = 0;
    for (const char* tai : {"bam('/mot')", "location.href = '/hai'", "bam('/ba', '')",
                            "bam(URL.createObjectURL(new Blob(['bon'])), 'a.txt')",
                            "bam('data:text/plain,nam', 'a.txt')", "bam('data:text/plain,sau', 'A.TXT')"}) {
        js(std::string(tai) + "; 1");
        ++mong;
        ASSERT_TRUE(cho([&] { return xin == mong; })) << tai;
    }
    EXPECT_EQ(ketQua(3), "A (4).TXT|a (4).txt|a (5).txt");
    EXPECT_EQ(docTep("a (4).txt") + docTep("a (5).txt") + docTep("A (4).TXT"), "bonnamsau");
    may().tha();
    EXPECT_EQ(ketQua(3), "a (2).txt|a (3).txt|a.txt");
    EXPECT_EQ(docTep("a.txt"), std::string(300'000, 'm'));
    EXPECT_EQ(docTep("a (2).txt"), std::string(300'000, 'h'));
    EXPECT_EQ(docTep("a (3).txt"), std::string(300'000, 'b'));
    EXPECT_EQ(QDir(QString::fromStdString(tam.duong().string())).entryList(QDir::Files).size(), 6)
        << tepTrongTam();
    EXPECT_EQ(khac.viec.size(), 6U) << "each one revealed";
    EXPECT_EQ(js("document.title"), "app");
}

TEST_F(TaiXuongLinuxThu, hongThiBaoTrangMotLanKemLyDo) {
    may().trang["/dut"] = {"ba", "application/octet-stream",
                           "Content-Disposition: attachment; filename=a.txt\r\n"};
    may().trang["/dut"].thieu = 7;
    may().trang["/du"] = {"bay", "application/octet-stream",
                          "Content-Disposition: attachment; filename=a.txt\r\n"};
    len();
    js("bam('/dut'); 1");
    const std::string dut = ketQua(1);
    EXPECT_TRUE(dut.starts_with("hong ") && dut.size() > 8) << dut;
    EXPECT_TRUE(khac.viec.empty()) << "nothing is revealed, and no dialog shown";
    js("bam('/du'); 1");
    EXPECT_EQ(ketQua(1), "a.txt") << "the name is free again";
    EXPECT_EQ(docTep("a.txt"), "bay");
    // A folder that nobody can write to.
    caiDat.ghi(TaiXuong::khoaThuMucLuu, "/proc");
    js("bam('/du'); 1");
    EXPECT_TRUE(ketQua(1).starts_with("hong "));
    // One that is gone: the user's own again.
    caiDat.ghi(TaiXuong::khoaThuMucLuu, "/khong-co");
    js("bam('/du'); 1");
    EXPECT_EQ(ketQua(1), "a (2).txt");
    EXPECT_EQ(js("kq.length"), "0") << "each end was told once";
    EXPECT_EQ(js("document.title"), "app");
}

TEST_F(TaiXuongLinuxThu, tenNhuDuocGoiY) {
    len();
    for (const auto& [ten, ca] : {std::pair(".bashrc", ".bashrc|.bashrc (2)"), std::pair("a.", "a.|a. (2)"),
                                  std::pair("khong duoi", "khong duoi|khong duoi (2)"),
                                  std::pair("ảnh chụp.tar.gz", "ảnh chụp.tar (2).gz|ảnh chụp.tar.gz")}) {
        for (int lan = 0; lan < 2; ++lan) {
            js(std::string("bam('data:text/plain,x', '") + ten + "'); 1");
            EXPECT_TRUE(choJs("kq.length === " + std::to_string(lan + 1)));
        }
        EXPECT_EQ(ketQua(2), ca);
    }
}

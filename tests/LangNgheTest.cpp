#include "LangNghe.hpp"

#include <gtest/gtest.h>
#include <sys/resource.h>

#include <atomic>
#include <ctime>
#include <list>
#include <set>

#include "gia/KhachThu.hpp"

using namespace tovira;
using namespace std::chrono_literals;
using gia::choDen;
using gia::KhachThu;

namespace {

const Loi khongMo{mienTovira, 9, "không mở"};

// Answers each head with its own text, unless told to keep the connection.
struct MayVang {
    enum class Lam { traLoi, giuLai };

    explicit MayVang(LangNghe::CauHinh cauHinh = {"tv-thu", {65536, 8192, LuatDau::Luc::sauKhiGhep}},
                     Lam cachLam = Lam::traLoi)
        : lam(cachLam),
          nghe(std::move(cauHinh),
               {[this](auto noi, std::string dau, auto thua) { khiCoDau(std::move(noi), dau, thua); },
                [](auto noi) { noi->traRoiDong("quá dài"); }}) {}

    void khiCoDau(std::shared_ptr<KetNoi> noi, const std::string& dau, std::span<const std::byte> thua) {
        ++soDau;
        if (lam == Lam::giuLai)
            giu.push_back(std::move(noi));
        else
            noi->traRoiDong(dau + "|" + std::to_string(thua.size()));
    }

    Lam lam;
    std::atomic<int> soDau{0};
    std::list<std::shared_ptr<KetNoi>> giu;  // on the queue
    LangNghe nghe;
};

double giayCuaTienTrinh() {
    return static_cast<double>(std::clock()) / CLOCKS_PER_SEC;
}

}  // namespace

TEST(LangNghe, moHaiLanGiuNguyenCongDungRoiMoLai) {
    MayVang may;
    EXPECT_EQ(may.nghe.cong(), 0);
    EXPECT_FALSE(may.nghe.hoi([] { return 1; }));  // never started
    ASSERT_TRUE(may.nghe.batDau(khongMo));
    const auto cong = may.nghe.cong();
    ASSERT_NE(cong, 0);
    ASSERT_TRUE(may.nghe.batDau(khongMo));
    EXPECT_EQ(may.nghe.cong(), cong);
    EXPECT_EQ(gia::hoi(cong, "xin\r\n\r\nchào"), "xin|5");
    EXPECT_EQ(may.nghe.hoi([] { return 7; }), 7);

    may.nghe.dung();
    EXPECT_EQ(may.nghe.cong(), 0);
    EXPECT_FALSE(KhachThu(cong).noiDuoc());
    for (int i = 0; i < 50; ++i) {
        ASSERT_TRUE(may.nghe.batDau(khongMo));
        if (i % 2 == 0) {
            EXPECT_EQ(gia::hoi(may.nghe.cong(), "lại\r\n\r\n"), "lại|0");
        }
        may.nghe.dung();
    }
}

TEST(LangNghe, ketNoiDaNhanSongQuaKhiDung) {
    MayVang may;
    ASSERT_TRUE(may.nghe.batDau(khongMo));
    KhachThu khach(may.nghe.cong());
    ASSERT_EQ(gia::hoi(may.nghe.cong(), "sau\r\n\r\n"), "sau|0");  // so the first one has been accepted
    may.nghe.dung();
    khach.gui("còn\r\n\r\n");
    EXPECT_EQ(khach.docHet(), KhachThu::Doc::het);
    EXPECT_EQ(khach.daDoc, "còn|0");
}

TEST(LangNghe, batDauKhiHetSoTepThiTraLoiCuaHeThong) {
#ifdef __SANITIZE_ADDRESS__
    GTEST_SKIP() << "the sanitizers need descriptors of their own to look at an object";
#endif
    MayVang may;
    ASSERT_TRUE(may.nghe.batDau(khongMo));  // the queue has what it needs
    may.nghe.dung();
    rlimit cu{};
    ASSERT_EQ(::getrlimit(RLIMIT_NOFILE, &cu), 0);
    rlimit moi = cu;
    moi.rlim_cur = 1;  // taken, and enough for poll
    ASSERT_EQ(::setrlimit(RLIMIT_NOFILE, &moi), 0);
    const auto ketQua = may.nghe.batDau(khongMo);
    ASSERT_EQ(::setrlimit(RLIMIT_NOFILE, &cu), 0);
    ASSERT_FALSE(ketQua);
    EXPECT_EQ(ketQua.loi().ma, EMFILE);
    EXPECT_EQ(may.nghe.cong(), 0);
    EXPECT_TRUE(may.nghe.batDau(khongMo));
}

TEST(LangNghe, catDauODauCungRapLaiDuoc) {
    MayVang may;
    ASSERT_TRUE(may.nghe.batDau(khongMo));
    const std::string yeuCau = "GET /a\r\nB: c\r\n\r\nd";
    for (std::size_t cat = 1; cat < yeuCau.size(); ++cat) {
        KhachThu khach(may.nghe.cong());
        khach.gui(std::string_view(yeuCau).substr(0, cat));
        // A whole exchange in between makes it certain that the server has read the first piece.
        ASSERT_EQ(gia::hoi(may.nghe.cong(), "giữa\r\n\r\n"), "giữa|0");
        khach.gui(std::string_view(yeuCau).substr(cat));
        ASSERT_EQ(khach.docHet(), KhachThu::Doc::het) << cat;
        // The piece after the blank line may or may not have come with the read that completed the head.
        ASSERT_EQ(khach.daDoc.substr(0, khach.daDoc.find('|')), "GET /a\r\nB: c") << cat;
    }
}

TEST(LangNghe, cauTraDenNoiDuKhachCoGuiThua) {
    MayVang may;
    ASSERT_TRUE(may.nghe.batDau(khongMo));
    // Far more than the head reader takes: closing over it would reset the connection.
    const std::string quaDai(300'000, 'a');
    const std::string coThua = "dài\r\n\r\n" + std::string(3'000'000, 'b');
    for (int i = 0; i < 20; ++i) {
        ASSERT_EQ(gia::hoi(may.nghe.cong(), quaDai), "quá dài");
        KhachThu khach(may.nghe.cong());
        ASSERT_TRUE(khach.gui(coThua));
        ASSERT_EQ(khach.docHet(), KhachThu::Doc::het);
        ASSERT_EQ(khach.daDoc.substr(0, 5), "dài|");
    }
}

TEST(LangNghe, khachDongSomKhongDuocTraLoi) {
    MayVang may;
    ASSERT_TRUE(may.nghe.batDau(khongMo));
    for (const char* dau : {"", "GET", "GET /\r\n", "\r\n\r"}) {
        KhachThu khach(may.nghe.cong());
        if (*dau != 0) khach.gui(dau);
        khach.thoiGui();
        EXPECT_EQ(khach.docHet(), KhachThu::Doc::het) << dau;
        EXPECT_EQ(khach.daDoc, "") << dau;
    }
    EXPECT_EQ(may.soDau, 0);
}

TEST(LangNghe, khachImLangBiDongKhongLoi) {
    MayVang may({"tv-thu", {65536, 8192, LuatDau::Luc::sauKhiGhep}, 40ms});
    ASSERT_TRUE(may.nghe.batDau(khongMo));
    KhachThu im(may.nghe.cong());
    KhachThu cham(may.nghe.cong());
    cham.gui("GET / HTTP/1.1\r\n");
    EXPECT_EQ(im.docHet(), KhachThu::Doc::het);
    EXPECT_EQ(cham.docHet(), KhachThu::Doc::het);
    EXPECT_EQ(im.daDoc + cham.daDoc, "");
    EXPECT_EQ(gia::hoi(may.nghe.cong(), "nhanh\r\n\r\n"), "nhanh|0");
}

TEST(LangNghe, khachKhongDongSauCauTraCungBiDong) {
    LangNghe::CauHinh cauHinh{"tv-thu", {65536, 8192, LuatDau::Luc::sauKhiGhep}};
    cauHinh.hanNan = 40ms;
    MayVang may(cauHinh);
    ASSERT_TRUE(may.nghe.batDau(khongMo));
    KhachThu khach(may.nghe.cong());
    khach.gui("lì\r\n\r\n");
    EXPECT_EQ(khach.docHet(), KhachThu::Doc::het);
    // The half that this side may still send closes as well: sooner or later a send fails.
    EXPECT_TRUE(choDen([&] { return !khach.gui("x"); }));
}

TEST(LangNghe, dayThiNguoiChuaCoDauLauNhatNhuongCho) {
    MayVang may({"tv-thu", {65536, 8192, LuatDau::Luc::sauKhiGhep}}, MayVang::Lam::giuLai);
    ASSERT_TRUE(may.nghe.batDau(khongMo));
    std::list<KhachThu> khach;
    for (int i = 0; i < 256; ++i) {
        khach.emplace_back(may.nghe.cong());
        ASSERT_TRUE(khach.back().noiDuoc());
        if (i % 2 == 0) khach.back().gui("có đầu\r\n\r\n");
    }
    ASSERT_TRUE(choDen([&] { return may.soDau == 128; }));
    // Each newcomer costs the oldest headless one its place, in order.
    auto lauNhat = khach.begin();
    for (int i = 0; i < 128; ++i) {
        ++lauNhat;
        khach.emplace_back(may.nghe.cong()).gui("mới\r\n\r\n");
        ASSERT_EQ(lauNhat->docHet(), KhachThu::Doc::het) << i;
        EXPECT_EQ(lauNhat->daDoc, "");
        ASSERT_TRUE(choDen([&] { return may.soDau == 129 + i; })) << i;
        ++lauNhat;
    }
    // Now everyone has a head: the newcomer is the one to go.
    KhachThu thua(may.nghe.cong());
    EXPECT_NE(thua.docHet(), KhachThu::Doc::quaHan);
    EXPECT_EQ(thua.daDoc, "");
    EXPECT_EQ(may.soDau, 256);
    EXPECT_EQ(may.nghe.hoi([&] {
        const auto so = may.giu.size();
        while (!may.giu.empty()) {
            may.giu.front()->traRoiDong("xong");
            may.giu.pop_front();
        }
        return so;
    }),
              256U);
    EXPECT_EQ(khach.front().docHet(), KhachThu::Doc::het);
    EXPECT_EQ(khach.front().daDoc, "xong");
}

TEST(LangNghe, hetSoTepThiChoKhongQuay) {
    MayVang may;
    ASSERT_TRUE(may.nghe.batDau(khongMo));
    KhachThu khach(may.nghe.cong());
    ASSERT_EQ(gia::hoi(may.nghe.cong(), "trước\r\n\r\n"), "trước|0");
    // A socket that exists but connects only after the process has run out of descriptors.
    asio::io_context vong;
    asio::ip::tcp::socket so(vong, asio::ip::tcp::v4());
    rlimit cu{};
    ASSERT_EQ(::getrlimit(RLIMIT_NOFILE, &cu), 0);
    rlimit moi = cu;
    moi.rlim_cur = 1;  // taken, and enough for poll
    ASSERT_EQ(::setrlimit(RLIMIT_NOFILE, &moi), 0);
    asio::error_code loi;
    so.connect({asio::ip::address_v4::loopback(), may.nghe.cong()}, loi);
    const double truoc = giayCuaTienTrinh();
    // The oldest headless connection makes room; with the limit this low that is not enough.
    const auto nhuong = khach.docHet();
    pollfd cho{so.native_handle(), POLLIN, 0};
    const int coTin = ::poll(&cho, 1, 300);
    const double ton = giayCuaTienTrinh() - truoc;
    ASSERT_EQ(::setrlimit(RLIMIT_NOFILE, &cu), 0);
    EXPECT_EQ(loi, asio::error_code());
    EXPECT_EQ(nhuong, KhachThu::Doc::het);
    EXPECT_EQ(coTin, 0);
    EXPECT_LT(ton, 0.15);
    asio::write(so, asio::buffer(std::string("được\r\n\r\n")));
    std::string traLoi;
    asio::read(so, asio::dynamic_buffer(traLoi), loi);
    EXPECT_EQ(traLoi, "được|0");
}

TEST(LangNghe, docThanVaImLang) {
    std::atomic<int> soLanDoc{-1};
    std::atomic<bool> quaHan{false};
    std::array<std::byte, 16> dem;
    LangNghe nghe({"tv-thu", {16384, 65536, LuatDau::Luc::truocKhiDoc}},
                  {[&](const std::shared_ptr<KetNoi>& noi, const std::string&, std::span<const std::byte>) {
                       noi->gui(std::as_bytes(std::span("tiếp")), [&, noi](KetNoi::KetCuc) {
                           noi->doc(dem, 10s, [&, noi](std::size_t so) {
                               soLanDoc = static_cast<int>(so);
                               noi->doc(dem, 30ms, [&, noi](std::size_t con) { quaHan = con == 0; });
                           });
                       });
                   },
                   [](const std::shared_ptr<KetNoi>& noi) { noi->huy(); }});
    ASSERT_TRUE(nghe.batDau(khongMo));
    KhachThu khach(nghe.cong());
    khach.gui("đầu\r\n\r\n");
    ASSERT_TRUE(khach.docItNhat(1));
    khach.gui("thân");
    EXPECT_EQ(khach.docHet(), KhachThu::Doc::het);
    EXPECT_EQ(soLanDoc, 5);
    EXPECT_TRUE(choDen([&] { return quaHan.load(); }));
}

TEST(LangNghe, huyGiuaChungMoiViecDoVanDuocBaoMotLan) {
    std::atomic<int> bao{0};
    for (int i = 0; i < 20; ++i) {
        bao = 0;
        std::array<std::byte, 16> dem;
        const std::string nhieu(30'000'000, 'x');
        KhachThu* khach = nullptr;
        {
            std::atomic<bool> daBat{false};
            LangNghe nghe(
                {"tv-thu", {16384, 65536, LuatDau::Luc::truocKhiDoc}},
                {[&](const std::shared_ptr<KetNoi>& noi, const std::string&, std::span<const std::byte>) {
                     noi->doc(dem, 10s, [&, noi](std::size_t so) { bao += so == 0 ? 1 : 100; });
                     noi->gui(std::as_bytes(std::span(nhieu)), [&, noi](KetNoi::KetCuc ketCuc) {
                         bao += ketCuc == KetNoi::KetCuc::hong ? 1 : 100;
                     });
                     daBat = true;
                 },
                 {}});
            ASSERT_TRUE(nghe.batDau(khongMo));
            khach = new KhachThu(nghe.cong());
            khach->gui("đầu\r\n\r\n");
            ASSERT_TRUE(choDen([&] { return daBat.load(); }));
            if (i % 2 == 0) nghe.chay([&] { nghe.dongKetNoi(); });
        }
        EXPECT_EQ(bao, 2);
        delete khach;
    }
}

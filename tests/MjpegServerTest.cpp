#include "MjpegServer.hpp"

#include <gtest/gtest.h>
#include <pthread.h>

#include <array>
#include <atomic>
#include <list>
#include <random>

#include "gia/KhachThu.hpp"

using namespace tovira;
using gia::choDen;
using gia::KhachThu;

namespace {

const std::string tuChoi404 =
    "HTTP/1.1 404 Not Found\r\nAccess-Control-Allow-Origin: *\r\nContent-Length: 0\r\nConnection: "
    "close\r\n\r\n";
const std::string tuChoi400 =
    "HTTP/1.1 400 Bad Request\r\nAccess-Control-Allow-Origin: *\r\nContent-Length: 0\r\nConnection: "
    "close\r\n\r\n";
const std::string tuChoi431 =
    "HTTP/1.1 431 Request Header Fields Too Large\r\nAccess-Control-Allow-Origin: *\r\nContent-Length: 0\r\n"
    "Connection: close\r\n\r\n";
const std::string dauDong =
    "HTTP/1.1 200 OK\r\nAccess-Control-Allow-Origin: *\r\nCache-Control: no-store, no-cache, "
    "must-revalidate\r\n"
    "Pragma: no-cache\r\nConnection: close\r\nContent-Type: multipart/x-mixed-replace; "
    "boundary=khungcuatoi\r\n\r\n";

MjpegServer::Khung khungTu(std::string_view anh) {
    return KhungMjpeg::tao(std::as_bytes(std::span(anh.data(), anh.size())));
}

std::string yeuCau(const MjpegServer& may) {
    return "GET /man-hinh?k=" + may.biMat() + " HTTP/1.1\r\nHost: 127.0.0.1\r\n\r\n";
}

// A viewer that has received its stream header.
struct KhachXem : KhachThu {
    explicit KhachXem(MjpegServer& may, int coDem = 0) : KhachThu(may.cong(), coDem) {
        gui(yeuCau(may));
        EXPECT_EQ(layToi("\r\n\r\n"), dauDong);
    }

    // The next part's image; checks the framing around it. "" when none comes.
    std::string layAnh() {
        const std::string dau = layToi("\r\n\r\n");
        const std::string mong = "--khungcuatoi\r\nContent-Type: image/jpeg\r\nContent-Length: ";
        if (!dau.starts_with(mong)) return {};
        const std::size_t dai = std::stoul(dau.substr(mong.size()));
        EXPECT_EQ(dau, mong + std::to_string(dai) + "\r\n\r\n");
        if (!docItNhat(dai + 2)) return {};
        EXPECT_EQ(daDoc.substr(dai, 2), "\r\n");
        std::string anh = daDoc.substr(0, dai);
        daDoc.erase(0, dai + 2);
        return anh;
    }
};

struct CoMay {
    explicit CoMay(std::function<void()> khiCoNguoiRanh = {}) {
        may.khiCoNguoiRanh = std::move(khiCoNguoiRanh);
        EXPECT_TRUE(may.batDau());
    }
    bool choKhach(std::size_t so) {
        return choDen([&] { return may.soKhach() == so; });
    }
    MjpegServer may;
};

// Larger than everything that the sockets on both sides will hold for a viewer that does not read.
std::string anhRatTo(char chu) {
    return std::string(24'000'000, chu);
}

}  // namespace

TEST(MjpegServer, xetTungDauYeuCau) {
    const std::string biMat(36, 'a');
    const std::pair<std::string, std::optional<std::string_view>> bang[] = {
        {"GET /man-hinh?k=" + biMat + " HTTP/1.1\r\nHost: x", {}},
        {"GET    /man-hinh?k=" + biMat, {}},
        {"\r\n\r\nGET /man-hinh?k=" + biMat, {}},  // empty lines before the first are skipped
        {"GET /man-hinh-dai/hon?a=1&k=" + biMat + "thừa", {}},
        {"GET /man-hinh?ask=" + biMat, {}},  // a plain substring
        {"GET /man-hinh?k=sai-be-bet", "404 Not Found"},
        {"GET /man-hinh?k=" + biMat.substr(1), "404 Not Found"},
        {"GET /man-hinh?k=%61" + biMat.substr(1), "404 Not Found"},
        {"GET /man-hinh?K=" + biMat, "404 Not Found"},
        {"GET /khac?k=" + biMat, "404 Not Found"},
        {"GET http://127.0.0.1/man-hinh?k=" + biMat, "404 Not Found"},
        {"GET /man-hinh /man-hinh?k=" + biMat, "404 Not Found"},
        {"POST /man-hinh?k=" + biMat, "400 Bad Request"},
        {"get /man-hinh?k=" + biMat, "400 Bad Request"},
        {" GET /man-hinh?k=" + biMat, "400 Bad Request"},
        {"GET\t/man-hinh?k=" + biMat, "400 Bad Request"},
        {"GET ", "400 Bad Request"},
        {"GET", "400 Bad Request"},
        {"\r\n", "400 Bad Request"},
        {"", "400 Bad Request"},
    };
    for (const auto& [dau, mong] : bang)
        EXPECT_EQ(MjpegServer::xet(dau, biMat), mong) << dau;
}

TEST(MjpegServer, biMatVaTrangThaiLucDau) {
    MjpegServer mot;
    MjpegServer hai;
    EXPECT_EQ(mot.biMat().size(), 36U);
    EXPECT_EQ(mot.biMat().find_first_not_of("0123456789abcdef"), std::string::npos);
    EXPECT_NE(mot.biMat(), hai.biMat());
    EXPECT_EQ(mot.cong(), 0);
    EXPECT_EQ(mot.soKhach(), 0U);
    mot.dung();  // never started
    mot.dangKhung(khungTu("bỏ"));
    EXPECT_FALSE(mot.daTungCoKhach()) << "chưa ai xem thì chưa tính là đã từng có khách";
}

TEST(MjpegServer, tuChoiDungTungByteRoiDong) {
    CoMay co;
    const auto cong = co.may.cong();
    EXPECT_EQ(gia::hoi(cong, "GET /man-hinh?k=sai-be-bet HTTP/1.1\r\n\r\n"), tuChoi404);
    EXPECT_EQ(gia::hoi(cong, "POST /man-hinh?k=" + co.may.biMat() + " HTTP/1.1\r\n\r\n"), tuChoi400);
    EXPECT_EQ(gia::hoi(cong, "\r\n\r\n"), tuChoi400);
    EXPECT_EQ(gia::hoi(cong, std::string(65537, 'a')), tuChoi431);
    EXPECT_EQ(gia::hoi(cong, "GET /" + std::string(65532 - 5, 'a') + "\r\n\r\n"), tuChoi404);
    EXPECT_FALSE(co.may.daTungCoKhach());
    EXPECT_EQ(co.may.soKhach(), 0U);
}

TEST(MjpegServer, phatKhungNguyenVen) {
    CoMay co;
    KhachXem khach(co.may);
    ASSERT_TRUE(co.choKhach(1));
    EXPECT_TRUE(co.may.daTungCoKhach()) << "đã có người xem thì ghi nhận lại";
    std::mt19937 ngauNhien(7);
    for (const std::size_t dai : {0U, 1U, 65535U, 65536U, 250'000U, 3'000'000U}) {
        std::string anh(dai, 0);
        for (char& c : anh)
            c = static_cast<char>(ngauNhien());
        ASSERT_TRUE(choDen([&] { return co.may.coNguoiRanh(); }));
        co.may.dangKhung(khungTu(anh));
        ASSERT_TRUE(khach.layAnh() == anh) << dai;
    }
}

TEST(MjpegServer, nguoiTacKhongCanNguoiKhac) {
    std::atomic<int> ranh{0};
    CoMay co([&] { ++ranh; });
    KhachXem doc(co.may);
    KhachXem tac(co.may, 4096);
    ASSERT_TRUE(co.choKhach(2));
    EXPECT_EQ(ranh, 2);  // once for each viewer that joined
    const auto dau = khungTu(anhRatTo('0'));
    co.may.dangKhung(dau);
    ASSERT_TRUE(doc.layAnh() == anhRatTo('0'));
    for (int i = 1; i <= 30; ++i) {
        ASSERT_TRUE(choDen([&] { return co.may.coNguoiRanh(); }));
        co.may.dangKhung(khungTu(std::string(1000, static_cast<char>('0' + i))));
        ASSERT_EQ(doc.layAnh(), std::string(1000, static_cast<char>('0' + i)));
    }
    EXPECT_EQ(dau.use_count(), 2) << "only the stalled viewer may still hold the first frame";
    EXPECT_EQ(ranh, 2);
    // The stalled one resumes: the frame it was busy with, whole, then no backlog.
    ASSERT_TRUE(tac.layAnh() == anhRatTo('0'));
    ASSERT_TRUE(choDen([&] { return ranh == 3; })) << "it missed frames and is free again";
    EXPECT_EQ(dau.use_count(), 1);
    co.may.dangKhung(khungTu("cuối"));
    EXPECT_EQ(tac.layAnh(), "cuối");
    EXPECT_EQ(doc.layAnh(), "cuối");
}

TEST(MjpegServer, nguoiChuaCoMoiDuocGuiLai) {
    CoMay co;
    const auto khung = khungTu("một");
    KhachXem cu(co.may);
    ASSERT_TRUE(co.choKhach(1));
    co.may.dangKhung(khung);
    EXPECT_EQ(cu.layAnh(), "một");
    KhachXem moi(co.may);
    ASSERT_TRUE(co.choKhach(2));
    co.may.dangKhung(khung, MjpegServer::Gui::nguoiChuaCo);
    EXPECT_EQ(moi.layAnh(), "một");
    co.may.dangKhung(khung, MjpegServer::Gui::nguoiChuaCo);
    // An answer from the queue means that it has also seen the writes of before to their end.
    ASSERT_EQ(co.may.soKhach(), 2U);
    co.may.dangKhung(khungTu("hai"));
    EXPECT_EQ(cu.layAnh(), "hai") << "the old viewer was not sent the same frame again";
    EXPECT_EQ(moi.layAnh(), "hai");
}

TEST(MjpegServer, lanGuiLaiBiLoThiVanConThieu) {
    std::atomic<int> ranh{0};
    CoMay co([&] { ++ranh; });
    KhachXem tac(co.may, 4096);
    ASSERT_TRUE(co.choKhach(1));
    const auto khung = khungTu(anhRatTo('k'));
    co.may.dangKhung(khung);
    co.may.dangKhung(khung, MjpegServer::Gui::nguoiChuaCo);  // busy with that very frame: lacks nothing
    EXPECT_EQ(co.may.soKhach(), 1U);
    EXPECT_FALSE(co.may.coNguoiRanh());
    co.may.dangKhung(khung);  // a repetition for everyone, missed
    ASSERT_TRUE(tac.layAnh() == anhRatTo('k'));
    ASSERT_TRUE(choDen([&] { return ranh == 2; }));
    co.may.dangKhung(khung, MjpegServer::Gui::nguoiChuaCo);
    EXPECT_TRUE(tac.layAnh() == anhRatTo('k'));
}

TEST(MjpegServer, nhacLaiChoAiChuaDuHaiLan) {
    const std::array khung{khungTu("một"), khungTu("hai")};
    std::atomic<std::size_t> nay{0};
    MjpegServer* may = nullptr;
    // As an owner answers: whoever is free and lacks the present frame gets it.
    CoMay co([&] { may->dangKhung(khung[nay], MjpegServer::Gui::nguoiChuaCo); });
    may = &co.may;
    const auto nhacLai = [&] { co.may.dangKhung(khung[0], MjpegServer::Gui::nhacLai); };
    KhachXem cu(co.may);
    EXPECT_EQ(cu.layAnh(), "một");
    nhacLai();
    EXPECT_EQ(cu.layAnh(), "một");
    KhachXem moi(co.may);
    EXPECT_EQ(moi.layAnh(), "một");
    for (int lan = 0; lan < 3; ++lan)
        nhacLai();
    EXPECT_EQ(moi.layAnh(), "một");
    nay = 1;
    co.may.dangKhung(khung[1]);
    for (KhachXem* khach : {&cu, &moi})
        EXPECT_EQ(khach->layAnh(), "hai") << "the one before came twice, no more";
}

TEST(MjpegServer, baoKhiRanhGoiDungMotLan) {
    std::atomic<int> ranh{0};
    CoMay co([&] { ++ranh; });
    KhachXem tac(co.may, 4096);
    ASSERT_TRUE(choDen([&] { return ranh == 1; }));
    co.may.baoKhiRanh();
    ASSERT_TRUE(choDen([&] { return ranh == 2; })) << "somebody is free already";
    co.may.dangKhung(khungTu(anhRatTo('k')));
    co.may.baoKhiRanh();
    EXPECT_EQ(co.may.soKhach(), 1U);
    EXPECT_EQ(ranh, 2);
    ASSERT_TRUE(tac.layAnh() == anhRatTo('k'));
    ASSERT_TRUE(choDen([&] { return ranh == 3; })) << "free, though it missed nothing that was sent";
    co.may.dangKhung(khungTu("sau"));
    EXPECT_EQ(tac.layAnh(), "sau");
    ASSERT_TRUE(choDen([&] { return co.may.coNguoiRanh(); }));
    EXPECT_EQ(co.may.soKhach(), 1U);
    EXPECT_EQ(ranh, 3);
}

TEST(MjpegServer, nguoiDiDuocNhanRaDuKhongGuiGi) {
    CoMay co;
    KhachXem dongEm(co.may);
    KhachXem datLai(co.may);
    KhachXem noiNhieu(co.may);
    ASSERT_TRUE(co.choKhach(3));
    dongEm.dong();
    ASSERT_TRUE(co.choKhach(2));
    const linger ngay{1, 0};
    ::setsockopt(datLai.so(), SOL_SOCKET, SO_LINGER, &ngay, sizeof ngay);
    datLai.dong();
    ASSERT_TRUE(co.choKhach(1));
    // Bytes after the head are ignored, however many, and do not hide the end behind them.
    ASSERT_TRUE(noiNhieu.gui(std::string(200'000, 'x')));
    co.may.dangKhung(khungTu("vẫn xem"));
    EXPECT_EQ(noiNhieu.layAnh(), "vẫn xem");
    noiNhieu.dong();
    ASSERT_TRUE(co.choKhach(0));
    EXPECT_FALSE(co.may.coNguoiRanh());
    EXPECT_TRUE(co.may.daTungCoKhach());
}

TEST(MjpegServer, nguoiDiGiuaKhungKhongHaiAi) {
    CoMay co;
    KhachXem o(co.may);
    for (int i = 0; i < 20; ++i) {
        KhachXem di(co.may, 4096);
        ASSERT_TRUE(co.choKhach(2));
        co.may.dangKhung(khungTu(std::string(8'000'000, 'd')));
        di.dong();
        ASSERT_EQ(o.layAnh().size(), 8'000'000U);
        ASSERT_TRUE(co.choKhach(1));
    }
}

TEST(MjpegServer, dungNgatMoiNguoiRoiMoLai) {
    CoMay co;
    const auto biMat = co.may.biMat();
    KhachXem xem(co.may);
    KhachXem tac(co.may, 4096);
    KhachThu chuaHoi(co.may.cong());
    ASSERT_TRUE(co.choKhach(2));
    co.may.dangKhung(khungTu(anhRatTo('d')));
    co.may.dung();
    EXPECT_EQ(co.may.cong(), 0);
    EXPECT_EQ(co.may.soKhach(), 0U);
    for (KhachThu* k : {static_cast<KhachThu*>(&xem), static_cast<KhachThu*>(&tac), &chuaHoi})
        EXPECT_NE(k->docHet(), KhachThu::Doc::quaHan);
    EXPECT_TRUE(co.may.daTungCoKhach());
    EXPECT_EQ(co.may.biMat(), biMat);
    ASSERT_TRUE(co.may.batDau());
    KhachXem moi(co.may);
    ASSERT_TRUE(co.choKhach(1));
    co.may.dangKhung(khungTu("lại"));
    EXPECT_EQ(moi.layAnh(), "lại");
}

TEST(MjpegServer, huyTrongLucDangPhat) {
    for (int i = 0; i < 10; ++i) {
        auto co = std::make_shared<CoMay>();
        std::list<KhachXem> khach;
        for (int k = 0; k < 4; ++k)
            khach.emplace_back(co->may);
        std::atomic<bool> thoi{false};
        std::thread phat([&thoi, co] {
            while (!thoi)
                co->may.dangKhung(khungTu(std::string(100'000, 'p')));
        });
        EXPECT_EQ(khach.front().layAnh().size(), 100'000U);
        if (i % 2 == 0) co->may.dung();
        thoi = true;
        phat.join();
        co.reset();
        for (KhachXem& k : khach)
            EXPECT_NE(k.docHet(), KhachThu::Doc::quaHan);
    }
}

TEST(MjpegServer, dongKhachNgauNhien) {
    CoMay co;
    std::atomic<bool> thoi{false};
    std::thread phat([&] {
        const auto khung = khungTu(std::string(20'000, 'n'));
        while (!thoi) {
            if (co.may.coNguoiRanh()) co.may.dangKhung(khung);
            std::this_thread::yield();
        }
    });
    std::list<std::thread> nguoi;
    for (unsigned hat = 0; hat < 4; ++hat) {
        nguoi.emplace_back([&co, hat] {
            std::mt19937 chon(hat);
            const std::string dung = yeuCau(co.may);
            for (int i = 0; i < 60; ++i) {
                KhachThu khach(co.may.cong());
                switch (chon() % 5) {
                    case 0:  // a viewer, byte by byte, who leaves in the middle
                        for (const char c : dung)
                            khach.gui({&c, 1});
                        EXPECT_EQ(khach.layToi("\r\n\r\n"), dauDong);
                        EXPECT_TRUE(khach.docItNhat(1 + chon() % 50'000));
                        break;
                    case 1:
                        khach.gui(dung.substr(0, chon() % dung.size()));
                        break;
                    case 2:
                        khach.gui("GET /man-hinh HTTP/1.1\r\n\r\n");
                        EXPECT_EQ(khach.docHet(), KhachThu::Doc::het);
                        EXPECT_EQ(khach.daDoc, tuChoi404);
                        break;
                    case 3: {
                        std::string rac(chon() % 3000, 0);
                        for (char& c : rac)
                            c = static_cast<char>(chon());
                        khach.gui(rac);
                        break;
                    }
                    default:
                        break;
                }
            }
        });
    }
    for (std::thread& n : nguoi)
        n.join();
    EXPECT_TRUE(co.choKhach(0));
    KhachXem cuoi(co.may);
    EXPECT_EQ(cuoi.layAnh().size(), 20'000U);
    thoi = true;
    phat.join();
}

TEST(MjpegServer, luongMangTenHangDoi) {
    std::string ten(64, 0);
    std::atomic<bool> xong{false};
    CoMay co([&] {
        ::pthread_getname_np(::pthread_self(), ten.data(), ten.size());
        xong = true;
    });
    KhachXem khach(co.may);
    ASSERT_TRUE(choDen([&] { return xong.load(); }));
    EXPECT_STREQ(ten.c_str(), "tv-mjpeg");
}

#include "DoMayChu.hpp"

#include <gtest/gtest.h>

#include <asio.hpp>
#include <chrono>
#include <list>

#include "gia/VongLapGia.hpp"

using namespace tovira;
using asio::ip::tcp;
using namespace std::chrono_literals;

namespace {

double giayTu(std::chrono::steady_clock::time_point luc) {
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - luc).count();
}

// A port on which a listener takes connections, or does not even take notice of them.
class MayChuThu {
  public:
    explicit MayChuThu(const char* diaChi, std::uint16_t cong = 0) {
        const tcp::endpoint diem(asio::ip::make_address(diaChi), cong);
        nghe_.open(diem.protocol(), loi);
        if (!loi && diem.protocol() == tcp::v6()) nghe_.set_option(asio::ip::v6_only(true), loi);
        if (!loi) nghe_.bind(diem, loi);
        if (!loi) nghe_.listen(8, loi);
    }

    [[nodiscard]] std::uint16_t cong() const { return nghe_.local_endpoint().port(); }
    [[nodiscard]] std::string url(const std::string& may) const {
        return "http://" + may + ":" + std::to_string(cong());
    }

    // Fills the queue of waiting connections until the system no longer answers new ones. False if it never
    // does.
    bool lamNgo() {
        for (int i = 0; i < 64; ++i) {
            auto& khach = khach_.emplace_back(io_);
            bool xong = false;
            khach.async_connect(nghe_.local_endpoint(), [&xong](const asio::error_code&) { xong = true; });
            io_.restart();
            io_.run_for(200ms);
            if (!xong) return true;
        }
        return false;
    }

    asio::error_code loi;

  private:
    asio::io_context io_;
    tcp::acceptor nghe_{io_};
    std::list<tcp::socket> khach_;
};

// A port that nobody listens on, for as long as the result lives.
class CongKin {
  public:
    CongKin() : o_(io_, tcp::endpoint(asio::ip::address_v4::loopback(), 0)) {}
    [[nodiscard]] std::string url(const std::string& may) const {
        return "http://" + may + ":" + std::to_string(o_.local_endpoint().port());
    }

  private:
    asio::io_context io_;
    tcp::socket o_;  // bound, not listening
};

}  // namespace

TEST(TachDiaChi, theoBang) {
    using DiaChi = DoMayChu::DiaChi;
    const std::pair<const char*, std::optional<DiaChi>> bang[] = {
        {"http://localhost:9009", DiaChi{"localhost", 9009}},
        {"http://localhost:9009/app", DiaChi{"localhost", 9009}},
        {"https://vi.du", DiaChi{"vi.du", 443}},
        {"https://vi.du/app", DiaChi{"vi.du", 443}},
        {"http://vi.du", DiaChi{"vi.du", 80}},
        {"http:///vi.du/x", DiaChi{"vi.du", 80}},
        {"http://[::1]:9009", DiaChi{"::1", 9009}},
        {"http://[::1]", DiaChi{"::1", 80}},
        {"https://[::1]:/x", DiaChi{"::1", 443}},
        {"https://[::1]9009", DiaChi{"::1", 443}},
        {"http://[fe80", DiaChi{"[fe80", 80}},
        {"http://vi.du:65535", DiaChi{"vi.du", 65535}},
        {"http://vi.du:65536", DiaChi{"vi.du", 80}},
        {"https://vi.du:99999999999999999999", DiaChi{"vi.du", 443}},
        {"http://vi.du:8o", DiaChi{"vi.du", 80}},
        {"http://vi.du:+8", DiaChi{"vi.du", 80}},
        {"http://vi.du:0", DiaChi{"vi.du", 0}},
        {"http://vi.du:", DiaChi{"vi.du", 80}},
        {"http://::vi.du::81:82", DiaChi{"vi.du", 81}},
        {"", std::nullopt},
        {"ftp://vi.du", std::nullopt},
        {"HTTP://vi.du", std::nullopt},
        {"http://", std::nullopt},
        {"http:////", std::nullopt},
        {"http://:::", std::nullopt},
        {"vi.du", std::nullopt},
    };
    for (const auto& [url, mong] : bang)
        EXPECT_EQ(DoMayChu::tachDiaChi(url), mong) << url;
}

TEST(DoMayChu, coNguoiNgheThiSong) {
    const MayChuThu bon("127.0.0.1");
    ASSERT_FALSE(bon.loi);
    EXPECT_TRUE(DoMayChu::song(bon.url("127.0.0.1"), 5));
    EXPECT_TRUE(DoMayChu::song(bon.url("localhost"), 5))
        << "though localhost may have an address that refuses";
    const MayChuThu sau("::1");
    if (sau.loi) GTEST_SKIP() << "no IPv6 here";
    EXPECT_TRUE(DoMayChu::song(sau.url("[::1]"), 5));
}

TEST(DoMayChu, tuChoiThiBietNgay) {
    const CongKin kin;
    for (const char* may : {"127.0.0.1", "localhost"}) {
        const auto luc = std::chrono::steady_clock::now();
        EXPECT_FALSE(DoMayChu::song(kin.url(may), 20));
        EXPECT_LT(giayTu(luc), 10) << may;
    }
}

TEST(DoMayChu, diaChiKhongDungDuocThiChetNgay) {
    const auto luc = std::chrono::steady_clock::now();
    for (const char* url : {"", "ftp://vi.du", "http://127.0.0.1:0", "http://[]:80"}) {
        EXPECT_FALSE(DoMayChu::song(url, 20)) << url;
    }
    EXPECT_LT(giayTu(luc), 10);
}

TEST(DoMayChu, imLangThiChoHetGio) {
    MayChuThu ngo("127.0.0.1");
    ASSERT_TRUE(ngo.lamNgo());
    auto luc = std::chrono::steady_clock::now();
    EXPECT_FALSE(DoMayChu::song(ngo.url("127.0.0.1"), 0.3));
    EXPECT_GE(giayTu(luc), 0.29);
    EXPECT_LT(giayTu(luc), 5);

    // With ::1 refusing and 127.0.0.1 silent, the refusal alone decides nothing.
    luc = std::chrono::steady_clock::now();
    EXPECT_FALSE(DoMayChu::song(ngo.url("localhost"), 0.3));
    EXPECT_GE(giayTu(luc), 0.29);
}

TEST(DoMayChu, tenKhongCoThiChoHetGio) {
    const auto luc = std::chrono::steady_clock::now();
    EXPECT_FALSE(DoMayChu::song("http://khong-co.invalid", 0.3));
    EXPECT_GE(giayTu(luc), 0.29) << "a name that cannot be resolved says nothing about the server";
    EXPECT_LT(giayTu(luc), 5) << "and a slow resolver does not prolong the wait";
}

TEST(DoMayChu, banKhongChanTraLoiOHangChinh) {
    gia::VongLapGia vong;
    DoMayChu d(vong);
    const MayChuThu bon("127.0.0.1");
    const CongKin kin;
    std::vector<std::pair<int, bool>> ra;
    d.song(bon.url("127.0.0.1"), 20, [&](bool song) { ra.emplace_back(1, song); });
    d.song(kin.url("127.0.0.1"), 20, [&](bool song) { ra.emplace_back(2, song); });
    d.song("ftp://x", 20, [&](bool song) { ra.emplace_back(3, song); });
    EXPECT_TRUE(ra.empty()) << "never before the call returns";
    const auto luc = std::chrono::steady_clock::now();
    while (ra.size() < 3 && giayTu(luc) < 15) {
        if (vong.xa() == 0) std::this_thread::yield();
    }
    std::sort(ra.begin(), ra.end());
    EXPECT_EQ(ra, (std::vector<std::pair<int, bool>>{{1, true}, {2, false}, {3, false}}));
}

TEST(DoMayChu, biBoThiThoiNgayVaKhongTraLoi) {
    gia::VongLapGia vong;
    MayChuThu ngo("127.0.0.1");
    ASSERT_TRUE(ngo.lamNgo());
    bool goi = false;
    const auto luc = std::chrono::steady_clock::now();
    {
        DoMayChu d(vong);
        d.song(ngo.url("127.0.0.1"), 60, [&goi](bool) { goi = true; });
        d.song("http://khong-co.invalid", 60, [&goi](bool) { goi = true; });
    }
    EXPECT_LT(giayTu(luc), 30);
    vong.xa();
    EXPECT_FALSE(goi);
}

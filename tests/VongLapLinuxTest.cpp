#include "VongLapLinux.hpp"

#include <gtest/gtest.h>

#include <thread>

#include "gia/PhongWebLinux.hpp"

using namespace tovira;
using gia::cho;

TEST(VongLapLinux, theoThuTuVaLuonMuonHon) {
    VongLapLinux vong;
    std::string nhatKy;
    vong.chay([&] {
        nhatKy += 'a';
        vong.chay([&] { nhatKy += 'c'; });
    });
    std::thread([&] { vong.chay([&] { nhatKy += vong.dangOChinh() ? 'b' : '?'; }); }).join();
    EXPECT_EQ(nhatKy, "") << "never at once";
    EXPECT_TRUE(cho([&] { return nhatKy == "abc"; })) << nhatKy;
}

TEST(VongLapLinux, henGioTuHuyTrongViecCuaMinh) {
    VongLapLinux vong;
    int nhip = 0;
    std::unique_ptr<HenGio> hen;
    hen = vong.lapLai(0.002, [&] {
        if (++nhip == 3) hen.reset();
    });
    double luc = 0;
    const double dau = vong.dongHo();
    vong.chaySau(0.05, [&] { luc = vong.dongHo(); });
    ASSERT_TRUE(cho([&] { return luc != 0; }));
    EXPECT_EQ(nhip, 3);
    EXPECT_GE(luc - dau, 0.049);
}

TEST(VongLapLinux, viecChuaLamChetTheoVongLap) {
    bool lam = false;
    {
        VongLapLinux vong;
        vong.chay([&] { lam = true; });
        vong.chaySau(0, [&] { lam = true; });
    }
    VongLapLinux sau;
    bool xong = false;
    sau.chaySau(0.01, [&] { xong = true; });
    ASSERT_TRUE(cho([&] { return xong; }));
    EXPECT_FALSE(lam);
}

#include "DongLenh.hpp"

#include <gtest/gtest.h>

using namespace tovira;

TEST(DongLenh, thuTuCuaCheDoThangThuTuCuaThamSo) {
    struct Ca {
        std::vector<std::string> thamSo;
        CheDo cheDo;
        std::string dich;
    };
    const Ca cac[] = {
        {{"tovira"}, CheDo::ungDung, ""},
        {{"tovira", "--khac", "--ngam"}, CheDo::ungDung, ""},
        {{"tovira", "--quyen", "--tu-kiem"}, CheDo::tuKiem, ""},
        {{"tovira", "--tao-icon", "x", "--quyen"}, CheDo::quyen, ""},
        {{"tovira", "--tao-icon"}, CheDo::taoIcon, "Tovira.iconset"},
        {{"tovira", "--tao-icon", "--ngam"}, CheDo::taoIcon, "--ngam"},
        {{"tovira", "--tao-icon", "a", "--tao-icon", "b"}, CheDo::taoIcon, "a"},
        {{"tovira", "--tao-icon-ios", "x.png", "--tao-icon", "d"}, CheDo::taoIcon, "d"},
        {{"tovira", "--tao-icon-ios"}, CheDo::taoIconIOS, "AppIcon-ios.png"},
        {{"tovira", "--tao-icon-ios", ""}, CheDo::taoIconIOS, ""},
        {{"--tu-kiem"}, CheDo::tuKiem, ""},  // the program's own path takes part
        {{"tovira", "--QUYEN", "--quyen=1", "-quyen"}, CheDo::ungDung, ""},
    };
    for (const Ca& ca : cac) {
        const DongLenh kq = DongLenh::chon(ca.thamSo);
        EXPECT_EQ(kq.cheDo, ca.cheDo) << ca.thamSo.back();
        EXPECT_EQ(kq.dich, ca.dich) << ca.thamSo.back();
    }
    EXPECT_TRUE(DongLenh::ngam({"tovira", "x", "--ngam"}));
    EXPECT_FALSE(DongLenh::ngam({"tovira", "--ngam "}));
}

#include "DieuKhien.hpp"

#include <gtest/gtest.h>

#include <thread>

#include "PhimMac.hpp"
#include "gia/NenDieuKhienGia.hpp"
#include "gia/VongLapGia.hpp"

namespace tovira {

// For readable failures.
void PrintTo(const SuKienChuot& c, std::ostream* ra) {
    *ra << "mouse " << int(c.loai) << " button " << int(c.nut) << " at " << c.viTri.x << " " << c.viTri.y
        << " clicks " << c.soLanBam.value_or(-1);
}
void PrintTo(const SuKienCuon& c, std::ostream* ra) {
    *ra << "wheel " << c.doc << " " << c.ngang;
}
void PrintTo(const SuKienPhim& p, std::ostream* ra) {
    *ra << "key " << p.phim << (p.xuong ? " down" : " up") << (p.loai == LoaiPhim::doiCo ? " changes" : "")
        << " flags ";
    p.co ? *ra << std::hex << *p.co << std::dec : *ra << "none";
}
void PrintTo(const SuKienChu& c, std::ostream* ra) {
    *ra << "text of " << c.donVi.size() << (c.xuong ? " down" : " up");
}

namespace {

using std::nullopt;
using DaySuKien = std::vector<SuKien>;

SuKien di(double x, double y) {
    return SuKienChuot{LoaiChuot::diChuyen, NutChuot::trai, {x, y}, nullopt};
}
SuKien keo(NutChuot nut, double x, double y) {
    return SuKienChuot{LoaiChuot::keo, nut, {x, y}, nullopt};
}
SuKien xuong(NutChuot nut, double x, double y, int lan) {
    return SuKienChuot{LoaiChuot::xuong, nut, {x, y}, lan};
}
SuKien len(NutChuot nut, double x, double y, std::optional<int> lan) {
    return SuKienChuot{LoaiChuot::len, nut, {x, y}, lan};
}
SuKien phim(int ma, bool xuong, std::optional<std::uint64_t> co) {
    return SuKienPhim{static_cast<std::uint16_t>(ma), xuong, LoaiPhim::phim, co};
}
SuKien doiCo(int ma, bool xuong, std::uint64_t co) {
    return SuKienPhim{static_cast<std::uint16_t>(ma), xuong, LoaiPhim::doiCo, co};
}

std::string lenhChu(const std::string& chu) {
    return R"({"t":"text","value":")" + chu + "\"}";
}
std::string lenhMa(const std::string& ma) {
    return R"({"t":"key_down","code":")" + ma + "\"}";
}
std::string lap(const std::string& chu, int lan) {
    std::string ra;
    while (lan-- > 0)
        ra += chu;
    return ra;
}

TEST(DieuKhienHopLe, TheRule) {
    const struct {
        std::string lenh;
        bool nhan;
    } bang[] = {
        {R"({"t":"mouse_move","x":0.5123,"y":0.441})", true},
        {R"({"t":"mouse_down","x":0.1,"y":0.2,"button":"right"})", true},
        {R"({"t":"key_down","code":"KeyA","modifiers":["ctrl","shift"]})", true},
        {R"({"t":"key_up","code":"Enter"})", true},
        {R"({"t":"text","value":"xin chào"})", true},
        {R"({"t":"mouse_wheel","x":0.5,"y":0.5,"dy":120})", true},
        {R"({"t":"mouse_move","x":-0.1,"y":0.5})", false},
        {R"({"t":"mouse_move","x":1.5,"y":0.5})", false},
        {R"({"t":"mouse_move"})", false},
        {R"({"t":"key_down","code":""})", false},
        {R"({"t":"text","value":""})", false},
        {lenhChu(lap("x", 5000)), false},
        {R"({"t":"format_o_cung"})", false},
        {"{khong phai json", false},
        // Kinds and shapes.
        {R"([{"t":"mouse_move","x":0,"y":0}])", false},
        {R"({"x":0,"y":0})", false},
        {R"({"t":1,"x":0,"y":0})", false},
        {R"({"t":"Mouse_move","x":0,"y":0})", false},
        {R"({"t":"text","t":"mouse_move","x":0,"y":0})", true},
        {R"({"t":"mouse_move","x":0,"y":0} {})", false},
        // Coordinates.
        {R"({"t":"mouse_move","x":0,"y":1})", true},
        {R"({"t":"mouse_move","x":-0.0,"y":1.0})", true},
        {R"({"t":"mouse_move","x":1.0000000000000002,"y":0})", false},
        {R"({"t":"mouse_move","x":-5e-324,"y":0})", false},
        {R"({"t":"mouse_move","x":true,"y":false})", true},
        {R"({"t":"mouse_move","x":"0.5","y":0})", false},
        {R"({"t":"mouse_move","x":null,"y":0})", false},
        {R"({"t":"mouse_up","x":0,"y":[0]})", false},
        {R"({"t":"mouse_up","x":0,"y":123456789012345678901234567890})", false},
        // "button" never rejects.
        {R"({"t":"mouse_up","x":0,"y":0,"button":7})", true},
        {R"({"t":"mouse_down","x":0,"y":0,"button":"fourth"})", true},
        // Wheel amounts.
        {R"({"t":"mouse_wheel","x":0.5,"y":0.5})", true},
        {R"({"t":"mouse_wheel","x":0.5,"y":0.5,"dx":"abc"})", false},
        {R"({"t":"mouse_wheel","x":0.5,"y":0.5,"dy":null})", false},
        {R"({"t":"mouse_wheel","x":0.5,"y":0.5,"dx":true,"dy":1e300})", true},
        {R"({"t":"mouse_wheel","x":0.5,"y":0.5,"dy":123456789012345678901234567890})", true},
        {R"({"t":"mouse_wheel","x":0.5,"y":0.5,"dy":1e999})", false},
        {R"({"t":"mouse_wheel","x":2,"y":0.5,"dy":1})", false},
        // Key names are measured in characters.
        {R"({"t":"key_up"})", false},
        {R"({"t":"key_up","code":65})", false},
        {R"({"t":"key_up","code":"X","modifiers":7})", true},
        {lenhMa(lap("a", 32)), true},
        {lenhMa(lap("a", 33)), false},
        {lenhMa(lap("👨‍👩‍👧‍👦", 32)), true},
        {lenhMa(lap("👨‍👩‍👧‍👦", 33)), false},
        {lenhMa(lap("\\r\\n", 32)), true},
        {lenhMa(lap("\\n", 33)), false},
        {lenhMa(lap("🇻🇳", 32)), true},
        // Text in bytes.
        {lenhChu(lap("x", 4096)), true},
        {lenhChu(lap("x", 4097)), false},
        {lenhChu(lap("€", 1365)), true},
        {lenhChu(lap("€", 1366)), false},
        {lenhChu(lap("\\n", 4096)), true},
        {R"({"t":"text","value":5})", false},
        {R"({"t":"text"})", false},
        {lenhChu("\\ud83d"), false},
    };
    for (const auto& dong : bang)
        EXPECT_EQ(DieuKhien::hopLe(dong.lenh), dong.nhan) << dong.lenh;
}

class DieuKhienTest : public testing::Test {
  protected:
    // One command and what it posted.
    DaySuKien lam(const std::string& lenh) {
        const bool dang = dk.lam(lenh);
        auto ra = nen.lay();
        EXPECT_EQ(dang, !ra.empty()) << lenh;
        return ra;
    }
    DaySuKien chuot(const char* t, double x, double y, const char* nut = "left") {
        return lam(std::string(R"({"t":")") + t + R"(","x":)" + std::to_string(x) +
                   ",\"y\":" + std::to_string(y) + ",\"button\":\"" + nut + "\"}");
    }
    DaySuKien cuon(const std::string& luong) {
        return lam(R"({"t":"mouse_wheel","x":0.5,"y":0.5)" + luong + "}");
    }
    // The click count of a press and its release.
    std::int64_t bam(double x, double y, const char* nut = "left") {
        const auto nhan = chuot("mouse_down", x, y, nut);
        const auto nha = chuot("mouse_up", x, y, nut);
        const auto lan = std::get<SuKienChuot>(nhan.at(0)).soLanBam;
        EXPECT_EQ(lan, std::get<SuKienChuot>(nha.at(0)).soLanBam);
        return lan.value_or(-1);
    }

    gia::VongLapGia vong;
    gia::NenDieuKhienGia nen;  // the main display is 1000 × 500 points
    DieuKhien dk{nen, vong};
};

TEST_F(DieuKhienTest, PointsAreMappedOntoTheSharedDisplay) {
    EXPECT_EQ(chuot("mouse_move", 0.25, 0.5), DaySuKien{di(250, 250)});
    dk.datKhungManHinh({-100.5, 50, 1333, 777});
    EXPECT_EQ(chuot("mouse_move", 0, 0), DaySuKien{di(-100.5, 50)});
    EXPECT_EQ(chuot("mouse_move", 1, 1), DaySuKien{di(1232.5, 827)});
    EXPECT_EQ(chuot("mouse_move", 0.5, 0.001), DaySuKien{di(-100.5 + 666.5, 50 + 0.001 * 777)});
    EXPECT_EQ(lam(R"({"t":"mouse_move","x":true,"y":0})"), DaySuKien{di(1232.5, 50)});
}

TEST_F(DieuKhienTest, MovesBecomeDragsOfTheFirstHeldButton) {
    chuot("mouse_down", 0, 0, "middle");
    EXPECT_EQ(chuot("mouse_move", 0.1, 0), DaySuKien{keo(NutChuot::giua, 100, 0)});
    chuot("mouse_down", 0, 0, "right");
    EXPECT_EQ(chuot("mouse_move", 0.1, 0), DaySuKien{keo(NutChuot::phai, 100, 0)});
    chuot("mouse_down", 0, 0, "anything");
    EXPECT_EQ(chuot("mouse_move", 0.1, 0), DaySuKien{keo(NutChuot::trai, 100, 0)});
    EXPECT_EQ(dk.dangGiu(), 3U);
    chuot("mouse_up", 0, 0, "left");
    EXPECT_EQ(chuot("mouse_move", 0.1, 0), DaySuKien{keo(NutChuot::phai, 100, 0)});
    chuot("mouse_up", 0, 0, "right");
    chuot("mouse_up", 0, 0, "middle");
    EXPECT_EQ(chuot("mouse_move", 0.1, 0), DaySuKien{di(100, 0)});
}

TEST_F(DieuKhienTest, ClicksAreCountedUpToThree) {
    for (const int mong : {1, 2, 3, 3, 3}) {
        EXPECT_EQ(bam(0.5, 0.5), mong);
        vong.tien(0.25);
    }
    EXPECT_EQ(bam(0.5, 0.5, "right"), 1);  // another button
    EXPECT_EQ(bam(0.5, 0.5, "right"), 2);
    EXPECT_EQ(bam(0.5, 0.5), 1);
    dk.nhaHet();
    EXPECT_EQ(bam(0.5, 0.5), 1);
}

TEST_F(DieuKhienTest, ClickTimeAndDistanceAreStrict) {
    nen.bamDup = 0.25;
    EXPECT_EQ(bam(0.5, 0.5), 1);
    vong.tien(0.25);  // exactly the interval
    EXPECT_EQ(bam(0.5, 0.5), 1);
    vong.tien(0.125);
    EXPECT_EQ(bam(0.5, 0.5), 2);
    dk.datKhungManHinh({0, 0, 1000, 1000});
    const struct {
        double x, y;
        int mong;
    } bang[] = {
        {0.100, 0.1, 1},   {0.105, 0.1, 1},  // exactly 5 points apart
        {0.109, 0.1, 2},   {0.109, 0.104, 3}, {0.109, 0.109, 1},
        {0.105, 0.105, 2}, {0.109, 0.101, 3},  // 5.66 points apart, but less than 5 on each axis
    };
    for (const auto& dong : bang)
        EXPECT_EQ(bam(dong.x, dong.y), dong.mong) << dong.x << " " << dong.y;
}

TEST_F(DieuKhienTest, AReleaseCarriesItsOwnButtonsCount) {
    EXPECT_EQ(chuot("mouse_up", 0, 0), DaySuKien{len(NutChuot::trai, 0, 0, 1)});  // with no press before it
    bam(0.5, 0.5);
    EXPECT_EQ(chuot("mouse_down", 0.5, 0.5), DaySuKien{xuong(NutChuot::trai, 500, 250, 2)});
    EXPECT_EQ(chuot("mouse_up", 0.1, 0.1, "right"), DaySuKien{len(NutChuot::phai, 100, 50, 1)});
    EXPECT_EQ(chuot("mouse_up", 0.1, 0.1), DaySuKien{len(NutChuot::trai, 100, 50, 2)});
}

TEST_F(DieuKhienTest, WheelAmountsAreRoundedNegatedAndSaturated) {
    const struct {
        const char* luong;
        SuKienCuon mong;
    } bang[] = {
        {R"(,"dy":120)", {-120, 0}},
        {R"(,"dx":-30,"dy":7)", {-7, 30}},
        {R"(,"dy":-2.5)", {3, 0}},
        {R"(,"dy":2.5,"dx":0.5)", {-3, -1}},
        {R"(,"dy":0.4)", {0, 0}},
        {R"(,"dy":0.49999999999999994)", {0, 0}},
        {R"(,"dy":true)", {-1, 0}},
        {R"(,"dy":2147483647,"dx":-2147483647)", {-2147483647, 2147483647}},
        {R"(,"dy":2147483648,"dx":-2147483648)", {-2147483647 - 1, 2147483647}},
        {R"(,"dy":9e18,"dx":-9223372036854774784)", {-2147483647 - 1, 2147483647}},
    };
    for (const auto& dong : bang)
        EXPECT_EQ(cuon(dong.luong), (DaySuKien{di(500, 250), dong.mong})) << dong.luong;

    for (const auto* luong : {"", R"(,"dx":0)", R"(,"dx":-0.0,"dy":0)"})
        EXPECT_EQ(cuon(luong), DaySuKien{}) << luong;

    chuot("mouse_down", 0, 0, "right");
    EXPECT_EQ(cuon(R"(,"dy":1)"), (DaySuKien{keo(NutChuot::phai, 500, 250), SuKienCuon{-1, 0}}));
}

TEST_F(DieuKhienTest, AnImpossibleWheelAmountEndsTheProcessAfterLettingGo) {
    testing::FLAGS_gtest_death_test_style = "threadsafe";
    chuot("mouse_down", 0.1, 0.1, "right");
    lam(lenhMa("KeyB"));
    nen.khiDang = [](const SuKien& sk) { std::visit([](const auto& s) { PrintTo(s, &std::cerr); }, sk); };
    for (const auto* luong :
         {R"(,"dy":9223372036854775808)", R"(,"dx":-9223372036854775808)", R"(,"dy":1e300)"})
        EXPECT_DEATH(cuon(luong),
                     "mouse 1 button 1 at 500 250 clicks -1"
                     "mouse 3 button 1 at 500 250 clicks -1"
                     "key 11 up flags none"
                     "Tovira: ")
            << luong;
}

TEST_F(DieuKhienTest, KeysCarryTheCommandsFlags) {
    const struct {
        const char* lenh;
        SuKien mong;
    } bang[] = {
        {R"({"t":"key_down","code":"KeyA","modifiers":["meta"]})", phim(0, true, PhimMac::coCommand)},
        {R"({"t":"key_up","code":"KeyA"})", phim(0, false, 0)},
        {R"({"t":"key_down","code":"F5","modifiers":["ctrl","alt","shift","meta","fn","Ctrl",""]})",
         phim(96, true, 0x1E0000)},
        {R"({"t":"key_down","code":"F5","modifiers":["ctrl",1]})", phim(96, true, 0)},
        {R"({"t":"key_down","code":"F5","modifiers":"ctrl"})", phim(96, true, 0)},
        {R"({"t":"key_down","code":"ShiftLeft","modifiers":[]})", doiCo(56, true, PhimMac::coShift)},
        {R"({"t":"key_up","code":"ShiftLeft","modifiers":["shift"]})", doiCo(56, false, 0)},
        {R"({"t":"key_down","code":"ControlRight","modifiers":["alt"]})",
         doiCo(62, true, PhimMac::coControl | PhimMac::coAlt)},
        {R"({"t":"key_up","code":"AltLeft","modifiers":["alt","meta"]})",
         doiCo(58, false, PhimMac::coCommand)},
        {R"({"t":"key_down","code":"CapsLock"})", doiCo(57, true, PhimMac::coVietHoa)},
        {R"({"t":"key_up","code":"MetaRight"})", doiCo(54, false, 0)},
    };
    for (const auto& dong : bang)
        EXPECT_EQ(lam(dong.lenh), DaySuKien{dong.mong}) << dong.lenh;
    EXPECT_EQ(lam(lenhMa("IntlBackslash")), DaySuKien{});
}

TEST_F(DieuKhienTest, TextGoesCharacterByCharacter) {
    const auto chao = lam(lenhChu("xin chào"));
    ASSERT_EQ(chao.size(), 16U);
    EXPECT_EQ(chao[12], (SuKien{SuKienChu{u"à", true}}));
    EXPECT_EQ(chao[13], (SuKien{SuKienChu{u"à", false}}));
    const std::u16string mong[] = {u"\r\n", u"🇻🇳", u"👨‍👩‍👧‍👦", u"ê\u0301", u"\t"};
    DaySuKien cap;
    for (const auto& kyTu : mong)
        for (const bool xuong : {true, false})
            cap.push_back(SuKienChu{kyTu, xuong});
    EXPECT_EQ(lam(lenhChu("\\r\\n🇻🇳👨‍👩‍👧‍👦ê\u0301\\t")), cap);
    EXPECT_EQ(nen.batDau, (std::vector<std::size_t>{0, 0}));
    EXPECT_EQ(nen.ketThuc, (std::vector<std::size_t>{16, 10}));
    EXPECT_EQ(dk.dangGiu(), 0U);
}

TEST_F(DieuKhienTest, LettingEverythingGo) {
    lam(lenhMa("KeyA"));
    lam(lenhMa("ShiftLeft"));
    lam(lenhMa("KeyA"));  // held, not counted
    chuot("mouse_down", 0.1, 0.1);
    chuot("mouse_down", 0.1, 0.1, "middle");
    chuot("mouse_move", 0.2, 0.2);
    EXPECT_EQ(dk.dangGiu(), 4U);
    dk.nhaHet();
    // A modifier, too, gets a plain release here.
    EXPECT_EQ(nen.lay(),
              (DaySuKien{len(NutChuot::trai, 200, 100, nullopt), len(NutChuot::giua, 200, 100, nullopt),
                         phim(0, false, nullopt), phim(56, false, nullopt)}));
    EXPECT_EQ(nen.boCho, std::vector<std::size_t>{0});  // text that still waits goes before the first release
    EXPECT_EQ(dk.dangGiu(), 0U);
    dk.nhaHet();
    EXPECT_EQ(nen.lay(), DaySuKien{});
    EXPECT_EQ(bam(0.1, 0.1), 1);
}

TEST_F(DieuKhienTest, WithoutPermissionNothingHappensAtAll) {
    nen.phep = false;
    for (const auto* t : {"mouse_move", "mouse_down", "mouse_up"})
        EXPECT_EQ(chuot(t, 0.1, 0.1), DaySuKien{}) << t;
    EXPECT_EQ(lam(lenhMa("KeyA")), DaySuKien{});
    EXPECT_EQ(lam(lenhChu("a")), DaySuKien{});
    EXPECT_EQ(cuon(R"(,"dy":1e300)"), DaySuKien{});  // not even the end of the process
    EXPECT_EQ(dk.dangGiu(), 0U);
    EXPECT_TRUE(nen.batDau.empty());
    nen.phep = true;
    EXPECT_EQ(bam(0.1, 0.1), 1);
    nen.phep = false;
    vong.tien(0.125);
    chuot("mouse_down", 0.1, 0.1);
    nen.phep = true;
    EXPECT_EQ(bam(0.1, 0.1), 2);  // the one in between was not counted

    dk.moCaiDatTroNang();
    EXPECT_EQ(nen.soLanMoCaiDat, 1);
}

TEST_F(DieuKhienTest, InvalidCommandsAreNotEvenAskedAbout) {
    EXPECT_FALSE(dk.lam("{"));
    EXPECT_FALSE(dk.lam(R"({"t":"mouse_move","x":2,"y":0})"));
    EXPECT_EQ(nen.soLanHoiPhep, 0);
}

TEST_F(DieuKhienTest, EventsThatCannotBeMade) {
    nen.hongTu = 0;
    chuot("mouse_down", 0.1, 0.1);
    lam(lenhMa("KeyA"));
    cuon(R"(,"dy":1)");
    EXPECT_EQ(dk.dangGiu(), 0U);
    nen.hongTu = 1;
    EXPECT_FALSE(dk.lam(R"({"t":"mouse_wheel","x":0.5,"y":0.5,"dy":1})"));
    EXPECT_EQ(nen.lay(), DaySuKien{di(500, 250)});
    nen.hongTu = 3;
    EXPECT_FALSE(dk.lam(lenhChu("abc")));
    EXPECT_EQ(nen.lay().size(), 3U);
    EXPECT_EQ(nen.ketThuc.size(), 1U);

    nen.hongTu = 1000;
    EXPECT_EQ(bam(0.1, 0.1), 1);  // the press that could not be made does not count
    chuot("mouse_down", 0.1, 0.1);
    nen.hongTu = 0;
    chuot("mouse_up", 0.1, 0.1);
    EXPECT_EQ(dk.dangGiu(), 1U);  // still down, so still to be let go
}

TEST_F(DieuKhienTest, BelongsToTheMainThread) {
    testing::FLAGS_gtest_death_test_style = "threadsafe";
    EXPECT_DEATH(std::thread([this] { dk.lam("{}"); }).join(), "dangOChinh");
    EXPECT_DEATH(std::thread([this] { dk.nhaHet(); }).join(), "dangOChinh");
    bool nhan = false;
    std::thread([&] { nhan = DieuKhien::hopLe(lenhMa("KeyA")); }).join();
    EXPECT_TRUE(nhan);
}

}  // namespace
}  // namespace tovira

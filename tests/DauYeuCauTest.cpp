#include "DauYeuCau.hpp"

#include <gtest/gtest.h>

#include <cstring>

#include "BiMat.hpp"

using namespace tovira;

namespace {

constexpr LuatDau luatSau{65536, 8192, LuatDau::Luc::sauKhiGhep};
constexpr LuatDau luatTruoc{16384, 65536, LuatDau::Luc::truocKhiDoc};

TrangThaiDau them(GomDau& gom, std::string_view byte) {
    const auto cho = gom.choDoc();
    EXPECT_LE(byte.size(), cho.size());
    std::memcpy(cho.data(), byte.data(), byte.size());
    return gom.them(byte.size());
}

// Feeds `byte` in reads as large as the law allows, until the head is complete, too long or the bytes are
// used up.
TrangThaiDau themHet(GomDau& gom, std::string_view byte, const LuatDau& luat) {
    TrangThaiDau t = TrangThaiDau::chuaDu;
    while (!byte.empty() && t == TrangThaiDau::chuaDu) {
        t = them(gom, byte.substr(0, luat.moiLanDoc));
        byte.remove_prefix(std::min(byte.size(), luat.moiLanDoc));
    }
    return t;
}

std::string thua(const GomDau& gom) {
    const auto con = gom.thua();
    return {reinterpret_cast<const char*>(con.data()), con.size()};
}

}  // namespace

TEST(GomDau, rapLaiTuMoiChoCat) {
    const std::string yeuCau = "POST /ghi HTTP/1.1\r\nX: \r\n y\r\n\r\nthân";
    const std::size_t hetDau = yeuCau.find("\r\n\r\n") + 4;
    for (const LuatDau& luat : {luatSau, luatTruoc}) {
        for (std::size_t cat = 0; cat <= yeuCau.size(); ++cat) {
            GomDau gom(luat);
            const auto nuaDau = them(gom, std::string_view(yeuCau).substr(0, cat));
            ASSERT_EQ(nuaDau, cat < hetDau ? TrangThaiDau::chuaDu : TrangThaiDau::daDu) << cat;
            if (nuaDau == TrangThaiDau::chuaDu) {
                ASSERT_EQ(them(gom, std::string_view(yeuCau).substr(cat)), TrangThaiDau::daDu) << cat;
                EXPECT_EQ(thua(gom), "thân");
            }
            EXPECT_EQ(gom.phanDau(), "POST /ghi HTTP/1.1\r\nX: \r\n y");
        }
    }
}

TEST(GomDau, gioiHanThuDungLuc) {
    struct Muc {
        LuatDau luat;
        std::size_t soChu;  // bytes without a blank line
        std::string duoi;
        TrangThaiDau mong;
    };
    const Muc bang[] = {
        {luatSau, 65536, "", TrangThaiDau::chuaDu},
        {luatSau, 65537, "", TrangThaiDau::quaDai},
        {luatSau, 65532, "\r\n\r\n", TrangThaiDau::daDu},
        // The blank line is there, but all that came is measured first.
        {luatSau, 65533, "\r\n\r\n", TrangThaiDau::quaDai},
        {luatTruoc, 16384, "", TrangThaiDau::chuaDu},
        {luatTruoc, 16385, "", TrangThaiDau::quaDai},
        // The end came with the read that went beyond the limit: not too long.
        {luatTruoc, 40000, "\r\n\r\n", TrangThaiDau::daDu},
    };
    for (const Muc& muc : bang) {
        GomDau gom(muc.luat);
        EXPECT_EQ(themHet(gom, std::string(muc.soChu, 'a') + muc.duoi, muc.luat), muc.mong)
            << muc.soChu << " + " << muc.duoi.size();
    }

    // So are the bytes behind it when they come with the same read.
    GomDau gom(luatSau);
    ASSERT_EQ(themHet(gom, std::string(60'000, 'a'), luatSau), TrangThaiDau::chuaDu);
    EXPECT_EQ(them(gom, "\r\n\r\n" + std::string(5'533, 'b')), TrangThaiDau::quaDai);
}

TEST(DauYeuCau, docUtf8ThayChoHong) {
    const std::string x = "\xEF\xBF\xBD";
    const std::pair<std::string, std::string> bang[] = {
        {"", ""},
        {"ảnh 🖥 a", "ảnh 🖥 a"},
        {"a\x80"
         "b",
         "a" + x + "b"},
        {"\xC0\xAF", x + x},  // overlong
        {"\xE1\x80"
         "a",
         x + "a"},                            // cut short: one replacement for its beginning
        {"\xED\xA0\x80", x + x + x},          // a surrogate
        {"\xF4\x90\x80\x80", x + x + x + x},  // beyond the last code point
        {"\xF0\x9F\x96", x},
        {"\xFF", x},
        {"\xE1\xE1\x80\x80", x + "\xE1\x80\x80"},
    };
    for (const auto& [vao, ra] : bang)
        EXPECT_EQ(docUtf8(vao), ra);
}

TEST(DauYeuCau, dongVaTu) {
    std::string_view con = "mot\r\n\r\nba\nx";
    EXPECT_EQ(layDong(con), "mot");
    EXPECT_EQ(layDong(con), "");
    EXPECT_EQ(layDong(con), "ba\nx");
    EXPECT_EQ(layDong(con), "");

    using Cap = std::pair<std::string_view, std::string_view>;
    EXPECT_EQ(haiTuDau("GET   /a  HTTP/1.1"), (Cap{"GET", "/a"}));
    EXPECT_EQ(haiTuDau("  GET /a"), (Cap{"GET", "/a"}));
    EXPECT_EQ(haiTuDau("GET\t/a b"), (Cap{"GET\t/a", "b"}));
    for (const char* thieu : {"", " ", "GET", "GET  "})
        EXPECT_FALSE(haiTuDau(thieu)) << thieu;
}

TEST(BiMat, laHexCuaSoByteNgauNhien) {
    const std::string mot = taoBiMat(300);
    EXPECT_EQ(mot.size(), 600U);
    EXPECT_EQ(mot.find_first_not_of("0123456789abcdef"), std::string::npos);
    EXPECT_NE(mot, taoBiMat(300));
    // The source may deliver more than its limit per call only in pieces; the last piece counts as well.
    EXPECT_NE(mot.substr(560), std::string(40, '0'));
    EXPECT_EQ(taoBiMat(3, [](std::span<std::byte>) {}), "000000");
    EXPECT_EQ(taoBiMat(2, [](std::span<std::byte> ra) { ra[0] = std::byte{0xA5}; }), "a500");
}

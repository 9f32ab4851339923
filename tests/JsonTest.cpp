#include "Json.hpp"

#include <gtest/gtest.h>

#include <cstdlib>
#include <random>

namespace tovira {
namespace {

std::string longNhau(const char* mo, const char* dong, int sau) {
    std::string ra;
    for (int i = 0; i < sau; ++i)
        ra += mo;
    for (int i = 0; i < sau; ++i)
        ra += dong;
    return ra;
}

TEST(Json, TextsThatAreNotOneObject) {
    using namespace std::string_literals;
    const std::string bang[] = {
        "",
        " ",
        "{",
        "}",
        "{}{}",
        "{} x",
        "{}\0"s,
        "{}\0{}"s,
        "{\"a\"\0:1}"s,
        "[]",
        "[{}]",
        "1",
        "\"a\"",
        "null",
        "{\"a\":1,}",
        "{,}",
        "{\"a\"}",
        "{\"a\":}",
        "{\"a\" 1}",
        "{a:1}",
        "{'a':1}",
        "{1:1}",
        "{\"a\":1 \"b\":2}",
        "{\"a\":1,,\"b\":2}",
        "{\"a\":[1,]}",
        "{\"a\":[1 2]}",
        "{\"a\":[}",
        "{\"a\":[1}",
        "{\"a\":{]}",
        "{\"a\":\"",
        "{\"a\":\"x}",
        "{\"a\":\"x\\",
        "{\"a\":\"x\\\"}",
        "{\"a\":tru}",
        "{\"a\":True}",
        "{\"a\":nul}",
        "{\"a\":NaN}",
        "{\"a\":Infinity}",
        "{\"a\":-}",
        "{\"a\":01}",
        "{\"a\":1.}",
        "{\"a\":.5}",
        "{\"a\":1e}",
        "{\"a\":1e+}",
        "{\"a\":+1}",
        "{\"a\":0x10}",
        "{\"a\":1e999}",
        "{\"a\":-1e999}",
        "{\"a\":[1e999]}",
        "{\"a\":{\"b\":1e309}}",
        "{\"a\":1/**/}",
        "{\"a\":1}//",
        "/**/{}",
        "\xEF\xBB\xBF{}",
        // Half a surrogate pair, wherever it stands.
        "{\"a\":\"\\ud800\"}",
        "{\"a\":\"\\udc00\"}",
        "{\"a\":\"\\udc00\\ud800\"}",
        "{\"a\":\"\\ud800\\ud800\"}",
        "{\"a\":\"\\ud800x\"}",
        "{\"a\":\"\\ud800\\n\"}",
        "{\"a\":\"\\ud83d\\ude00\\ude00\"}",
        "{\"\\udc00\":1}",
        "{\"a\":[\"\\udfff\"]}",
        "{\"a\":{\"\\udc00\":1}}",
        "{\"a\":\"\\ud800",
        // Escapes and raw control characters.
        "{\"a\":\"\\x\"}",
        "{\"a\":\"\\u12\"}",
        "{\"a\":\"\\u12g4\"}",
        "{\"a\":\"\n\"}",
        "{\"a\":\"\t\"}",
        "{\"a\":\"\x01\"}",
        // Broken UTF-8: cut short, continued from nothing, overlong, a surrogate, past the last code point.
        "{\"a\":\"\xC3\"}",
        "{\"a\":\"\xC3",
        "{\"a\":\"\xE2\x82\"}",
        "{\"a\":\"\xE2\x82",
        "{\"a\":\"\xF0\x9F\x98\"}",
        "{\"a\":\"\xF0",
        "{\"a\":\"\x80\"}",
        "{\"a\":\"\xC0\xAF\"}",
        "{\"a\":\"\xE0\x80\xAF\"}",
        "{\"a\":\"\xED\xA0\x80\"}",
        "{\"a\":\"\xF4\x90\x80\x80\"}",
        "{\"a\":\"\xFF\"}",
        "\xC3{}",
    };
    for (const auto& chu : bang)
        EXPECT_FALSE(DoiTuongJson::doc(chu)) << chu;
}

TEST(Json, DepthIsBounded) {
    const auto trong = [](const std::string& giaTri) {
        return DoiTuongJson::doc("{\"a\":" + giaTri + "}").has_value();
    };
    EXPECT_TRUE(trong(longNhau("[", "]", DoiTuongJson::sauNhat - 1)));
    EXPECT_FALSE(trong(longNhau("[", "]", DoiTuongJson::sauNhat)));
    EXPECT_FALSE(trong(longNhau("[", "]", 100'000)));
    EXPECT_FALSE(trong(std::string(100'000, '[')));
    EXPECT_FALSE(DoiTuongJson::doc(std::string(100'000, '[')));
    std::string doiTuong;
    for (int i = 0; i < 100'000; ++i)
        doiTuong += "{\"a\":";
    EXPECT_FALSE(DoiTuongJson::doc(doiTuong));
}

TEST(Json, Numbers) {
    struct {
        const char* chu;
        double so;
    } constexpr bang[] = {
        {"0", 0},
        {"-0", 0},
        {"1", 1},
        {"0.5123", 0.5123},
        {"1E2", 100},
        {"1e-2", 0.01},
        {"true", 1},
        {"false", 0},
        {"18446744073709551616", 18446744073709551616.0},
        {"-9223372036854775809", -9223372036854775808.0},
        {"123456789012345678901234567890", 123456789012345678901234567890.0},
        {"1.7976931348623157e308", 1.7976931348623157e308},
        {"5e-324", 5e-324},
        {"1e-999", 0},
        {"0e5", 0},
        {"0.30000000000000004", 0.30000000000000004},
        {"9007199254740993", 9007199254740992.0},
    };
    for (const auto& dong : bang) {
        const auto kq = DoiTuongJson::doc(std::string("{\"a\":") + dong.chu + "}");
        ASSERT_TRUE(kq) << dong.chu;
        EXPECT_EQ(kq->so("a"), dong.so) << dong.chu;
    }
    // A row of zeros longer than any power of ten in a table.
    const auto nho = DoiTuongJson::doc("{\"a\":0." + std::string(400, '0') + "1}");
    ASSERT_TRUE(nho);
    EXPECT_EQ(nho->so("a"), 0.0);
    const auto lon = DoiTuongJson::doc("{\"a\":1" + std::string(300, '0') + "}");
    ASSERT_TRUE(lon);
    EXPECT_EQ(lon->so("a"), 1e300);
}

// The C library, in the "C" locale of this process, is the judge of rounding.
TEST(Json, NumbersAreRoundedToTheNearestDouble) {
    std::mt19937_64 ngau(7);
    for (int i = 0; i < 20'000; ++i) {
        char chu[64];
        const double so = static_cast<double>(ngau()) / 18446744073709551616.0;
        const int luyThua = static_cast<int>(ngau() % 640) - 330;
        if (i % 2 == 0)
            std::snprintf(chu, sizeof chu, "%.*g", static_cast<int>(1 + ngau() % 20), so);
        else
            std::snprintf(chu, sizeof chu, "%llue%d",
                          static_cast<unsigned long long>(ngau() >> (ngau() % 60)), luyThua);
        const double mong = std::strtod(chu, nullptr);
        const auto kq = DoiTuongJson::doc(std::string("{\"a\":") + chu + "}");
        ASSERT_EQ(kq.has_value(), mong <= std::numeric_limits<double>::max()) << chu;
        if (kq) {
            ASSERT_EQ(kq->so("a"), mong) << chu;
        }
    }
}

TEST(Json, MembersKeepTheirTypes) {
    const auto kq = DoiTuongJson::doc(
        " { \"chu\" : \"xin ch\xC3\xA0o\" , "
        "\"so\":1.5,\"dung\":true,\"rong\":null,\"mang\":[\"a\",\"b\"],\"khong\":[],"
        "\"lan\":[\"a\",1],\"sau\":[[\"a\"]],\"trong\":{\"chu\":1,\"kin\":2},\"\":\"trong\"}\r\n\t");
    ASSERT_TRUE(kq);
    EXPECT_EQ(kq->chu("chu"), "xin ch\xC3\xA0o");
    EXPECT_EQ(kq->chu(""), "trong");
    EXPECT_EQ(kq->so("so"), 1.5);
    EXPECT_EQ(kq->so("dung"), 1.0);
    EXPECT_EQ(kq->so("chu"), std::nullopt);
    EXPECT_EQ(kq->chu("so"), std::nullopt);
    EXPECT_TRUE(kq->co("rong"));
    EXPECT_EQ(kq->so("rong"), std::nullopt);
    EXPECT_FALSE(kq->co("kin"));  // a member of the member
    EXPECT_FALSE(kq->co("a"));    // an element of an array
    using Chu = std::vector<std::string_view>;
    EXPECT_EQ(kq->mangChu("mang"), (Chu{"a", "b"}));
    EXPECT_EQ(kq->mangChu("khong"), Chu{});
    for (const auto* khoa : {"lan", "sau", "trong", "chu", "rong", "vang"})
        EXPECT_EQ(kq->mangChu(khoa), std::nullopt) << khoa;
}

TEST(Json, EscapesAreDecoded) {
    const auto kq =
        DoiTuongJson::doc(R"({"a\u0062":"\"\\\/\b\f\n\r\t\u0041\u00e0\u20ac\ud83d\ude00\u0000."})");
    ASSERT_TRUE(kq);
    using namespace std::string_view_literals;
    EXPECT_EQ(kq->chu("ab"), "\"\\/\b\f\n\r\tA\xC3\xA0\xE2\x82\xAC\xF0\x9F\x98\x80\0."sv);
}

TEST(Json, TheLaterOfEqualKeysWins) {
    const auto kq = DoiTuongJson::doc(R"({"a":1,"b":["x"],"a":"hai","b":[1],"\u0061":null,"a":["y","z"]})");
    ASSERT_TRUE(kq);
    EXPECT_EQ(kq->so("a"), std::nullopt);
    EXPECT_EQ(kq->mangChu("a"), (std::vector<std::string_view>{"y", "z"}));
    EXPECT_EQ(kq->mangChu("b"), std::nullopt);
}

// Larger than what an object holds without the heap, in text and in members.
TEST(Json, LargeObjects) {
    std::string chu = "{\"dai\":\"" + std::string(5000, 'x') + "\",\"mang\":[";
    for (int i = 0; i < 100; ++i)
        chu += (i ? ",\"" : "\"") + std::to_string(i) + "\"";
    chu += "]";
    for (int i = 0; i < 100; ++i)
        chu += ",\"k" + std::to_string(i) + "\":" + std::to_string(i);
    auto goc = DoiTuongJson::doc(chu + "}");
    ASSERT_TRUE(goc);
    const DoiTuongJson kq = std::move(*goc);
    EXPECT_EQ(kq.chu("dai"), std::string(5000, 'x'));
    for (int i = 0; i < 100; ++i)
        EXPECT_EQ(kq.so("k" + std::to_string(i)), i);
    const auto mang = kq.mangChu("mang");
    ASSERT_TRUE(mang);
    ASSERT_EQ(mang->size(), 100U);
    EXPECT_EQ(mang->at(99), "99");
}

}  // namespace
}  // namespace tovira

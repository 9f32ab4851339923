#include "DuongDanNhan.hpp"

#include <gtest/gtest.h>

using namespace tovira;

namespace {

std::string lap(std::string_view chu, int lan) {
    std::string ra;
    for (int i = 0; i < lan; ++i)
        ra += chu;
    return ra;
}

using CacTen = std::vector<std::string_view>;

}  // namespace

TEST(DuongDanNhan, base64ChatChe) {
    const std::pair<std::string_view, std::optional<std::string>> bang[] = {
        {"", ""},
        {"YQ==", "a"},
        {"YWI=", "ab"},
        {"YWJj", "abc"},
        {"4bqjbmg=", "ảnh"},
        {"+/+/", "\xFB\xFF\xBF"},
        {"AAAA", std::string(3, '\0')},
        {"YQ", {}},  // padding missing
        {"YQ=", {}},
        {"YWI", {}},
        {"=", {}},
        {"====", {}},
        {"Y===", {}},
        {"YQ==YQ==", {}},  // padding in the middle
        {"Y=Q=", {}},
        {"YWJj====", {}},
        {"YW Jj", {}},
        {"YWJj\n", {}},
        {" YWJ", {}},
        {"-_-_", {}},  // the alphabet for addresses
        {"YWJ\xC3", {}},
        {std::string_view("YWJ\0", 4), {}},
    };
    for (const auto& [chu, dung] : bang)
        EXPECT_EQ(giaiBase64(chu), dung) << chu;
}

TEST(DuongDanNhan, tachTungDuong) {
    const std::string_view coNul("a\0b", 3);
    const std::pair<std::string, std::optional<CacTen>> bang[] = {
        {"a", CacTen{"a"}},
        {"ảnh/hè 2026/bãi biển.txt", CacTen{"ảnh", "hè 2026", "bãi biển.txt"}},
        {"a//b///c/", CacTen{"a", "b", "c"}},
        {"..a/...", CacTen{"..a", "..."}},
        {"a/~", CacTen{"a", "~"}},
        {"a\\..\\b", CacTen{"a\\..\\b"}},
        {" /\t", CacTen{" ", "\t"}},
        {"%2e%2e", CacTen{"%2e%2e"}},
        {"", {}},
        {"/", {}},
        {"/a", {}},
        {"//a", {}},
        {"~", {}},
        {"~ai/a", {}},
        {"..", {}},
        {".", {}},
        {"../a", {}},
        {"a/..", {}},
        {"a/../b", {}},
        {"a/./b", {}},
        {"a//../b", {}},
        {"./a", {}},
        {"a/.", {}},
        {std::string(coNul), {}},
        {std::string("a/\0", 3), {}},
    };
    for (const auto& [duong, dung] : bang)
        EXPECT_EQ(tachDuongNhan(duong), dung) << duong;
}

TEST(DuongDanNhan, demTheoKyTuNguoiDungThay) {
    const std::string_view gop = "ệ";                              // one code point
    const std::string_view tach = "e\u0323\u0302";                 // the same letter in three
    const std::string_view giaDinh = "👨‍👩‍👧‍👦";  // seven code points, 25 bytes
    const std::string_view co = "🇻🇳";                              // two
    for (const auto chu : {std::string_view("a"), gop, tach, giaDinh, co}) {
        EXPECT_TRUE(tachDuongNhan(lap(chu, 1023))) << chu;
        EXPECT_FALSE(tachDuongNhan(lap(chu, 1024))) << chu;
    }
    // Slashes count as well.
    EXPECT_TRUE(tachDuongNhan(lap("a/", 511) + "b"));
    EXPECT_FALSE(tachDuongNhan(lap("a/", 511) + "bc"));
}

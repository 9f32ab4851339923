#include "KyTu.hpp"

#include <gtest/gtest.h>

#include <vector>

namespace tovira {
namespace {

std::vector<std::string> tach(std::string_view chu) {
    std::vector<std::string> ra;
    while (!chu.empty()) {
        ra.emplace_back(chu.substr(0, daiKyTuDau(chu)));
        chu.remove_prefix(ra.back().size());
    }
    return ra;
}

TEST(KyTu, WhatAPersonTakesForOneCharacter) {
    using Chu = std::vector<std::string>;
    const Chu bang[] = {
        {},
        {"a", "b"},
        {"x", "i", "n", " ", "c", "h", "à", "o"},
        {"e\u0302\u0301", "u\u031B\u0323"},  // marks upon a letter
        {"\r\n", "\n", "\r", "\r\n"},        // one key press, not two
        {"a", "\n", "\u0301"},               // a mark does not cling to a line end
        {"🇻🇳", "🇯🇵", "🇻"},                   // flags are pairs, counted from the first
        {"👨‍👩‍👧‍👦", "👍🏽", "❤️‍🔥", "🏴󠁧󠁢󠁥󠁮󠁧󠁿",
         "1️⃣"},  // joined, toned, joined with a selector, tagged, keycap
        {"👨‍👩‍👧", "👨‍👩‍👧"},  // two families side by side
        {"a\u200D", "👩"},                              // a joiner after a letter joins nothing
        {"각", "\u1100\u1161\u11A8", "각"},            // Hangul, whole and in parts
        {"นี้", "नी", "க்"},                              // vowel signs and viramas
    };
    for (const auto& mong : bang) {
        std::string chu;
        for (const auto& kyTu : mong)
            chu += kyTu;
        EXPECT_EQ(tach(chu), mong) << chu;
        EXPECT_EQ(demKyTu(chu), mong.size()) << chu;
    }
}

TEST(KyTu, Utf16) {
    EXPECT_EQ(sangUtf16("aàữ\n"), u"aàữ\n");
    EXPECT_EQ(sangUtf16("😀\U00010000\U0010FFFF\uFFFF"), u"😀\U00010000\U0010FFFF\uFFFF");
    EXPECT_EQ(sangUtf16("a\xC3"), u"a\uFFFD");
    EXPECT_EQ(sangUtf16(std::string_view("\0", 1)).size(), 1U);
}

TEST(KyTu, PiecesOfUtf16KeepPairsWhole) {
    EXPECT_EQ(daiDoanUtf16(u"", 2), 0U);
    EXPECT_EQ(daiDoanUtf16(u"ab", 2), 2U);
    EXPECT_EQ(daiDoanUtf16(u"abc", 2), 2U);
    EXPECT_EQ(daiDoanUtf16(u"a😀", 2), 1U);
    EXPECT_EQ(daiDoanUtf16(u"a😀", 3), 3U);
    EXPECT_EQ(daiDoanUtf16(u"😀😀", 2), 2U);
    EXPECT_EQ(daiDoanUtf16(u"😀😀", 3), 2U);
}

}  // namespace
}  // namespace tovira

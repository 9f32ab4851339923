#include "BaoMaMay.hpp"

#include <gtest/gtest.h>

namespace tovira {
namespace {

TEST(BaoMaMay, chiMaVaMatKhauDungDang) {
    EXPECT_EQ(BaoMaMay::ghi("123456789\nabcde23456"), "123456789\nabcde23456\n");
    const std::string dai(64, 'a');
    EXPECT_EQ(BaoMaMay::ghi("000000000\n" + dai), "000000000\n" + dai + "\n");
}

TEST(BaoMaMay, conLaiKhongRaMan) {
    for (const std::string& la :
         {std::string(), std::string("\n"), std::string("123456789"), std::string("123456789\n"),
          std::string("\nabc"), std::string("12345678\nabcd"), std::string("12345678a\nabc"),
          std::string("123456789 abc"), std::string("123456789\nab\x1b[2J"), std::string("123456789\nab\ncd"),
          std::string("123456789\nABC"), std::string("123456789\nab cd"),
          "123456789\nm" + std::string(1, '\0'), "123456789\n" + std::string(65, 'a'),
          std::string("123456789\nmật")}) {
        EXPECT_EQ(BaoMaMay::ghi(la), "") << la;
    }
}

}  // namespace
}  // namespace tovira

#include "YeuCauNhan.hpp"

#include <gtest/gtest.h>

#include <limits>

#include "KyTu.hpp"

using namespace tovira;
using enum TrangThaiNhan;

namespace {

const std::string biMat(48, 'a');
const std::string ghi = "POST /ghi?k=" + biMat + " HTTP/1.1\r\n";

}  // namespace

TEST(YeuCauNhan, thuTuXet) {
    const std::string duong = "X-Duong: YQ==\r\n";
    const std::pair<std::string, std::optional<TrangThaiNhan>> bang[] = {
        {"", yeuCauHong},
        {"POST", yeuCauHong},
        {"  POST  ", yeuCauHong},
        {"\r\n" + ghi + duong, yeuCauHong},  // an empty line is a line
        {"OPTIONS *", khongNoiDung},
        {"OPTIONS /dau-cung-duoc?k=sai HTTP/1.1", khongNoiDung},
        {"options /ghi?", saiPhuongThuc},
        {"GET /ghi?k=" + biMat, saiPhuongThuc},
        {"GET /khac", saiPhuongThuc},
        {"PUT /ghi?k=" + biMat, saiPhuongThuc},
        {"post /ghi?k=" + biMat, saiPhuongThuc},
        {"POST /ghi", khongCo},
        {"POST /ghi/?k=" + biMat, khongCo},
        {"POST /Ghi?k=" + biMat, khongCo},
        {"POST http://127.0.0.1/ghi?k=" + biMat, khongCo},
        {"POST /ghi?", biTuChoi},
        {"POST /ghi?k=", biTuChoi},
        {"POST /ghi?k=" + biMat + "a", biTuChoi},
        {"POST /ghi?k=" + biMat.substr(1), biTuChoi},
        {"POST /ghi?K=" + biMat, biTuChoi},
        {"POST /ghi?k=%61" + biMat.substr(1), biTuChoi},
        {"POST /ghi?k=sai&k=" + biMat, biTuChoi},
        {"POST /ghi?k=&k=" + biMat, biTuChoi},
        {"POST /ghi?k=" + biMat + "=", biTuChoi},
        {ghi, yeuCauHong},  // no path
        {ghi + "X-Duong: Y\r\nContent-Length: 1", yeuCauHong},
        {ghi + "X-Duong: /w==", yeuCauHong},  // not UTF-8 once decoded
        {ghi + "X-Duong YQ==", yeuCauHong},
        {ghi + "X-Duong: YQ==\r\nX-DUONG: !", yeuCauHong},  // the later one counts
        {ghi + duong, {}},
        {"  POST   /ghi?k=" + biMat + "\r\nX-Duong:YQ==", {}},
        {"POST /ghi?&&k&kk=1&k=" + biMat + "&k=sai\r\n" + duong, {}},
        {ghi + "khong co hai cham\r\n: trống\r\n" + duong, {}},
        {ghi + "\tx-DuOnG \t:\t YQ== \t", {}},
        {ghi + "X-Duong: !\r\nx-duong: YQ==", {}},
    };
    for (const auto& [dau, dung] : bang) {
        const YeuCauNhan yeuCau = xetYeuCauNhan(dau, biMat);
        EXPECT_EQ(yeuCau.traNgay, dung) << dau;
        EXPECT_EQ(yeuCau.duong, dung ? "" : "a") << dau;
    }
    // A stopped server has no secret, and an empty one opens nothing.
    EXPECT_EQ(xetYeuCauNhan("POST /ghi?k= HTTP/1.1\r\n" + duong, "").traNgay, biTuChoi);
    EXPECT_EQ(xetYeuCauNhan("OPTIONS /", "").traNgay, khongNoiDung);
}

TEST(YeuCauNhan, doDaiChiLaChuSo) {
    const std::pair<std::string_view, std::int64_t> bang[] = {
        {"0", 0},
        {"007", 7},
        {"67108864", 67108864},
        {"9223372036854775807", std::numeric_limits<std::int64_t>::max()},
        {"9223372036854775808", -1},
        {"18446744073709551616", -1},
        {"18446744073709551621", -1},
        {"", -1},
        {"+5", -1},
        {"-0", -1},
        {"-5", -1},
        {" 5", -1},
        {"5 ", -1},
        {"5x", -1},
        {"0x5", -1},
        {"5.0", -1},
        {"5,5", -1},
        {"٥", -1},
    };
    for (const auto& [chu, dung] : bang)
        EXPECT_EQ(docSo(chu).value_or(-1), dung) << chu;
    EXPECT_EQ(xetYeuCauNhan(ghi + "X-Duong: YQ==", biMat).doDai, -1);
    EXPECT_EQ(xetYeuCauNhan(ghi + "X-Duong: YQ==\r\ncontent-LENGTH:\t12 \r\n", biMat).doDai, 12);
    EXPECT_EQ(xetYeuCauNhan(ghi + "Content-Length: 1\r\nX-Duong: YQ==\r\nContent-Length: 1, 1", biMat).doDai,
              -1);
}

TEST(YeuCauNhan, soBangMoiViTri) {
    const std::string goc = "0123456789abcdef";
    EXPECT_TRUE(soBang(goc, std::string(goc)));
    EXPECT_TRUE(soBang("", ""));
    EXPECT_FALSE(soBang(goc, goc + "0"));
    EXPECT_FALSE(soBang(goc, goc.substr(1)));
    for (std::size_t i = 0; i < goc.size(); ++i) {
        std::string khac = goc;
        khac[i] = static_cast<char>(khac[i] ^ 0x80);
        EXPECT_FALSE(soBang(goc, khac)) << i;
    }
}

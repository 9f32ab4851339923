#include "KhungMjpeg.hpp"

#include <gtest/gtest.h>

#include <string>

using namespace tovira;

namespace {

std::string chu(std::span<const std::byte> byte) {
    return {reinterpret_cast<const char*>(byte.data()), byte.size()};
}

}  // namespace

TEST(KhungMjpeg, dongKhungDungTungByte) {
    const std::string jpeg("\xFF\xD8\0\r\n--khungcuatoi\xFF\xD9", 20);
    const std::string mong =
        "--khungcuatoi\r\nContent-Type: image/jpeg\r\nContent-Length: 20\r\n\r\n" + jpeg + "\r\n";
    EXPECT_EQ(chu(KhungMjpeg::tao(std::as_bytes(std::span(jpeg)))->phan()), mong);
    EXPECT_EQ(chu(KhungMjpeg::tao({})->phan()),
              "--khungcuatoi\r\nContent-Type: image/jpeg\r\nContent-Length: 0\r\n\r\n\r\n");
}

TEST(KhungMjpeg, khongChepLaiAnh) {
    std::vector<std::byte> dem(KhungMjpeg::leDau + 1000, std::byte{7});
    dem.reserve(dem.size() + KhungMjpeg::leCuoi);
    const std::byte* anh = dem.data() + KhungMjpeg::leDau;
    const auto khung = KhungMjpeg::dong(std::move(dem));
    EXPECT_EQ(khung->phan().last(1002).data(), anh);
    EXPECT_EQ(khung->phan().last(1002)[999], std::byte{7});
}

TEST(KhungMjpeg, moiKhungMotSo) {
    EXPECT_NE(KhungMjpeg::tao({})->so(), KhungMjpeg::tao({})->so());
}

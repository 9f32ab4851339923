#include "BieuTuong.hpp"

#include <gtest/gtest.h>
#include <spng.h>

#include <cmath>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <memory>

using namespace tovira;
namespace fs = std::filesystem;
using BoGoc = BieuTuong::BoGoc;

namespace {

// The recipe written down plainly, pixel after pixel, without any short cut.
std::vector<std::uint8_t> veNgayTho(int n, BoGoc boGoc) {
    const float px = 1.0F / static_cast<float>(n);
    const auto phu = [px](float d) { return std::fmin(std::fmax(0.5F - d / px, 0.0F), 1.0F); };
    const auto khung = [](float u, float v, float cy, float ix, float iy, float r) {
        const float qx = std::fabs(u - 0.5F) - ix;
        const float qy = std::fabs(v - cy) - iy;
        const float ax = std::fmax(qx, 0.0F);
        const float ay = std::fmax(qy, 0.0F);
        return std::fmin(std::fmax(qx, qy), 0.0F) + std::sqrt(ax * ax + ay * ay) - r;
    };
    const auto tron = [](float u, float v, float cx, float cy, float r) {
        return std::sqrt((u - cx) * (u - cx) + (v - cy) * (v - cy)) - r;
    };
    std::vector<std::uint8_t> anh;
    for (int j = 0; j < n; ++j) {
        for (int i = 0; i < n; ++i) {
            const float u = (static_cast<float>(i) + 0.5F) / static_cast<float>(n);
            const float v = (static_cast<float>(j) + 0.5F) / static_cast<float>(n);
            const float a = boGoc == BoGoc::co ? phu(khung(u, v, 0.5F, 0.28F, 0.28F, 0.22F)) : 1.0F;
            const float duoi = std::fmin(tron(u, v, 0.27F, 0.79F, 0.036F), tron(u, v, 0.34F, 0.70F, 0.075F));
            const float b = phu(std::fmin(khung(u, v, 0.44F, 0.21F, 0.135F, 0.1F), duoi));
            const float cham =
                std::fmin(std::fmin(tron(u, v, 0.36F, 0.44F, 0.045F), tron(u, v, 0.5F, 0.44F, 0.045F)),
                          tron(u, v, 0.64F, 0.44F, 0.045F));
            const float w = std::fmax(b - phu(cham), 0.0F);
            const float t = std::fmin(std::fmax((u + v) * 0.5F, 0.0F), 1.0F);
            for (const float c : {37.0F + 87.0F * t, 99.0F - 41.0F * t, 235.0F + 2.0F * t})
                anh.push_back(static_cast<std::uint8_t>(std::lround(c + w * (255.0F - c))));
            anh.push_back(static_cast<std::uint8_t>(std::lround(std::fmax(a, b) * 255.0F)));
        }
    }
    return anh;
}

std::uint64_t bam(const std::vector<std::uint8_t>& du) {  // FNV-1a
    std::uint64_t h = 14695981039346656037ULL;
    for (const std::uint8_t b : du)
        h = (h ^ b) * 1099511628211ULL;
    return h;
}

struct AnhGiaiMa {
    spng_ihdr dau{};
    std::vector<std::uint8_t> diem;
    std::string khoi;  // chunk names in order
};

AnhGiaiMa giaiMa(const std::vector<char>& tep) {
    AnhGiaiMa kq;
    const std::unique_ptr<spng_ctx, decltype(&spng_ctx_free)> ctx(spng_ctx_new(0), spng_ctx_free);
    spng_set_png_buffer(ctx.get(), tep.data(), tep.size());
    std::size_t dai = 0;
    EXPECT_EQ(spng_get_ihdr(ctx.get(), &kq.dau), 0);
    EXPECT_EQ(spng_decoded_image_size(ctx.get(), SPNG_FMT_PNG, &dai), 0);
    kq.diem.resize(dai);
    EXPECT_EQ(spng_decode_image(ctx.get(), kq.diem.data(), dai, SPNG_FMT_PNG, 0), 0);
    for (std::size_t p = 8; p + 8 <= tep.size();) {
        std::uint32_t n = 0;
        for (std::size_t k = 0; k < 4; ++k)
            n = n << 8 | static_cast<std::uint8_t>(tep[p + k]);
        const std::string ten(tep.data() + p + 4, 4);
        if (kq.khoi.size() < 4 || kq.khoi.substr(kq.khoi.size() - 4) != ten) kq.khoi += ten;
        p += 12 + n;
    }
    return kq;
}

std::vector<char> docTep(const fs::path& tep) {
    std::ifstream vao(tep, std::ios::binary);
    return {std::istreambuf_iterator<char>(vao), {}};
}

class BieuTuongTep : public ::testing::Test {
  protected:
    void SetUp() override {
        std::string mau = (fs::temp_directory_path() / "bieu-tuong-XXXXXX").string();
        ASSERT_NE(mkdtemp(mau.data()), nullptr);
        thuMuc = mau;
    }
    void TearDown() override { fs::remove_all(thuMuc); }
    fs::path thuMuc;
};

}  // namespace

TEST(BieuTuong, moiCanhDungTungByteVoiCongThuc) {
    EXPECT_TRUE(BieuTuong::rgba(0, BoGoc::co).empty());
    EXPECT_TRUE(BieuTuong::rgba(-1, BoGoc::khong).empty());
    for (const int n : {1, 2, 3, 5, 7, 16, 32, 33, 64, 100, 128, 255, 256, 401, 512})
        for (const BoGoc boGoc : {BoGoc::khong, BoGoc::co})
            ASSERT_EQ(BieuTuong::rgba(n, boGoc), veNgayTho(n, boGoc)) << n;
}

// The same numbers whatever compiler, optimisation and machine this was built with.
TEST(BieuTuong, cungByteTrenMoiMay) {
    EXPECT_EQ(bam(BieuTuong::rgba(16, BoGoc::co)), 0x3f4c58b26a53e522ULL);
    EXPECT_EQ(bam(BieuTuong::rgba(64, BoGoc::co)), 0x3c353990064aaf94ULL);
    EXPECT_EQ(bam(BieuTuong::rgba(1024, BoGoc::co)), 0x29dd1afec5f723b2ULL);
    EXPECT_EQ(bam(BieuTuong::rgba(1024, BoGoc::khong)), 0x206722c21a304b5aULL);
}

TEST(BieuTuong, hinhNhuMongDoi) {
    constexpr int n = 200;
    const auto anh = BieuTuong::rgba(n, BoGoc::co);
    const auto diem = [&](double u, double v) {
        const auto* p = &anh[(static_cast<std::size_t>(v * n) * n + static_cast<std::size_t>(u * n)) * 4];
        return std::array<int, 4>{p[0], p[1], p[2], p[3]};
    };
    for (const double u : {0.0, 0.995})
        for (const double v : {0.0, 0.995})
            EXPECT_EQ(diem(u, v)[3], 0);
    EXPECT_EQ(diem(0.0, 0.0)[2], 235);  // the gradient is there under alpha 0 too
    EXPECT_EQ(diem(0.5, 0.35), (std::array<int, 4>{255, 255, 255, 255}));  // bubble
    EXPECT_EQ(diem(0.34, 0.72), (std::array<int, 4>{255, 255, 255, 255}));
    EXPECT_LT(diem(0.5, 0.44)[0], 124);  // a dot shows the background
    EXPECT_EQ(diem(0.5, 0.44)[3], 255);
    EXPECT_LT(diem(0.1, 0.1)[0], diem(0.9, 0.9)[0]);
    const auto ios = BieuTuong::rgba(n, BoGoc::khong);
    for (std::size_t i = 3; i < ios.size(); i += 4)
        ASSERT_EQ(ios[i], 255);
}

TEST_F(BieuTuongTep, boIconMuoiTep) {
    const fs::path vao = thuMuc / "a" / "b.iconset";
    ASSERT_TRUE(BieuTuong::ghiBoIcon(vao.string()));
    ASSERT_TRUE(BieuTuong::ghiBoIcon(vao.string()));  // again, over what is there
    int soTep = 0;
    for (const auto& muc : fs::directory_iterator(vao))
        soTep += muc.is_regular_file();
    EXPECT_EQ(soTep, 10);
    for (const auto& muc : BieuTuong::boIcon) {
        const AnhGiaiMa anh = giaiMa(docTep(vao / muc.ten));
        EXPECT_EQ(anh.dau.width, static_cast<std::uint32_t>(muc.canh));
        EXPECT_EQ(anh.dau.color_type, SPNG_COLOR_TYPE_TRUECOLOR_ALPHA);
        EXPECT_EQ(anh.dau.bit_depth, 8);
        EXPECT_EQ(anh.khoi, "IHDRIDATIEND");
        EXPECT_EQ(anh.diem, BieuTuong::rgba(muc.canh, BoGoc::co)) << muc.ten;
    }
}

TEST_F(BieuTuongTep, iconIOSKhongCoAlpha) {
    const fs::path vao = thuMuc / "moi" / "ios.png";
    ASSERT_TRUE(BieuTuong::ghiIconIOS(vao.string()));
    const AnhGiaiMa anh = giaiMa(docTep(vao));
    EXPECT_EQ(anh.dau.color_type, SPNG_COLOR_TYPE_TRUECOLOR);
    EXPECT_EQ(anh.khoi, "IHDRIDATIEND");
    const auto rgba = BieuTuong::rgba(1024, BoGoc::khong);
    ASSERT_EQ(anh.diem.size(), rgba.size() / 4 * 3);
    for (std::size_t i = 0; i < anh.diem.size(); ++i)
        ASSERT_EQ(anh.diem[i], rgba[i / 3 * 4 + i % 3]);
}

TEST_F(BieuTuongTep, khongGhiDuocThiNoiVaKetThucMot) {
    std::ofstream(thuMuc / "tep") << "x";
    const std::string hong = (thuMuc / "tep" / "con").string();
    const auto kq = BieuTuong::ghiBoIcon(hong);
    ASSERT_FALSE(kq);
    EXPECT_EQ(kq.loi().mien, "BieuTuong");
    testing::internal::CaptureStderr();
    EXPECT_EQ(BieuTuong::chayTaoIcon(hong), 1);
    EXPECT_EQ(BieuTuong::chayTaoIconIOS(hong + "/x.png"), 1);
    const std::string loi = testing::internal::GetCapturedStderr();
    EXPECT_EQ(loi.rfind("✗ Không ghi được biểu tượng: ", 0), 0U);
    EXPECT_NE(loi.find("\n✗ Không ghi được biểu tượng iOS: "), std::string::npos);
    const std::string vao = (thuMuc / "duoc").string();
    testing::internal::CaptureStdout();
    EXPECT_EQ(BieuTuong::chayTaoIcon(vao), 0);
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "✓ Đã ghi 10 tệp vào " + vao + "\n");
}

#include "Loi.hpp"

#include <gtest/gtest.h>

#include "Chung.hpp"

using namespace tovira;

TEST(KetQua, mangGiaTriHoacLoi) {
    KetQua<int> duoc(7);
    ASSERT_TRUE(duoc);
    EXPECT_EQ(duoc.giaTri(), 7);
    KetQua<int> hong(Loi{mienTovira, 2, "hỏng"});
    ASSERT_FALSE(hong);
    EXPECT_EQ(hong.loi().ma, 2);
    EXPECT_TRUE(KetQua<void>());
}

namespace {
struct Mau : CoChung<Mau> {};
}  // namespace

TEST(Chung, laBanCuaPhamViTrongCungVaTraLaiKhiRoi) {
    EXPECT_DEATH(static_cast<void>(Mau::chung()), "Tovira");
    Mau ngoai;
    Mau::DatChung a(ngoai);
    {
        Mau trong;
        Mau::DatChung b(trong);
        EXPECT_EQ(&Mau::chung(), &trong);
    }
    EXPECT_EQ(&Mau::chung(), &ngoai);
}

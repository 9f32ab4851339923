// The control bar and the guide.

#include <gtest/gtest.h>

#include <cstring>

#include "ChiBao.hpp"
#include "HuongDan.hpp"

using namespace tovira;

namespace {

struct NenChiBaoGia : ChiBao::Nen {
    std::optional<ChiBao::ManChinh> man = ChiBao::ManChinh{{0, 0, 1920, 1080}, {0, 25, 1920, 1000}};
    std::optional<KhungHinh> thanh;
    std::function<void()> bam;
    int soLanDung = 0;

    std::optional<ChiBao::ManChinh> manChinh() override { return man; }
    void dungThanh(const KhungHinh& khung, std::function<void()> khiBam) override {
        thanh = khung;
        bam = std::move(khiBam);
        ++soLanDung;
    }
    void goThanh() override { thanh.reset(); }
};

}  // namespace

TEST(ChiBao, motThanhGiuaMepTren) {
    NenChiBaoGia nen;
    ChiBao bao(nen);
    bao.hien();
    bao.hien();
    EXPECT_EQ(nen.soLanDung, 1);
    EXPECT_EQ(nen.thanh, (KhungHinh{770, 33, 380, 40}));
    nen.bam();  // nobody listens: nothing happens
    int soLanDung = 0;
    bao.khiDung = [&] {
        ++soLanDung;
        bao.an();
    };
    nen.bam();
    EXPECT_EQ(soLanDung, 1);
    EXPECT_FALSE(nen.thanh);
    bao.hien();
    EXPECT_EQ(nen.soLanDung, 2);
    bao.an();
    nen.man.reset();
    bao.hien();
    EXPECT_FALSE(bao.dangHien());
}

TEST(HuongDan, banMuoiBaKhoi) {
    int soMuc = 0;
    for (const KhoiHuongDan& khoi : HuongDan::cacKhoi) {
        ASSERT_GT(std::strlen(khoi.chu), 0U);
        soMuc += khoi.kieu == KieuKhoi::muc;
        EXPECT_EQ(khoi.so != 0, khoi.kieu == KieuKhoi::so);
    }
    EXPECT_EQ(soMuc, 8);
    EXPECT_EQ(HuongDan::chuHien(HuongDan::cacKhoi[13]), "ĐÃ BẬT RỒI MÀ VẪN BÁO CHƯA");
    EXPECT_EQ(HuongDan::chuHien(HuongDan::cacKhoi[0]), "Tovira");
    EXPECT_EQ(HuongDan::dauDong(HuongDan::cacKhoi[10]), "2.");
    EXPECT_EQ(HuongDan::dauDong(HuongDan::cacKhoi[28]), "•");
    EXPECT_EQ(HuongDan::dauDong(HuongDan::cacKhoi[3]), "");
}

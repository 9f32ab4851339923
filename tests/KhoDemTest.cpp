#include "KhoDem.hpp"

#include <gtest/gtest.h>

#include <deque>
#include <string>
#include <vector>

using tovira::KhoDem;

namespace {

constexpr std::size_t mega = std::size_t{1} << 20;

// Borrows and notes who got what, in order.
struct Nguoi {
    explicit Nguoi(std::size_t toiDa) : kho(toiDa) {}
    ~Nguoi() {
        while (!giu.empty())
            tra();
    }
    void muon(std::size_t dai) {
        kho.muon(dai, [this](KhoDem::Dem dem) {
            nhan.push_back(dem.vung().size());
            giu.push_back(std::move(dem));
        });
    }
    // Gives the oldest loan back, which may bring in the next one.
    void tra() {
        const KhoDem::Dem cu = std::move(giu.front());
        giu.pop_front();
    }
    KhoDem kho;
    std::vector<std::size_t> nhan;
    std::deque<KhoDem::Dem> giu;
};

}  // namespace

TEST(KhoDem, quaMucThiChoTheoThuTu) {
    Nguoi n(10);
    n.muon(6);
    n.muon(5);
    n.muon(1);  // would fit, but it is not its turn
    EXPECT_EQ(n.nhan, (std::vector<std::size_t>{6}));
    EXPECT_EQ(n.kho.soDangCho(), 2U);
    n.tra();
    EXPECT_EQ(n.nhan, (std::vector<std::size_t>{6, 5, 1}));
    EXPECT_EQ(n.kho.dangGiu(), 6U);
    n.muon(10);
    n.tra();
    EXPECT_EQ(n.nhan.size(), 3U);
    n.tra();
    EXPECT_EQ(n.nhan.back(), 10U);
    EXPECT_EQ(n.kho.dangGiu(), 10U);
}

TEST(KhoDem, doLonDuocDungLai) {
    Nguoi n(8 * mega);
    n.muon(4 * mega);
    const auto* cho = n.giu.front().vung().data();
    n.tra();
    EXPECT_EQ(n.kho.dangGiu(), 4 * mega);  // kept
    n.muon(3 * mega);
    EXPECT_EQ(n.giu.front().vung().data(), cho);
    EXPECT_EQ(n.giu.front().vung().size(), 3 * mega);
    n.muon(4 * mega);  // beside it
    EXPECT_EQ(n.kho.dangGiu(), 8 * mega);
    n.tra();
    n.tra();
    EXPECT_EQ(n.kho.dangGiu(), 4 * mega);  // one is kept, not two
    n.kho.buong();
    EXPECT_EQ(n.kho.dangGiu(), 0U);
}

TEST(KhoDem, doDanhSanNhuongChoDoVua) {
    Nguoi n(8 * mega);
    n.muon(4 * mega);
    n.tra();
    n.muon(8 * mega);  // fits only without what was kept
    EXPECT_EQ(n.nhan.back(), 8 * mega);
    EXPECT_EQ(n.kho.dangGiu(), 8 * mega);
    n.tra();
    n.muon(100);  // small: the cap leaves no room beside what was kept
    EXPECT_EQ(n.nhan.back(), 100U);
    EXPECT_EQ(n.kho.dangGiu(), 100U);
}

TEST(KhoDem, nguoiDuocPhatTraNgayThiDenLuotNguoiSau) {
    KhoDem kho(10);
    std::string thuTu;
    KhoDem::Dem dau;
    kho.muon(10, [&](KhoDem::Dem dem) { dau = std::move(dem); });
    for (char ten = 'a'; ten < 'e'; ++ten)
        kho.muon(7, [&, ten](const KhoDem::Dem&) { thuTu += ten; });
    dau = {};
    EXPECT_EQ(thuTu, "abcd");
    EXPECT_EQ(kho.dangGiu(), 0U);
}

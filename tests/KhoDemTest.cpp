#include "KhoDem.hpp"

#include <gtest/gtest.h>

#include <map>
#include <memory>
#include <string>
#include <vector>

using tovira::KhoDem;

namespace {

constexpr std::size_t mega = KhoDem::dayManh;

// Bodies by name, and how many bytes each piece that they were lent has.
struct Nguoi {
    explicit Nguoi(std::size_t toiDa) : kho(toiDa) {}
    void den(char ten, std::size_t dai) { than[ten] = kho.moThan(dai); }
    void xin(char ten) {
        than[ten]->xinManh([this, ten](std::span<std::byte> cho) {
            nhan += ten;
            dai.push_back(cho.size());
        });
    }
    void di(char ten) { than.erase(ten); }

    KhoDem kho;
    std::string nhan;
    std::vector<std::size_t> dai;
    std::map<char, std::unique_ptr<KhoDem::Than>> than;
};

}  // namespace

TEST(KhoDem, tungManhChoDenHetThan) {
    Nguoi n(4 * mega);
    n.den('a', 2 * mega + 7);
    EXPECT_EQ(n.kho.dangGiu(), 0U);  // nothing has come yet
    for (int i = 0; i < 3; ++i)
        n.xin('a');
    EXPECT_EQ(n.dai, (std::vector<std::size_t>{mega, mega, 7}));
    EXPECT_EQ(n.kho.dangGiu(), 3 * mega);
    n.den('b', 100);
    n.xin('b');
    EXPECT_EQ(n.dai.back(), 100U);
    EXPECT_EQ(n.kho.dangGiu(), 3 * mega + 100);
}

TEST(KhoDem, manhDuocDungLaiNhuongChoThanNho) {
    Nguoi n(2 * mega);
    n.den('a', 2 * mega);
    n.xin('a');
    n.xin('a');
    const auto* cho = n.than['a']->cacManh()[1].data();
    n.di('a');
    EXPECT_EQ(n.kho.dangGiu(), 2 * mega);  // kept
    n.den('b', mega);
    n.xin('b');
    EXPECT_EQ(n.than['b']->cacManh()[0].data(), cho);
    EXPECT_EQ(n.kho.dangGiu(), 2 * mega);
    n.den('c', 100);  // the cap leaves no room beside what is kept
    n.xin('c');
    EXPECT_EQ(n.kho.dangGiu(), mega + 100);
    n.di('b');
    n.di('c');
    EXPECT_EQ(n.kho.dangGiu(), mega);
    n.kho.buong();
    EXPECT_EQ(n.kho.dangGiu(), 0U);
}

TEST(KhoDem, chiGiuLaiCoMuc) {
    Nguoi n(100 * mega);
    for (const char ten : {'a', 'b'}) {
        n.den(ten, 50 * mega);
        for (int i = 0; i < 50; ++i)
            n.xin(ten);
    }
    n.di('a');
    n.di('b');
    EXPECT_EQ(n.kho.dangGiu(), 64 * mega);
}

TEST(KhoDem, khongChoManhMaNguoiKhacCanDeXong) {
    Nguoi n(4 * mega);
    n.den('a', 3 * mega);
    n.den('b', 3 * mega);
    for (const char ten : {'a', 'a', 'b'})
        n.xin(ten);
    n.xin('b');  // there is room, but then neither could finish
    EXPECT_EQ(n.nhan, "aab");
    n.den('c', 100);
    n.xin('c');  // asks for no more than it gives back
    n.xin('a');
    EXPECT_EQ(n.nhan, "aabc");
    n.di('c');
    EXPECT_EQ(n.nhan, "aabca");
    n.di('a');
    EXPECT_EQ(n.nhan, "aabcab");
    EXPECT_EQ(n.kho.soDangCho(), 0U);
}

TEST(KhoDem, thoiChoThiKhongDuocGoi) {
    Nguoi n(mega);
    n.den('a', mega);
    n.xin('a');
    for (const char ten : {'b', 'c', 'd'}) {
        n.den(ten, mega);
        n.xin(ten);
        EXPECT_TRUE(n.than[ten]->dangCho());
    }
    n.than['b']->thoiCho();
    n.di('c');
    n.di('a');
    EXPECT_EQ(n.nhan, "ad");
}

TEST(KhoDem, nguoiDuocPhatTraNgayThiDenLuotNguoiSau) {
    KhoDem kho(mega);
    std::string thuTu;
    auto dau = kho.moThan(mega);
    dau->xinManh([](auto) {});
    std::map<char, std::unique_ptr<KhoDem::Than>> than;
    for (char ten = 'a'; ten < 'e'; ++ten) {
        than[ten] = kho.moThan(mega);
        than[ten]->xinManh([&, ten](auto) {
            thuTu += ten;
            than.erase(ten);
        });
    }
    dau.reset();
    EXPECT_EQ(thuTu, "abcd");
    kho.buong();
    EXPECT_EQ(kho.dangGiu(), 0U);
}

// Whoever comes with how much, and in whatever order they ask: all get to their end, within the cap.
TEST(KhoDem, khongBaoGioKetCung) {
    unsigned hat = 1;
    const auto boc = [&hat](std::size_t den) { return (hat = hat * 1664525 + 1013904223) / 65536 % den; };
    constexpr std::size_t toiDa = 8 * mega;
    std::size_t soLanCho = 0;
    for (int vong = 0; vong < 300; ++vong) {
        KhoDem kho(toiDa);
        std::vector<std::unique_ptr<KhoDem::Than>> than;
        std::vector<std::size_t> thieu;
        for (int i = 0; i < 12; ++i) {
            thieu.push_back(boc(4) == 0 ? 1 + boc(1000) : 1 + boc(8 * mega / 65536) * 65536);
            than.push_back(kho.moThan(thieu.back()));
        }
        for (std::size_t con = than.size(); con > 0;) {
            std::vector<std::size_t> ranh;
            for (std::size_t i = 0; i < than.size(); ++i) {
                if (than[i] && !than[i]->dangCho()) ranh.push_back(i);
            }
            ASSERT_FALSE(ranh.empty()) << "everybody waits for everybody";
            const std::size_t i = ranh[boc(ranh.size())];
            if (thieu[i] == 0) {
                than[i].reset();
                --con;
                continue;
            }
            than[i]->xinManh([&thieu, i](std::span<std::byte> cho) { thieu[i] -= cho.size(); });
            soLanCho += than[i]->dangCho() ? 1 : 0;
            ASSERT_LE(kho.dangGiu(), toiDa);
        }
    }
    EXPECT_GT(soLanCho, 1000U);
}

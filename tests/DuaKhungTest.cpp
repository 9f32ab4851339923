#include "DuaKhung.hpp"

#include <gtest/gtest.h>

#include "gia/NenManHinhGia.hpp"

using namespace tovira;
using gia::KhungGia;
using Gui = MjpegServer::Gui;

namespace {

// Writes down what is sent: "<image> <to whom>", and "báo" where it is asked to tell of a free viewer.
struct NoiGuiGia final : DuaKhung::NoiGui {
    bool ranh = true;
    std::vector<std::string> so;

    bool coNguoiRanh() override { return ranh; }
    void baoKhiRanh() override { so.push_back("báo"); }
    void dangKhung(const MjpegServer::Khung& khung, Gui gui) override {
        const auto phan = khung->phan();
        const std::string byte(reinterpret_cast<const char*>(phan.data()), phan.size());
        const auto dau = byte.find("\r\n\r\n") + 4;
        const char* ai = gui == Gui::moiNguoi ? " mọi" : gui == Gui::nhacLai ? " nhắc" : " thiếu";
        so.push_back(byte.substr(dau, byte.size() - 2 - dau) + ai);
    }
    std::vector<std::string> lay() { return std::exchange(so, {}); }
};

using Ds = std::vector<std::string>;

struct DuaKhungThu : testing::Test {
    gia::VongLapGia hang;
    NoiGuiGia noi;
    std::shared_ptr<DuaKhung> dua = std::make_shared<DuaKhung>(hang, noi);
    std::function<void()> khiRanh = dua->khiCoNguoiRanh();
    std::shared_ptr<int> soLanMa = std::make_shared<int>(0);

    void SetUp() override {
        dua->chonLuot(1);
        hang.xa();
    }
    void nhan(const std::string& anh, TrangThaiKhung trangThai = TrangThaiKhung::daDu) {
        dua->nhan(1, std::make_unique<KhungGia>(anh, trangThai, soLanMa));
    }
    void baoRanh() {
        khiRanh();
        hang.xa();
    }
};

}  // namespace

TEST_F(DuaKhungThu, guiMoiKhungDuVaNhacLaiDungMotLanKhiLang) {
    nhan("a");
    hang.tien(0.2);
    nhan("b");
    EXPECT_EQ(noi.lay(), (Ds{"a mọi", "b mọi"}));
    hang.tien(0.24);
    EXPECT_EQ(noi.lay(), Ds{});
    hang.tien(0.02);
    EXPECT_EQ(noi.lay(), Ds{"b nhắc"});
    hang.tien(60);
    EXPECT_EQ(noi.lay(), Ds{});
    EXPECT_EQ(*soLanMa, 2);
}

TEST_F(DuaKhungThu, boKhungKhongDuVaKhungCuaLuotKhac) {
    for (const auto trangThai : {TrangThaiKhung::nghi, TrangThaiKhung::trong, TrangThaiKhung::tamDung})
        nhan("x", trangThai);
    dua->nhan(2, std::make_unique<KhungGia>("x"));
    dua->nhan(1, nullptr);
    // An idle frame does not put off settling either.
    nhan("a");
    hang.tien(0.2);
    nhan("x", TrangThaiKhung::nghi);
    hang.tien(0.1);
    EXPECT_EQ(noi.lay(), (Ds{"a mọi", "a nhắc"}));
    dua->chonLuot(2);
    hang.xa();
    nhan("cũ");
    dua->nhan(2, std::make_unique<KhungGia>("mới"));
    EXPECT_EQ(noi.lay(), Ds{"mới mọi"});
}

TEST_F(DuaKhungThu, khongMaHoaKhiKhongAiRanhVaGiuKhungMoiNhat) {
    noi.ranh = false;
    for (const char* anh : {"a", "b", "c"})
        nhan(anh);
    hang.tien(10);
    EXPECT_EQ(noi.lay(), Ds{"báo"});
    EXPECT_EQ(*soLanMa, 0);

    // Nobody after all: asked for again, still nothing encoded.
    baoRanh();
    EXPECT_EQ(noi.lay(), Ds{"báo"});
    EXPECT_EQ(*soLanMa, 0);

    noi.ranh = true;
    baoRanh();
    EXPECT_EQ(noi.lay(), Ds{"c mọi"});
    EXPECT_EQ(*soLanMa, 1);
    hang.tien(1);
    EXPECT_EQ(noi.lay(), Ds{"c nhắc"});
}

TEST_F(DuaKhungThu, khungDangChoThayViecNhacLai) {
    nhan("a");
    noi.ranh = false;
    nhan("b");
    hang.tien(1);
    EXPECT_EQ(noi.lay(), (Ds{"a mọi", "báo"})) << "the older picture must not be repeated";
    noi.ranh = true;
    nhan("c");
    EXPECT_EQ(noi.lay(), Ds{"c mọi"});
}

TEST_F(DuaKhungThu, nguoiMoiVaoManHinhDungYenDuocAnhNgayRoiDuocNhac) {
    baoRanh();
    EXPECT_EQ(noi.lay(), Ds{}) << "no picture yet";
    nhan("a");
    hang.tien(5);
    EXPECT_EQ(noi.lay(), (Ds{"a mọi", "a nhắc"}));
    baoRanh();
    EXPECT_EQ(noi.lay(), Ds{"a thiếu"});
    hang.tien(5);
    EXPECT_EQ(noi.lay(), Ds{"a nhắc"});
    EXPECT_EQ(*soLanMa, 1);
}

TEST_F(DuaKhungThu, khungMaHoaHongKhongLamMatKhungTruoc) {
    nhan(std::string(KhungGia::hong));
    hang.tien(1);
    EXPECT_EQ(noi.lay(), Ds{});
    nhan("a");
    nhan(std::string(KhungGia::hong));
    nhan("");
    hang.tien(1);
    EXPECT_EQ(noi.lay(), (Ds{"a mọi", "a nhắc"}));
}

TEST_F(DuaKhungThu, sauKhiDongThiKhongDungToiNoiGuiVaNhaHet) {
    nhan("a");
    noi.ranh = false;
    nhan("b");
    noi.lay();
    khiRanh();
    dua->dong();
    nhan("c");
    hang.tien(1);
    khiRanh();
    EXPECT_EQ(noi.lay(), Ds{});
    const std::weak_ptr<DuaKhung> yeu = dua;
    dua.reset();
    hang.xa();
    EXPECT_TRUE(yeu.expired());
    EXPECT_EQ(soLanMa.use_count(), 1) << "a frame is still held";
    EXPECT_EQ(*soLanMa, 1);
}

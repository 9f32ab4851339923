#include <gtest/gtest.h>

#include "ChinhSachDieuHuong.hpp"

using namespace tovira;

namespace {

constexpr auto lienKet = LoaiDieuHuong::bamLienKet;
constexpr auto khac = LoaiDieuHuong::khac;
constexpr auto choPhep = QuyetDinhDieuHuong::choPhep;
constexpr auto taiXuong = QuyetDinhDieuHuong::taiXuong;
constexpr auto moNgoai = QuyetDinhDieuHuong::moNgoai;
constexpr auto thuLai = QuyetDinhDieuHuong::thuLai;

QuyetDinhDieuHuong xet(const char* diaChi, LoaiDieuHuong loai, YeuCauTai tai = YeuCauTai::khong,
                       const char* goc = "https://vi.du:8443") {
    return ChinhSachDieuHuong::xet({diaChi, loai, tai}, goc);
}

}  // namespace

TEST(DieuHuong, theoThuTuQuyTac) {
    struct Hang {
        const char* diaChi;
        LoaiDieuHuong loai;
        QuyetDinhDieuHuong mong;
    };
    const Hang bang[] = {
        {"tovira://tai-lai", khac, thuLai},
        {"tovira://tai-lai", lienKet, thuLai},
        {"tovira://tai-lai/", lienKet, choPhep},
        {"TOVIRA://tai-lai", khac, choPhep},
        {"blob:https://vi.du/1", khac, taiXuong},
        {"Blob:https://vi.du/1", khac, choPhep},
        {"data:text/plain,xin chao", lienKet, taiXuong},
        {"data:text/plain,xin chao", khac, choPhep},
        {"DATA:text/plain,x", lienKet, choPhep},
        {"mailto:a@vi.du", lienKet, choPhep},
        {"https://vi.du:8443/app", lienKet, choPhep},
        {"http://vi.du/", lienKet, choPhep},
        {"HTTP://vi.du:1/", lienKet, choPhep},
        {"https://vi.du/?a={b}|c", lienKet, choPhep},
        {"https://vi.du.xau.vn/", lienKet, moNgoai},
        {"https://vi.du@xau.vn/", lienKet, moNgoai},
        {"https://xau.vn/@vi.du", lienKet, moNgoai},
        {"HTTPS://xau.vn/", lienKet, moNgoai},
        {"https:", lienKet, moNgoai},
        {"https://xau.vn/", khac, choPhep},
        {"", lienKet, choPhep},
        {"khong-giao-thuc", lienKet, choPhep},
    };
    for (const auto& h : bang)
        EXPECT_EQ(xet(h.diaChi, h.loai), h.mong) << h.diaChi;
    EXPECT_EQ(ChinhSachDieuHuong::xet({std::nullopt, lienKet, YeuCauTai::co}, "https://vi.du"), choPhep);
}

TEST(DieuHuong, xinTaiThiTaiTruLienKetThuLai) {
    EXPECT_EQ(xet("https://xau.vn/a.zip", lienKet, YeuCauTai::co), taiXuong);
    EXPECT_EQ(xet("https://vi.du/a.zip", khac, YeuCauTai::co), taiXuong);
    EXPECT_EQ(xet("tovira://tai-lai", lienKet, YeuCauTai::co), thuLai);
}

TEST(DieuHuong, mayChuKhongThanhDiaChi) {
    EXPECT_EQ(xet("https://xau.vn/", lienKet, YeuCauTai::khong, "hai tu"), choPhep)
        << "nothing to compare with";
    EXPECT_EQ(xet("https://xau.vn/", lienKet, YeuCauTai::khong, ""), moNgoai) << "the server has no host";
    EXPECT_EQ(xet("http:", lienKet, YeuCauTai::khong, ""), choPhep) << "neither has one";
    EXPECT_EQ(xet("http://[::1]:3000/x", lienKet, YeuCauTai::khong, "http://[::1]:9009"), choPhep);
}

TEST(GocTinDuoc, chiSoMay) {
    for (const char* may : {"vi.du", "127.0.0.1", "localhost"})
        EXPECT_TRUE(gocTinDuoc(may, "https://vi.du:8443/x")) << may;
    for (const char* may : {"", "xau.vn", "vi.du.xau.vn", "127.0.0.2", "LOCALHOST"}) {
        EXPECT_FALSE(gocTinDuoc(may, "https://vi.du")) << may;
    }
    EXPECT_TRUE(gocTinDuoc("[::1]", "http://[::1]:9009"));
    EXPECT_TRUE(gocTinDuoc("::1", "http://[::1]:9009"));
    EXPECT_FALSE(gocTinDuoc("", "khong-phai-url"));
    EXPECT_FALSE(gocTinDuoc("vi.du", "hai tu"));
}

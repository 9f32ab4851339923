#include "CuaSo.hpp"

#include <gtest/gtest.h>

#include "KichBanTrang.hpp"
#include "gia/WebGia.hpp"

using namespace tovira;
using Cac = std::vector<std::string>;
using Tai = std::vector<std::pair<std::string, double>>;

namespace {

const Tai taiMayChu{{"https://vi.du/app", 60}};
const Tai taiHtml{{"html", 0}};

class CuaSoTest : public testing::Test, public gia::PhongWeb {
  protected:
    Tai taiKem() const { return {{gocKem() + "/app", 60}}; }
};

}  // namespace

TEST_F(CuaSoTest, dungTheoThuTuRoiHoiMayChu) {
    cuaSo.dung();
    EXPECT_EQ(cua.lay(), Cac{"dung"}) << "built, not shown";
    EXPECT_EQ(trang.kichBan, Cac{Cau::kichBan("https://vi.du", "")});
    ASSERT_EQ(doMayChu.lan.size(), 1U);
    EXPECT_EQ(doMayChu.lan[0].url, "https://vi.du");
    EXPECT_EQ(doMayChu.traLoi(true), 1.5);
    EXPECT_EQ(trang.layTai(), taiMayChu);
    EXPECT_EQ(trang.kichBan.back(), Cau::kichBan("https://vi.du", ""));
}

TEST_F(CuaSoTest, mayChuChetThiGiaoDienKemRoiVeLai) {
    coGiaoDien();
    cuaSo.dung();
    doMayChu.traLoi(false);
    EXPECT_NE(giaoDienKem.cong(), 0);
    EXPECT_EQ(trang.layTai(), taiKem());
    EXPECT_EQ(trang.kichBan.back(), Cau::kichBan("https://vi.du", gocKem()));
    EXPECT_TRUE(cuaSo.gocCauDuoc(gocKem()));
    EXPECT_EQ(trang.gocTin, (Cac{"https://vi.du", gocKem()}));
    cuaSo.hienGiaoDienKem();
    EXPECT_EQ(trang.layTai(), Tai{}) << "shown already";

    const auto gocCu = gocKem();
    cuaSo.veMayChuThat();
    EXPECT_EQ(giaoDienKem.cong(), 0);
    EXPECT_EQ(trang.layTai(), taiMayChu);
    EXPECT_EQ(trang.kichBan.back(), Cau::kichBan("https://vi.du", ""));
    EXPECT_FALSE(cuaSo.gocCauDuoc(gocCu));
    EXPECT_EQ(trang.gocTin, Cac{"https://vi.du"});
}

TEST_F(CuaSoTest, khongCoGiaoDienKemThiTrangMatKetNoi) {
    cuaSo.dung();
    doMayChu.traLoi(false);
    EXPECT_EQ(trang.layTai(), taiHtml);
    for (const char* co :
         {"<html lang=\"vi\">", "<title>Tovira</title>", "color-scheme: dark", "Chưa vào được máy chủ",
          "Kiểm tra kết nối mạng của máy này.", "Ứng dụng sẽ tự vào lại ngay khi máy chủ trả lời.",
          "href=\"tovira://tai-lai\"", ">Thử lại</a>", "max-width: 400px", "user-select: none"}) {
        EXPECT_NE(trang.html.find(co), std::string::npos) << co;
    }
    for (const char* ngoai : {"http:", "https:", "src=", "url("}) {
        EXPECT_EQ(trang.html.find(ngoai), std::string::npos) << "an external resource: " << ngoai;
    }
}

TEST_F(CuaSoTest, traLoiMuonKhongDeLenQuyetDinhMoi) {
    coGiaoDien();
    cuaSo.dung();
    cuaSo.veMayChuThat();  // the page's own retry, while the first probe is still under way
    trang.layTai();
    doMayChu.traLoi(false);
    EXPECT_EQ(trang.layTai(), Tai{});
    EXPECT_EQ(cuaSo.theoDoi().dangHien(), DangHien::mayChu);

    // Two clicks on the retry link: the later question is the one that counts.
    ASSERT_EQ(cuaSo.khiDieuHuong({"tovira://tai-lai"}), TraLoiDieuHuong::huy);
    ASSERT_EQ(cuaSo.khiDieuHuong({"tovira://tai-lai"}), TraLoiDieuHuong::huy);
    doMayChu.traLoi(false);
    EXPECT_EQ(trang.layTai(), Tai{});
    doMayChu.traLoi(true);
    EXPECT_EQ(trang.layTai(), taiMayChu);
}

TEST_F(CuaSoTest, taiHongThiTrangMatKetNoiTruKhiTuMinhThoi) {
    cuaSo.dung();
    doMayChu.traLoi(true);
    trang.layTai();
    cuaSo.neuHongThiBao(LyDoHong::daHuy);
    cuaSo.neuHongThiBao(LyDoHong::biChan);
    EXPECT_EQ(trang.layTai(), Tai{});
    cuaSo.neuHongThiBao(LyDoHong::khac);
    EXPECT_EQ(trang.layTai(), taiHtml);
    EXPECT_TRUE(cuaSo.theoDoi().dangMatKetNoi());

    // The link …
    EXPECT_EQ(cuaSo.khiDieuHuong({"tovira://tai-lai", LoaiDieuHuong::bamLienKet}), TraLoiDieuHuong::huy);
    EXPECT_EQ(doMayChu.traLoi(true), 1.5);
    EXPECT_EQ(trang.layTai(), taiMayChu);
    // … and the watch lead back.
    cuaSo.neuHongThiBao(LyDoHong::khac);
    trang.layTai();
    vong.tien(5);
    EXPECT_EQ(doMayChu.traLoi(true), 4.0);
    EXPECT_EQ(doMayChu.traLoi(true), 1.5);
    EXPECT_EQ(trang.layTai(), taiMayChu);
}

TEST_F(CuaSoTest, giaoDienKemTaiHongThiVanCoLoiRa) {
    coGiaoDien();
    cuaSo.dung();
    doMayChu.traLoi(false);
    cuaSo.neuHongThiBao(LyDoHong::khac);
    trang.layTai();
    EXPECT_TRUE(cuaSo.theoDoi().dangDungGiaoDienKem());
    EXPECT_EQ(cuaSo.khiDieuHuong({"tovira://tai-lai"}), TraLoiDieuHuong::huy);
    doMayChu.traLoi(false);
    EXPECT_EQ(trang.layTai(), taiKem()) << "the packaged interface is tried again";
    cuaSo.neuHongThiBao(LyDoHong::khac);
    trang.layTai();
    vong.tien(5);
    doMayChu.traLoi(true);
    EXPECT_EQ(doMayChu.traLoi(true), 1.5);
    EXPECT_EQ(trang.layTai(), taiMayChu) << "and the server's answer is acted upon";
}

TEST_F(CuaSoTest, theoDoiBaoTrangDungMotLan) {
    cuaSo.dung();
    doMayChu.traLoi(true);
    js();
    int soLanDo = 0;
    const auto di = [&](double giay, bool song) {
        for (double luc = 0; luc < giay; luc += 5) {
            vong.tien(5);
            while (doMayChu.traLoi(song) != 0)
                ++soLanDo;
        }
        vong.xa();
        auto ra = trang.layJs();
        std::erase_if(
            ra, [](const auto& j) { return j.find("MatKetNoi") == j.npos && j.find("SongLai") == j.npos; });
        return ra;
    };
    EXPECT_EQ(di(60, true), Cac{});
    EXPECT_EQ(soLanDo, 3) << "a healthy server is asked every 20 s";
    EXPECT_EQ(di(60, false), Cac{kich_ban_trang::matKetNoi(true)});
    EXPECT_EQ(di(60, true), Cac{kich_ban_trang::matKetNoi(false)});

    coGiaoDien();
    cuaSo.hienGiaoDienKem();
    trang.layTai();
    EXPECT_EQ(di(30, false), Cac{});
    EXPECT_EQ(di(30, true), Cac{kich_ban_trang::mayChuSongLai()});
    EXPECT_EQ(trang.layTai(), Tai{}) << "it stays until somebody asks";
}

TEST_F(CuaSoTest, quyenNhapDuocTheoDoiMoiHaiGiay) {
    cuaSo.dung();
    vong.tien(2);
    EXPECT_EQ(js(), Cac{kich_ban_trang::troNang(true)}) << "not known before";
    vong.tien(10);
    EXPECT_EQ(js(), Cac{});
    nenNhap.phep = false;
    vong.tien(2);
    EXPECT_EQ(js(), Cac{kich_ban_trang::troNang(false)});
    cuaSo.trangDaNap();
    EXPECT_EQ(js()[1], kich_ban_trang::troNang(false)) << "a fresh page is told in any case";
}

TEST_F(CuaSoTest, moiDoiThayCuaManHinhDenTrang) {
    cuaSo.dung();
    phat();
    const auto ra = js();
    ASSERT_FALSE(ra.empty());
    EXPECT_NE(ra.back().find("/man-hinh?k="), std::string::npos);
    EXPECT_NE(ra.back().find("dangPhat = true"), std::string::npos);
    manHinh.dung();
    EXPECT_EQ(js().back(), noiTin(kich_ban_trang::manHinh("", "", false)));
}

TEST_F(CuaSoTest, trangChetThiNapLaiMotLanRoiThoi) {
    cuaSo.dung();
    cuaSo.khiTrangChet();
    EXPECT_EQ(trang.layTai(), Tai{}) << "nothing was shown yet";
    doMayChu.traLoi(true);
    phat();
    gui(R"({"k":"lenh","json":"{\"t\":\"key_down\",\"code\":\"KeyA\"}"})");
    cuaSo.khiXinDong();
    trang.layTai();
    cua.lay();

    cuaSo.khiTrangChet();
    EXPECT_EQ(trang.layTai(), taiMayChu);
    EXPECT_TRUE(manHinh.dangPhat());
    EXPECT_EQ(dieuKhien.dangGiu(), 0U) << "nobody is left to let it go";
    vong.tien(59);
    cuaSo.khiTrangChet();
    EXPECT_EQ(trang.layTai(), taiHtml);
    EXPECT_FALSE(manHinh.dangPhat());
    EXPECT_EQ(cua.lay(), (Cac{"veCho", "an"}));

    cuaSo.khiTrangChet();
    EXPECT_EQ(trang.layTai(), Tai{}) << "not at once again";
    vong.tien(6);
    EXPECT_EQ(trang.layTai(), taiHtml) << "but never a blank window";
}

// The server is well, only its page is not: returning by itself must not become a loop.
TEST_F(CuaSoTest, trangChetHaiLanThiTheoDoiChoMotPhutMoiVe) {
    cuaSo.dung();
    doMayChu.traLoi(true);
    const auto chetHaiLan = [&] {
        cuaSo.khiTrangChet();
        cuaSo.khiTrangChet();
        ASSERT_EQ(trang.layTai().back(), taiHtml[0]);
    };
    // What the ticks of `giay` seconds load while the server answers every probe.
    const auto di = [&](double giay) {
        for (double luc = 0; luc < giay; luc += 5) {
            vong.tien(5);
            while (doMayChu.traLoi(true) != 0) {
            }
        }
        return trang.layTai();
    };
    chetHaiLan();
    EXPECT_EQ(di(55), Tai{});
    EXPECT_EQ(di(10), taiMayChu);
    EXPECT_EQ(di(60), Tai{});

    chetHaiLan();
    EXPECT_EQ(di(20), Tai{});
    EXPECT_EQ(cuaSo.khiDieuHuong({"tovira://tai-lai", LoaiDieuHuong::bamLienKet}), TraLoiDieuHuong::huy);
    doMayChu.traLoi(true);
    EXPECT_EQ(trang.layTai(), taiMayChu) << "the user need not wait";
    // A load that fails after that is another matter than a page that dies.
    di(60);
    cuaSo.neuHongThiBao(LyDoHong::khac);
    EXPECT_EQ(di(5), (Tai{taiHtml[0], taiMayChu[0]}));
}

TEST_F(CuaSoTest, giaoDienKemChetThiNapLaiGiaoDienKem) {
    coGiaoDien();
    cuaSo.hienGiaoDienKem();
    trang.layTai();
    cuaSo.khiTrangChet();
    EXPECT_EQ(trang.layTai(), taiKem());
    vong.tien(61);
    cuaSo.khiTrangChet();
    EXPECT_EQ(trang.layTai(), taiKem()) << "a minute later it is forgiven";
}

TEST_F(CuaSoTest, dieuHuongRaNgoaiVaPhanHoi) {
    EXPECT_EQ(cuaSo.khiDieuHuong({"https://xau.vn/", LoaiDieuHuong::bamLienKet}), TraLoiDieuHuong::huy);
    EXPECT_EQ(khac.lay(), Cac{"mo https://xau.vn/"});
    EXPECT_EQ(cuaSo.khiDieuHuong({"https://xau.vn/"}), TraLoiDieuHuong::choPhep);
    EXPECT_EQ(cuaSo.khiDieuHuong({"blob:x"}), TraLoiDieuHuong::taiXuong);
    EXPECT_EQ(cuaSo.khiPhanHoi(HienDuoc::co), TraLoiDieuHuong::choPhep);
    EXPECT_EQ(cuaSo.khiPhanHoi(HienDuoc::khong), TraLoiDieuHuong::taiXuong);
    EXPECT_TRUE(cuaSo.gocTinDuoc("vi.du"));
    EXPECT_FALSE(cuaSo.gocTinDuoc("xau.vn"));
    cuaSo.khiThongBao("Xin chào");
    EXPECT_EQ(khac.lay(), Cac{"thongBao Xin chào"});
    EXPECT_EQ(doMayChu.lan.size(), 0U);
}

TEST_F(CuaSoTest, hopChonTepTheoTrang) {
    EXPECT_EQ(cuaSo.khiXinTep(ChonNhieu::co, ChonThuMuc::khong),
              (HopChonTep{ChonNhieu::co, ChonThuMuc::khong, "Gửi"}));
    EXPECT_EQ(cuaSo.khiXinTep(ChonNhieu::khong, ChonThuMuc::co),
              (HopChonTep{ChonNhieu::khong, ChonThuMuc::co, "Gửi thư mục này"}));
}

TEST_F(CuaSoTest, taiXuongBaoTrangVaHienTep) {
    const auto duong = cuaSo.khiChonNoiLuu(1, "../../a.txt");
    EXPECT_EQ(duong, (tam.duong() / "a.txt").string());
    const auto thuHai = cuaSo.khiChonNoiLuu(2, "a.txt");
    EXPECT_EQ(thuHai, (tam.duong() / "a (2).txt").string());
    cuaSo.khiTaiXong(1);
    cuaSo.khiTaiXong(1);
    EXPECT_EQ(khac.lay(), Cac{"hien " + duong});
    EXPECT_EQ(js(), Cac{kich_ban_trang::daTai(tam.duong().string(), "a.txt")});
    cuaSo.khiTaiHong(2, "đứt mạng");
    cuaSo.khiTaiHong(3, "chưa kịp chọn chỗ");
    cuaSo.khiTaiXong(2);
    EXPECT_EQ(khac.lay(), Cac{});
    EXPECT_EQ(js(), (Cac{kich_ban_trang::taiHong("đứt mạng"), kich_ban_trang::taiHong("chưa kịp chọn chỗ")}));
}

TEST_F(CuaSoTest, cuaSoTach) {
    EXPECT_EQ(cuaSo.khiXinTach("https://xau.vn/", {}, {}), std::nullopt);
    EXPECT_EQ(khac.lay(), Cac{"mo https://xau.vn/"});
    const auto mot = cuaSo.khiXinTach("", {}, 300.0);
    ASSERT_TRUE(mot);
    EXPECT_EQ(mot->rong, 980);
    EXPECT_EQ(mot->cao, 300);
    const auto hai = cuaSo.khiXinTach("about:blank", {}, {});
    EXPECT_EQ(tach.viec, Cac{"dong " + std::to_string(mot->ma)});
    cuaSo.khiTachSapDong(mot->ma);
    cuaSo.khiTachTuDong(hai->ma);
    EXPECT_EQ(tach.viec, (Cac{"dong " + std::to_string(mot->ma), std::to_string(mot->ma) + ": window.close()",
                              "an " + std::to_string(hai->ma)}));
}

TEST_F(CuaSoTest, viecHoanLaiChetTheoChu) {
    cuaSo.chay("a");
    cuaSo.baoLoi("b", "c");
    EXPECT_TRUE(trang.js.empty() && khac.viec.empty());
    {
        CuaSo khacNua({vong, thamSo, cua, trang, tach, nenNhap, khac, khac, khac, khac, caiDat, khac, khac,
                       doMayChu, giaoDienKem});
        khacNua.dung();
        khacNua.chay("không ai chạy");
    }
    vong.tien(100);
    EXPECT_EQ(trang.js, Cac{"a"});
    EXPECT_EQ(khac.viec, Cac{"canhBao b|c"});
    doMayChu.traLoi(true);
    manHinh.dung();
    EXPECT_EQ(trang.layTai(), Tai{}) << "a late answer finds nobody";
}

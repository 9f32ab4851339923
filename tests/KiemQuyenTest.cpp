#include "KiemQuyen.hpp"

#include <gtest/gtest.h>

using namespace tovira;

namespace {

struct NenGia : Cau::Nen, DieuKhien::Nen, ManHinh::Nen {
    bool ghi = false;
    bool troNang = false;
    std::string nhatKy;

    bool xinTroNang() override {
        nhatKy += "xinTroNang ";
        return troNang;
    }
    bool duocPhep() override { return troNang; }
    KhungHinh khungManHinhChinh() override { return {}; }
    double khoangBamDup() override { return 0.5; }
    bool dang(const SuKien&) override { return false; }
    void batDauChu() override {}
    void ketThucChu() override {}
    void moCaiDatTroNang() override { nhatKy += "caiDatTroNang "; }
    bool duocGhi() override { return ghi; }
    bool xinGhi() override {
        nhatKy += "xinGhi ";
        return false;
    }
    void moCaiDatGhiManHinh() override { nhatKy += "caiDatGhi "; }
    void lietKe(std::function<void(KetQua<std::vector<ManHinh::Nguon>>)>) override {}
    KetQua<std::unique_ptr<ManHinh::Luong>> moLuong(const ManHinh::Nguon&, const ManHinh::CauHinh&,
                                                    ManHinh::PhiaNhan) override {
        return Loi{};
    }
    HangDoi& hangDoiKhung() override { std::abort(); }
    void giuThuc(bool) override {}
};

const std::string dauTran =
    "Tovira 1.0.3 — chẩn đoán quyền\n\nGói           : /opt/tovira\n"
    "Định danh     : (KHÔNG CÓ)\nChữ ký        : KHÔNG KÝ\n"
    "CDHash        : (không đọc được)\n\n";
const std::string canhBao =
    "⚠️  Đang chạy tệp thực thi TRẦN, không phải gói .app.\n"
    "    macOS gắn quyền theo định danh gói, nên bản này không xin được\n"
    "    quyền nào cả — kể cả khi bạn bật trong Cài đặt.\n"
    "    Chạy bản gói:  open dist/Tovira.app\n";

}  // namespace

TEST(KiemQuyen, baoCaoCuaTepTran) {
    const KiemQuyen::Goi goi{"/opt/tovira", std::nullopt, std::nullopt};
    const auto thieu = KiemQuyen::lapBaoCao(goi, {});
    EXPECT_EQ(thieu.chu, dauTran + "Ghi màn hình  : CHƯA cấp\nTrợ năng      : CHƯA cấp\n\n" + canhBao);
    EXPECT_EQ(thieu.trangThai, 1);
    const auto du = KiemQuyen::lapBaoCao(goi, {true, true});
    EXPECT_EQ(du.chu, dauTran + "Ghi màn hình  : đã cấp\nTrợ năng      : đã cấp\n\n" + canhBao);
    EXPECT_EQ(du.trangThai, 0);
}

TEST(KiemQuyen, baoCaoCuaGoi) {
    KiemQuyen::ChuKy chuKy;
    chuKy.chungChi = {"Nguyễn Văn A"};
    chuKy.maDuyNhat = std::vector<std::uint8_t>{0x00, 0xab, 0x0f};
    const KiemQuyen::Goi goi{"/Applications/Tovira.app", "vn.vi-du.tovira", chuKy};
    const auto thieu = KiemQuyen::lapBaoCao(goi, {true, false});
    const auto du = KiemQuyen::lapBaoCao(goi, {true, true});
    const std::string dau =
        "Tovira 1.0.3 — chẩn đoán quyền\n\nGói           : /Applications/Tovira.app\n"
        "Định danh     : vn.vi-du.tovira\n"
        "Chữ ký        : chứng chỉ \"Nguyễn Văn A\" — quyền sống qua các lần dựng lại\n"
        "CDHash        : 00ab0f\n\nGhi màn hình  : đã cấp\n";
    EXPECT_EQ(thieu.chu, dau +
                             "Trợ năng      : CHƯA cấp\n\n"
                             "Chưa cấp, hoặc đã cấp mà vẫn báo chưa:\n\n"
                             "  1. Mở Cài đặt hệ thống → Quyền riêng tư & Bảo mật\n"
                             "  2. Vào mục còn thiếu (Trợ năng / Ghi màn hình)\n"
                             "  3. Chọn dòng \"Tovira\" rồi bấm dấu **−** để GỠ HẲN\n"
                             "  4. Bấm **+**, chọn lại đúng gói:\n     /Applications/Tovira.app\n\n"
                             "Bước 3 là bước hay bị bỏ qua. Tắt rồi bật lại công tắc KHÔNG đủ:\n"
                             "dòng cũ vẫn mang chữ ký của bản dựng trước, mà chữ ký ad-hoc đổi\n"
                             "sau mỗi lần dựng lại. Phải gỡ đi rồi thêm lại thì macOS mới ghi\n"
                             "chữ ký mới (CDHash ở trên).\n\n"
                             "Muốn hết phải làm lại mỗi lần dựng: ./tao-chung-chi-ky.sh\n");
    EXPECT_EQ(thieu.trangThai, 1);
    EXPECT_EQ(du.chu, dau +
                          "Trợ năng      : đã cấp\n\n"
                          "✓ Đủ cả hai quyền. Máy này nhận điều khiển từ xa được.\n");
    EXPECT_EQ(du.trangThai, 0);
}

TEST(KiemQuyen, kieuChuKy) {
    KiemQuyen::ChuKy chuKy;
    EXPECT_EQ(KiemQuyen::kieuChuKy(chuKy), "có ký, không đọc được chứng chỉ");
    EXPECT_FALSE(KiemQuyen::cdHash(chuKy));
    chuKy.chungChi = {std::nullopt, "gốc"};
    EXPECT_EQ(KiemQuyen::kieuChuKy(chuKy),
              "chứng chỉ \"(không đọc được tên)\" — quyền sống qua các lần dựng lại");
    chuKy.co = 0x10002;  // the ad-hoc bit among others comes before any certificate
    EXPECT_EQ(KiemQuyen::kieuChuKy(chuKy), "ad-hoc (đổi sau MỖI lần dựng lại — quyền sẽ mất theo)");
}

TEST(KiemQuyen, xinRoiMoCaiDat) {
    NenGia nen;
    KiemQuyen kiem(nen, nen, nen);
    kiem.moGhiManHinh();
    kiem.moTroNang();
    EXPECT_EQ(nen.nhatKy, "xinGhi caiDatGhi xinTroNang caiDatTroNang ");
    nen.nhatKy.clear();
    nen.ghi = nen.troNang = true;  // granted: only the settings are shown
    kiem.moGhiManHinh();
    kiem.moTroNang();
    EXPECT_EQ(nen.nhatKy, "caiDatGhi caiDatTroNang ");
}

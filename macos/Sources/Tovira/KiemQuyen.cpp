#include "KiemQuyen.hpp"

#include "ThamSo.hpp"

namespace tovira {

namespace {

constexpr std::uint32_t coAdHoc = 2;  // kSecCodeSignatureAdhoc

constexpr const char* canhBaoTran =
    "⚠️  Đang chạy tệp thực thi TRẦN, không phải gói .app.\n"
    "    macOS gắn quyền theo định danh gói, nên bản này không xin được\n"
    "    quyền nào cả — kể cả khi bạn bật trong Cài đặt.\n"
    "    Chạy bản gói:  open dist/Tovira.app\n";

std::string loiKhuyen(const std::string& goi) {
    return "Chưa cấp, hoặc đã cấp mà vẫn báo chưa:\n"
           "\n"
           "  1. Mở Cài đặt hệ thống → Quyền riêng tư & Bảo mật\n"
           "  2. Vào mục còn thiếu (Trợ năng / Ghi màn hình)\n"
           "  3. Chọn dòng \"Tovira\" rồi bấm dấu **−** để GỠ HẲN\n"
           "  4. Bấm **+**, chọn lại đúng gói:\n"
           "     " +
           goi +
           "\n"
           "\n"
           "Bước 3 là bước hay bị bỏ qua. Tắt rồi bật lại công tắc KHÔNG đủ:\n"
           "dòng cũ vẫn mang chữ ký của bản dựng trước, mà chữ ký ad-hoc đổi\n"
           "sau mỗi lần dựng lại. Phải gỡ đi rồi thêm lại thì macOS mới ghi\n"
           "chữ ký mới (CDHash ở trên).\n"
           "\n"
           "Muốn hết phải làm lại mỗi lần dựng: ./tao-chung-chi-ky.sh\n";
}

}  // namespace

void KiemQuyen::moGhiManHinh() {
    if (!duocGhiManHinh()) manHinh_.xinGhi();
    manHinh_.moCaiDatGhiManHinh();
}

void KiemQuyen::moTroNang() {
    if (!duocTroNang()) xinQuyen_.xinTroNang();
    dieuKhien_.moCaiDatTroNang();
}

std::string KiemQuyen::kieuChuKy(const std::optional<ChuKy>& chuKy) {
    if (!chuKy) return "KHÔNG KÝ";
    if ((chuKy->co & coAdHoc) != 0) return "ad-hoc (đổi sau MỖI lần dựng lại — quyền sẽ mất theo)";
    if (chuKy->chungChi.empty()) return "có ký, không đọc được chứng chỉ";
    return "chứng chỉ \"" + chuKy->chungChi.front().value_or("(không đọc được tên)") +
           "\" — quyền sống qua các lần dựng lại";
}

std::optional<std::string> KiemQuyen::cdHash(const std::optional<ChuKy>& chuKy) {
    if (!chuKy || !chuKy->maDuyNhat) return std::nullopt;
    static constexpr char chuSo[] = "0123456789abcdef";
    std::string kq;
    for (const std::uint8_t b : *chuKy->maDuyNhat) {
        kq += chuSo[b >> 4];
        kq += chuSo[b & 15];
    }
    return kq;
}

KiemQuyen::BaoCao KiemQuyen::lapBaoCao(const Goi& goi, Quyen quyen) {
    const auto daCap = [](bool co) { return co ? "đã cấp" : "CHƯA cấp"; };

    BaoCao kq;
    kq.trangThai = quyen.ghiManHinh && quyen.troNang ? 0 : 1;
    kq.chu = std::string("Tovira ") + phienBanTovira + " — chẩn đoán quyền\n\n";
    kq.chu += "Gói           : " + goi.duongDan + "\n";
    kq.chu += "Định danh     : " + goi.dinhDanh.value_or("(KHÔNG CÓ)") + "\n";
    kq.chu += "Chữ ký        : " + kieuChuKy(goi.chuKy) + "\n";
    kq.chu += "CDHash        : " + cdHash(goi.chuKy).value_or("(không đọc được)") + "\n";
    kq.chu += "\n";
    kq.chu += std::string("Ghi màn hình  : ") + daCap(quyen.ghiManHinh) + "\n";
    kq.chu += std::string("Trợ năng      : ") + daCap(quyen.troNang) + "\n";
    kq.chu += "\n";

    const std::string duoi = ".app";
    const bool laGoi = goi.duongDan.size() >= duoi.size() &&
                       goi.duongDan.compare(goi.duongDan.size() - duoi.size(), duoi.size(), duoi) == 0;
    if (!laGoi)
        kq.chu += canhBaoTran;
    else if (kq.trangThai == 0)
        kq.chu += "✓ Đủ cả hai quyền. Máy này nhận điều khiển từ xa được.\n";
    else
        kq.chu += loiKhuyen(goi.duongDan);
    return kq;
}

}  // namespace tovira

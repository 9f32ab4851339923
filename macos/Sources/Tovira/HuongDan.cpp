#include "HuongDan.hpp"

#include <utf8proc.h>

namespace tovira {

// clang-format off
const std::array<KhoiHuongDan, 33> HuongDan::cacKhoi{{
    {KieuKhoi::tieuDe, 0, "Tovira"},
    {KieuKhoi::dan, 0, "Cho người khác xem và điều khiển máy này từ xa — hoặc bạn làm điều đó với máy của họ."},
    {KieuKhoi::muc, 0, "Bắt đầu"},
    {KieuKhoi::doan, 0, "Mở Tovira. Cửa sổ ứng dụng hiện lên, và một biểu tượng nhỏ xuất hiện ở góc trên bên phải màn hình, ngay cạnh đồng hồ."},
    {KieuKhoi::doan, 0, "Trên cửa sổ có Mã máy và Mật khẩu. Đọc hai dòng đó cho người cần kết nối tới máy bạn — họ nhập vào máy họ là xong."},
    {KieuKhoi::ghiChu, 0, "Mật khẩu đổi mỗi lần mở ứng dụng. Đọc lại cho người kia nếu bạn vừa mở lại."},
    {KieuKhoi::doan, 0, "Đóng cửa sổ không làm ứng dụng tắt. Nó thu về cạnh đồng hồ để máy vẫn nhận được kết nối. Muốn tắt hẳn, bấm biểu tượng đó rồi chọn Thoát Tovira."},
    {KieuKhoi::muc, 0, "Cho phép người khác kết nối"},
    {KieuKhoi::doan, 0, "macOS bắt chính bạn đồng ý hai việc dưới đây. Không phần mềm nào tự bật hộ được, kể cả Tovira."},
    {KieuKhoi::so, 1, "Ghi màn hình — để người kia nhìn thấy màn hình của bạn. Chưa bật thì họ chỉ thấy một ô đen."},
    {KieuKhoi::so, 2, "Trợ năng — để người kia bấm chuột và gõ phím giúp bạn. Chưa bật thì họ nhìn được nhưng không làm gì được."},
    {KieuKhoi::doan, 0, "Cách bật: bấm biểu tượng cạnh đồng hồ, rồi bấm vào dòng đang có dấu ✗. Tovira mở sẵn đúng trang Cài đặt cho bạn — việc còn lại chỉ là gạt công tắc."},
    {KieuKhoi::ghiChu, 0, "Chỉ muốn cho xem chứ không cho điều khiển? Bật mục 1, để nguyên mục 2."},
    {KieuKhoi::muc, 0, "Đã bật rồi mà vẫn báo chưa"},
    {KieuKhoi::doan, 0, "Chuyện bình thường, không phải hỏng. macOS chỉ ghi nhận quyền vừa cấp khi ứng dụng khởi động lại."},
    {KieuKhoi::doan, 0, "Bấm biểu tượng cạnh đồng hồ, chọn “Mở lại Tovira”. Ứng dụng tự mở lại sau một giây và mọi thứ vào đúng chỗ."},
    {KieuKhoi::muc, 0, "Tự bật khi mở máy"},
    {KieuKhoi::doan, 0, "Bấm biểu tượng cạnh đồng hồ, chọn “Chạy cùng macOS”. Từ lần sau, Tovira có sẵn mỗi khi bạn đăng nhập, không phải mở tay."},
    {KieuKhoi::doan, 0, "Tắt lại được bất cứ lúc nào ở chính chỗ đó."},
    {KieuKhoi::ghiChu, 0, "Máy phải được đăng nhập rồi thì người khác mới kết nối vào được. Máy đang ở màn hình khoá thì chưa nhận điều khiển."},
    {KieuKhoi::muc, 0, "Khi máy bạn đang bị điều khiển"},
    {KieuKhoi::doan, 0, "Một thanh đỏ nổi lên trên mọi cửa sổ, kèm nút DỪNG NGAY. Thanh này không tắt được, và đó là chủ ý: bạn luôn biết lúc nào máy mình đang có người khác thao tác."},
    {KieuKhoi::doan, 0, "Bấm DỪNG NGAY là ngắt lập tức, không hỏi lại lần nào."},
    {KieuKhoi::ghiChu, 0, "macOS cũng tự hiện dấu hiệu ghi màn hình của riêng nó cạnh đồng hồ."},
    {KieuKhoi::muc, 0, "Riêng tư"},
    {KieuKhoi::doan, 0, "Tin nhắn, tệp và khoá mã hoá không bao giờ rời khỏi máy bạn. Máy chủ chỉ giúp hai máy tìm thấy nhau rồi đứng ngoài — nó không đọc được gì."},
    {KieuKhoi::doan, 0, "Thao tác chuột và phím đi thẳng từ máy này sang máy kia. Chưa nối thẳng được thì Tovira thà chờ chứ không gửi vòng qua chỗ khác."},
    {KieuKhoi::muc, 0, "Không kết nối được"},
    {KieuKhoi::cham, 0, "Kiểm tra mạng của cả hai máy."},
    {KieuKhoi::cham, 0, "Đọc lại Mã máy và Mật khẩu cho nhau, chú ý mật khẩu đã đổi hay chưa."},
    {KieuKhoi::cham, 0, "Bấm biểu tượng cạnh đồng hồ xem còn dòng nào đang có dấu ✗."},
    {KieuKhoi::muc, 0, "Cần giúp"},
    {KieuKhoi::doan, 0, "Mã nguồn, hướng dẫn và nơi báo lỗi: dự án Tovira."},
}};
// clang-format on

KieuChuKhoi HuongDan::kieuChu(KieuKhoi kieu) {
    switch (kieu) {
        case KieuKhoi::tieuDe:
            return {26, true, MauChu::chinh, 0, 0, 4, 0};
        case KieuKhoi::dan:
            return {14, false, MauChu::phu, 0, 0, 10, 0};
        case KieuKhoi::muc:
            return {11.5, true, MauChu::nhan, 0.9, 28, 8, 0};
        case KieuKhoi::doan:
            return {13, false, MauChu::chinh, 0, 0, 9, 0};
        case KieuKhoi::so:
            return {13, false, MauChu::chinh, 0, 0, 9, 24};
        case KieuKhoi::cham:
            return {13, false, MauChu::chinh, 0, 0, 7, 18};
        case KieuKhoi::ghiChu:
            return {12.5, false, MauChu::phu, 0, 0, 9, 0};
    }
    return {13, false, MauChu::chinh, 0, 0, 9, 0};
}

namespace {

std::string vietHoa(const char* chu) {
    std::string kq;
    const auto* p = reinterpret_cast<const utf8proc_uint8_t*>(chu);
    while (*p != 0) {
        utf8proc_int32_t diem = 0;
        const auto dai = utf8proc_iterate(p, -1, &diem);
        if (dai <= 0) break;
        p += dai;
        utf8proc_uint8_t ra[4];
        const auto daiRa = utf8proc_encode_char(utf8proc_toupper(diem), ra);
        kq.append(reinterpret_cast<const char*>(ra), static_cast<std::size_t>(daiRa));
    }
    return kq;
}

}  // namespace

std::string HuongDan::dauDong(const KhoiHuongDan& khoi) {
    if (khoi.kieu == KieuKhoi::so) return std::to_string(khoi.so) + ".";
    return khoi.kieu == KieuKhoi::cham ? "•" : "";
}

std::string HuongDan::chuHien(const KhoiHuongDan& khoi) {
    return khoi.kieu == KieuKhoi::muc ? vietHoa(khoi.chu) : khoi.chu;
}

}  // namespace tovira

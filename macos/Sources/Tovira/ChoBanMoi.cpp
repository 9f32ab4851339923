#include "ChoBanMoi.hpp"

#include <utility>

namespace tovira {

ChoBanMoi::ChoBanMoi(VongLap& vongLap, Xong xong)
    : xong_(std::move(xong)),
      henHan_(vongLap.lapLai(han, [this] { traLoi("Bản mới không khởi động xong trong 30 giây."); })) {}

void ChoBanMoi::khiKetThuc(int trangThai) {
    traLoi("Bản mới đã kết thúc ngay với mã " + std::to_string(trangThai) + ".");
}

void ChoBanMoi::traLoi(std::optional<std::string> loi) {
    henHan_.reset();
    if (const auto xong = std::exchange(xong_, nullptr)) xong(std::move(loi));
}

}  // namespace tovira

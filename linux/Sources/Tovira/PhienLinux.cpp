#include "PhienLinux.hpp"

#include <xcb/xtest.h>

#include <cstdlib>
#include <string_view>

#include "XcbLinux.hpp"

namespace tovira {

bool laPhienWayland() {
    const auto bien = [](const char* ten) {
        const char* v = std::getenv(ten);
        return std::string_view(v != nullptr ? v : "");
    };
    return bien("XDG_SESSION_TYPE") == "wayland" || !bien("WAYLAND_DISPLAY").empty();
}

std::string lyDoKhongDieuKhien() {
    if (laPhienWayland())
        return "Phiên làm việc này chạy trên Wayland, nơi Tovira không điều khiển được chuột và bàn phím. "
               "Hãy đăng "
               "xuất rồi chọn phiên X11 (Xorg) ở màn hình đăng nhập.";
    const auto x = moManX();
    if (!x)
        return "Không có màn hình X11 nào để điều khiển (biến DISPLAY trống hoặc không kết nối được). Hãy mở "
               "Tovira trong một phiên X11.";
    if (!coMoRong(x.c(), &xcb_test_id))
        return "Máy chủ X của màn hình này không có phần mở rộng XTEST hoặc không cho Tovira dùng nó. Hãy "
               "bật XTEST "
               "trong cấu hình máy chủ X rồi mở lại Tovira.";
    return {};
}

}  // namespace tovira

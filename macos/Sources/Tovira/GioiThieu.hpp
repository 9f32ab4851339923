#pragma once
// Any thread: constant data. What the About window shows, top to bottom; sizes in points.

#include <array>

namespace tovira {

struct GioiThieu {
    struct The {
        const char* kyHieu;  // system symbol
        const char* chu;
    };
    struct Dong {
        const char* nhan;
        const char* giaTri;
    };

    static constexpr int rong = 400;
    static constexpr int cao = 466;
    static constexpr const char* tieuDeCuaSo = "Giới thiệu Tovira";
    static constexpr int canhBieuTuong = 84;
    static constexpr const char* ten = "Tovira";
    static constexpr const char* phienBan = "Phiên bản 1.0.3 · macOS";
    static constexpr const char* khauHieu = "Điều khiển máy tính từ xa, nối thẳng máy với máy";
    static constexpr int rongKhauHieu = 330;
    static constexpr int leNgang = 26;
    static constexpr int rongChuThe = 92;
    static constexpr std::array<The, 3> cacThe{{
        {"lock.fill", "Mã hoá đầu cuối"},
        {"bolt.fill", "Nối thẳng máy với máy"},
        {"eye.slash.fill", "Máy chủ không đọc được gì"},
    }};
    static constexpr std::array<Dong, 2> cacDong{{
        {"Sản phẩm", "Dự án Tovira"},
        {"Giấy phép", "MIT"},
    }};
    static constexpr const char* nutHuongDan = "Hướng dẫn sử dụng";
};

}  // namespace tovira

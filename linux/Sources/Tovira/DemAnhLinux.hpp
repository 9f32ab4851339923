#pragma once
// Frame queue. Pictures of a part of the root window: 4 bytes a pixel in the order B, G, R, unused. A picture
// is divided into bands of rows so that only what changed needs to be read, scaled or encoded again.

#include <xcb/shm.h>

#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

#include "ManHinh.hpp"
#include "XcbLinux.hpp"

namespace tovira {

// Rows in a band: one row of JPEG blocks at 4:2:0.
inline constexpr int caoBang = 16;

// Number of bands in a picture of `cao` rows; the last one may be lower.
[[nodiscard]] constexpr int soBang(std::int64_t cao) {
    return static_cast<int>((cao + caoBang - 1) / caoBang);
}

// Version of each band: two pictures with the same number for a band show the same rows there.
using PhienBan = std::vector<std::uint64_t>;

// A rectangle of whole pixels.
struct OAnh {
    int x = 0;
    int y = 0;
    int rong = 0;
    int cao = 0;
    friend bool operator==(const OAnh&, const OAnh&) = default;
};

// Some rows of a picture: from `tu`, below `den`.
struct DoanHang {
    int tu = 0;
    int den = 0;
    friend bool operator==(const DoanHang&, const DoanHang&) = default;
};

// The rows of the bands whose versions differ between `cu` and `moi`, as runs from the top; `cao` rows in
// all.
[[nodiscard]] std::vector<DoanHang> doanKhac(const PhienBan& cu, const PhienBan& moi, int cao);

// True when pixels of this screen are 32 bits with red, green and blue where all code here expects them
// (depth 24 or 32 on every usual PC).
[[nodiscard]] bool docDuocDiemAnh(const ManX& x);

// One picture in memory that the X server writes into, or in plain memory when it cannot.
class DemAnh {
  public:
    // `c` must outlive the last call of doc. The server lets go of the memory when the connection closes.
    DemAnh(xcb_connection_t* c, int rong, int cao);
    ~DemAnh();
    DemAnh(const DemAnh&) = delete;
    DemAnh& operator=(const DemAnh&) = delete;

    // Reads these rows of the part of `goc` at (x, y); false when the server refused or is gone.
    bool doc(xcb_window_t goc, int x, int y, const std::vector<DoanHang>& cac);

    [[nodiscard]] std::uint8_t* hang(int y) { return diem_ + static_cast<std::ptrdiff_t>(y) * buoc(); }
    [[nodiscard]] const std::uint8_t* diem() const { return diem_; }
    // Bytes from one row to the next.
    [[nodiscard]] int buoc() const { return rong_ * 4; }
    [[nodiscard]] int rong() const { return rong_; }
    [[nodiscard]] int cao() const { return cao_; }
    [[nodiscard]] bool dungChung() const { return doan_ != XCB_NONE; }

    // What each band shows; 0 = nothing yet.
    PhienBan phienBan;

  private:
    bool chiaSe();
    bool docQuaBoNhoChung(xcb_window_t goc, int x, int y, const std::vector<DoanHang>& cac);
    bool docQuaDay(xcb_window_t goc, int x, int y, const std::vector<DoanHang>& cac);

    xcb_connection_t* c_;
    int rong_;
    int cao_;
    std::size_t co_;
    std::uint8_t* diem_ = nullptr;
    xcb_shm_seg_t doan_ = XCB_NONE;
};

}  // namespace tovira

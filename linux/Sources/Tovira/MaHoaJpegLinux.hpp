#pragma once
// Frame queue. JPEG encoder that remembers: a picture is written as one restart interval for each band of
// rows, so bands that have not changed since they were last encoded are copied instead of encoded again.

#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

#include "DemAnhLinux.hpp"

namespace tovira {

class MaHoaJpeg {
  public:
    // A picture to be encoded: pixels B, G, R, unused.
    struct Anh {
        const std::uint8_t* diem = nullptr;
        int buoc = 0;  // bytes from one row to the next
        int rong = 0;
        int cao = 0;
        const PhienBan* phienBan = nullptr;  // one for each band of caoBang rows
    };

    MaHoaJpeg();
    ~MaHoaJpeg();
    MaHoaJpeg(const MaHoaJpeg&) = delete;
    MaHoaJpeg& operator=(const MaHoaJpeg&) = delete;

    // Appends `anh` as a baseline JPEG (4:2:0) to `ra`; `chatLuong` is 1…100. False when libjpeg refused it;
    // `ra` is then as it was.
    bool maHoa(const Anh& anh, int chatLuong, std::vector<std::byte>& ra);

  private:
    struct BoNen;

    bool maHoaDoan(const Anh& anh, const DoanHang& doan);
    void chiaDoan(const std::uint8_t* dau, std::size_t dai, int bangDau);
    [[nodiscard]] std::size_t tongCo() const;

    std::unique_ptr<BoNen> nen_;
    int rong_ = 0;
    int cao_ = 0;
    int chatLuong_ = 0;
    PhienBan phienBan_;                            // what bang_ holds
    std::vector<std::uint8_t> dau_;                // everything before the first interval
    std::vector<std::vector<std::uint8_t>> bang_;  // each band's entropy-coded bytes
    std::vector<std::uint8_t*> hang_;              // row pointers for libjpeg
};

}  // namespace tovira

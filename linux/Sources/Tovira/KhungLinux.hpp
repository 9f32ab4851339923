#pragma once
// Frame queue. A captured frame, and what is shared by all frames of a stream to encode them.

#include <memory>

#include "DemAnhLinux.hpp"
#include "MaHoaJpegLinux.hpp"
#include "ManHinh.hpp"

namespace tovira {

// Scales a picture where that is asked for and encodes it. Both work areas are kept from frame to frame.
class XuongKhung {
  public:
    // Appends `dem` as a JPEG of the size `co` to `ra`; `chatLuong` is 0…1.
    bool maHoa(const DemAnh& dem, KichThuoc co, double chatLuong, std::vector<std::byte>& ra);

  private:
    bool thuPhong(const DemAnh& dem, int rong, int cao);

    MaHoaJpeg maHoa_;
    std::vector<std::uint8_t> anhThu_;
    PhienBan phienBanThu_;
    int rongThu_ = 0;
};

// Versions of the bands of a picture of `caoMoi` rows scaled from one of `cao` rows: a band is as new as the
// newest row that it is made of.
[[nodiscard]] PhienBan phienBanThuPhong(const PhienBan& goc, int cao, int caoMoi);

class KhungLinux final : public ManHinh::Khung {
  public:
    // `khiTra` runs when the frame is gone and its buffer free again.
    KhungLinux(std::shared_ptr<const DemAnh> dem, std::shared_ptr<XuongKhung> xuong, KichThuoc co,
               std::function<void()> khiTra);
    ~KhungLinux() override;
    KhungLinux(const KhungLinux&) = delete;
    KhungLinux& operator=(const KhungLinux&) = delete;

    [[nodiscard]] TrangThaiKhung trangThai() const override { return TrangThaiKhung::daDu; }
    bool maHoa(double chatLuong, std::vector<std::byte>& ra) override;

  private:
    std::shared_ptr<const DemAnh> dem_;
    std::shared_ptr<XuongKhung> xuong_;
    KichThuoc co_;
    std::function<void()> khiTra_;
};

}  // namespace tovira

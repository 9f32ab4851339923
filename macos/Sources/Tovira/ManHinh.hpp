#pragma once
// Main thread, save where a call names the frame queue "tv-khung". Shares one display: lists the displays,
// captures the chosen one, encodes each complete frame as JPEG and hands it to the share's MjpegServer.

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "Chung.hpp"
#include "HangDoi.hpp"
#include "HinhHoc.hpp"
#include "Loi.hpp"

namespace tovira {

class DieuKhien;
class MjpegServer;

// One entry of the display list that the page sees.
struct MucManHinh {
    std::int64_t chiSo = 0;  // position in the list, what batDau takes
    std::string ten;
    std::int64_t rong = 0;  // as the capture source reports it
    std::int64_t cao = 0;
    bool chinh = false;  // the main display
    friend bool operator==(const MucManHinh&, const MucManHinh&) = default;
};

// What a captured frame is worth. Only daDu frames are encoded.
enum class TrangThaiKhung : std::uint8_t { daDu, nghi, trong, tamDung };

// A size in pixels.
struct KichThuoc {
    std::int64_t rong = 0;
    std::int64_t cao = 0;
    friend bool operator==(const KichThuoc&, const KichThuoc&) = default;
};

class ManHinh : public CoChung<ManHinh> {
  public:
    // A display as the capture source knows it.
    struct Nguon {
        std::uint32_t ma = 0;  // the source's own identifier, stable while the display stays connected
        std::string ten;       // the system's name for it, empty when it has none
        std::int64_t rong = 0;
        std::int64_t cao = 0;
        KichThuoc diemAnh;  // real pixels, what coThuNho fits
        KhungHinh khung;    // place in the global display space
        bool chinh = false;
    };

    // A captured frame: an owned handle, never copied pixels. Used and destroyed on the frame queue.
    struct Khung {
        virtual ~Khung() = default;
        [[nodiscard]] virtual TrangThaiKhung trangThai() const = 0;
        // Appends the frame as JPEG to `ra`; false when it could not be encoded. `chatLuong` is 0…1.
        virtual bool maHoa(double chatLuong, std::vector<std::byte>& ra) = 0;
    };

    // What a stream is asked to deliver.
    struct CauHinh {
        KichThuoc co;  // frame size in pixels
        int khungMoiGiay = 12;
        int doSauHang = 3;
        bool veConTro = true;
        friend bool operator==(const CauHinh&, const CauHinh&) = default;
    };

    // What a stream's Loi says when it ended because its display changed its place or size or went away: the
    // share then looks for the display anew instead of ending. Every other Loi ends the share.
    static constexpr const char* mienNguon = "ManHinh";
    static constexpr int maManHinhDoi = 1;

    // A stream's callbacks.
    struct PhiaNhan {
        std::function<void(std::unique_ptr<Khung>)> khiCoKhung;  // on the frame queue
        std::function<void(Loi)> khiBiDung;                      // any thread; the system ended the stream
    };

    // One running capture; destroying it stops it without a further callback.
    struct Luong {
        virtual ~Luong() = default;
        // Starts; `xong` runs once, on any thread, with nothing or the reason why it failed.
        virtual void batDau(std::function<void(KetQua<void>)> xong) = 0;
        virtual void doiCauHinh(const CauHinh& cauHinh) = 0;
        virtual void dung() = 0;
    };

    // The capture source.
    struct Nen {
        virtual ~Nen() = default;
        // May the screen be captured? Never prompts.
        [[nodiscard]] virtual bool duocGhi() = 0;
        // Asks the system for the permission; true when it was granted just now.
        virtual bool xinGhi() = 0;
        // Shows the user where that permission is granted.
        virtual void moCaiDatGhiManHinh() = 0;
        // Lists the displays; `xong` runs once, on any thread, possibly before the call returns.
        virtual void lietKe(std::function<void(KetQua<std::vector<Nguon>>)> xong) = 0;
        // Makes a stream of one display, not started yet.
        virtual KetQua<std::unique_ptr<Luong>> moLuong(const Nguon& nguon, const CauHinh& cauHinh,
                                                       PhiaNhan phiaNhan) = 0;
        // The serial queue "tv-khung" on which frames arrive and are encoded.
        [[nodiscard]] virtual HangDoi& hangDoiKhung() = 0;
        // Keeps the desktop session from falling asleep while `giu` is true.
        virtual void giuThuc(bool giu) = 0;
    };
};

}  // namespace tovira

#pragma once
// Main thread, save where a call names the frame queue "tv-khung". Shares one display: lists the displays,
// captures the chosen one, encodes each complete frame as JPEG and hands it to the share's MjpegServer.

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "CanhNguoiXem.hpp"
#include "Chung.hpp"
#include "HangDoi.hpp"
#include "HinhHoc.hpp"
#include "Loi.hpp"

namespace tovira {

class DieuKhien;

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

    using KhiCoDanhSach = std::function<void(const std::vector<MucManHinh>&)>;

    // Pixels; the page moves caoToiDa between caoSan and caoTranCung.
    static constexpr std::int64_t caoSan = 480;
    static constexpr std::int64_t caoTranCung = 2880;
    static constexpr int khungMoiGiay = 12;

    // All three must outlive this.
    ManHinh(Nen& nen, VongLap& vongLap, DieuKhien& dieuKhien);
    ~ManHinh();
    ManHinh(const ManHinh&) = delete;
    ManHinh& operator=(const ManHinh&) = delete;

    // Asks for the display list; `xong` runs once, on the main queue or (without the permission) at once.
    // Never prompts; a failure is an empty list.
    void hoiDanhSach(KhiCoDanhSach xong);
    // Starts sharing the display at list position `chiSo`, the nearest one when it is out of range. A running
    // share goes on until the new one takes its place. The outcome arrives through khiDoi.
    void batDau(std::int64_t chiSo);
    // Sets the greatest capture height in pixels, clamped; changes below 16 % are ignored.
    void datCanh(std::int64_t cao);
    // Stops sharing, and whatever was about to be shared.
    void dung();
    void moCaiDatGhiManHinh();

    // True while a capture is running and its server has started.
    [[nodiscard]] bool dangPhat() const { return dangPhat_; }
    // The most recent list that hoiDanhSach built.
    [[nodiscard]] const std::vector<MucManHinh>& danhSach() const { return danhSach_; }
    [[nodiscard]] std::int64_t caoToiDa() const { return caoToiDa_; }

    // On the main queue: (url, "") started, ("", reason) failed, ("", "") stopped.
    std::function<void(const std::string& url, const std::string& loi)> khiDoi;
    // Sharing has stopped by itself for lack of viewers.
    std::function<void()> khiTuDung;

    // Pure rules.
    // The system's name of a display, else "Màn hình " and its place in the list counted from one.
    [[nodiscard]] static std::string tenManHinh(const Nguon& nguon, std::size_t viTri);
    // The size at which a display of `co` pixels is captured: no higher than `caoToiDa`.
    [[nodiscard]] static KichThuoc coThuNho(KichThuoc co, std::int64_t caoToiDa);
    // What asking for `cao` makes of `caoToiDa`; nothing when the change is too small to matter.
    [[nodiscard]] static std::optional<std::int64_t> canhMoi(std::int64_t cao, std::int64_t caoToiDa);

  private:
    struct MayChuAnh;
    using DanhSachNguon = KetQua<std::vector<Nguon>>;

    template <class F>
    [[nodiscard]] auto veChinh(F viec);

    void xinQuyen(std::uint64_t luot);
    void moManHinh(const Nguon& nguon);
    void moLuong(const Nguon& nguon);
    [[nodiscard]] CauHinh dungCauHinh(const Nguon& nguon) const;
    [[nodiscard]] PhiaNhan taoPhiaNhan(std::uint64_t luot);
    void khiBatDauXong(std::uint64_t luot, const KetQua<void>& ketQua);
    void khiBiDung(std::uint64_t luot, const Loi& loi);
    void theoDoiManHinhDoi();
    void timLaiManHinh(std::uint64_t luot);
    void theoDoiNguoiXem();
    void nhipNguoiXem();
    void datDangPhat(bool dangPhat);
    void boLuong();
    void donDep();
    void ngung();
    void ketThucVi(const std::string& loi);
    void bao(const std::string& url, const std::string& loi);
    void baoLoi(const std::string& loi) { bao("", loi); }

    Nen& nen_;
    VongLap& vongLap_;
    DieuKhien& dieuKhien_;
    std::vector<MucManHinh> danhSach_;
    std::optional<Nguon> manDangChia_;
    std::int64_t caoToiDa_ = 2160;
    bool dangPhat_ = false;
    std::uint64_t luotXin_ = 0;    // the request to share that counts; a stop or a newer one outdates it
    std::uint64_t luotLuong_ = 0;  // the stream that counts; 0 before the first
    CanhNguoiXem canh_;
    std::optional<double> lucTimLai_;                      // when the shared display was last looked for anew
    std::shared_ptr<int> song_ = std::make_shared<int>();  // gone with this: late answers see it
    std::unique_ptr<MayChuAnh> mayChuAnh_;
    std::unique_ptr<Luong> luong_;  // ends before the server that its frames go to
    std::unique_ptr<HenGio> dongHoNguoiXem_;
};

}  // namespace tovira

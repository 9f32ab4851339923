#pragma once
// Main thread (kichBan, nhayJS and KichBanTrang: any thread, pure). The bridge: the script that trusted pages
// are given, and the messages that they post back.

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>

namespace tovira {

class CuaSo;
class DoiTuongJson;

// Who posted a message, as the engine tells it, never the page.
enum class LoaiKhung : std::uint8_t { chinh, con };  // main frame / any other frame

struct NguoiGui {
    LoaiKhung khung = LoaiKhung::con;
    // Origin of the document committed in that frame: scheme, "://", host and any port that is not the
    // scheme's own, as location.origin spells it.
    std::string goc;
};

class Cau {
  public:
    // The message channel's name, and the script that a page uses to reach it.
    static constexpr const char* tenKenh = "tv";

    // Receiving files for the page. Replies come once, on the main thread, possibly before the call returns.
    struct NhanTep {
        struct TraLoi {
            std::string goc;
            std::uint16_t cong = 0;
            std::string biMat;
            std::string loi;  // empty on success
        };
        virtual ~NhanTep() = default;
        // Lets the user choose a folder and serves it.
        virtual void chonThuMuc(std::function<void(TraLoi)> xong) = 0;
        // Lets the user choose a folder, serving nothing: the path, empty when cancelled, and an error text.
        virtual void chiChonThuMuc(std::function<void(std::string duong, std::string loi)> xong) = 0;
        // Serves a folder that was chosen earlier.
        virtual void moTaiDuong(const std::string& duong, std::function<void(TraLoi)> xong) = 0;
        virtual void dongThuMuc() = 0;
        // Reveals `ten` in the folder `duong`, or the folder itself.
        virtual void hienTrongFinder(const std::string& duong, const std::string& ten) = 0;
    };

    // Asking the system for accessibility trust.
    struct Nen {
        virtual ~Nen() = default;
        // With the system's own prompt where it has one; true when the process is trusted now.
        virtual bool xinTroNang() = 0;
    };

    Cau(CuaSo& cuaSo, NhanTep& nhanTep, Nen& nen);

    // One posted value as JSON text. A number that JSON cannot say (NaN, an infinity) is written 1e300.
    // Dropped without a trace unless `nguoiGui` is the main frame of a page that is trusted at this moment. A
    // "cao" that is not finite or beyond 64 bits ends the process, after held input has been released.
    void nhan(std::string_view json, const NguoiGui& nguoiGui);

    // The bridge script. `gocMayChu`: the server's origin. `gocKem`: the packaged interface's loopback origin
    // while it is in use, else empty.
    [[nodiscard]] static std::string kichBan(std::string_view gocMayChu, std::string_view gocKem);

    // UTF-8 text as a JavaScript string literal, quotes included; "\"\"" when it is not UTF-8.
    [[nodiscard]] static std::string nhayJS(std::string_view chu);

  private:
    // What each kind of message does.
    void napXong(const DoiTuongJson& than);
    void manHinhBat(const DoiTuongJson& than);
    void caoManHinh(const DoiTuongJson& than);
    void manHinhTat(const DoiTuongJson& than);
    void dat(const DoiTuongJson& than);
    void ngonNgu(const DoiTuongJson& than);
    void lenh(const DoiTuongJson& than);
    void ipc(const DoiTuongJson& than);
    void moThuMucNhan(const DoiTuongJson& than);
    void dongThuMucNhan(const DoiTuongJson& than);
    void chonThuMucLuu(const DoiTuongJson& than);
    void moThuMucTai(const DoiTuongJson& than);
    void hienTrongFinder(const DoiTuongJson& than);
    void moTroNang(const DoiTuongJson& than);
    // Hands a folder's answer to the page, if there still is one.
    [[nodiscard]] std::function<void(NhanTep::TraLoi)> traLoiNhan();

    CuaSo& cuaSo_;
    NhanTep& nhanTep_;
    Nen& nen_;
};

}  // namespace tovira

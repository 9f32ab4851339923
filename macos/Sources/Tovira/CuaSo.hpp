#pragma once
// Main thread. The one main window and the web view in it: decides what is shown, keeps the bridge script in
// step, polices navigation, keeps the page rendering while the screen is shared and pushes host state into
// the page.

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "Cau.hpp"
#include "ChinhSachDieuHuong.hpp"
#include "CuaSoTach.hpp"
#include "DieuKhien.hpp"
#include "DoCuaSo.hpp"
#include "HangDoi.hpp"
#include "HinhHoc.hpp"
#include "NenChung.hpp"
#include "QuyTacSap.hpp"
#include "TaiXuong.hpp"
#include "TheoDoiMayChu.hpp"
#include "TuKhoiDong.hpp"

namespace tovira {

class DoMayChu;
class GiaoDienKem;
struct ThamSo;

// Why a load of the main web view ended without a page.
enum class LyDoHong : std::uint8_t {
    daHuy,   // cancelled: overtaken by another load, or stopped
    biChan,  // ended by this program's own answer to khiDieuHuong or khiPhanHoi (a download, say)
    khac,    // everything else
};

enum class TraLoiDieuHuong : std::uint8_t { choPhep, huy, taiXuong };
enum class HienDuoc : std::uint8_t { khong, co };    // can the web view show this MIME type?
enum class ChonNhieu : std::uint8_t { khong, co };   // does the file input take several files?
enum class ChonThuMuc : std::uint8_t { khong, co };  // does the file input take folders?

// How the panel of a file input is to look. Creating folders is off.
struct HopChonTep {
    ChonNhieu nhieu = ChonNhieu::khong;
    ChonThuMuc thuMuc = ChonThuMuc::khong;  // folders only, or files only
    std::string nhan;                       // the label of its confirming button
    friend bool operator==(const HopChonTep&, const HopChonTep&) = default;
};

class CuaSo {
  public:
    static constexpr const char* tieuDe = "Tovira";
    static constexpr const char* tenLuuKhung = "cua-so-chinh";
    static constexpr double rongDau = 1180, caoDau = 780, rongNhoNhat = 900, caoNhoNhat = 600;

    // The window's ground is DoCuaSo::NenCua, without which nothing can be parked.
    using NenCua = DoCuaSo::NenCua;
    using NenTach = CuaSoTach::Nen;

    // The web view. Its events come up as the khi… calls of the CuaSo that dung() was given.
    struct NenTrang {
        virtual ~NenTrang() = default;
        // Builds the view at its first size: persistent data store, channel Cau::tenKenh, no swipe
        // navigation, no script yet. Called once, before NenCua::dung.
        virtual void dung(CuaSo& chu) = 0;
        // Removes every user script and installs this one: at document start, main frame only. `gocTin` are
        // the origins that it trusts, for an engine whose channel needs a gate of its own.
        virtual void datKichBan(const std::string& kichBan, const std::vector<std::string>& gocTin) = 0;
        // Loads an address, default cache policy; `cho` is the request's time-out in seconds.
        virtual void tai(const std::string& diaChi, double cho) = 0;
        // Shows an HTML text that has no base address (its origin is opaque).
        virtual void taiHtml(const std::string& html) = 0;
        // Runs a script in the main frame's page world; result and errors are ignored.
        virtual void chay(const std::string& js) = 0;
    };

    // Everything that it stands on. All of it outlives the CuaSo.
    struct ChoDua {
        VongLap& vongLap;
        const ThamSo& thamSo;
        NenCua& cua;
        NenTrang& trang;
        NenTach& tach;
        DieuKhien::Nen& quyenNhap;  // duocPhep: is input injection allowed?
        Cau::Nen& xinQuyen;
        Cau::NhanTep& nhanTep;
        HopBao& hopBao;
        MoDiaChi& moDiaChi;
        CaiDat& caiDat;
        TepNguoiDung& tep;
        TuKhoiDong& tuKhoiDong;
        DoMayChu& doMayChu;
        GiaoDienKem& giaoDienKem;
    };

    explicit CuaSo(const ChoDua& choDua);
    ~CuaSo();
    CuaSo(const CuaSo&) = delete;
    CuaSo& operator=(const CuaSo&) = delete;

    // Builds window and web view and starts everything. Once. The window is not shown.
    void dung();
    // Brings the window back from where it is parked, to the front, and activates the program.
    void hien();
    // Shows the window minimised; for a start that nobody is to notice, when nothing else is left to reach.
    void hienThuNho();
    // While sharing: sees to it that the page keeps rendering though the window is hidden or minimised.
    void damBaoDangVe();
    // The end of a share: a parked window goes back to its place and is hidden. Nothing when it is not
    // parked.
    void boDo();
    // Is it parked, out of everyone's sight?
    [[nodiscard]] bool dangDo() const { return do_.choCu().has_value(); }
    // The window can be minimised (again).
    void choThuNho();

    // What the web view shows.
    void veMayChuThat();
    void hienGiaoDienKem();
    void hienTrangKhongKetNoi();

    // Runs a script in the main web view: always later, on the main queue; result and errors are ignored.
    void chay(std::string js);
    // The same, but only if the document that it meets is trusted at that moment: for scripts with a secret
    // in them.
    void chayNoiTin(std::string js);
    // A modal warning, always later, on the main queue.
    void baoLoi(std::string tieuDe, std::string chiTiet);

    // Called each time a page has reported itself loaded, after the pushes.
    std::function<void()> khiTrangNap;

    // Pushes of host state into the page.
    void trangDaNap();
    void dayTrangThai();
    enum class BatBuoc : std::uint8_t { khong, co };
    void dayTroNang(BatBuoc batBuoc);
    void dayManHinh(const std::string& duongDan, const std::string& loi);
    void dayThuMucLuu(const std::string& duong, const std::string& loi);
    void hoiDanhSachManHinh();
    // The page's setting `ten`; the true state is pushed back whatever comes of it.
    void datTuyChon(std::string_view ten, bool bat);
    void luuNgonNgu(const std::string& ma);

    // Is a page of this origin trusted with the bridge at this moment?
    [[nodiscard]] bool gocCauDuoc(std::string_view goc) const;
    [[nodiscard]] Cau& cau() { return cau_; }
    // For work that is called back later; to be locked on the main thread only.
    [[nodiscard]] std::weak_ptr<CuaSo> yeu() const { return conSong_; }
    [[nodiscard]] const TheoDoiMayChu& theoDoi() const { return theoDoi_; }

    // Events of the window.
    void khiXinDong();  // the user asks to close it; the platform never closes it by itself
    void khiThuNho();   // it has just been minimised
    void khiChe();      // it is no longer visible at all (covered, or on another space)

    // Events of the main web view.
    [[nodiscard]] TraLoiDieuHuong khiDieuHuong(const ThaoTacDieuHuong& thaoTac);
    [[nodiscard]] TraLoiDieuHuong khiPhanHoi(HienDuoc hienDuoc) const;
    void neuHongThiBao(LyDoHong lyDo);                          // a navigation, provisional or not, failed
    void khiTrangChet();                                        // the engine's process for this view is gone
    [[nodiscard]] bool gocTinDuoc(std::string_view may) const;  // may this host use camera and microphone?
    void khiThongBao(const std::string& noiDung);               // alert(); returns when dismissed
    [[nodiscard]] HopChonTep khiXinTep(ChonNhieu nhieu, ChonThuMuc thuMuc) const;

    // Downloads, from the main web view and its pop-ups. Where to save it: an absolute path.
    [[nodiscard]] std::string khiChonNoiLuu(MaTai ma, std::string_view tenGoiY);
    void khiTaiXong(MaTai ma);
    void khiTaiHong(MaTai ma, const std::string& moTa);

    // Pop-ups. `diaChi` is the requested address, empty when there is none; sizes as the page gave them.
    // Absent: no pop-up is to be opened.
    [[nodiscard]] std::optional<MoTach> khiXinTach(const std::string& diaChi, std::optional<double> rong,
                                                   std::optional<double> cao);
    void khiTachSapDong(MaTach ma);  // the user closes its window, which is still there
    void khiTachTuDong(MaTach ma);   // its page closed itself

  private:
    // Probes the server and lets the answer decide what to load, unless something newer has decided by then.
    void nap();
    void nhip();
    void traLoiNhip(bool song);
    // Loads what is shown, anew.
    void taiLai();
    void dungChiaSe();
    // The packaged interface's origin while it is in use, else empty.
    [[nodiscard]] std::string gocKem() const;
    // The origins that are trusted with the bridge at this moment.
    [[nodiscard]] std::vector<std::string> gocTin() const;
    void datKichBan();
    void theoDoiQuyen();
    void theoDoiMayChu();

    ChoDua d_;
    DoCuaSo do_;
    TheoDoiMayChu theoDoi_;
    Cau cau_;
    TaiXuong taiXuong_;
    CuaSoTach tach_;
    QuyTacSap sap_;
    std::optional<bool> troNangTruoc_;
    std::uint64_t soQuyetDinh_ = 0;  // how often it has been decided what to load
    std::unique_ptr<HenGio> dongHoQuyen_;
    std::unique_ptr<HenGio> dongHoMayChu_;
    std::shared_ptr<CuaSo> conSong_;  // owns nothing: what deferred work holds weakly
};

}  // namespace tovira

#pragma once
// Main thread. The application delegate: starts everything, wires it together, watches whether the screen is
// shared, and ends or relaunches the program so that nothing stays pressed and no capture outlives it.

#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "HangDoi.hpp"

namespace tovira {

class ChiBao;
class CuaSo;
class DieuKhien;
class Khay;
class ManHinh;
struct HopBao;

class UngDung {
  public:
    // How the program shows itself in the desktop's list of running applications.
    enum class Kieu { thuong, phu };  // regular / accessory: no Dock icon

    struct Nen {
        virtual ~Nen() = default;
        // Shows the program's own icon, drawn at run time.
        virtual void datBieuTuong() = 0;
        virtual void datKieu(Kieu kieu) = 0;
        // Opens a new instance of this program beside the running one; `xong` runs once, on any thread, when
        // it runs or with the reason as the user sees it where that failed. Nothing while an earlier one is
        // on its way.
        virtual void moBanMoi(std::function<void(std::optional<std::string> loi)> xong) = 0;
        // Ends the event loop; khiSapKetThuc arrives before it ends.
        virtual void ketThuc() = 0;
        virtual void moGioiThieu() = 0;
        virtual void moHuongDan() = 0;
    };

    // All of it outlives the UngDung.
    struct ChoDua {
        Nen& nen;
        VongLap& vongLap;
        HopBao& hopBao;
        CuaSo& cuaSo;
        Khay& khay;
        ChiBao& chiBao;
        ManHinh& manHinh;
        DieuKhien& dieuKhien;
    };

    // Whether the window is shown at launch ("--ngam" asks for quiet).
    enum class KhoiDong { hienCuaSo, ngam };
    enum class CoCuaSoHien { khong, co };

    explicit UngDung(const ChoDua& choDua);
    ~UngDung();
    UngDung(const UngDung&) = delete;
    UngDung& operator=(const UngDung&) = delete;

    // Events of the platform's application object.
    void khiKhoiDongXong(KhoiDong cach);
    void khiMoLaiUngDung(CoCuaSoHien coCuaSoHien);  // the user opened the program again
    void khiSapKetThuc();

    // Actions of the main menu.
    void moGioiThieu() { d_.nen.moGioiThieu(); }
    void moHuongDan() { d_.nen.moHuongDan(); }

    // Ends the share by the page's own rules, then for certain.
    void dungChiaSe();
    // Opens a new instance; when it runs, this one ends.
    void moLai();
    void thoat();

  private:
    void noiDay();
    void theoDoiChiaSe();
    void nhipTheoDoi();
    void ngungHet();  // releases held input, then stops the capture

    ChoDua d_;
    std::unique_ptr<HenGio> dongHo_;
    bool phatTruoc_ = false;
    std::shared_ptr<UngDung*> conSong_;  // what callbacks hold weakly
};

}  // namespace tovira

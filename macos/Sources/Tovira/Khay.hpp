#pragma once
// Main thread. The status item in the menu bar: shows whether this machine is being controlled, and its menu
// is the host's control panel while the main window is closed.

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

namespace tovira {

class KiemQuyen;
struct ThamSo;
struct HopBao;
struct TuKhoiDong;

// What a click on an item of the status menu means.
enum class LenhKhay : std::uint8_t {
    khongCo,
    bamDungChiaSe,
    bamMo,
    bamGhiManHinh,
    bamTroNang,
    bamMoLai,
    bamTuKhoiDong,
    bamHuongDan,
    bamGioiThieu,
    bamThoat,
};

struct MucKhay {
    LenhKhay lenh = LenhKhay::khongCo;
    std::string ten = {};  // empty: a separator
    std::string meo = {};  // tooltip, empty for none
    bool batDuoc = true;
    bool danhDau = false;  // checked
    char phim = 0;         // key equivalent, 0 for none

    [[nodiscard]] bool laNgan() const { return ten.empty(); }
    friend bool operator==(const MucKhay&, const MucKhay&) = default;
};

// How the item itself looks.
struct VeKhay {
    const char* kyHieu;  // name of the system symbol
    bool khuonMau;       // a template image, tinted by the system
    bool toDo;           // tinted system red
    const char* meo;     // tooltip
};

class Khay {
  public:
    struct Nen {
        virtual ~Nen() = default;
        // Puts the item into the status area with this look and this accessibility description. Its events
        // come up as lapMenu() just before the menu opens, and bam() when an item is chosen.
        virtual void dungMuc(Khay& chu, const VeKhay& ve, const char* moTa) = 0;
        virtual void doiVe(const VeKhay& ve) = 0;
        // Does the desktop have a status area to put it into?
        [[nodiscard]] virtual bool coChoDat() = 0;
        virtual void moHuongDan() = 0;
        virtual void moGioiThieu() = 0;
    };

    // All of it outlives the Khay.
    struct ChoDua {
        Nen& nen;
        KiemQuyen& kiemQuyen;
        std::function<bool()> dangPhat;  // is the screen being shared right now?
        TuKhoiDong& tuKhoiDong;
        HopBao& hopBao;
        const ThamSo& thamSo;
    };

    // What the menu is made from.
    struct TrangThai {
        bool dangPhat = false;
        bool ghiManHinh = false;
        bool troNang = false;
        bool tuKhoiDong = false;
        std::string mayChu;
    };

    explicit Khay(const ChoDua& choDua) : d_(choDua) {}

    void dung();
    void capNhatBieuTuong(bool dangPhat);
    [[nodiscard]] bool coChoDat() const { return d_.nen.coChoDat(); }

    // The menu, rebuilt from live state at each call.
    [[nodiscard]] std::vector<MucKhay> lapMenu() const;
    // Carries out what an item means.
    void bam(LenhKhay lenh);

    // The menu for one state, item for item. Pure.
    [[nodiscard]] static std::vector<MucKhay> lapMenu(const TrangThai& trangThai);
    [[nodiscard]] static VeKhay ve(bool dangPhat);

    std::function<void()> khiMo;
    std::function<void()> khiDungChiaSe;
    std::function<void()> khiMoLai;
    std::function<void()> khiThoat;

  private:
    void bamTuKhoiDong();

    ChoDua d_;
};

}  // namespace tovira

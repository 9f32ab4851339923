#pragma once
// Main thread (hopLe: any thread). Carries out the remote side's input commands and remembers what it holds
// down, so that everything can be let go when control ends.

#include <cstdint>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <variant>

#include "Chung.hpp"
#include "HangDoi.hpp"
#include "HinhHoc.hpp"

namespace tovira {

class DoiTuongJson;

// Mouse buttons; the numbers are CGMouseButton's.
enum class NutChuot : std::uint8_t { trai = 0, phai = 1, giua = 2 };

enum class LoaiChuot : std::uint8_t { diChuyen, keo, xuong, len };

// A pointer event at `viTri`. For diChuyen `nut` is trai and means nothing.
struct SuKienChuot {
    LoaiChuot loai = LoaiChuot::diChuyen;
    NutChuot nut = NutChuot::trai;
    Diem viTri;
    // The click count 1…3 of a press or release; absent where none is to be set.
    std::optional<std::int64_t> soLanBam;
    friend bool operator==(const SuKienChuot&, const SuKienChuot&) = default;
};

// A wheel event in pixels: positive scrolls up and left.
struct SuKienCuon {
    std::int32_t doc = 0;
    std::int32_t ngang = 0;
    friend bool operator==(const SuKienCuon&, const SuKienCuon&) = default;
};

enum class LoaiPhim : std::uint8_t { phim, doiCo };  // an ordinary key event / a flags-changed event

// A key event. `phim` is a macOS virtual key code (PhimMac). `co` are CGEventFlags bits and replace the flags
// of the source; absent leaves the source's own.
struct SuKienPhim {
    std::uint16_t phim = 0;
    bool xuong = false;
    LoaiPhim loai = LoaiPhim::phim;
    std::optional<std::uint64_t> co;
    friend bool operator==(const SuKienPhim&, const SuKienPhim&) = default;
};

// Half of a typed character: one extended grapheme cluster as UTF-16 code units, pressed or released.
struct SuKienChu {
    std::u16string donVi;
    bool xuong = false;
    friend bool operator==(const SuKienChu&, const SuKienChu&) = default;
};

using SuKien = std::variant<SuKienChuot, SuKienCuon, SuKienPhim, SuKienChu>;

class DieuKhien : public CoChung<DieuKhien> {
  public:
    // The system's event stream.
    struct Nen {
        virtual ~Nen() = default;
        // May input be injected? (macOS: AXIsProcessTrusted. X11: the server has XTEST and lets us.) Never
        // prompts.
        [[nodiscard]] virtual bool duocPhep() = 0;
        // Bounds of the main display.
        [[nodiscard]] virtual KhungHinh khungManHinhChinh() = 0;
        // The user's double-click interval in seconds.
        [[nodiscard]] virtual double khoangBamDup() = 0;
        // Posts one event, in order. False when the event could not be made; nothing was posted then.
        virtual bool dang(const SuKien& suKien) = 0;
        // Bracket one text command's SuKienChu events, so that a system whose keyboard state colours typed
        // text can set it aside and put it back.
        virtual void batDauChu() = 0;
        virtual void ketThucChu() = 0;
        // Control ends: a ground that types long text piece by piece drops what it has not typed yet and
        // posts whatever waited behind it. From here on it posts at once.
        virtual void boChuDangCho() {}
        // Shows the user where the permission of duocPhep is granted.
        virtual void moCaiDatTroNang() = 0;
    };

    DieuKhien(Nen& nen, const VongLap& vongLap);

    // Is the command text acceptable? UTF-8 bytes of one JSON object. Pure.
    [[nodiscard]] static bool hopLe(std::string_view json);

    // Carries out one command; true when an event was posted. Invalid commands vanish without a trace, and so
    // does every command while input is not permitted. A wheel amount of 2^63 or more ends the process, after
    // everything held has been released.
    bool lam(std::string_view json);

    // Releases every held button and key; clicks count from one again.
    void nhaHet();

    void moCaiDatTroNang();

    // Frame of the shared display, onto which fractions are mapped. Stays when sharing stops.
    void datKhungManHinh(const KhungHinh& khung);
    [[nodiscard]] const KhungHinh& khungManHinh() const { return khungManHinh_; }

    // How many keys and buttons are held down through this object.
    [[nodiscard]] std::size_t dangGiu() const { return nutDangGiu_.size() + phimDangGiu_.size(); }

  private:
    enum class Huong : std::uint8_t { xuong, len };

    // A press, as the next one is counted against it.
    struct LanBam {
        NutChuot nut;
        double luc;  // seconds since 1970
        Diem cho;
        std::int64_t dem;  // 1…3
    };

    [[nodiscard]] std::optional<Diem> diem(const DoiTuongJson& lenh) const;
    bool diChuot(const Diem& diem);
    bool bamChuot(NutChuot nut, Huong huong, const Diem& diem);
    [[nodiscard]] LanBam soLanBam(NutChuot nut, const Diem& diem) const;
    bool cuon(const Diem& diem, double dx, double dy);
    [[nodiscard]] std::int32_t soCuon(double v);
    bool goPhim(const DoiTuongJson& lenh, Huong huong);
    bool goChu(std::string_view chu);
    bool goKyTu(std::string_view kyTu);

    Nen& nen_;
    const VongLap& vongLap_;
    KhungHinh khungManHinh_;
    std::set<NutChuot> nutDangGiu_;
    std::set<std::uint16_t> phimDangGiu_;
    Diem viTri_;
    std::optional<LanBam> lanBamTruoc_;
};

}  // namespace tovira

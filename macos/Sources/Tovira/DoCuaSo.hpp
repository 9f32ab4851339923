#pragma once
// Main thread. Parking: while the screen is shared the page carries the session and must keep rendering, so
// the window is never really hidden but put out of sight instead, and brought back afterwards.

#include <cstdint>
#include <optional>

#include "HinhHoc.hpp"

namespace tovira {

class CuaSo;

class DoCuaSo {
  public:
    // The window as it stands. `khung` is in the platform's own window coordinates and means nothing here.
    struct TrangThai {
        KhungHinh khung;
        bool hienRa = false;  // on the screen list: ordered in, parked or not
        bool thuNho = false;  // minimised
    };

    enum class CachHien : std::uint8_t { truoc, thuNho };

    // The main window. Its events come up as the khi… calls of the CuaSo that dung() was given.
    struct NenCua {
        virtual ~NenCua() = default;
        // Builds it around the web view, hidden: titled CuaSo::tieuDe, closable, miniaturizable, resizable,
        // content of the first size, centred, then at its saved frame if any; its frame is saved from now on
        // (the place it is parked at is not).
        virtual void dung(CuaSo& chu) = 0;
        [[nodiscard]] virtual TrangThai trangThai() const = 0;
        // truoc: front, key, and the program activated. thuNho: minimised, where it can be fetched from.
        virtual void hien(CachHien cach) = 0;
        // Ordered out.
        virtual void an() = 0;
        // Out of everyone's sight and out of captured pictures, while its page keeps rendering; never takes
        // the focus. Where windows may be anywhere: its origin to (-32000, -32000).
        virtual void doXa() = 0;
        // Back to `goc`, the origin of a frame that trangThai reported. `hien` or `an` follows in the same
        // turn.
        virtual void veCho(Diem goc) = 0;
        // On the screen list without becoming key; undoes minimising.
        virtual void raTruoc() = 0;
        // Can be minimised (again).
        virtual void choThuNho() = 0;
    };

    static constexpr Diem gocXa{-32000, -32000};

    explicit DoCuaSo(NenCua& cua) : cua_(cua) {}

    void hien();
    void hienThuNho() { cua_.hien(CachHien::thuNho); }
    void boDo();
    // Each takes whether the screen is being shared right now.
    void damBaoDangVe(bool dangPhat);
    void khiXinDong(bool dangPhat);
    void khiThuNho(bool dangPhat);
    void khiChe(bool dangPhat);

    // The frame before it was parked; absent while it is not.
    [[nodiscard]] const std::optional<KhungHinh>& choCu() const { return choCu_; }

  private:
    void doLai();

    NenCua& cua_;
    std::optional<KhungHinh> choCu_;
};

}  // namespace tovira

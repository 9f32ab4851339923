#pragma once
// Main thread. A display that takes our input. Events go through one line: text that needs more symbols than
// the keyboard can lend at once stops it until its reader has caught up, and whatever comes later keeps its
// place behind.

#include <deque>
#include <string>
#include <variant>

#include "ChuotLinux.hpp"
#include "GoChuLinux.hpp"
#include "HoiDocLinux.hpp"
#include "TatLapLinux.hpp"

namespace tovira {

class TayXLinux {
  public:
    // A display whose server has XTEST and the XKB extension set up. `vongLap` outlives this.
    TayXLinux(ManX x, VongLap& vongLap);
    // Puts back all that was changed on the server; waits at most OTrongLinux::hanKhongHoi for a reader of
    // the last text.
    ~TayXLinux();
    TayXLinux(const TayXLinux&) = delete;
    TayXLinux& operator=(const TayXLinux&) = delete;

    [[nodiscard]] const ManX& x() const { return x_; }
    // Takes in what the server has said; false from the moment it is gone.
    bool song();
    // An event or a whole text. False when it is an event that could not be made; true too while it waits.
    bool them(std::variant<SuKien, std::u32string> viec);
    // Forgets text that waits and does what waited behind it.
    void boChuDangCho();

  private:
    using Viec = std::variant<SuKien, std::u32string>;

    bool chayTiep();
    bool goTiep();
    void doiNguoiDoc();
    void xemNguoiDoc();
    void choDocLanCuoi();
    void nghiSau();
    void nghi();
    void chonSuKien();
    void nhanXkb(const xcb_generic_event_t& e);
    void docBan();
    bool lam(const SuKien& e);
    bool lamPhim(const SuKienPhim& e);

    ManX x_;
    VongLap& vongLap_;
    std::optional<ThietBiPhim> thietBi_;
    std::optional<TatLapLinux> tatLap_;
    BanPhimLinux ban_;
    bool banCu_ = true;  // the map was changed since it was read
    BamPhimLinux bam_;
    OTrongLinux oTrong_;
    GoChuLinux goChu_;
    HoiDocLinux hoiDoc_;
    ChuotLinux chuot_;
    std::deque<Viec> hang_;
    std::size_t daGo_ = 0;             // code points typed of the text at the head of hang_
    std::unique_ptr<HenGio> henDoi_;   // runs while text waits
    std::unique_ptr<HenGio> henNghi_;  // runs until all has gone back
    std::optional<double> lucPhim_;    // of our last key, until it was long ago
};

}  // namespace tovira

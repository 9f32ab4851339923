#pragma once
// Main thread. The red bar that floats above everything while this machine is being controlled.

#include <functional>
#include <optional>

#include "HinhHoc.hpp"

namespace tovira {

class ChiBao {
  public:
    // The main screen: its whole frame and the part that menu bars and panels leave free.
    struct ManChinh {
        KhungHinh khung;
        KhungHinh khungThay;
    };

    struct Nen {
        virtual ~Nen() = default;
        // Absent when there is no screen.
        [[nodiscard]] virtual std::optional<ManChinh> manChinh() = 0;
        // Puts the bar up at `khung`: above everything, on every desktop, never focused, never captured.
        // A press on its button calls `khiBam` on the main thread.
        virtual void dungThanh(const KhungHinh& khung, std::function<void()> khiBam) = 0;
        virtual void goThanh() = 0;
    };

    // What stands on the bar; places are points from its top-left corner.
    struct Chu {
        const char* chu;
        KhungHinh cho;
        double co;  // font size
        bool dam;
    };
    static constexpr double rong = 380;
    static constexpr double cao = 40;
    static constexpr double cachTren = 8;
    static constexpr double boGoc = 10;
    static constexpr double doDac = 0.92;  // opacity of the red
    static constexpr Chu cham{"●", {14, 13, 14, 14}, 11, false};
    static constexpr Chu loi{"Máy này đang bị điều khiển", {30, 11, 220, 18}, 13, true};
    static constexpr Chu nut{"DỪNG NGAY", {274, 9, 94, 22}, 11, true};

    explicit ChiBao(Nen& nen) : nen_(nen) {}
    ~ChiBao() { an(); }
    ChiBao(const ChiBao&) = delete;
    ChiBao& operator=(const ChiBao&) = delete;

    // Shows the bar; nothing when it is shown already or there is no screen.
    void hien();
    // Takes it away; the next hien() builds a fresh one.
    void an();
    // The button.
    void bamDung();

    [[nodiscard]] bool dangHien() const { return dangHien_; }

    // Where the bar stands on a screen.
    [[nodiscard]] static KhungHinh datCho(const ManChinh& man);

    std::function<void()> khiDung;

  private:
    Nen& nen_;
    bool dangHien_ = false;
};

}  // namespace tovira

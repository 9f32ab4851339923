#pragma once
// Main thread. The control bar on X11: a window that no window manager manages, so that it stands on every
// desktop and takes no focus, that comes back up whenever another window goes above it, full-screen programs
// included, and that captures leave out.

#include <QElapsedTimer>
#include <QSocketNotifier>
#include <QTimer>
#include <QWidget>
#include <memory>

#include "ChiBao.hpp"
#include "CuaSoAnLinux.hpp"
#include "XcbLinux.hpp"

namespace tovira {

class ChiBaoLinux final : public ChiBao::Nen {
  public:
    ChiBaoLinux();
    ~ChiBaoLinux() override { goThanh(); }

    [[nodiscard]] std::optional<ChiBao::ManChinh> manChinh() override;
    void dungThanh(const KhungHinh& khung, std::function<void()> khiBam) override;
    void goThanh() override;

  private:
    void ngheCuaSoKhac();
    void xemCuaSoKhac();
    void nang();

    std::unique_ptr<CuaSoAnLinux> an_;  // outlives the bar until the screen is certain to be without it
    std::unique_ptr<QWidget> thanh_;
    xcb_window_t cua_ = XCB_NONE;
    ManX x_;  // hears of every window of the desktop, while the bar stands
    std::unique_ptr<QSocketNotifier> nghe_;
    QElapsedTimer lanNangTruoc_;
    QTimer henNang_;
    QTimer henBoAn_;
};

}  // namespace tovira

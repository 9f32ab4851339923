#pragma once
// Main thread. The control bar on X11: a window that no window manager manages, so that it stands on every
// desktop and takes no focus, and that comes back up whenever something covers it, full-screen programs
// included.

#include <QAbstractNativeEventFilter>
#include <QElapsedTimer>
#include <QWidget>
#include <memory>

#include "ChiBao.hpp"

namespace tovira {

class ChiBaoLinux final : public ChiBao::Nen, private QAbstractNativeEventFilter {
  public:
    ~ChiBaoLinux() override { goThanh(); }

    [[nodiscard]] std::optional<ChiBao::ManChinh> manChinh() override;
    void dungThanh(const KhungHinh& khung, std::function<void()> khiBam) override;
    void goThanh() override;

  private:
    bool nativeEventFilter(const QByteArray& loai, void* thongDiep, qintptr* ketQua) override;
    void nghePhuKin();

    std::unique_ptr<QWidget> thanh_;
    QElapsedTimer lanNangTruoc_;
};

}  // namespace tovira

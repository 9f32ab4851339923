#pragma once
// Main thread, except chay, chaySau and the clocks: any thread. The main queue is Qt's event loop.

#include <QObject>
#include <QThread>

#include "HangDoi.hpp"

namespace tovira {

class VongLapLinux final : public VongLap {
  public:
    void chay(std::function<void()> viec) override;
    void chaySau(double giay, std::function<void()> viec) override;
    [[nodiscard]] std::unique_ptr<HenGio> lapLai(double giay, std::function<void()> viec) override;
    [[nodiscard]] double dongHo() const override;
    [[nodiscard]] double gioTu1970() const override;
    [[nodiscard]] bool dangOChinh() const override;

  private:
    // Whatever still waits when this goes is dropped.
    QObject moc_;
};

}  // namespace tovira

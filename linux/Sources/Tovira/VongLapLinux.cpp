#include "VongLapLinux.hpp"

#include <QMetaObject>
#include <QTimer>
#include <chrono>
#include <cmath>
#include <utility>

namespace tovira {
namespace {

std::chrono::milliseconds mili(double giay) {
    return std::chrono::milliseconds(std::llround(std::max(giay, 0.0) * 1000.0));
}

class HenGioLinux final : public HenGio {
  public:
    HenGioLinux(double giay, std::function<void()> viec)
        : viec_(std::make_shared<std::function<void()>>(std::move(viec))), dongHo_(new QTimer) {
        dongHo_->setTimerType(Qt::PreciseTimer);
        // The copy keeps the work alive while it destroys its own timer.
        QObject::connect(dongHo_, &QTimer::timeout, [viec = viec_] {
            const auto giu = viec;
            (*giu)();
        });
        dongHo_->start(mili(giay));
    }
    ~HenGioLinux() override {
        dongHo_->stop();
        dongHo_->disconnect();
        dongHo_->deleteLater();
    }
    HenGioLinux(const HenGioLinux&) = delete;
    HenGioLinux& operator=(const HenGioLinux&) = delete;

  private:
    std::shared_ptr<std::function<void()>> viec_;
    QTimer* dongHo_;
};

}  // namespace

void VongLapLinux::chay(std::function<void()> viec) {
    QMetaObject::invokeMethod(&moc_, std::move(viec), Qt::QueuedConnection);
}

void VongLapLinux::chaySau(double giay, std::function<void()> viec) {
    const double han = dongHo() + giay;
    chay([this, han, viec = std::move(viec)]() mutable {
        QTimer::singleShot(mili(han - dongHo()), Qt::PreciseTimer, &moc_, std::move(viec));
    });
}

std::unique_ptr<HenGio> VongLapLinux::lapLai(double giay, std::function<void()> viec) {
    return std::make_unique<HenGioLinux>(giay, std::move(viec));
}

double VongLapLinux::dongHo() const {
    return std::chrono::duration<double>(std::chrono::steady_clock::now().time_since_epoch()).count();
}

double VongLapLinux::gioTu1970() const {
    return std::chrono::duration<double>(std::chrono::system_clock::now().time_since_epoch()).count();
}

bool VongLapLinux::dangOChinh() const {
    return QThread::currentThread() == moc_.thread();
}

}  // namespace tovira

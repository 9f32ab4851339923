#pragma once
// Main thread. The person before a window of this program: clicks on a widget, answers a modal dialog.

#include <QApplication>
#include <QMouseEvent>
#include <QTimer>
#include <QWidget>
#include <functional>
#include <utility>

namespace tovira::gia {

// One click, at a place of the widget.
inline void bamChuot(QWidget* o, QPointF cho, Qt::MouseButton nut = Qt::LeftButton) {
    for (const auto loai : {QEvent::MouseButtonPress, QEvent::MouseButtonRelease}) {
        QMouseEvent chuot(loai, cho, o->mapToGlobal(cho), nut,
                          loai == QEvent::MouseButtonPress ? nut : Qt::NoButton, Qt::NoModifier);
        QApplication::sendEvent(o, &chuot);
    }
}

// Does `viec` once, with the first modal dialog of this kind.
template <class Bang>
class KhiCoBang {
  public:
    explicit KhiCoBang(std::function<void(Bang*)> viec) {
        QObject::connect(&nhip_, &QTimer::timeout, &nhip_, [this, viec = std::move(viec)] {
            auto* bang = qobject_cast<Bang*>(QApplication::activeModalWidget());
            if (bang == nullptr) return;
            nhip_.stop();
            thay_ = true;
            viec(bang);
        });
        nhip_.start(20);
    }
    [[nodiscard]] bool thay() const { return thay_; }

  private:
    QTimer nhip_;
    bool thay_ = false;
};

}  // namespace tovira::gia

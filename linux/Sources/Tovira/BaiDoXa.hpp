#pragma once
// Main thread. The parking place: a window that no window manager manages, outside every screen. An unmapped
// window draws no frames and a managed one is pulled back into sight; here a page goes on rendering unseen.

#include <QWidget>

namespace tovira {

class BaiDoXa final : public QWidget {
  public:
    BaiDoXa();

    // Takes a widget in at its present size. It leaves again by being given another parent.
    void nhan(QWidget& khach);
    void dong();
};

}  // namespace tovira

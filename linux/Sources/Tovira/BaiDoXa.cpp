#include "BaiDoXa.hpp"

#include "DoCuaSo.hpp"

namespace tovira {

BaiDoXa::BaiDoXa()
    : QWidget(nullptr, Qt::Window | Qt::FramelessWindowHint | Qt::X11BypassWindowManagerHint |
                           Qt::WindowDoesNotAcceptFocus) {
    setAttribute(Qt::WA_ShowWithoutActivating);
    setAttribute(Qt::WA_QuitOnClose, false);
}

void BaiDoXa::nhan(QWidget& khach) {
    const QSize co = khach.size();
    setGeometry(QRect(QPoint(static_cast<int>(DoCuaSo::gocXa.x), static_cast<int>(DoCuaSo::gocXa.y)), co));
    khach.setParent(this);
    khach.setGeometry(QRect(QPoint(0, 0), co));
    khach.show();
    show();
}

void BaiDoXa::dong() {
    hide();
}

}  // namespace tovira

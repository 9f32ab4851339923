#include "KhungNhin.hpp"

#include <QContextMenuEvent>
#include <QMenu>
#include <QWebEngineContextMenuRequest>

#include "ThanhMenu.hpp"

namespace tovira {

void KhungNhin::contextMenuEvent(QContextMenuEvent* e) {
    e->accept();
    const auto* yeuCau = lastContextMenuRequest();
    const bool sua = yeuCau != nullptr && yeuCau->isContentEditable();
    const bool coChon = yeuCau != nullptr && !yeuCau->selectedText().isEmpty();
    if (!sua && !coChon) return;
    auto* menu = new QMenu(this);
    menu->setAttribute(Qt::WA_DeleteOnClose);
    for (const auto& muc : menu_chinh::mucSua) {
        const auto viec = hanhDongSua(muc.lenh);
        if (!viec) {
            if (sua) menu->addSeparator();
            continue;
        }
        if (!sua && *viec != QWebEnginePage::Copy) continue;
        auto* nut =
            menu->addAction(QString::fromUtf8(muc.ten), this, [this, viec] { triggerPageAction(*viec); });
        nut->setEnabled(pageAction(*viec)->isEnabled());
    }
    menu->popup(e->globalPos());
}

}  // namespace tovira

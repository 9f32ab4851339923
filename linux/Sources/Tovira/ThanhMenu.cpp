#include "ThanhMenu.hpp"

#include <QMenu>
#include <QMenuBar>
#include <cctype>

namespace tovira {
namespace {

QKeySequence phimTat(char phim) {
    const auto ma = static_cast<unsigned char>(phim);
    const auto nut = static_cast<Qt::Key>(std::toupper(ma));
    return std::isupper(ma) != 0 ? QKeySequence(Qt::CTRL | Qt::SHIFT | nut) : QKeySequence(Qt::CTRL | nut);
}

}  // namespace

void dungThanhMenu(QMenuBar& thanh, const std::function<void(LenhMenu)>& khiChon) {
    for (const auto& con : menuChinh) {
        // No system titles the application menu here.
        auto* menu = thanh.addMenu(*con.ten == '\0' ? QStringLiteral("Tovira") : QString::fromUtf8(con.ten));
        for (const auto& muc : con.muc) {
            if (muc.lenh == LenhMenu::ngan) {
                menu->addSeparator();
                continue;
            }
            auto* nut = menu->addAction(QString::fromUtf8(muc.ten));
            if (muc.phim != 0) nut->setShortcut(phimTat(muc.phim));
            QObject::connect(nut, &QAction::triggered, &thanh, [khiChon, lenh = muc.lenh] { khiChon(lenh); });
        }
    }
}

std::optional<QWebEnginePage::WebAction> hanhDongSua(LenhMenu lenh) {
    switch (lenh) {
        case LenhMenu::hoanTac:
            return QWebEnginePage::Undo;
        case LenhMenu::lamLai:
            return QWebEnginePage::Redo;
        case LenhMenu::cat:
            return QWebEnginePage::Cut;
        case LenhMenu::saoChep:
            return QWebEnginePage::Copy;
        case LenhMenu::dan:
            return QWebEnginePage::Paste;
        case LenhMenu::chonTatCa:
            return QWebEnginePage::SelectAll;
        default:
            return std::nullopt;
    }
}

}  // namespace tovira

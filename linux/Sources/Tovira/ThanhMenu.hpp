#pragma once
// Main thread. The main menu as the window's menu bar; Command becomes Ctrl.

#include <QWebEnginePage>
#include <functional>
#include <optional>

#include "MenuChinh.hpp"

class QMenuBar;

namespace tovira {

// Fills a menu bar from the table of menus.
void dungThanhMenu(QMenuBar& thanh, const std::function<void(LenhMenu)>& khiChon);

// What an editing command does in a web page; absent for every other command.
[[nodiscard]] std::optional<QWebEnginePage::WebAction> hanhDongSua(LenhMenu lenh);

}  // namespace tovira

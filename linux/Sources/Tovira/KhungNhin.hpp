#pragma once
// Main thread. The main window's web view.

#include <QWebEngineView>

namespace tovira {

class KhungNhin final : public QWebEngineView {
  public:
    using QWebEngineView::QWebEngineView;

  protected:
    // Editing only: nothing that leaves the page or shows its insides.
    void contextMenuEvent(QContextMenuEvent* e) override;
};

}  // namespace tovira

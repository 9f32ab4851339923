#pragma once
// Main thread. What all web views of the program share: the lasting data store and the engine's settings.

#include <QWebEngineProfile>
#include <QWebEngineUrlRequestJob>
#include <QWebEngineUrlSchemeHandler>

namespace tovira {

class HoSoWeb {
  public:
    HoSoWeb();

    // Before the application object is made: lets links with this program's own scheme reach the navigation
    // policy, which engines otherwise hand to the desktop unasked.
    static void dangKyGiaoThuc();

    // Must outlive every page made from it.
    [[nodiscard]] QWebEngineProfile& hoSo() { return hoSo_; }

  private:
    // Nothing is ever loaded by this program's own scheme; without a handler the engine does not even ask.
    class GiaoThucRieng final : public QWebEngineUrlSchemeHandler {
        void requestStarted(QWebEngineUrlRequestJob* viec) override {
            viec->fail(QWebEngineUrlRequestJob::RequestDenied);
        }
    };

    GiaoThucRieng giaoThucRieng_;
    QWebEngineProfile hoSo_;
};

}  // namespace tovira

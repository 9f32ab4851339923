#pragma once
// Main thread. What all web views of the program share: the lasting data store and the engine's settings.

#include <QWebEngineProfile>

namespace tovira {

class HoSoWeb {
  public:
    HoSoWeb();

    // Must outlive every page made from it.
    [[nodiscard]] QWebEngineProfile& hoSo() { return hoSo_; }

  private:
    QWebEngineProfile hoSo_;
};

}  // namespace tovira

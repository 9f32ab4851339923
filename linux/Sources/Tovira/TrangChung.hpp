#pragma once
// Main thread. What the main page and the pop-ups have in common: alerts, file inputs, permissions, and the
// windows they ask for.

#include <QPointer>
#include <QWebEnginePage>

#include "CuaSo.hpp"

class QFileDialog;
class QWebEngineNewWindowRequest;

namespace tovira {

class CuaSoTachLinux;

// The text of an address as the page would spell it.
[[nodiscard]] std::string diaChiCua(const QUrl& url);

class TrangChung : public QWebEnginePage {
  public:
    TrangChung(QWebEngineProfile& hoSo, CuaSo& chu, CuaSoTachLinux& tach);
    ~TrangChung() override;
    TrangChung(const TrangChung&) = delete;
    TrangChung& operator=(const TrangChung&) = delete;

    // Is one of its questions or alerts on the screen? Until it is gone the engine is within a call of this
    // page, which therefore must live on.
    [[nodiscard]] bool dangHoi() const { return soDangHoi_ > 0; }
    // Nobody is to see any more of it: withdraws an open panel, and shows nothing new.
    void thoiHoi();

  protected:
    void javaScriptAlert(const QUrl& goc, const QString& noiDung) override;
    bool javaScriptConfirm(const QUrl& goc, const QString& noiDung) override;
    bool javaScriptPrompt(const QUrl& goc, const QString& noiDung, const QString& macDinh,
                          QString* ra) override;
    void javaScriptConsoleMessage(JavaScriptConsoleMessageLevel muc, const QString& chu, int dong,
                                  const QString& nguon) override;
    QStringList chooseFiles(FileSelectionMode kieu, const QStringList& cu,
                            const QStringList& cacMime) override;

    CuaSo& chu_;

  private:
    void khiXinQuyen(const QUrl& goc, Feature quyen);
    void khiXinCuaSo(QWebEngineNewWindowRequest& xin);

    CuaSoTachLinux& tach_;
    QPointer<QFileDialog> bang_;  // the open panel of a file input
    int soDangHoi_ = 0;
    bool daThoi_ = false;
};

}  // namespace tovira

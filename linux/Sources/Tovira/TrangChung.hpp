#pragma once
// Main thread. What the main page and the pop-ups have in common: alerts, file inputs, permissions, and the
// windows they ask for.

#include <QWebEnginePage>

#include "CuaSo.hpp"

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
};

}  // namespace tovira

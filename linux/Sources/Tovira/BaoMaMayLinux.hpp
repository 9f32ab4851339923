#pragma once
// Main thread. Looks at the page once a second and keeps the file `tep` at what BaoMaMay says of it, for as
// long as it lives: whoever started the program reads it there. The file is readable by its owner alone.

#include <QString>
#include <QTimer>
#include <string>

namespace tovira {

class TrangLinux;

class BaoMaMayLinux {
  public:
    // Nothing happens when `tep` is empty. After the page's dung; `trang` outlives it.
    BaoMaMayLinux(TrangLinux& trang, const QString& tep);

  private:
    void xem();
    void ghi(const std::string& noiDung);

    TrangLinux& trang_;
    QString tep_;
    std::string daGhi_;
    QTimer nhip_;
};

}  // namespace tovira

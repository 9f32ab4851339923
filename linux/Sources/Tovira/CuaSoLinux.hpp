#pragma once
// Main thread. The main window.

#include <QMainWindow>
#include <QTimer>
#include <functional>
#include <memory>

#include "BaiDoXa.hpp"
#include "CuaSo.hpp"
#include "MenuChinh.hpp"
#include "TrangLinux.hpp"

namespace tovira {

class CuaSoLinux final : public QMainWindow, public CuaSo::NenCua {
  public:
    CuaSoLinux(TrangLinux& trang, CaiDat& caiDat);
    ~CuaSoLinux() override;

    // The main window while it is in sight, for dialogs to belong to; else null.
    [[nodiscard]] static QWidget* dangHien();

    void dung(CuaSo& chu) override;
    [[nodiscard]] DoCuaSo::TrangThai trangThai() const override;
    void hien(DoCuaSo::CachHien cach) override;
    void an() override;
    void doXa() override;
    void veCho(Diem goc) override;
    void raTruoc() override;
    void choThuNho() override;

    // Creates the file `tep`, unless its name is empty, whenever a page has reported itself loaded: scripts
    // that started the program wait for it. After dung.
    void baoKhiTrangNap(const QString& tep);

    // The menu commands that are not about editing or hiding.
    std::function<void(LenhMenu)> khiChonMenu;

  protected:
    void closeEvent(QCloseEvent* e) override;
    void changeEvent(QEvent* e) override;
    void showEvent(QShowEvent* e) override;
    void moveEvent(QMoveEvent* e) override;
    void resizeEvent(QResizeEvent* e) override;
    bool eventFilter(QObject* vat, QEvent* e) override;

  private:
    void chonMenu(LenhMenu lenh);
    void datKhungDau();
    void luuKhung();
    void henLuu();
    void xemKhuat();

    TrangLinux& trang_;
    CaiDat& caiDat_;
    CuaSo* chu_ = nullptr;
    BaiDoXa bai_;
    bool dangDoXa_ = false;
    bool seThuNho_ = false;   // minimised is how it was last asked to be shown
    bool seRaTruoc_ = false;  // asked for in this turn, and nothing newer since
    QTimer henLuu_;
    QTimer henXemKhuat_;
};

}  // namespace tovira

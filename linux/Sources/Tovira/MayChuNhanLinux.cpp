#include <QApplication>
#include <QFile>
#include <QFileDialog>

#include "MayChuNhanNen.hpp"

namespace tovira {
namespace {

class NenMayChuNhanLinux final : public MayChuNhan::Nen {
  public:
    void hoiThuMuc(const Bang& bang, std::function<void(std::optional<std::string>)> xong) override {
        auto* hop = new QFileDialog(QApplication::activeWindow(), QString::fromStdString(bang.loiNhan));
        hop->setAttribute(Qt::WA_DeleteOnClose);
        hop->setFileMode(QFileDialog::Directory);
        hop->setOption(QFileDialog::ShowDirsOnly);
        hop->setLabelText(QFileDialog::Accept, QString::fromStdString(bang.nut));
        QObject::connect(hop, &QFileDialog::finished, hop, [hop, xong = std::move(xong)](int ketQua) {
            const QStringList chon = hop->selectedFiles();
            if (ketQua != QDialog::Accepted || chon.isEmpty()) return xong(std::nullopt);
            xong(QFile::encodeName(chon.front()).toStdString());
        });
        // Returns at once: the main loop goes on beneath the panel.
        hop->open();
    }

    // No desktop agrees on a mark for what came from elsewhere.
    void danhDauTuXa(int) override {}
};

}  // namespace

std::unique_ptr<MayChuNhan::Nen> taoNenMayChuNhan() {
    return std::make_unique<NenMayChuNhanLinux>();
}

}  // namespace tovira

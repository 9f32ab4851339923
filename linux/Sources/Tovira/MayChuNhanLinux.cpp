#include <QFile>
#include <QFileDialog>
#include <utility>

#include "CuaSoLinux.hpp"
#include "MayChuNhanNen.hpp"

namespace tovira {
namespace {

class NenMayChuNhanLinux final : public MayChuNhan::Nen {
  public:
    void hoiThuMuc(const Bang& bang, std::function<void(std::optional<std::string>)> xong) override {
        auto* hop = new QFileDialog(CuaSoLinux::dangHien(), QString::fromStdString(bang.loiNhan));
        hop->setAttribute(Qt::WA_DeleteOnClose);
        hop->setFileMode(QFileDialog::Directory);
        hop->setOption(QFileDialog::ShowDirsOnly);
        hop->setLabelText(QFileDialog::Accept, QString::fromStdString(bang.nut));
        // Answered once, also when the panel goes down with its window.
        const auto motLan = std::make_shared<decltype(xong)>(std::move(xong));
        const auto traLoi = [motLan](std::optional<std::string> duong) {
            if (const auto goi = std::exchange(*motLan, nullptr)) goi(std::move(duong));
        };
        QObject::connect(hop, &QFileDialog::finished, hop, [hop, traLoi](int ketQua) {
            const QStringList chon = hop->selectedFiles();
            if (ketQua != QDialog::Accepted || chon.isEmpty()) return traLoi(std::nullopt);
            traLoi(QFile::encodeName(chon.front()).toStdString());
        });
        QObject::connect(hop, &QObject::destroyed, [traLoi] { traLoi(std::nullopt); });
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

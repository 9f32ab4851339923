// The folder panel as a Linux desktop shows it.

#include <gtest/gtest.h>

#include <QApplication>
#include <QFileDialog>

#include "MayChuNhanNen.hpp"
#include "gia/DongCoWeb.hpp"
#include "gia/ThuMucTam.hpp"

using namespace tovira;
using gia::cho;

namespace {

QFileDialog* bangDangMo() {
    for (QWidget* cua : QApplication::topLevelWidgets()) {
        auto* bang = qobject_cast<QFileDialog*>(cua);
        if (bang != nullptr && bang->isVisible()) return bang;
    }
    return nullptr;
}

}  // namespace

TEST(MayChuNhanLinux, bangHoiThuMucMotLanMotCauTraLoi) {
    const gia::ThuMucTam tam;
    std::filesystem::create_directory(tam / "ảnh hè");
    gia::ghiTep(tam / "tệp", "x");
    const auto nen = taoNenMayChuNhan();
    std::vector<std::optional<std::string>> tra;
    const auto hoi = [&] {
        nen->hoiThuMuc({"Chọn thư mục", "Để làm gì"}, [&](auto duong) { tra.push_back(std::move(duong)); });
        ASSERT_TRUE(cho([] { return bangDangMo() != nullptr; }));
        EXPECT_EQ(bangDangMo()->windowTitle(), "Để làm gì");
        EXPECT_EQ(bangDangMo()->labelText(QFileDialog::Accept), "Chọn thư mục");
        EXPECT_EQ(bangDangMo()->fileMode(), QFileDialog::Directory);
        EXPECT_TRUE(bangDangMo()->testOption(QFileDialog::ShowDirsOnly));
        EXPECT_FALSE(bangDangMo()->testOption(QFileDialog::ReadOnly));
    };
    hoi();
    EXPECT_TRUE(tra.empty());  // the question waits beside the main loop
    bangDangMo()->selectFile(QString::fromStdString((tam / "ảnh hè").string()));
    QMetaObject::invokeMethod(bangDangMo(), "accept");
    ASSERT_TRUE(cho([&] { return tra.size() == 1 && bangDangMo() == nullptr; }));
    EXPECT_EQ(tra[0], (tam / "ảnh hè").string());
    hoi();
    bangDangMo()->close();
    ASSERT_TRUE(cho([&] { return tra.size() == 2 && bangDangMo() == nullptr; }));
    EXPECT_EQ(tra[1], std::nullopt);
    hoi();
    delete bangDangMo();  // as when the window that it belongs to goes
    ASSERT_EQ(tra.size(), 3U);
    EXPECT_EQ(tra[2], std::nullopt);
}

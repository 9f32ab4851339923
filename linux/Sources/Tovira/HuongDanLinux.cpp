#include "HuongDanLinux.hpp"

#include <QAbstractTextDocumentLayout>
#include <QTextBlockFormat>
#include <QTextBrowser>
#include <QTextCursor>
#include <QTextFrame>
#include <QVBoxLayout>

#include "CuaSoPhuLinux.hpp"
#include "HuongDan.hpp"

namespace tovira {

namespace {

QColor mauCho(MauChu mau, const QPalette& bang) {
    switch (mau) {
        case MauChu::chinh:
            return bang.color(QPalette::Text);
        case MauChu::phu:
            return bang.color(QPalette::PlaceholderText);
        case MauChu::nhan:
            return bang.color(QPalette::Highlight);
    }
    return bang.color(QPalette::Text);
}

QTextBlockFormat dangKhoi(const KieuChuKhoi& kieu) {
    QTextBlockFormat dang;
    dang.setTopMargin(kieu.truoc);
    dang.setBottomMargin(kieu.sau);
    dang.setLineHeight(HuongDan::gianDong, QTextBlockFormat::LineDistanceHeight);
    if (kieu.thut > 0) {
        dang.setLeftMargin(kieu.thut);
        dang.setTextIndent(-kieu.thut);
        dang.setTabPositions({QTextOption::Tab(kieu.thut, QTextOption::LeftTab)});
    }
    return dang;
}

void themKhoi(QTextCursor& contro, const KhoiHuongDan& khoi, const QPalette& bang) {
    const KieuChuKhoi kieu = HuongDan::kieuChu(khoi.kieu);
    QTextCharFormat dang;
    dang.setFont(chuCo(kieu.co, kieu.dam));
    dang.setForeground(mauCho(kieu.mau, bang));
    if (kieu.gianChu > 0) {
        dang.setFontLetterSpacingType(QFont::AbsoluteSpacing);
        dang.setFontLetterSpacing(kieu.gianChu);
    }
    contro.setBlockFormat(dangKhoi(kieu));
    if (const std::string dau = HuongDan::dauDong(khoi); !dau.empty()) {
        QTextCharFormat dam = dang;
        dam.setFontWeight(khoi.kieu == KieuKhoi::so ? QFont::Bold : QFont::Normal);
        contro.insertText(QString::fromStdString(dau) + u'\t', dam);
    }
    contro.insertText(QString::fromStdString(HuongDan::chuHien(khoi)), dang);
}

QWidget* dungCuaSo() {
    auto* cuaSo = new QWidget(nullptr, Qt::Window | Qt::CustomizeWindowHint | Qt::WindowTitleHint |
                                           Qt::WindowSystemMenuHint | Qt::WindowMinimizeButtonHint |
                                           Qt::WindowCloseButtonHint);
    cuaSo->setWindowTitle(QString::fromUtf8(HuongDan::tieuDeCuaSo));
    auto* chu = new QTextBrowser(cuaSo);
    chu->setFrameShape(QFrame::NoFrame);
    chu->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    chu->setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard);

    QTextCursor contro(chu->document());
    bool dau = true;
    for (const KhoiHuongDan& khoi : HuongDan::cacKhoi) {
        if (!dau) contro.insertBlock();
        dau = false;
        themKhoi(contro, khoi, chu->palette());
    }
    QTextFrameFormat khung = chu->document()->rootFrame()->frameFormat();
    khung.setLeftMargin(HuongDan::leNgang);
    khung.setRightMargin(HuongDan::leNgang);
    khung.setTopMargin(HuongDan::leDoc);
    khung.setBottomMargin(HuongDan::leDoc);
    chu->document()->rootFrame()->setFrameFormat(khung);
    chu->moveCursor(QTextCursor::Start);

    auto* xep = new QVBoxLayout(cuaSo);
    xep->setContentsMargins(0, 0, 0, 0);
    xep->addWidget(chu);
    cuaSo->setMinimumSize(HuongDan::rongToiThieu, HuongDan::caoToiThieu);
    cuaSo->setFixedSize(HuongDan::rong, HuongDan::cao);
    return cuaSo;
}

}  // namespace

void HuongDanLinux::hien() {
    static QPointer<QWidget> giu;
    hienMotCuaSo(giu, dungCuaSo);
}

}  // namespace tovira

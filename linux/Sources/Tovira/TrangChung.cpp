#include "TrangChung.hpp"

#include <QFileDialog>
#include <QWebEngineNewWindowRequest>
#include <QWebEngineView>

#include "CuaSoTachLinux.hpp"

namespace tovira {

std::string diaChiCua(const QUrl& url) {
    return url.toEncoded().toStdString();
}

namespace {

// Counts one more question for as long as it lives.
class DemHoi {
  public:
    explicit DemHoi(int& so) : so_(so) { ++so_; }
    ~DemHoi() { --so_; }
    DemHoi(const DemHoi&) = delete;
    DemHoi& operator=(const DemHoi&) = delete;

  private:
    int& so_;
};

}  // namespace

TrangChung::TrangChung(QWebEngineProfile& hoSo, CuaSo& chu, CuaSoTachLinux& tach)
    : QWebEnginePage(&hoSo), chu_(chu), tach_(tach) {
    connect(this, &QWebEnginePage::featurePermissionRequested, this, &TrangChung::khiXinQuyen);
    connect(this, &QWebEnginePage::newWindowRequested, this, &TrangChung::khiXinCuaSo);
}

// The engine still speaks while it takes a page apart; nobody is left to hear it.
TrangChung::~TrangChung() {
    disconnect(this, nullptr, this, nullptr);
}

void TrangChung::javaScriptAlert(const QUrl& /*goc*/, const QString& noiDung) {
    if (daThoi_) return;
    const DemHoi dem(soDangHoi_);
    chu_.khiThongBao(noiDung.toStdString());
}

void TrangChung::thoiHoi() {
    daThoi_ = true;
    if (bang_ != nullptr) bang_->reject();
}

// Nothing but alerts is shown: a question is answered like a cancel.
bool TrangChung::javaScriptConfirm(const QUrl& /*goc*/, const QString& /*noiDung*/) {
    return false;
}

bool TrangChung::javaScriptPrompt(const QUrl& /*goc*/, const QString& /*noiDung*/, const QString& /*macDinh*/,
                                  QString* /*ra*/) {
    return false;
}

// What pages say to their console stays there.
void TrangChung::javaScriptConsoleMessage(JavaScriptConsoleMessageLevel /*muc*/, const QString& /*chu*/,
                                          int /*dong*/, const QString& /*nguon*/) {}

QStringList TrangChung::chooseFiles(FileSelectionMode kieu, const QStringList& /*cu*/,
                                    const QStringList& /*cacMime*/) {
    if (daThoi_) return {};
    const DemHoi dem(soDangHoi_);
    const bool thuMuc = kieu == FileSelectUploadFolder;
    const auto hop = chu_.khiXinTep(kieu == FileSelectOpenMultiple ? ChonNhieu::co : ChonNhieu::khong,
                                    thuMuc ? ChonThuMuc::co : ChonThuMuc::khong);
    auto* nhin = QWebEngineView::forPage(this);
    // Its window may go meanwhile, and takes it along.
    const QPointer bang = new QFileDialog(nhin == nullptr ? nullptr : nhin->window());
    bang_ = bang;
    // A sheet: it holds up its own window only.
    bang->setWindowModality(nhin == nullptr ? Qt::ApplicationModal : Qt::WindowModal);
    if (hop.thuMuc == ChonThuMuc::co) {
        bang->setFileMode(QFileDialog::Directory);
        bang->setOption(QFileDialog::ShowDirsOnly);
    } else {
        bang->setFileMode(hop.nhieu == ChonNhieu::co ? QFileDialog::ExistingFiles
                                                     : QFileDialog::ExistingFile);
    }
    // Folders cannot be created in a read-only dialog.
    bang->setOption(QFileDialog::ReadOnly);
    bang->setLabelText(QFileDialog::Accept, QString::fromStdString(hop.nhan));
    const bool chon = bang->exec() == QDialog::Accepted;
    if (bang == nullptr) return {};
    const QStringList ra = chon ? bang->selectedFiles() : QStringList();
    delete bang;
    return ra;
}

void TrangChung::khiXinQuyen(const QUrl& goc, Feature quyen) {
    const bool phuongTien =
        quyen == MediaAudioCapture || quyen == MediaVideoCapture || quyen == MediaAudioVideoCapture;
    const bool duoc = phuongTien && chu_.gocTinDuoc(goc.host(QUrl::FullyEncoded).toStdString());
    setFeaturePermission(goc, quyen, duoc ? PermissionGrantedByUser : PermissionDeniedByUser);
}

void TrangChung::khiXinCuaSo(QWebEngineNewWindowRequest& xin) {
    // The engine's own spelling for "no address that may be opened from here", an absent one included.
    static const QUrl khongCo(QStringLiteral("about:blank#blocked"));
    const QUrl url = xin.requestedUrl();
    const QSize co = xin.requestedGeometry().size();
    const auto coDinh = [](int dai) { return dai > 0 ? std::optional<double>(dai) : std::nullopt; };
    const auto mo = chu_.khiXinTach(url == khongCo ? std::string() : diaChiCua(url), coDinh(co.width()),
                                    coDinh(co.height()));
    if (mo) tach_.mo(*mo, xin, chu_);
}

}  // namespace tovira

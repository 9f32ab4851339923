#pragma once
// Main thread. The channel from a page to the host. The engine's transport lives in an isolated world, which
// no page can reach; the page only has a shim that hands texts over by DOM events.

#include <QObject>
#include <QString>
#include <QWebChannel>
#include <functional>
#include <memory>
#include <string>
#include <vector>

class QWebEnginePage;

namespace tovira {

// The receiving end, with the members that Qt gives every object still on it.
class KenhCauTho : public QObject {
    Q_OBJECT
  public:
    KenhCauTho(std::function<void(const QString&)> khiNhan, std::function<bool(const QString&)> khiHoi)
        : khiNhan_(std::move(khiNhan)), khiHoi_(std::move(khiHoi)) {}
    Q_INVOKABLE void nhan(const QString& chu) { khiNhan_(chu); }
    Q_INVOKABLE bool hoi(const QString& diaChi) { return khiHoi_(diaChi); }

  private:
    std::function<void(const QString&)> khiNhan_;
    std::function<bool(const QString&)> khiHoi_;
};

class KenhCau {
  public:
    struct NguoiNhan {
        // One posted value as JSON text, from the main frame, and the origin that its document says it has
        // (the isolated world says it: the page has no part in it).
        std::function<void(const QString& json, const std::string& goc)> khiThongDiep;
        // The user is about to follow a link of the main frame to this address.
        std::function<void(const QString& diaChi)> khiBam;
        // The user has clicked a link to this address in a frame within: is it to be followed there?
        std::function<bool(const QString& diaChi)> duocTheo;
    };

    KenhCau(QWebEnginePage& trang, NguoiNhan nguoiNhan);
    ~KenhCau();
    KenhCau(const KenhCau&) = delete;
    KenhCau& operator=(const KenhCau&) = delete;

    // Replaces every script of the page, from its next document on: the relay for these origins, and
    // `kichBan` in the page's own world with the shim before it.
    void datKichBan(const std::string& kichBan, const std::vector<std::string>& gocTin);

  private:
    void nhan(const QString& chu) const;

    QWebEnginePage& trang_;
    NguoiNhan nguoiNhan_;
    std::unique_ptr<KenhCauTho> dau_;
    QWebChannel kenh_;
    QString tenSuKien_;
    QString khoaBam_;  // by which the main frame knows its own script in the frames within
};

}  // namespace tovira

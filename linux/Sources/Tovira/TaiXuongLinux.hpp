#pragma once
// Main thread. Hands the engine's downloads to the logic, which alone names their places.

#include <QObject>
#include <set>

#include "CuaSo.hpp"

class QWebEngineDownloadRequest;
class QWebEngineProfile;

namespace tovira {

class TaiXuongLinux {
  public:
    explicit TaiXuongLinux(CuaSo& chu) : chu_(chu) {}

    // From now on takes every download of this profile.
    void nhan(QWebEngineProfile& hoSo);

  private:
    void khiXin(QWebEngineDownloadRequest& tai);

    void hong(MaTai ma, const QWebEngineDownloadRequest& tai);

    CuaSo& chu_;
    std::set<MaTai> dangTai_;  // by the engine's own numbers
    QObject moc_;              // nothing comes in once this is gone
};

}  // namespace tovira

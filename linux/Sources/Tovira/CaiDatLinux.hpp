#pragma once
// Main thread. The user defaults are the desktop's settings store: organisation and application "Tovira".

#include <QSettings>

#include "NenChung.hpp"

namespace tovira {

class CaiDatLinux final : public CaiDat {
  public:
    [[nodiscard]] std::optional<std::string> doc(const std::string& khoa) const override;
    void ghi(const std::string& khoa, const std::string& giaTri) override;

  private:
    QSettings kho_{QStringLiteral("Tovira"), QStringLiteral("Tovira")};
};

}  // namespace tovira

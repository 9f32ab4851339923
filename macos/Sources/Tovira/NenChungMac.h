#pragma once
// Main thread. Apple only: makes the running system's grounds that more than one type stands on. Never null.

#include <memory>

#include "Cau.hpp"
#include "HangDoi.hpp"
#include "NenChung.hpp"

namespace tovira {

[[nodiscard]] std::unique_ptr<VongLap> taoVongLap();
[[nodiscard]] std::unique_ptr<HopBao> taoHopBao();
[[nodiscard]] std::unique_ptr<MoDiaChi> taoMoDiaChi();
[[nodiscard]] std::unique_ptr<CaiDat> taoCaiDat();
[[nodiscard]] std::unique_ptr<TepNguoiDung> taoTepNguoiDung();
[[nodiscard]] std::unique_ptr<Cau::Nen> taoNenCau();

}  // namespace tovira

#include "ChiBao.hpp"

namespace tovira {

KhungHinh ChiBao::datCho(const ManChinh& man) {
    return {man.khung.x + man.khung.rong / 2 - rong / 2, man.khungThay.y + cachTren, rong, cao};
}

void ChiBao::hien() {
    if (dangHien_) return;
    const auto man = nen_.manChinh();
    if (!man) return;
    nen_.dungThanh(datCho(*man), [this] { bamDung(); });
    dangHien_ = true;
}

void ChiBao::an() {
    if (!dangHien_) return;
    dangHien_ = false;
    nen_.goThanh();
}

void ChiBao::bamDung() {
    // A copy: stopping takes the bar away while its callback runs.
    if (const auto goi = khiDung) goi();
}

}  // namespace tovira

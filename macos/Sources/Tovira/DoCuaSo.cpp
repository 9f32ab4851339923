#include "DoCuaSo.hpp"

namespace tovira {

void DoCuaSo::hien() {
    if (choCu_) {
        cua_.veCho({choCu_->x, choCu_->y});
        choCu_.reset();
    }
    cua_.hien(CachHien::truoc);
}

void DoCuaSo::boDo() {
    if (!choCu_) return;
    cua_.veCho({choCu_->x, choCu_->y});
    choCu_.reset();
    cua_.an();
}

void DoCuaSo::damBaoDangVe(bool dangPhat) {
    if (!dangPhat) return;
    const auto cua = cua_.trangThai();
    if (cua.hienRa && !cua.thuNho) return;
    doLai();
    cua_.raTruoc();
}

void DoCuaSo::khiXinDong(bool dangPhat) {
    if (!dangPhat) {
        cua_.an();
    } else if (!choCu_) {
        doLai();
    }
}

void DoCuaSo::khiThuNho(bool dangPhat) {
    if (!dangPhat) return;
    cua_.raTruoc();
    if (!choCu_) doLai();
}

void DoCuaSo::khiChe(bool dangPhat) {
    if (dangPhat && !choCu_) doLai();
}

void DoCuaSo::doLai() {
    if (!choCu_) choCu_ = cua_.trangThai().khung;
    cua_.doXa();
}

}  // namespace tovira

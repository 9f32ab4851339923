#include "SoKetNoi.hpp"

#include <fcntl.h>

#include <algorithm>
#include <vector>

#include "KetNoiNghe.hpp"

namespace tovira {
namespace {

constexpr std::size_t toiDaDangNan = 64;

}  // namespace

void SoKetNoi::tiepNhan(CoSo so) {
    // Children that the program starts must not keep its sockets open.
    ::fcntl(so.native_handle(), F_SETFD, FD_CLOEXEC);
    asio::error_code khongSao;
    so.non_blocking(true, khongSao);
    if (dangMo.size() >= cauHinh.toiDaKetNoi && !nhuongCho()) return;
    dangMo.push_back(std::make_shared<KetNoiNghe>(*this, std::move(so)));
    dangMo.back()->datCho(std::prev(dangMo.end()));
    // The list's hold on it may end meanwhile.
    const auto noi = dangMo.back();
    noi->batDau();
}

bool SoKetNoi::nhuongCho() {
    const auto noi = std::find_if(dangMo.begin(), dangMo.end(), [](const auto& n) { return n->chuaCoDau(); });
    if (noi == dangMo.end()) return false;
    (*noi)->huy();
    return true;
}

void SoKetNoi::chuyenSangNan(DanhSach::iterator cho) {
    dangNan.splice(dangNan.end(), dangMo, cho);
    if (dangNan.size() > toiDaDangNan) dangNan.front()->huy();
}

void SoKetNoi::datHan(KetNoiNghe& noi, MocGio luc) {
    noi.han = luc;
    if (luc < lucQuet_) henQuetLuc(luc);
}

void SoKetNoi::tat() {
    dongHet(dangMo);
    dongHet(dangNan);
    henQuet_.cancel();
}

void SoKetNoi::dongHet(DanhSach& ds) {
    while (!ds.empty())
        ds.front()->huy();
}

void SoKetNoi::henQuetLuc(MocGio luc) {
    lucQuet_ = luc;
    henQuet_.expires_at(luc);
    henQuet_.async_wait([this](const asio::error_code& huy) {
        if (!huy) quet();
    });
}

void SoKetNoi::quet() {
    const MocGio gio = DongHo::now();
    MocGio ganNhat = MocGio::max();
    std::vector<std::shared_ptr<KetNoiNghe>> het;
    for (const auto* ds : {&dangMo, &dangNan}) {
        for (const auto& noi : *ds) {
            if (noi->han <= gio)
                het.push_back(noi);
            else
                ganNhat = std::min(ganNhat, noi->han);
        }
    }
    lucQuet_ = MocGio::max();
    if (ganNhat != MocGio::max()) henQuetLuc(ganNhat);
    for (const auto& noi : het)
        noi->khiHetHan();
}

}  // namespace tovira

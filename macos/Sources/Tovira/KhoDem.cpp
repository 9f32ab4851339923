#include "KhoDem.hpp"

#include <new>
#include <utility>

#include "BatBien.hpp"

namespace tovira {
namespace {

// Smaller loans cost less than keeping them would.
constexpr std::size_t nhoNhatDeGiu = std::size_t{1} << 20;

}  // namespace

KhoDem::Dem::~Dem() {
    if (kho_ != nullptr) kho_->nhanLai(*this);
}

KhoDem::Dem::Dem(Dem&& kia) noexcept
    : kho_(std::exchange(kia.kho_, nullptr)),
      o_(std::move(kia.o_)),
      dai_(std::exchange(kia.dai_, 0)),
      sucChua_(kia.sucChua_) {}

KhoDem::Dem& KhoDem::Dem::operator=(Dem&& kia) noexcept {
    std::swap(kho_, kia.kho_);
    std::swap(o_, kia.o_);
    std::swap(dai_, kia.dai_);
    std::swap(sucChua_, kia.sucChua_);
    return *this;
}

void KhoDem::muon(std::size_t dai, KhiCo xong) {
    TOVIRA_BUOC(dai > 0 && dai <= toiDa_);
    if (dangCho_.empty() && duCho(dai)) return xong(lay(dai));
    dangCho_.push_back({dai, std::move(xong)});
}

void KhoDem::buong() {
    danhSan_.reset();
    dangGiu_ -= std::exchange(sucDanhSan_, 0);
}

// Counts what is kept as free: it is lent again or let go of.
bool KhoDem::duCho(std::size_t dai) const {
    return dangGiu_ - sucDanhSan_ + (sucDanhSan_ >= dai ? sucDanhSan_ : dai) <= toiDa_;
}

KhoDem::Dem KhoDem::lay(std::size_t dai) {
    Dem dem;
    if (dai >= nhoNhatDeGiu && sucDanhSan_ >= dai) {
        dem.o_ = std::move(danhSan_);
        dem.sucChua_ = std::exchange(sucDanhSan_, 0);
    } else {
        if (dangGiu_ + dai > toiDa_ || dai >= nhoNhatDeGiu) buong();
        // Raw memory on purpose: what a read is about to fill need not be zeroed.
        dem.o_.reset(new (std::nothrow) std::byte[dai]);
        if (dem.o_ == nullptr) return {};
        dem.sucChua_ = dai;
        dangGiu_ += dai;
    }
    dem.dai_ = dai;
    dem.kho_ = this;
    return dem;
}

void KhoDem::nhanLai(Dem& dem) {
    dem.kho_ = nullptr;
    if (dem.sucChua_ >= nhoNhatDeGiu && dem.sucChua_ > sucDanhSan_) {
        buong();
        danhSan_ = std::move(dem.o_);
        sucDanhSan_ = dem.sucChua_;
    } else {
        dangGiu_ -= dem.sucChua_;
        dem.o_.reset();
    }
    phatTiep();
}

void KhoDem::phatTiep() {
    while (!dangCho_.empty() && duCho(dangCho_.front().dai)) {
        const Cho cho = std::move(dangCho_.front());
        dangCho_.pop_front();
        cho.xong(lay(cho.dai));
    }
}

}  // namespace tovira

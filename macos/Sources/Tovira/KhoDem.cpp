#include "KhoDem.hpp"

#include <sys/mman.h>

#include <algorithm>
#include <new>
#include <utility>

#include "BatBien.hpp"

namespace tovira {
namespace {

// What a body costs: a small one itself, any other whole pieces.
std::size_t phiCua(std::size_t dai) {
    if (dai < KhoDem::dayManh) return dai;
    return (dai + KhoDem::dayManh - 1) / KhoDem::dayManh * KhoDem::dayManh;
}

}  // namespace

void KhoDem::TraTrang::operator()(std::byte* manh) const {
    ::munmap(manh, dayManh);
}

KhoDem::Than::Than(KhoDem& kho, std::size_t dai) : kho_(kho), dai_(dai), phi_(phiCua(dai)) {
    TOVIRA_BUOC(dai > 0 && phi_ <= kho.toiDa_);
}

KhoDem::Than::~Than() {
    thoiCho();
    kho_.nhanLai(*this);
}

void KhoDem::Than::xinManh(KhiCo xong) {
    TOVIRA_BUOC(conThieu() > 0 && !dangCho());
    if (kho_.choDuoc(*this)) return xong(kho_.lay(*this));
    kho_.dangCho_.push_back({this, std::move(xong)});
}

void KhoDem::Than::thoiCho() {
    auto& ds = kho_.dangCho_;
    const auto o = std::find_if(ds.begin(), ds.end(), [this](const Cho& c) { return c.than == this; });
    if (o == ds.end()) return;
    // May be what keeps this object: it ends with this call.
    const Cho cho = std::move(*o);
    ds.erase(o);
}

bool KhoDem::Than::dangCho() const {
    const auto& ds = kho_.dangCho_;
    return std::any_of(ds.begin(), ds.end(), [this](const Cho& c) { return c.than == this; });
}

std::size_t KhoDem::Than::manhToi() const {
    return std::min(phi_, dayManh);
}

std::unique_ptr<KhoDem::Than> KhoDem::moThan(std::size_t dai) {
    return std::unique_ptr<Than>(new Than(*this, dai));
}

void KhoDem::buong() {
    danhSan_.clear();
}

// Is there room, and would there still be an order in which everybody who holds something gets the rest?
bool KhoDem::choDuoc(const Than& than) const {
    const std::size_t them = than.manhToi();
    if (dangMuon_ + them > toiDa_) return false;
    std::size_t conTrong = toiDa_ - dangMuon_ - them;
    std::vector<std::pair<std::size_t, std::size_t>> ds;  // what each still lacks, and gives back at its end
    ds.reserve(dangGiuManh_.size() + 1);
    ds.emplace_back(than.conThieu() - them, than.giu_ + them);
    for (const Than* t : dangGiuManh_) {
        if (t != &than) ds.emplace_back(t->conThieu(), t->giu_);
    }
    std::sort(ds.begin(), ds.end());
    return std::all_of(ds.begin(), ds.end(), [&](const auto& t) {
        const bool du = t.first <= conTrong;
        conTrong += t.second;
        return du;
    });
}

std::span<std::byte> KhoDem::lay(Than& than) {
    const std::size_t them = than.manhToi();
    std::byte* manh = nullptr;
    if (them < dayManh) {
        // Only as many pieces are kept as the cap leaves room for.
        while (dangGiu() + them > toiDa_)
            danhSan_.pop_back();
        // Raw memory on purpose: what a read is about to fill need not be zeroed.
        than.nho_.reset(new (std::nothrow) std::byte[them]);
        manh = than.nho_.get();
    } else if (auto lon = layManhLon()) {
        manh = lon.get();
        than.lon_.push_back(std::move(lon));
    }
    if (manh == nullptr) return {};
    if (than.giu_ == 0) dangGiuManh_.push_back(&than);
    than.giu_ += them;
    dangMuon_ += them;
    const std::size_t daCo = than.cacManh_.size() * dayManh;
    const std::span vung(manh, std::min(them, than.dai_ - daCo));
    than.cacManh_.push_back(vung);
    return vung;
}

KhoDem::ManhLon KhoDem::layManhLon() {
    if (!danhSan_.empty()) {
        ManhLon manh = std::move(danhSan_.back());
        danhSan_.pop_back();
        return manh;
    }
    void* manh = ::mmap(nullptr, dayManh, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANON, -1, 0);
    return ManhLon(manh == MAP_FAILED ? nullptr : static_cast<std::byte*>(manh));
}

void KhoDem::nhanLai(Than& than) {
    if (than.giu_ == 0) return;
    std::erase(dangGiuManh_, &than);
    dangMuon_ -= than.giu_;
    than.giu_ = 0;
    for (ManhLon& manh : than.lon_) {
        if (danhSan_.size() < toiDaGiuLai) danhSan_.push_back(std::move(manh));
    }
    phatTiep();
}

// Whoever can be served is, the longest waiting first. Serving may give something back: then all over again.
void KhoDem::phatTiep() {
    const auto duoc = [this](const Cho& c) { return choDuoc(*c.than); };
    for (auto o = std::find_if(dangCho_.begin(), dangCho_.end(), duoc); o != dangCho_.end();
         o = std::find_if(dangCho_.begin(), dangCho_.end(), duoc)) {
        const Cho cho = std::move(*o);
        dangCho_.erase(o);
        cho.xong(lay(*cho.than));
    }
}

}  // namespace tovira

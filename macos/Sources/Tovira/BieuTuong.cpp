// The recipe. This file is compiled with -ffp-contract=off: a fused multiply-add would change bytes. Every
// pixel is defined by `tinh`; where no shape's edge is near, the shapes' coverages are exactly 0 or 1 and
// only the gradient is left to compute, which is what makes large icons cheap.

#include "BieuTuong.hpp"

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstring>

namespace tovira {

namespace {

// A rounded rectangle; a circle is one whose half-sizes are its radius. Units: the canvas side is 1.
struct Hinh {
    float cx, cy;  // centre
    float hx, hy;  // half-sizes
    float r;       // corner radius
};

constexpr Hinh nen{0.5F, 0.5F, 0.5F, 0.5F, 0.22F};
constexpr Hinh than{0.5F, 0.44F, 0.31F, 0.235F, 0.1F};
constexpr Hinh duoi1{0.27F, 0.79F, 0.036F, 0.036F, 0.036F};
constexpr Hinh duoi2{0.34F, 0.70F, 0.075F, 0.075F, 0.075F};
constexpr Hinh cham1{0.36F, 0.44F, 0.045F, 0.045F, 0.045F};
constexpr Hinh cham2{0.5F, 0.44F, 0.045F, 0.045F, 0.045F};
constexpr Hinh cham3{0.64F, 0.44F, 0.045F, 0.045F, 0.045F};

// Signed distance to a rounded rectangle whose straight parts reach `ix`, `iy` from the centre.
inline float cachKhung(float u, float v, float cx, float cy, float ix, float iy, float r) {
    const float qx = std::fabs(u - cx) - ix;
    const float qy = std::fabs(v - cy) - iy;
    const float ax = std::max(qx, 0.0F);
    const float ay = std::max(qy, 0.0F);
    return std::min(std::max(qx, qy), 0.0F) + std::sqrt(ax * ax + ay * ay) - r;
}

inline float cachTron(float u, float v, const Hinh& h) {
    const float x = u - h.cx;
    const float y = v - h.cy;
    return std::sqrt(x * x + y * y) - h.r;
}

inline float phu(float d, float px) {
    return std::min(std::max(0.5F - d / px, 0.0F), 1.0F);
}

// To nearest, halves away from zero, for 0 ≤ x < 2^24. (x + 0.5 would round 0.49999997 up.)
inline std::uint32_t lamTron(float x) {
    const auto phanNguyen = static_cast<std::int32_t>(x);
    const std::int32_t them = x - static_cast<float>(phanNguyen) >= 0.5F ? 1 : 0;
    return static_cast<std::uint32_t>(phanNguyen + them);
}

inline std::uint32_t dongGoi(std::uint32_t r, std::uint32_t g, std::uint32_t b, std::uint32_t a) {
    if constexpr (std::endian::native == std::endian::little)
        return r | g << 8 | b << 16 | a << 24;
    else
        return r << 24 | g << 16 | b << 8 | a;
}

struct Mau {
    float r, g, b;
};

inline Mau mauNen(float u, float v) {
    const float t = std::min(std::max((u + v) * 0.5F, 0.0F), 1.0F);
    return {37.0F + 87.0F * t, 99.0F - 41.0F * t, 235.0F + 2.0F * t};
}

// The whole recipe for one pixel.
inline std::uint32_t tinh(float u, float v, float px, bool boGoc) {
    const float a = boGoc ? phu(cachKhung(u, v, 0.5F, 0.5F, 0.28F, 0.28F, 0.22F), px) : 1.0F;
    const float dThan = cachKhung(u, v, 0.5F, 0.44F, 0.21F, 0.135F, 0.1F);
    const float dDuoi = std::min(cachTron(u, v, duoi1), cachTron(u, v, duoi2));
    const float b = phu(std::min(dThan, dDuoi), px);
    const float dCham =
        std::min(std::min(cachTron(u, v, cham1), cachTron(u, v, cham2)), cachTron(u, v, cham3));
    const float w = std::max(b - phu(dCham, px), 0.0F);
    const Mau m = mauNen(u, v);
    return dongGoi(lamTron(m.r + w * (255.0F - m.r)), lamTron(m.g + w * (255.0F - m.g)),
                   lamTron(m.b + w * (255.0F - m.b)), lamTron(std::max(a, b) * 255.0F));
}

// A half-open range of columns.
struct Doan {
    int dau = 0;
    int cuoi = 0;
};

// What a row looks like far from every edge.
struct LopDoan {
    bool trongNen = false;
    bool trongBong = false;
    bool trongCham = false;
};

class VeIcon {
  public:
    VeIcon(int canh, BieuTuong::BoGoc boGoc)
        : n_(canh),
          boGoc_(boGoc == BieuTuong::BoGoc::co),
          px_(1.0F / static_cast<float>(canh)),
          u_(static_cast<std::size_t>(canh)) {
        for (int i = 0; i < n_; ++i)
            u_[static_cast<std::size_t>(i)] = toaDo(i);
    }

    void veHang(int j, std::uint32_t* hang);

  private:
    // Columns that a shape's edge may touch on this row, and columns that it surely covers.
    struct Vung {
        Doan ngoai;
        Doan trong;
        int loai;  // 0 background, 1 bubble, 2 dot
    };

    [[nodiscard]] float toaDo(int i) const { return (static_cast<float>(i) + 0.5F) / static_cast<float>(n_); }
    [[nodiscard]] Doan day(const Hinh& h, double v, double no) const;
    void themVung(const Hinh& h, int loai, double v);
    void themMoc(int cot);
    void veDoan(Doan doan, float v, std::uint32_t* hang) const;
    void chuyenSac(Doan doan, float v, std::uint32_t alpha, std::uint32_t* hang) const;
    void tinhKy(Doan doan, float v, std::uint32_t* hang) const;

    int n_;
    bool boGoc_;
    float px_;
    std::vector<float> u_;
    std::array<Vung, 7> vung_{};
    std::size_t soVung_ = 0;
    std::array<int, 30> moc_{};
    std::size_t soMoc_ = 0;
};

// Columns whose centres lie within the shape grown by `no` pixels (shrunk where negative), on the row at v.
Doan VeIcon::day(const Hinh& h, double v, double no) const {
    const double them = no / n_;
    const double hy = h.hy + them;
    const double r = std::max(h.r + them, 0.0);
    const double y = std::fabs(v - h.cy);
    double hx = h.hx + them;
    if (y >= hy || hx <= 0) return {};
    const double qy = y - (hy - r);
    if (qy > 0) hx -= r - std::sqrt(std::max(r * r - qy * qy, 0.0));
    if (hx <= 0) return {};
    const double dau = std::ceil((h.cx - hx) * n_ - 0.5);
    const double cuoi = std::floor((h.cx + hx) * n_ - 0.5) + 1;
    const Doan doan{std::clamp(static_cast<int>(dau), 0, n_), std::clamp(static_cast<int>(cuoi), 0, n_)};
    return doan.dau < doan.cuoi ? doan : Doan{};
}

void VeIcon::themMoc(int cot) {
    std::size_t k = soMoc_;
    while (k > 0 && moc_[k - 1] > cot)
        --k;
    if (k > 0 && moc_[k - 1] == cot) return;
    std::copy_backward(moc_.begin() + static_cast<std::ptrdiff_t>(k),
                       moc_.begin() + static_cast<std::ptrdiff_t>(soMoc_),
                       moc_.begin() + static_cast<std::ptrdiff_t>(soMoc_) + 1);
    moc_[k] = cot;
    ++soMoc_;
}

void VeIcon::themVung(const Hinh& h, int loai, double v) {
    // An edge is half a pixel wide on either side; twice that leaves room for the rounding of the recipe.
    constexpr double le = 1.5;
    const Doan ngoai = day(h, v, le);
    if (ngoai.dau == ngoai.cuoi) return;
    const Doan trong = day(h, v, -le);
    vung_[soVung_++] = {ngoai, trong, loai};
    themMoc(ngoai.dau);
    themMoc(ngoai.cuoi);
    themMoc(trong.dau);
    themMoc(trong.cuoi);
}

void VeIcon::veHang(int j, std::uint32_t* hang) {
    const float v = toaDo(j);
    soVung_ = 0;
    soMoc_ = 0;
    themMoc(0);
    themMoc(n_);
    if (boGoc_) themVung(nen, 0, v);
    themVung(than, 1, v);
    themVung(duoi1, 1, v);
    themVung(duoi2, 1, v);
    themVung(cham1, 2, v);
    themVung(cham2, 2, v);
    themVung(cham3, 2, v);
    for (std::size_t k = 0; k + 1 < soMoc_; ++k)
        veDoan({moc_[k], moc_[k + 1]}, v, hang);
}

void VeIcon::veDoan(Doan doan, float v, std::uint32_t* hang) const {
    LopDoan lop;
    lop.trongNen = !boGoc_;
    for (std::size_t k = 0; k < soVung_; ++k) {
        const Vung& vung = vung_[k];
        if (doan.dau >= vung.trong.dau && doan.cuoi <= vung.trong.cuoi) {
            if (vung.loai == 0) lop.trongNen = true;
            if (vung.loai == 1) lop.trongBong = true;
            if (vung.loai == 2) lop.trongCham = true;
        } else if (doan.dau < vung.ngoai.cuoi && doan.cuoi > vung.ngoai.dau) {
            return tinhKy(doan, v, hang);
        }
    }
    if (lop.trongBong && !lop.trongCham)
        std::fill(hang + doan.dau, hang + doan.cuoi, dongGoi(255, 255, 255, 255));
    else
        chuyenSac(doan, v, lop.trongNen || lop.trongBong ? 255 : 0, hang);
}

void VeIcon::chuyenSac(Doan doan, float v, std::uint32_t alpha, std::uint32_t* hang) const {
    const float* u = u_.data();
    for (int i = doan.dau; i < doan.cuoi; ++i) {
        const Mau m = mauNen(u[i], v);
        hang[i] = dongGoi(lamTron(m.r), lamTron(m.g), lamTron(m.b), alpha);
    }
}

void VeIcon::tinhKy(Doan doan, float v, std::uint32_t* hang) const {
    const float* u = u_.data();
    const float px = px_;
    const bool boGoc = boGoc_;
    for (int i = doan.dau; i < doan.cuoi; ++i)
        hang[i] = tinh(u[i], v, px, boGoc);
}

}  // namespace

std::vector<std::uint8_t> BieuTuong::rgba(int canh, BoGoc boGoc) {
    if (canh < 1) return {};
    const auto n = static_cast<std::size_t>(canh);
    std::vector<std::uint8_t> anh(n * n * 4);
    std::vector<std::uint32_t> hang(n);
    VeIcon ve(canh, boGoc);
    for (int j = 0; j < canh; ++j) {
        ve.veHang(j, hang.data());
        std::memcpy(anh.data() + static_cast<std::size_t>(j) * n * 4, hang.data(), n * 4);
    }
    return anh;
}

}  // namespace tovira

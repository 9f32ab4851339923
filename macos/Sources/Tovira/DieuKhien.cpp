#include "DieuKhien.hpp"

#include <algorithm>
#include <cmath>
#include <limits>

#include "BatBien.hpp"
#include "Json.hpp"
#include "KyTu.hpp"
#include "PhimMac.hpp"

namespace tovira {

namespace {

enum class LoaiLenh : std::uint8_t { diChuot, nhanNut, nhaNut, cuon, nhanPhim, nhaPhim, chu };

std::optional<LoaiLenh> loaiLenh(const DoiTuongJson& lenh) {
    const auto t = lenh.chu("t");
    if (!t) return std::nullopt;
    if (*t == "mouse_move") return LoaiLenh::diChuot;
    if (*t == "mouse_down") return LoaiLenh::nhanNut;
    if (*t == "mouse_up") return LoaiLenh::nhaNut;
    if (*t == "mouse_wheel") return LoaiLenh::cuon;
    if (*t == "key_down") return LoaiLenh::nhanPhim;
    if (*t == "key_up") return LoaiLenh::nhaPhim;
    if (*t == "text") return LoaiLenh::chu;
    return std::nullopt;
}

// A share of the display's width or height. Comparing this way round leaves NaN out.
bool laPhan(std::optional<double> v) {
    return v && *v >= 0.0 && *v <= 1.0;
}

bool diemDung(const DoiTuongJson& lenh) {
    return laPhan(lenh.so("x")) && laPhan(lenh.so("y"));
}

// A wheel amount may be missing, but what stands there must be a number (JSON has finite ones only).
bool luongCuonDung(const DoiTuongJson& lenh, std::string_view khoa) {
    return !lenh.co(khoa) || lenh.so(khoa);
}

constexpr std::size_t maPhimDaiNhat = 32;  // characters
constexpr std::size_t chuDaiNhat = 4096;   // bytes
constexpr double khoangBamXa = 5.0;        // points, on each axis
constexpr std::int64_t soLanBamNhieuNhat = 3;

bool maPhimDung(std::optional<std::string_view> ma) {
    if (!ma || ma->empty()) return false;
    return ma->size() <= maPhimDaiNhat ||
           demKyTu(*ma) <= maPhimDaiNhat;  // no character is shorter than a byte
}

bool chuDung(std::optional<std::string_view> chu) {
    return chu && !chu->empty() && chu->size() <= chuDaiNhat;
}

// The kind of an acceptable command; absent for every other one.
std::optional<LoaiLenh> xetLenh(const DoiTuongJson& lenh) {
    const auto loai = loaiLenh(lenh);
    if (!loai) return std::nullopt;
    bool dung = false;
    switch (*loai) {
        case LoaiLenh::diChuot:
        case LoaiLenh::nhanNut:
        case LoaiLenh::nhaNut:
            dung = diemDung(lenh);
            break;
        case LoaiLenh::cuon:
            dung = diemDung(lenh) && luongCuonDung(lenh, "dx") && luongCuonDung(lenh, "dy");
            break;
        case LoaiLenh::nhanPhim:
        case LoaiLenh::nhaPhim:
            dung = maPhimDung(lenh.chu("code"));
            break;
        case LoaiLenh::chu:
            dung = chuDung(lenh.chu("value"));
            break;
    }
    return dung ? loai : std::nullopt;
}

NutChuot nut(const DoiTuongJson& lenh) {
    const auto ten = lenh.chu("button");
    if (ten == "right") return NutChuot::phai;
    if (ten == "middle") return NutChuot::giua;
    return NutChuot::trai;
}

// The flags of the command's "modifiers" words.
std::uint64_t boTro(const DoiTuongJson& lenh) {
    std::uint64_t co = 0;
    for (const auto tu : lenh.mangChu("modifiers").value_or(std::vector<std::string_view>{}))
        co |= PhimMac::coCuaTu(tu);
    return co;
}

// `co` with the modifier key's own flag set or cleared.
std::uint64_t capNhatCo(std::uint64_t co, std::string_view ma, bool xuong) {
    const std::uint64_t rieng = PhimMac::coCuaPhim(ma);
    return xuong ? co | rieng : co & ~rieng;
}

}  // namespace

DieuKhien::DieuKhien(Nen& nen, const VongLap& vongLap)
    : nen_(nen), vongLap_(vongLap), khungManHinh_(nen.khungManHinhChinh()) {}

bool DieuKhien::hopLe(std::string_view json) {
    const auto lenh = DoiTuongJson::doc(json);
    return lenh && xetLenh(*lenh);
}

bool DieuKhien::lam(std::string_view json) {
    TOVIRA_BUOC(vongLap_.dangOChinh());
    const auto lenh = DoiTuongJson::doc(json);
    if (!lenh) return false;
    const auto loai = xetLenh(*lenh);
    if (!loai || !nen_.duocPhep()) return false;

    switch (*loai) {
        case LoaiLenh::nhanPhim:
            return goPhim(*lenh, Huong::xuong);
        case LoaiLenh::nhaPhim:
            return goPhim(*lenh, Huong::len);
        case LoaiLenh::chu:
            return goChu(lenh->chu("value").value_or(""));
        default:
            break;
    }
    const auto cho = diem(*lenh);
    if (!cho) return false;
    switch (*loai) {
        case LoaiLenh::nhanNut:
            return bamChuot(nut(*lenh), Huong::xuong, *cho);
        case LoaiLenh::nhaNut:
            return bamChuot(nut(*lenh), Huong::len, *cho);
        case LoaiLenh::cuon:
            return cuon(*cho, lenh->so("dx").value_or(0), lenh->so("dy").value_or(0));
        default:
            return diChuot(*cho);
    }
}

std::optional<Diem> DieuKhien::diem(const DoiTuongJson& lenh) const {
    const double x = lenh.so("x").value_or(0);
    const double y = lenh.so("y").value_or(0);
    if (!laPhan(x) || !laPhan(y)) return std::nullopt;
    const KhungHinh& khung = khungManHinh_;
    return Diem{khung.x + x * khung.rong, khung.y + y * khung.cao};
}

bool DieuKhien::diChuot(const Diem& diem) {
    viTri_ = diem;
    // The order of the buttons' numbers is also the order in which a drag is named after them: the set is
    // sorted.
    static_assert(NutChuot::trai < NutChuot::phai && NutChuot::phai < NutChuot::giua);
    if (nutDangGiu_.empty()) return nen_.dang(SuKienChuot{LoaiChuot::diChuyen, NutChuot::trai, diem, {}});
    return nen_.dang(SuKienChuot{LoaiChuot::keo, *nutDangGiu_.begin(), diem, {}});
}

bool DieuKhien::bamChuot(NutChuot nut, Huong huong, const Diem& diem) {
    viTri_ = diem;
    if (huong == Huong::xuong) {
        const LanBam lan = soLanBam(nut, diem);
        if (!nen_.dang(SuKienChuot{LoaiChuot::xuong, nut, diem, lan.dem})) return false;
        lanBamTruoc_ = lan;  // a press that could not be made does not count
        nutDangGiu_.insert(nut);
        return true;
    }
    const bool cungNut = lanBamTruoc_ && lanBamTruoc_->nut == nut;
    if (!nen_.dang(SuKienChuot{LoaiChuot::len, nut, diem, cungNut ? lanBamTruoc_->dem : 1})) return false;
    nutDangGiu_.erase(nut);
    return true;
}

DieuKhien::LanBam DieuKhien::soLanBam(NutChuot nut, const Diem& diem) const {
    const double luc = vongLap_.gioTu1970();
    const bool noiTiep = lanBamTruoc_ && lanBamTruoc_->nut == nut &&
                         luc - lanBamTruoc_->luc < nen_.khoangBamDup() &&
                         std::abs(lanBamTruoc_->cho.x - diem.x) < khoangBamXa &&
                         std::abs(lanBamTruoc_->cho.y - diem.y) < khoangBamXa;
    return {nut, luc, diem, noiTiep ? std::min(lanBamTruoc_->dem + 1, soLanBamNhieuNhat) : 1};
}

bool DieuKhien::cuon(const Diem& diem, double dx, double dy) {
    if (!std::isfinite(dx) || !std::isfinite(dy) || (dx == 0 && dy == 0)) return false;
    if (!diChuot(diem)) return false;
    const std::int32_t doc = soCuon(dy);
    const std::int32_t ngang = soCuon(dx);
    return nen_.dang(SuKienCuon{doc, ngang});
}

// The page counts down and right as positive, a wheel event up and left.
std::int32_t DieuKhien::soCuon(double v) {
    constexpr double qua = 9223372036854775808.0;  // 2^63
    const double tron = std::round(v);
    const bool vuaSo64 = std::abs(tron) < qua;
    if (!vuaSo64) nhaHet();  // the process ends here: nothing may stay pressed behind it
    TOVIRA_BUOC(vuaSo64);
    using Gioi = std::numeric_limits<std::int32_t>;
    return static_cast<std::int32_t>(std::clamp<double>(-tron, Gioi::min(), Gioi::max()));
}

bool DieuKhien::goPhim(const DoiTuongJson& lenh, Huong huong) {
    const auto ma = lenh.chu("code").value_or("");
    const auto phim = PhimMac::maPhim(ma);
    if (!phim) return false;
    const bool xuong = huong == Huong::xuong;
    SuKienPhim suKien{*phim, xuong, LoaiPhim::phim, boTro(lenh)};
    if (PhimMac::laPhimBoTro(ma)) {
        suKien.loai = LoaiPhim::doiCo;
        suKien.co = capNhatCo(*suKien.co, ma, xuong);
    }
    if (!nen_.dang(suKien)) return false;
    if (xuong)
        phimDangGiu_.insert(*phim);
    else
        phimDangGiu_.erase(*phim);
    return true;
}

bool DieuKhien::goChu(std::string_view chu) {
    nen_.batDauChu();
    bool duoc = true;
    while (duoc && !chu.empty()) {
        const auto dai = daiKyTuDau(chu);
        duoc = goKyTu(chu.substr(0, dai));
        chu.remove_prefix(dai);
    }
    nen_.ketThucChu();
    return duoc;
}

bool DieuKhien::goKyTu(std::string_view kyTu) {
    SuKienChu suKien{sangUtf16(kyTu), true};
    if (!nen_.dang(suKien)) return false;
    suKien.xuong = false;
    return nen_.dang(suKien);
}

void DieuKhien::nhaHet() {
    TOVIRA_BUOC(vongLap_.dangOChinh());
    nen_.boChuDangCho();
    for (const NutChuot nut : nutDangGiu_)
        nen_.dang(SuKienChuot{LoaiChuot::len, nut, viTri_, {}});
    nutDangGiu_.clear();
    for (const auto phim : phimDangGiu_)
        nen_.dang(SuKienPhim{phim, false, LoaiPhim::phim, {}});
    phimDangGiu_.clear();
    lanBamTruoc_.reset();
}

void DieuKhien::moCaiDatTroNang() {
    nen_.moCaiDatTroNang();
}

void DieuKhien::datKhungManHinh(const KhungHinh& khung) {
    TOVIRA_BUOC(vongLap_.dangOChinh());
    khungManHinh_ = khung;
}

}  // namespace tovira

#include "CuaSo.hpp"

#include <algorithm>

#include "BatBien.hpp"
#include "DieuKhien.hpp"
#include "DoMayChu.hpp"
#include "GiaoDienKem.hpp"
#include "KichBanTrang.hpp"
#include "ManHinh.hpp"
#include "ThamSo.hpp"
#include "TrangKhongKetNoi.hpp"

namespace tovira {
namespace {

constexpr double choTai = 60.0;     // seconds that a page's request may take
constexpr double chuKyQuyen = 2.0;  // seconds between two looks at the input permission
constexpr double nghiSauSap = 5.0;  // seconds before the lost-connection page is tried again
constexpr const char* khoaNgonNgu = "ngonNgu";

constexpr const char* tieuDeLoiKhoiDong = "Không đổi được mục khởi động";
constexpr const char* tieuDeManHinhKhoa = "Chưa hỗ trợ màn hình khoá trên macOS";
constexpr const char* chiTietManHinhKhoa =
    "Chạy được từ màn hình đăng nhập cần một tiến trình nền quyền root nằm trong phiên loginwindow. Phần này "
    "chưa "
    "làm — máy vẫn nhận điều khiển bình thường sau khi bạn đã đăng nhập.";

}  // namespace

CuaSo::CuaSo(const ChoDua& choDua)
    : d_(choDua),
      do_(choDua.cua),
      cau_(*this, choDua.nhanTep, choDua.xinQuyen),
      tach_(choDua.tach),
      conSong_(this, [](CuaSo*) {}) {}

CuaSo::~CuaSo() = default;

void CuaSo::dung() {
    TOVIRA_BUOC(d_.vongLap.dangOChinh());
    d_.trang.dung(*this);
    datKichBan();
    d_.cua.dung(*this);
    ManHinh::chung().khiDoi = [yeu = yeu()](const std::string& duongDan, const std::string& loi) {
        if (const auto toi = yeu.lock()) toi->dayManHinh(duongDan, loi);
    };
    nap();
    theoDoiQuyen();
    theoDoiMayChu();
}

// --- The window ---

void CuaSo::hien() {
    do_.hien();
}
void CuaSo::hienThuNho() {
    do_.hienThuNho();
}
void CuaSo::boDo() {
    do_.boDo();
}
void CuaSo::choThuNho() {
    d_.cua.choThuNho();
}
void CuaSo::damBaoDangVe() {
    do_.damBaoDangVe(ManHinh::chung().dangPhat());
}
void CuaSo::khiXinDong() {
    do_.khiXinDong(ManHinh::chung().dangPhat());
}
void CuaSo::khiThuNho() {
    do_.khiThuNho(ManHinh::chung().dangPhat());
}
void CuaSo::khiChe() {
    do_.khiChe(ManHinh::chung().dangPhat());
}

// --- What is shown ---

void CuaSo::nap() {
    d_.doMayChu.song(d_.thamSo.mayChu, TheoDoiMayChu::choNap, [yeu = yeu(), so = ++soQuyetDinh_](bool song) {
        const auto toi = yeu.lock();
        // A newer question, or a switch made meanwhile (the page's own retry, say), has the last word.
        if (!toi || toi->soQuyetDinh_ != so) return;
        if (song) {
            toi->veMayChuThat();
        } else {
            toi->hienGiaoDienKem();
        }
    });
}

void CuaSo::veMayChuThat() {
    ++soQuyetDinh_;
    theoDoi_.sangMayChu();
    d_.giaoDienKem.dung();
    datKichBan();
    d_.trang.tai(d_.thamSo.duongDanApp, choTai);
}

void CuaSo::hienGiaoDienKem() {
    ++soQuyetDinh_;
    theoDoi_.matMayChu();
    if (theoDoi_.dangHien() == DangHien::giaoDienKem) return;
    if (!d_.giaoDienKem.batDau()) return hienTrangKhongKetNoi();
    theoDoi_.sangGiaoDienKem();
    datKichBan();
    d_.trang.tai(gocKem() + "/app", choTai);
}

void CuaSo::hienTrangKhongKetNoi() {
    theoDoi_.sangTrangKhongKetNoi();
    d_.trang.taiHtml(std::string(trangKhongKetNoi));
}

void CuaSo::neuHongThiBao(LyDoHong lyDo) {
    if (lyDo == LyDoHong::khac) hienTrangKhongKetNoi();
}

std::string CuaSo::gocKem() const {
    if (!theoDoi_.dangDungGiaoDienKem()) return {};
    return "http://127.0.0.1:" + std::to_string(d_.giaoDienKem.cong());
}

std::vector<std::string> CuaSo::gocTin() const {
    std::vector<std::string> ra{d_.thamSo.gocMayChu, gocKem()};
    // An opaque origin spells itself "null", and so might a server address that is no address.
    std::erase_if(ra, [](const std::string& goc) { return goc.find("://") == goc.npos; });
    return ra;
}

bool CuaSo::gocCauDuoc(std::string_view goc) const {
    const auto tin = gocTin();
    return std::find(tin.begin(), tin.end(), goc) != tin.end();
}

void CuaSo::datKichBan() {
    d_.trang.datKichBan(Cau::kichBan(d_.thamSo.gocMayChu, gocKem()), gocTin());
}

void CuaSo::khiTrangChet() {
    // No page is left that could relay the release of what it holds down.
    DieuKhien::chung().nhaHet();
    if (theoDoi_.dangHien() == DangHien::chuaGi) return;
    if (theoDoi_.dangHien() == DangHien::trangKhongKetNoi) {
        // Even the static page kills it: try again, but not as fast as the machine can.
        d_.vongLap.chaySau(nghiSauSap, [yeu = yeu()] {
            const auto toi = yeu.lock();
            if (toi && toi->theoDoi_.dangHien() == DangHien::trangKhongKetNoi) toi->hienTrangKhongKetNoi();
        });
        return;
    }
    if (sap_.khiSap(d_.vongLap.dongHo()) == QuyTacSap::Viec::taiLai) return taiLai();
    if (ManHinh::chung().dangPhat()) dungChiaSe();
    hienTrangKhongKetNoi();
}

void CuaSo::taiLai() {
    d_.trang.tai(theoDoi_.dangHien() == DangHien::giaoDienKem ? gocKem() + "/app" : d_.thamSo.duongDanApp,
                 choTai);
}

void CuaSo::dungChiaSe() {
    ManHinh::chung().dung();
    DieuKhien::chung().nhaHet();
    boDo();
}

// --- The server watch ---

void CuaSo::theoDoiMayChu() {
    dongHoMayChu_ = d_.vongLap.lapLai(TheoDoiMayChu::chuKy, [yeu = yeu()] {
        if (const auto toi = yeu.lock()) toi->nhip();
    });
}

void CuaSo::nhip() {
    if (theoDoi_.nhip() == TheoDoiMayChu::Do::khong) return;
    d_.doMayChu.song(d_.thamSo.mayChu, TheoDoiMayChu::choNhip, [yeu = yeu()](bool song) {
        if (const auto toi = yeu.lock()) toi->traLoiNhip(song);
    });
}

void CuaSo::traLoiNhip(bool song) {
    const auto viec = theoDoi_.traLoi(song);
    if (viec.matKetNoi) chay(kich_ban_trang::matKetNoi(*viec.matKetNoi));
    if (viec.songLai) chay(kich_ban_trang::mayChuSongLai());
    if (viec.napLai && !sap_.dangNghi(d_.vongLap.dongHo())) nap();
}

// --- Into the page ---

void CuaSo::chay(std::string js) {
    d_.vongLap.chay([yeu = yeu(), js = std::move(js)] {
        if (const auto toi = yeu.lock()) toi->d_.trang.chay(js);
    });
}

void CuaSo::chayNoiTin(std::string js) {
    d_.vongLap.chay([yeu = yeu(), js = std::move(js)] {
        if (const auto toi = yeu.lock()) toi->d_.trang.chay(kich_ban_trang::chiONoiTin(toi->gocTin(), js));
    });
}

void CuaSo::baoLoi(std::string tieuDe, std::string chiTiet) {
    d_.vongLap.chay([yeu = yeu(), tieuDe = std::move(tieuDe), chiTiet = std::move(chiTiet)] {
        if (const auto toi = yeu.lock()) toi->d_.hopBao.canhBao(tieuDe, chiTiet);
    });
}

void CuaSo::trangDaNap() {
    dayTrangThai();
    dayTroNang(BatBuoc::co);
    hoiDanhSachManHinh();
    if (khiTrangNap) khiTrangNap();
}

void CuaSo::dayTrangThai() {
    chay(kich_ban_trang::trangThai(d_.tuKhoiDong.dangBat()));
}

void CuaSo::dayTroNang(BatBuoc batBuoc) {
    const bool duoc = d_.quyenNhap.duocPhep();
    if (batBuoc == BatBuoc::khong && troNangTruoc_ == duoc) return;
    troNangTruoc_ = duoc;
    chay(kich_ban_trang::troNang(duoc));
}

void CuaSo::theoDoiQuyen() {
    dongHoQuyen_ = d_.vongLap.lapLai(chuKyQuyen, [yeu = yeu()] {
        if (const auto toi = yeu.lock()) toi->dayTroNang(BatBuoc::khong);
    });
}

void CuaSo::dayManHinh(const std::string& duongDan, const std::string& loi) {
    chayNoiTin(kich_ban_trang::manHinh(duongDan, loi, ManHinh::chung().dangPhat()));
}

void CuaSo::hoiDanhSachManHinh() {
    ManHinh::chung().hoiDanhSach([yeu = yeu()](const std::vector<MucManHinh>& danhSach) {
        if (const auto toi = yeu.lock()) toi->chay(kich_ban_trang::dsManHinh(danhSach));
    });
}

void CuaSo::dayThuMucLuu(const std::string& duong, const std::string& loi) {
    if (!duong.empty()) d_.caiDat.ghi(TaiXuong::khoaThuMucLuu, duong);
    chay(kich_ban_trang::traLoiLuu(duong, loi));
}

void CuaSo::datTuyChon(std::string_view ten, bool bat) {
    if (ten == "autostart") {
        if (auto loi = d_.tuKhoiDong.dat(bat)) baoLoi(tieuDeLoiKhoiDong, std::move(*loi));
    } else if (ten == "service") {
        baoLoi(tieuDeManHinhKhoa, chiTietManHinhKhoa);
    }
    dayTrangThai();
}

void CuaSo::luuNgonNgu(const std::string& ma) {
    d_.caiDat.ghi(khoaNgonNgu, ma);
}

// --- What the web view asks ---

TraLoiDieuHuong CuaSo::khiDieuHuong(const ThaoTacDieuHuong& thaoTac) {
    switch (ChinhSachDieuHuong::xet(thaoTac, d_.thamSo.gocMayChu)) {
        case QuyetDinhDieuHuong::choPhep:
            return TraLoiDieuHuong::choPhep;
        case QuyetDinhDieuHuong::taiXuong:
            return TraLoiDieuHuong::taiXuong;
        case QuyetDinhDieuHuong::moNgoai:
            d_.moDiaChi.mo(*thaoTac.diaChi);
            break;
        case QuyetDinhDieuHuong::thuLai:
            nap();
            break;
    }
    return TraLoiDieuHuong::huy;
}

TraLoiDieuHuong CuaSo::khiPhanHoi(HienDuoc hienDuoc) const {
    return hienDuoc == HienDuoc::co ? TraLoiDieuHuong::choPhep : TraLoiDieuHuong::taiXuong;
}

bool CuaSo::gocTinDuoc(std::string_view may) const {
    return tovira::gocTinDuoc(may, d_.thamSo.mayChu);
}

void CuaSo::khiThongBao(const std::string& noiDung) {
    d_.hopBao.thongBao(noiDung);
}

HopChonTep CuaSo::khiXinTep(ChonNhieu nhieu, ChonThuMuc thuMuc) const {
    return {nhieu, thuMuc, thuMuc == ChonThuMuc::co ? "Gửi thư mục này" : "Gửi"};
}

// --- Downloads and pop-ups ---

std::string CuaSo::khiChonNoiLuu(MaTai ma, std::string_view tenGoiY) {
    return taiXuong_.chon(ma, TaiXuong::thuMucLuu(d_.caiDat, d_.tep), tenGoiY, coTep);
}

void CuaSo::khiTaiXong(MaTai ma) {
    const auto duong = taiXuong_.lay(ma);
    if (!duong) return;
    const auto cheo = duong->rfind('/');
    chay(kich_ban_trang::daTai(duong->substr(0, std::max<std::size_t>(cheo, 1)), duong->substr(cheo + 1)));
    d_.tep.hien(*duong);
}

void CuaSo::khiTaiHong(MaTai ma, const std::string& moTa) {
    static_cast<void>(taiXuong_.lay(ma));
    chay(kich_ban_trang::taiHong(moTa));
}

std::optional<MoTach> CuaSo::khiXinTach(const std::string& diaChi, std::optional<double> rong,
                                        std::optional<double> cao) {
    if (CuaSoTach::moNgoai(diaChi)) {
        d_.moDiaChi.mo(diaChi);
        return std::nullopt;
    }
    return tach_.mo(rong, cao);
}

void CuaSo::khiTachSapDong(MaTach ma) {
    tach_.khiSapDong(ma);
}
void CuaSo::khiTachTuDong(MaTach ma) {
    tach_.khiTuDong(ma);
}

}  // namespace tovira

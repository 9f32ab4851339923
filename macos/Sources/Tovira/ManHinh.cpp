#include "ManHinh.hpp"

#include <algorithm>
#include <system_error>
#include <type_traits>
#include <utility>

#include "BatBien.hpp"
#include "DieuKhien.hpp"
#include "DuaKhung.hpp"
#include "MjpegServer.hpp"

namespace tovira {
namespace {

constexpr const char* loiChuaCapQuyen = "Chưa được cấp quyền Ghi màn hình";
constexpr const char* loiPhaiMoLai = "Hãy mở lại Tovira để quyền Ghi màn hình có hiệu lực";
constexpr const char* loiKhongCoManHinh = "Không tìm thấy màn hình nào";
constexpr const char* loiMatManHinh = "Màn hình đang chia sẻ không còn nữa";

// A smaller change of height, in per cent, is not worth restarting the encoder.
constexpr std::int64_t nguongDoiCanh = 16;

// A display that changes again within `hanDoiTiep` seconds of being looked for is given `choDoiTiep` seconds
// to come to rest.
constexpr double hanDoiTiep = 1.0;
constexpr double choDoiTiep = 0.5;

std::int64_t thanhChan(double so) {
    const auto nguyen = static_cast<std::int64_t>(so);
    return nguyen - nguyen % 2;
}

std::vector<MucManHinh> lapDanhSach(const std::vector<ManHinh::Nguon>& nguon) {
    std::vector<MucManHinh> ra;
    ra.reserve(nguon.size());
    for (std::size_t i = 0; i < nguon.size(); ++i)
        ra.push_back({static_cast<std::int64_t>(i), ManHinh::tenManHinh(nguon[i], i), nguon[i].rong,
                      nguon[i].cao, nguon[i].chinh});
    return ra;
}

const ManHinh::Nguon& chonManHinh(const std::vector<ManHinh::Nguon>& nguon, std::int64_t chiSo) {
    const auto cuoi = static_cast<std::int64_t>(nguon.size()) - 1;
    return nguon[static_cast<std::size_t>(std::clamp<std::int64_t>(chiSo, 0, cuoi))];
}

}  // namespace

// The frame server of one share and the road of the frames to it.
struct ManHinh::MayChuAnh final : DuaKhung::NoiGui {
    explicit MayChuAnh(HangDoi& hangDoiKhung) : dua(std::make_shared<DuaKhung>(hangDoiKhung, *this)) {
        may.khiCoNguoiRanh = dua->khiCoNguoiRanh();
    }
    // A server that listens, or why there is none.
    static KetQua<std::unique_ptr<MayChuAnh>> mo(HangDoi& hangDoiKhung) {
        try {
            auto ra = std::make_unique<MayChuAnh>(hangDoiKhung);
            if (const auto ketQua = ra->may.batDau(); !ketQua) return ketQua.loi();
            return ra;
        } catch (const std::system_error& loi) {
            // Out of descriptors, before there is a listener that could fail.
            return Loi{mienTovira, 1, loi.what()};
        }
    }
    ~MayChuAnh() override {
        dua->dong();
        may.dung();
    }

    bool coNguoiRanh() override { return may.coNguoiRanh(); }
    void baoKhiRanh() override { may.baoKhiRanh(); }
    void dangKhung(const MjpegServer::Khung& khung, MjpegServer::Gui gui) override {
        may.dangKhung(khung, gui);
    }

    [[nodiscard]] std::string url() const {
        return "http://127.0.0.1:" + std::to_string(may.cong()) + "/man-hinh?k=" + may.biMat();
    }

    MjpegServer may;
    std::shared_ptr<DuaKhung> dua;
    bool daBao = false;  // khiDoi knows this server's address
};

ManHinh::ManHinh(Nen& nen, VongLap& vongLap, DieuKhien& dieuKhien)
    : nen_(nen), vongLap_(vongLap), dieuKhien_(dieuKhien) {}

ManHinh::~ManHinh() {
    donDep();
}

// A function for any thread that runs `viec` with its own arguments on the main queue, unless this is gone by
// then.
template <class F>
auto ManHinh::veChinh(F viec) {
    return [&vongLap = vongLap_, yeu = std::weak_ptr<int>(song_), viec = std::move(viec)](auto&&... doiSo) {
        vongLap.chay(
            [yeu, viec, ... doiSo = std::decay_t<decltype(doiSo)>(std::forward<decltype(doiSo)>(doiSo))] {
                if (!yeu.expired()) viec(doiSo...);
            });
    };
}

void ManHinh::hoiDanhSach(KhiCoDanhSach xong) {
    TOVIRA_BUOC(vongLap_.dangOChinh());
    if (!nen_.duocGhi()) return xong({});
    nen_.lietKe(veChinh([this, xong = std::move(xong)](const DanhSachNguon& ketQua) {
        if (!ketQua) return xong({});
        danhSach_ = lapDanhSach(ketQua.giaTri());
        xong(danhSach_);
    }));
}

void ManHinh::batDau(std::int64_t chiSo) {
    TOVIRA_BUOC(vongLap_.dangOChinh());
    const std::uint64_t luot = ++luotXin_;
    if (!nen_.duocGhi()) return xinQuyen(luot);
    nen_.lietKe(veChinh([this, luot, chiSo](const DanhSachNguon& ketQua) {
        if (luot != luotXin_) return;
        if (!ketQua) return baoLoi(ketQua.loi().moTa);
        if (ketQua.giaTri().empty()) return baoLoi(loiKhongCoManHinh);
        moManHinh(chonManHinh(ketQua.giaTri(), chiSo));
    }));
}

void ManHinh::xinQuyen(std::uint64_t luot) {
    const bool duoc = nen_.xinGhi();
    if (luot != luotXin_) return;  // the request may have waited for the user
    // The right reaches a process only when it starts anew.
    if (duoc) return baoLoi(loiPhaiMoLai);
    baoLoi(loiChuaCapQuyen);
    moCaiDatGhiManHinh();
}

void ManHinh::moManHinh(const Nguon& nguon) {
    auto may = MayChuAnh::mo(nen_.hangDoiKhung());
    if (!may) return baoLoi(may.loi().moTa);
    boLuong();
    mayChuAnh_ = std::move(may).giaTri();
    moLuong(nguon);
}

// Captures `nguon` into the server at hand.
void ManHinh::moLuong(const Nguon& nguon) {
    dieuKhien_.datKhungManHinh(nguon.khung);
    manDangChia_ = nguon;
    const std::uint64_t luot = ++luotLuong_;
    mayChuAnh_->dua->chonLuot(luot);
    auto luong = nen_.moLuong(nguon, dungCauHinh(nguon), taoPhiaNhan(luot));
    if (!luong) return ketThucVi(luong.loi().moTa);
    luong_ = std::move(luong).giaTri();
    luong_->batDau(veChinh([this, luot](const KetQua<void>& ketQua) { khiBatDauXong(luot, ketQua); }));
}

ManHinh::CauHinh ManHinh::dungCauHinh(const Nguon& nguon) const {
    return {.co = coThuNho(nguon.diemAnh, caoToiDa_), .khungMoiGiay = khungMoiGiay};
}

ManHinh::PhiaNhan ManHinh::taoPhiaNhan(std::uint64_t luot) {
    return {.khiCoKhung = [dua = mayChuAnh_->dua,
                           luot](std::unique_ptr<Khung> khung) { dua->nhan(luot, std::move(khung)); },
            .khiBiDung = veChinh([this, luot](const Loi& loi) { khiBiDung(luot, loi); })};
}

void ManHinh::khiBatDauXong(std::uint64_t luot, const KetQua<void>& ketQua) {
    if (luot != luotLuong_) return;
    if (!ketQua) {
        ngung();
        dieuKhien_.nhaHet();
        return baoLoi(ketQua.loi().moTa);
    }
    if (std::exchange(mayChuAnh_->daBao, true)) return;  // back on the same server after its display changed
    datDangPhat(true);
    bao(mayChuAnh_->url(), "");
    if (dangPhat_) theoDoiNguoiXem();
}

void ManHinh::khiBiDung(std::uint64_t luot, const Loi& loi) {
    if (luot != luotLuong_) return;
    if (loi.mien == mienNguon && loi.ma == maManHinhDoi) return theoDoiManHinhDoi();
    ketThucVi(loi.moTa);
}

// Looks for the shared display anew. The server stays, and its viewers with it.
void ManHinh::theoDoiManHinhDoi() {
    boLuong();
    const std::uint64_t luot = luotLuong_;
    const double luc = vongLap_.dongHo();
    const bool voiVang = lucTimLai_ && luc - *lucTimLai_ < hanDoiTiep;
    lucTimLai_ = luc;
    if (!voiVang) return timLaiManHinh(luot);
    vongLap_.chaySau(choDoiTiep, [this, yeu = std::weak_ptr<int>(song_), luot] {
        if (!yeu.expired()) timLaiManHinh(luot);
    });
}

void ManHinh::timLaiManHinh(std::uint64_t luot) {
    if (luot != luotLuong_) return;
    nen_.lietKe(veChinh([this, luot](const DanhSachNguon& ketQua) {
        if (luot != luotLuong_) return;
        if (!ketQua) return ketThucVi(ketQua.loi().moTa);
        const auto& ds = ketQua.giaTri();
        const auto o = std::find_if(ds.begin(), ds.end(),
                                    [ma = manDangChia_->ma](const Nguon& nguon) { return nguon.ma == ma; });
        if (o == ds.end()) return ketThucVi(loiMatManHinh);
        moLuong(*o);
    }));
}

void ManHinh::theoDoiNguoiXem() {
    canh_ = {};
    dongHoNguoiXem_ = vongLap_.lapLai(CanhNguoiXem::chuKy, [this] { nhipNguoiXem(); });
}

void ManHinh::nhipNguoiXem() {
    MjpegServer& may = mayChuAnh_->may;
    std::optional<std::size_t> soKhach;
    if (may.daTungCoKhach()) soKhach = may.soKhach();
    switch (canh_.nhip(soKhach, vongLap_.dongHo())) {
        case CanhNguoiXem::Viec::tiep:
            return;
        case CanhNguoiXem::Viec::vuaVang:
            // Whoever held a key or a button down is gone; they may come back, the share waits for them.
            return dieuKhien_.nhaHet();
        case CanhNguoiXem::Viec::ketThuc:
            break;
    }
    ngung();
    if (const auto goi = khiTuDung) goi();
}

void ManHinh::datCanh(std::int64_t cao) {
    TOVIRA_BUOC(vongLap_.dangOChinh());
    const auto moi = canhMoi(cao, caoToiDa_);
    if (!moi) return;
    caoToiDa_ = *moi;
    if (luong_ && manDangChia_) luong_->doiCauHinh(dungCauHinh(*manDangChia_));
}

void ManHinh::dung() {
    TOVIRA_BUOC(vongLap_.dangOChinh());
    ++luotXin_;
    ngung();
}

void ManHinh::moCaiDatGhiManHinh() {
    nen_.moCaiDatGhiManHinh();
}

void ManHinh::datDangPhat(bool dangPhat) {
    if (std::exchange(dangPhat_, dangPhat) != dangPhat) nen_.giuThuc(dangPhat);
}

void ManHinh::boLuong() {
    ++luotLuong_;
    if (!luong_) return;
    luong_->dung();
    luong_.reset();
}

void ManHinh::donDep() {
    dongHoNguoiXem_.reset();
    boLuong();
    mayChuAnh_.reset();
    datDangPhat(false);
}

void ManHinh::ngung() {
    donDep();
    bao("", "");
}

// A share that ends without anyone asking for it must not leave keys pressed either.
void ManHinh::ketThucVi(const std::string& loi) {
    donDep();
    dieuKhien_.nhaHet();
    baoLoi(loi);
}

void ManHinh::bao(const std::string& url, const std::string& loi) {
    if (const auto goi = khiDoi) goi(url, loi);
}

std::string ManHinh::tenManHinh(const Nguon& nguon, std::size_t viTri) {
    return nguon.ten.empty() ? "Màn hình " + std::to_string(viTri + 1) : nguon.ten;
}

KichThuoc ManHinh::coThuNho(KichThuoc co, std::int64_t caoToiDa) {
    if (co.cao <= caoToiDa) return co;
    const double tiLe = static_cast<double>(caoToiDa) / static_cast<double>(co.cao);
    return {thanhChan(static_cast<double>(co.rong) * tiLe), thanhChan(static_cast<double>(co.cao) * tiLe)};
}

std::optional<std::int64_t> ManHinh::canhMoi(std::int64_t cao, std::int64_t caoToiDa) {
    const std::int64_t moi = std::clamp(cao, caoSan, caoTranCung);
    const std::int64_t lech = moi < caoToiDa ? caoToiDa - moi : moi - caoToiDa;
    if (lech * 100 / std::max<std::int64_t>(caoToiDa, 1) < nguongDoiCanh) return std::nullopt;
    return moi;
}

}  // namespace tovira

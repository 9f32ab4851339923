#pragma once
// The web host on a platform that only remembers what it was told, around the real capture and input types.

#include <filesystem>
#include <functional>
#include <string>
#include <utility>
#include <vector>

#include "CuaSo.hpp"
#include "DieuKhien.hpp"
#include "DoMayChu.hpp"
#include "GiaoDienKem.hpp"
#include "ManHinh.hpp"
#include "ThamSo.hpp"
#include "gia/CaiDatGia.hpp"
#include "gia/NenCuaGia.hpp"
#include "gia/NenDieuKhienGia.hpp"
#include "gia/NenManHinhGia.hpp"
#include "gia/NenTachGia.hpp"
#include "gia/ThuMucTam.hpp"
#include "gia/VongLapGia.hpp"

namespace tovira::gia {

struct NenTrangGia final : CuaSo::NenTrang {
    std::vector<std::string> kichBan;                  // every bridge script that was installed
    std::vector<std::pair<std::string, double>> tai_;  // every load: address ("html" for a text), time limit
    std::vector<std::string> gocTin;
    std::string html;
    std::vector<std::string> js;

    std::vector<std::string> layJs() { return std::exchange(js, {}); }
    std::vector<std::pair<std::string, double>> layTai() { return std::exchange(tai_, {}); }

    void dung(CuaSo&) override {}
    void datKichBan(const std::string& k, const std::vector<std::string>& goc) override {
        kichBan.push_back(k);
        gocTin = goc;
    }
    void tai(const std::string& diaChi, double cho) override { tai_.emplace_back(diaChi, cho); }
    void taiHtml(const std::string& h) override {
        tai_.emplace_back("html", 0);
        html = h;
    }
    void chay(const std::string& j) override { js.push_back(j); }
};

// Alerts, opened addresses, revealed files, login item and permission prompt: one diary.
struct NenLinhTinhGia final : HopBao, MoDiaChi, TepNguoiDung, TuKhoiDong, Cau::Nen, Cau::NhanTep {
    std::vector<std::string> viec;
    std::optional<std::string> loiKhoiDong;
    bool batKhoiDong = false;
    bool tinSauKhiXin = false;
    std::string thuMuc;
    std::function<void()> trongThongBao;  // what happens while an alert is open
    std::function<void(TraLoi)> choNhan;
    std::function<void(std::string, std::string)> choChon;

    std::vector<std::string> lay() { return std::exchange(viec, {}); }

    void canhBao(const std::string& tieuDe, const std::string& chiTiet) override {
        viec.push_back("canhBao " + tieuDe + "|" + chiTiet);
    }
    void thongBao(const std::string& noiDung) override {
        viec.push_back("thongBao " + noiDung);
        if (trongThongBao) trongThongBao();
    }
    void mo(const std::string& diaChi) override { viec.push_back("mo " + diaChi); }
    std::optional<std::string> thuMucTaiXuong() const override { return thuMuc; }
    void hien(const std::string& duong) override { viec.push_back("hien " + duong); }
    bool dangBat() override { return batKhoiDong; }
    std::optional<std::string> dat(bool bat) override {
        if (!loiKhoiDong) batKhoiDong = bat;
        return loiKhoiDong;
    }
    bool xinTroNang() override {
        viec.emplace_back("xinTroNang");
        return tinSauKhiXin;
    }
    void chonThuMuc(std::function<void(TraLoi)> xong) override { choNhan = std::move(xong); }
    void chiChonThuMuc(std::function<void(std::string, std::string)> xong) override {
        choChon = std::move(xong);
    }
    void moTaiDuong(const std::string& duong, std::function<void(TraLoi)> xong) override {
        viec.push_back("moTaiDuong " + duong);
        choNhan = std::move(xong);
    }
    void dongThuMuc() override { viec.emplace_back("dongThuMuc"); }
    void hienTrongFinder(const std::string& duong, const std::string& ten) override {
        viec.push_back("hienTrongFinder " + duong + "|" + ten);
    }
};

// Probes wait until the test answers them.
struct DoMayChuGia final : DoMayChu {
    using DoMayChu::DoMayChu;
    struct Lan {
        std::string url;
        double cho;
        std::function<void(bool)> xong;
    };
    std::vector<Lan> lan;

    void song(const std::string& url, double cho, std::function<void(bool)> xong) override {
        lan.push_back({url, cho, std::move(xong)});
    }
    // Answers the oldest one; its time limit, or 0 when nobody asked.
    double traLoi(bool song) {
        if (lan.empty()) return 0;
        const Lan dau = std::move(lan.front());
        lan.erase(lan.begin());
        dau.xong(song);
        return dau.cho;
    }
};

// What stands around every web host under test, whatever its main queue, its probe and its web view are.
template <class Vong, class Do = DoMayChuGia>
struct NhaWeb {
    ThuMucTam tam;
    Vong vong;
    NenDieuKhienGia nenNhap;
    NenManHinhGia nenMan;
    DieuKhien dieuKhien{nenNhap, vong};
    ManHinh manHinh{nenMan, vong, dieuKhien};
    DieuKhien::DatChung datNhap{dieuKhien};
    ManHinh::DatChung datMan{manHinh};
    ThamSo thamSo;
    NenLinhTinhGia khac;
    CaiDatGia caiDat;
    Do doMayChu{vong};
    GiaoDienKem giaoDienKem{tam.duong()};

    explicit NhaWeb(const std::string& mayChu) {
        thamSo.mayChu = mayChu;
        thamSo.duongDanApp = mayChu + "/app";
        thamSo.gocMayChu = mayChu;
        khac.thuMuc = tam.duong().string();
    }

    // Asks for the screen share; its stream then waits to be told that it has started.
    void xinPhat() {
        nenMan.ketQuaLietKe =
            std::vector<ManHinh::Nguon>{{1, "Một", 1920, 1080, {1920, 1080}, {0, 0, 1920, 1080}, true}};
        manHinh.batDau(0);
    }

    // The web host on these grounds.
    CuaSo::ChoDua choDua(CuaSo::NenCua& cua, CuaSo::NenTrang& trang, CuaSo::NenTach& tach) {
        return {vong, thamSo, cua,    trang, tach, nenNhap,  khac,       khac,
                khac, khac,   caiDat, khac,  khac, doMayChu, giaoDienKem};
    }
};

struct PhongWeb : NhaWeb<VongLapGia> {
    static constexpr const char* mayChu = "https://vi.du";

    NenCuaGia cua;
    NenTrangGia trang;
    NenTachGia tach;
    CuaSo cuaSo{choDua(cua, trang, tach)};

    PhongWeb() : NhaWeb(mayChu) {}

    // The packaged interface can be served from now on.
    void coGiaoDien() {
        std::filesystem::create_directories(tam / "giao-dien");
        ghiTep(tam / "giao-dien" / "app.html", "x");
    }
    [[nodiscard]] std::string gocKem() const {
        return "http://127.0.0.1:" + std::to_string(giaoDienKem.cong());
    }

    // Brings the screen share up, as far as the page can tell.
    void phat() {
        xinPhat();
        vong.xa();
        nenMan.luong.back()->xong({});
        vong.xa();
    }

    // The page posts `json` from where a trusted page does.
    void gui(std::string_view json, const NguoiGui& ai = {LoaiKhung::chinh, mayChu}) {
        cuaSo.cau().nhan(json, ai);
    }
    // A script with a secret in it, as it is run while only the server is trusted.
    static std::string noiTin(const std::string& js) {
        return "if (false || location.origin === \"https://vi.du\") " + js;
    }
    // The scripts that reach the page from here on, once the queue has run.
    std::vector<std::string> js() {
        vong.xa();
        return trang.layJs();
    }
};

}  // namespace tovira::gia

// Relative paths against a real folder with links in it: whatever is accepted and written lies inside. Odd
// inputs are taken as request heads first, so that Base64 and the header lines are met as well.

#include <stdlib.h>

#include <array>
#include <cstdint>
#include <filesystem>
#include <string>

#include "BatBien.hpp"
#include "DuongDanNhan.hpp"
#include "ThuMucNhan.hpp"
#include "YeuCauNhan.hpp"

using namespace tovira;
namespace fs = std::filesystem;

namespace {

// Inside "g": folders a and b/c, links that lead in, out, round in circles and nowhere. Beside it: "n".
struct San {
    San() {
        std::string mau = (fs::temp_directory_path() / "tv-fuzz-XXXXXX").string();
        TOVIRA_BUOC(::mkdtemp(mau.data()) != nullptr);
        tam = fs::canonical(mau);
        fs::create_directories(tam / "n/b");
        don();
    }
    ~San() { fs::remove_all(tam); }

    // As it was at first.
    void don() const {
        fs::remove_all(goc());
        fs::create_directories(goc() / "a");
        fs::create_directories(goc() / "b/c");
        const std::pair<const char*, fs::path> lienKet[] = {
            {"v", "b"}, {"r", "../n"}, {"t", tam / "n"}, {"g", tam / "g"},   {"o", "o"},
            {"x", "k"}, {"y", "../k"}, {"u", ".."},      {"b/c/w", "../.."}, {"z", "r/b"}};
        for (const auto& [ten, toi] : lienKet)
            fs::create_symlink(toi, goc() / ten);
    }
    [[nodiscard]] fs::path goc() const { return tam / "g"; }

    fs::path tam;
};

void thu(const San& san, ThuMucNhan::SoNoi soNoi, std::string_view duong) {
    ThuMucNhan thuMuc(san.goc().string(), ThuMucNhan::DoBen::tuyHeThong, soNoi);
    const auto dich = thuMuc.giaiDuongDan(duong);
    if (dich) {
        TOVIRA_BUOC(tachDuongNhan(duong).has_value());
        TOVIRA_BUOC(dich->ten == tachDuongNhan(duong)->back());
        if (thuMuc.ghi(*dich, std::array{std::as_bytes(std::span("x", 1))})) {
            fs::path toi = san.goc();
            for (const std::string& ten : dich->cha)
                toi /= ten;
            TOVIRA_BUOC(fs::canonical(toi) == toi);
            TOVIRA_BUOC(fs::is_regular_file(fs::symlink_status(toi / dich->ten)));
        }
    }
    const bool motLan = thuMuc.nhan(duong, {}) != ThuMucNhan::KetCuc::duongXau;
    TOVIRA_BUOC(motLan == thuMuc.giaiDuongDan(duong).has_value());
    // Nothing outside, no leftovers inside.
    TOVIRA_BUOC(std::distance(fs::directory_iterator(san.tam), {}) == 2);
    TOVIRA_BUOC(fs::is_empty(san.tam / "n/b") &&
                std::distance(fs::directory_iterator(san.tam / "n"), {}) == 1);
    for (const auto& muc : fs::recursive_directory_iterator(san.goc()))
        TOVIRA_BUOC(!muc.path().filename().string().starts_with(".tv-nhan-"));
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* duLieu, std::size_t dai) {
    static const San san;
    const std::string_view byte(reinterpret_cast<const char*>(duLieu), dai);
    const YeuCauNhan yeuCau = xetYeuCauNhan(byte, "k");
    TOVIRA_BUOC(!yeuCau.traNgay || yeuCau.duong.empty());
    TOVIRA_BUOC(yeuCau.doDai >= -1);
    const std::string duong = yeuCau.traNgay ? std::string(byte) : yeuCau.duong;
    // The last check below tells leftovers by this beginning of their names.
    if (!tachDuongNhan(duong) || duong.find(".tv-nhan-") != std::string::npos) return 0;
    san.don();
    thu(san, ThuMucNhan::SoNoi::theoByte, duong);
    thu(san, ThuMucNhan::SoNoi::theoMaTep, duong);
    return 0;
}

// The icon's files: PNG encoding and the two writing modes.

#include <spng.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <map>
#include <memory>

#include "BieuTuong.hpp"

namespace tovira {

namespace {

namespace fs = std::filesystem;

constexpr const char* mien = "BieuTuong";
// The gradient leaves a filter little to gain, and none is faster; the level was chosen by size and time
// together.
constexpr int mucNen = 1;

struct HuySpng {
    void operator()(spng_ctx* ctx) const { spng_ctx_free(ctx); }
};

struct HuyBoNho {
    void operator()(void* p) const { std::free(p); }
};

std::vector<std::uint8_t> boAlpha(const std::vector<std::uint8_t>& rgba) {
    std::vector<std::uint8_t> rgb(rgba.size() / 4 * 3);
    for (std::size_t i = 0, j = 0; i < rgba.size(); i += 4, j += 3)
        std::copy_n(rgba.begin() + static_cast<std::ptrdiff_t>(i), 3,
                    rgb.begin() + static_cast<std::ptrdiff_t>(j));
    return rgb;
}

// What an operation on files failed with, as the system words it.
Loi loiTep(const fs::path& tep, const std::string& lyDo) {
    return {mien, 2, tep.string() + ": " + lyDo};
}

KetQua<void> taoThuMuc(const fs::path& thuMuc) {
    std::error_code ma;
    fs::create_directories(thuMuc, ma);
    if (ma || !fs::is_directory(thuMuc, ma)) return loiTep(thuMuc, ma ? ma.message() : "không phải thư mục");
    return {};
}

KetQua<void> ghiTep(const fs::path& tep, const std::vector<std::byte>& duLieu) {
    std::ofstream ra(tep, std::ios::binary | std::ios::trunc);
    ra.write(reinterpret_cast<const char*>(duLieu.data()), static_cast<std::streamsize>(duLieu.size()));
    ra.close();
    if (!ra) return loiTep(tep, "không ghi được");
    return {};
}

int ketThucCheDo(const KetQua<void>& kq, const char* hong, const std::string& duoc) {
    if (kq) {
        std::printf("✓ Đã ghi %s\n", duoc.c_str());
        return 0;
    }
    std::fprintf(stderr, "✗ %s: %s\n", hong, kq.loi().moTa.c_str());
    return 1;
}

}  // namespace

KetQua<std::vector<std::byte>> BieuTuong::png(int canh, BoGoc boGoc) {
    const Loi hong{mien, 1, "không nén được PNG"};
    std::vector<std::uint8_t> anh = rgba(canh, boGoc);
    if (boGoc == BoGoc::khong) anh = boAlpha(anh);

    const std::unique_ptr<spng_ctx, HuySpng> ctx(spng_ctx_new(SPNG_CTX_ENCODER));
    if (anh.empty() || !ctx) return hong;
    spng_ihdr dau{};
    dau.width = dau.height = static_cast<std::uint32_t>(canh);
    dau.bit_depth = 8;
    dau.color_type = boGoc == BoGoc::co ? SPNG_COLOR_TYPE_TRUECOLOR_ALPHA : SPNG_COLOR_TYPE_TRUECOLOR;
    spng_set_option(ctx.get(), SPNG_ENCODE_TO_BUFFER, 1);
    spng_set_option(ctx.get(), SPNG_FILTER_CHOICE, SPNG_DISABLE_FILTERING);
    spng_set_option(ctx.get(), SPNG_IMG_COMPRESSION_LEVEL, mucNen);
    if (spng_set_ihdr(ctx.get(), &dau) != 0 ||
        spng_encode_image(ctx.get(), anh.data(), anh.size(), SPNG_FMT_PNG, SPNG_ENCODE_FINALIZE) != 0)
        return hong;
    std::size_t dai = 0;
    int ma = 0;
    const std::unique_ptr<void, HuyBoNho> dem(spng_get_png_buffer(ctx.get(), &dai, &ma));
    if (!dem || ma != 0) return hong;
    const auto* dau0 = static_cast<const std::byte*>(dem.get());
    return std::vector<std::byte>(dau0, dau0 + dai);
}

KetQua<void> BieuTuong::ghiBoIcon(const std::string& vao) {
    if (auto kq = taoThuMuc(vao); !kq) return kq;
    std::map<int, std::vector<std::byte>> daVe;  // four sizes stand twice in the set
    for (const Muc& muc : boIcon) {
        auto cho = daVe.find(muc.canh);
        if (cho == daVe.end()) {
            auto anh = png(muc.canh, BoGoc::co);
            if (!anh) return Loi{mien, 1, std::string("không dựng được ") + muc.ten};
            cho = daVe.emplace(muc.canh, std::move(anh).giaTri()).first;
        }
        if (auto kq = ghiTep(fs::path(vao) / muc.ten, cho->second); !kq) return kq;
    }
    return {};
}

KetQua<void> BieuTuong::ghiIconIOS(const std::string& vao) {
    const auto anh = png(canhIOS, BoGoc::khong);
    if (!anh) return anh.loi();
    const fs::path thuMuc = fs::path(vao).parent_path();
    if (!thuMuc.empty()) {
        if (auto kq = taoThuMuc(thuMuc); !kq) return kq;
    }
    return ghiTep(vao, anh.giaTri());
}

int BieuTuong::chayTaoIcon(const std::string& vao) {
    return ketThucCheDo(ghiBoIcon(vao), "Không ghi được biểu tượng",
                        std::to_string(boIcon.size()) + " tệp vào " + vao);
}

int BieuTuong::chayTaoIconIOS(const std::string& vao) {
    return ketThucCheDo(ghiIconIOS(vao), "Không ghi được biểu tượng iOS", vao);
}

}  // namespace tovira

#pragma once
// Any thread: pure functions on values. Where the web view may go, and what is opened elsewhere or saved.

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace tovira {

enum class LoaiDieuHuong : std::uint8_t { bamLienKet, khac };  // a link click / anything else
enum class YeuCauTai : std::uint8_t { khong, co };             // does the action ask to be a download?

// One navigation that the page wants to make.
struct ThaoTacDieuHuong {
    std::optional<std::string> diaChi;  // absent when the request has none
    LoaiDieuHuong loai = LoaiDieuHuong::khac;
    YeuCauTai taiVe = YeuCauTai::khong;
};

enum class QuyetDinhDieuHuong : std::uint8_t { choPhep, taiXuong, moNgoai, thuLai };

struct ChinhSachDieuHuong {
    // The link of the lost-connection page: asks the server again.
    static constexpr std::string_view diaChiTaiLai = "tovira://tai-lai";

    // `gocMayChu`: the server's origin, whose host is the one that link clicks may stay on.
    [[nodiscard]] static QuyetDinhDieuHuong xet(const ThaoTacDieuHuong& thaoTac, std::string_view gocMayChu);
};

// May a page of host `may` use camera and microphone? `mayChu` is the server base; only hosts are compared.
[[nodiscard]] bool gocTinDuoc(std::string_view may, std::string_view mayChu);

}  // namespace tovira

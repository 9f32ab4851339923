#pragma once
// Any thread: pure functions. Every script that the host runs in the page. Each first checks that its target
// exists, so it is harmless on a page that is not ours.

#include <span>
#include <string>
#include <string_view>

#include "Cau.hpp"
#include "ManHinh.hpp"

namespace tovira::kich_ban_trang {

// `autostart`: is the login item on?
[[nodiscard]] std::string trangThai(bool autostart);
[[nodiscard]] std::string troNang(bool duocPhep);
[[nodiscard]] std::string manHinh(std::string_view duongDan, std::string_view loi, bool dangPhat);
[[nodiscard]] std::string dsManHinh(std::span<const MucManHinh> danhSach);
// The answers to the page's pending promises.
[[nodiscard]] std::string traLoiNhan(const Cau::NhanTep::TraLoi& traLoi);
[[nodiscard]] std::string traLoiLuu(std::string_view duong, std::string_view loi);
// The server is lost (true) or back (false).
[[nodiscard]] std::string matKetNoi(bool mat);
[[nodiscard]] std::string mayChuSongLai();
[[nodiscard]] std::string daTai(std::string_view thuMuc, std::string_view ten);
[[nodiscard]] std::string taiHong(std::string_view moTa);
// Clicks the page's own stop button.
[[nodiscard]] std::string bamDung();

// `js`, one statement, run only where the document's own origin is one of `gocTin`: for what carries a
// secret. A page elsewhere may well have a window.tovira of its own making, but location.origin no page can
// forge.
[[nodiscard]] std::string chiONoiTin(std::span<const std::string> gocTin, std::string_view js);

}  // namespace tovira::kich_ban_trang

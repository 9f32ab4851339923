#pragma once
// Main thread. The grounds that more than one type stands on: alerts, opening an address, user defaults.

#include <optional>
#include <string>

namespace tovira {

// Modal alerts with one button "Đã hiểu". Each call returns when the user has dismissed it, so callers defer
// it through the main queue where the page must not wait.
struct HopBao {
    virtual ~HopBao() = default;
    // A warning: `tieuDe` is the message, `chiTiet` the informative text below it.
    virtual void canhBao(const std::string& tieuDe, const std::string& chiTiet) = 0;
    // A page's own alert().
    virtual void thongBao(const std::string& noiDung) = 0;
};

// Opens an address in whatever the user has chosen for its scheme.
struct MoDiaChi {
    virtual ~MoDiaChi() = default;
    virtual void mo(const std::string& diaChi) = 0;
};

// The user's stored defaults, texts by key. A value is on disk before `ghi` returns or soon after.
struct CaiDat {
    virtual ~CaiDat() = default;
    [[nodiscard]] virtual std::optional<std::string> doc(const std::string& khoa) const = 0;
    virtual void ghi(const std::string& khoa, const std::string& giaTri) = 0;
};

// The user's files and the program that shows them.
struct TepNguoiDung {
    virtual ~TepNguoiDung() = default;
    // The user's Downloads folder; absent when the system names none.
    [[nodiscard]] virtual std::optional<std::string> thuMucTaiXuong() const = 0;
    // Reveals one existing file or folder in the file browser, selected where that is possible.
    virtual void hien(const std::string& duong) = 0;
};

}  // namespace tovira

#pragma once
// Main thread. The program as users start it, with a home of its own and a page that does what the test says.

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "gia/ThuMucTam.hpp"
#include "gia/TienTrinh.hpp"
#include "gia/TrangDieuKhien.hpp"

namespace tovira::thu {

class PhongDuong : public testing::Test {
  protected:
    void SetUp() override {
        const auto nha = tam.duong() / "nha";
        std::filesystem::create_directories(nha);
        for (const char* bien : {"HOME", "XDG_CONFIG_HOME", "XDG_DATA_HOME", "XDG_CACHE_HOME"})
            setenv(bien, nha.c_str(), 1);
        setenv("XDG_RUNTIME_DIR", nha.c_str(), 1);
        std::filesystem::permissions(nha, std::filesystem::perms::owner_all);
    }

    std::vector<std::string> dongLenh(const std::vector<std::string>& them = {}) {
        std::vector<std::string> ra{chuongTrinh, "--server", trang.goc()};
        ra.insert(ra.end(), them.begin(), them.end());
        return ra;
    }
    // `xong` is what holds on the page once it has all it is told at first.
    void moTovira(const std::vector<std::string>& them = {},
                  const char* xong = "window.tovira && tovira.dsManHinh.length") {
        tovira.emplace(dongLenh(them));
        ASSERT_TRUE(trang.cho(xong));
    }

    // Starts sharing and says what the page was told.
    std::string chiaSe() {
        trang.chay("tovira.xinManHinh(0)");
        if (!trang.cho("tovira.manHinhDangPhat() || tovira.manHinh.loi")) return {};
        EXPECT_EQ(trang.hoi("tovira.manHinh.loi"), "");
        return trang.hoi("tovira.manHinh.duongDan");
    }

    void lenh(const std::string& json) { trang.chay("tovira.guiLenh('" + json + "')"); }

    gia::ThuMucTam tam;
    gia::TrangDieuKhien trang;
    std::string chuongTrinh = TOVIRA_CHUONG_TRINH;
    std::optional<gia::TienTrinh> tovira;
};

}  // namespace tovira::thu

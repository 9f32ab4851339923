#include "MotBan.hpp"

#include <gtest/gtest.h>

#include "ChoBanMoi.hpp"
#include "gia/NenMotBanGia.hpp"
#include "gia/VongLapGia.hpp"

using namespace tovira;
using Cac = std::vector<std::string>;

TEST(MotBan, quyetDinhLucKhoiDong) {
    struct {
        Cac thamSo;
        const char* thay;
        bool trong;
        MotBan::Viec viec;
        Cac lam;
    } const bang[] = {
        {{"tovira"}, nullptr, true, MotBan::Viec::chay, {"giữ"}},
        {{"tovira", "--ngam"}, nullptr, true, MotBan::Viec::chay, {"giữ"}},
        {{"tovira"}, nullptr, false, MotBan::Viec::ketThuc, {"giữ", "gọi"}},
        {{"tovira"}, "", false, MotBan::Viec::ketThuc, {"giữ", "gọi"}},
        {{"tovira", "--ngam"}, nullptr, false, MotBan::Viec::ketThuc, {"giữ"}},
        {{"tovira"}, "1", false, MotBan::Viec::chay, {"nhận"}},
        {{"tovira", "--ngam"}, "1", false, MotBan::Viec::chay, {"nhận"}},
    };
    for (const auto& dong : bang) {
        gia::NenMotBanGia nen;
        nen.trong = dong.trong;
        MotBan motBan(nen, MotBan::cach(dong.thamSo, dong.thay));
        EXPECT_EQ(motBan.batDau(), dong.viec);
        // The one before goes on until the new one is certain to run.
        if (dong.thay != nullptr && *dong.thay != '\0') {
            EXPECT_EQ(nen.viec, Cac{});
        }
        if (dong.viec == MotBan::Viec::chay) motBan.vaoCho();
        EXPECT_EQ(nen.lay(), dong.lam);
    }
}

TEST(ChoBanMoi, traLoiDauTienLaCauTraLoi) {
    using TraLoi = std::optional<std::string>;
    const TraLoi xong;
    const TraLoi muon = "Bản mới không khởi động xong trong 30 giây.";
    struct {
        std::function<void(ChoBanMoi&)> viec;
        TraLoi mong;
    } const bang[] = {
        {[](ChoBanMoi& c) { c.khiNhanCho(); }, xong},
        {[](ChoBanMoi& c) { c.khiKetThuc(127); }, "Bản mới đã kết thúc ngay với mã 127."},
        {[](ChoBanMoi& c) { c.khiHong("Không tìm thấy tệp"); }, "Không tìm thấy tệp"},
        {[](ChoBanMoi&) {}, muon},
    };
    for (const auto& dong : bang) {
        gia::VongLapGia vong;
        std::vector<TraLoi> nhan;
        ChoBanMoi cho(vong, [&](TraLoi loi) { nhan.push_back(std::move(loi)); });
        vong.tien(ChoBanMoi::han - 1);
        EXPECT_TRUE(nhan.empty());
        dong.viec(cho);
        vong.tien(60);
        cho.khiKetThuc(1);
        cho.khiNhanCho();
        EXPECT_EQ(nhan, std::vector{dong.mong});
    }
}

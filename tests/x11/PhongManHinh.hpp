#pragma once
// Test thread; frames come on the capture's own. A stream of the virtual display and what it delivers.

#include <gtest/gtest.h>

#include <chrono>
#include <condition_variable>
#include <deque>
#include <future>
#include <mutex>
#include <optional>

#include "ManHinhLinux.hpp"
#include "ManHinhNen.hpp"
#include "x11/AnhJpeg.hpp"
#include "x11/KhachX.hpp"

namespace tovira::thu {

inline constexpr auto hanCho = std::chrono::seconds(20);  // an answer that takes longer is a fault
using DongHo = std::chrono::steady_clock;

// What a stream delivered, handed from the frame queue to the test.
class BoNhan {
  public:
    struct Muc {
        std::unique_ptr<ManHinh::Khung> khung;
        DongHo::time_point luc;
    };

    ManHinh::PhiaNhan phiaNhan() {
        return {[this](std::unique_ptr<ManHinh::Khung> k) { nhan(std::move(k)); },
                [this](Loi l) {
                    const std::lock_guard khoa(khoa_);
                    loi_ = std::move(l);
                    co_.notify_all();
                }};
    }

    std::optional<Muc> lay(std::chrono::milliseconds han = hanCho) {
        std::unique_lock khoa(khoa_);
        if (!co_.wait_for(khoa, han, [this] { return !hang_.empty(); })) return {};
        Muc m = std::move(hang_.front());
        hang_.pop_front();
        return m;
    }
    std::optional<Loi> choLoi() {
        std::unique_lock khoa(khoa_);
        co_.wait_for(khoa, hanCho, [this] { return loi_.has_value(); });
        return loi_;
    }
    [[nodiscard]] std::size_t dangCho() {
        const std::lock_guard khoa(khoa_);
        return hang_.size();
    }
    [[nodiscard]] bool coLoi() {
        const std::lock_guard khoa(khoa_);
        return loi_.has_value();
    }
    void xoa() {
        std::deque<Muc> cu;
        const std::lock_guard khoa(khoa_);
        cu.swap(hang_);
    }

  private:
    void nhan(std::unique_ptr<ManHinh::Khung> k) {
        const std::lock_guard khoa(khoa_);
        hang_.push_back({std::move(k), DongHo::now()});
        co_.notify_all();
    }

    std::mutex khoa_;
    std::condition_variable co_;
    std::deque<Muc> hang_;
    std::optional<Loi> loi_;
};

class ManHinhX11 : public testing::Test {
  protected:
    void SetUp() override {
        ASSERT_TRUE(x.duoc());
        x.datHinhConTro(0xFFFFFF, 8);
        x.datConTro(1200, 700);
        x.to(0x203040, 0, 0, x.rong(), x.cao());
    }
    void TearDown() override {
        luong.reset();
        nhan.xoa();
    }

    std::vector<ManHinh::Nguon> lietKe() {
        std::promise<std::vector<ManHinh::Nguon>> p;
        nen->lietKe([&](auto kq) { p.set_value(kq ? kq.giaTri() : std::vector<ManHinh::Nguon>{}); });
        return p.get_future().get();
    }

    void mo(const ManHinh::Nguon& nguon, ManHinh::CauHinh cauHinh) {
        auto kq = nen->moLuong(nguon, cauHinh, nhan.phiaNhan());
        ASSERT_TRUE(kq);
        luong = std::move(kq).giaTri();
        std::promise<bool> p;
        luong->batDau([&](KetQua<void> k) { p.set_value(static_cast<bool>(k)); });
        ASSERT_TRUE(p.get_future().get());
    }
    void mo(int khungMoiGiay = 12) {
        const auto nguon = lietKe().at(0);
        ManHinh::CauHinh cauHinh;
        cauHinh.co = nguon.diemAnh;
        cauHinh.khungMoiGiay = khungMoiGiay;
        mo(nguon, cauHinh);
    }

    // Runs on the frame queue and waits for it.
    template <class F>
    void trenHangDoi(F viec) {
        std::promise<void> p;
        nen->hangDoiKhung().chay([&] {
            viec();
            p.set_value();
        });
        p.get_future().get();
    }

    AnhJpeg giai(ManHinh::Khung& k) {
        std::vector<std::byte> ra;
        trenHangDoi([&] { EXPECT_TRUE(k.maHoa(0.95, ra)); });
        return AnhJpeg(ra);
    }
    // Gives the frame back where frames are to be destroyed.
    void tra(std::unique_ptr<ManHinh::Khung> k) {
        trenHangDoi([&] { k.reset(); });
    }
    // The next frame, decoded and given back.
    AnhJpeg khungToi() {
        auto m = nhan.lay();
        if (!m) {
            ADD_FAILURE() << "no frame";
            return AnhJpeg({});
        }
        auto anh = giai(*m->khung);
        tra(std::move(m->khung));
        return anh;
    }
    // Frames until one shows `mau` at that place.
    ::testing::AssertionResult choMau(Mau mau, int cx, int cy) {
        const auto het = DongHo::now() + hanCho;
        while (DongHo::now() < het) {
            auto m = nhan.lay();
            if (!m) break;
            const auto anh = giai(*m->khung);
            tra(std::move(m->khung));
            if (anh.tai(cx, cy) == mau) return ::testing::AssertionSuccess();
        }
        return ::testing::AssertionFailure() << "never saw " << mau;
    }
    // The clock goes on by `giay` on the frame queue, with everything in it carried out.
    void troiQua(double giay) {
        std::promise<void> p;
        nen->hangDoiKhung().chaySau(giay, [&] { p.set_value(); });
        p.get_future().get();
    }
    // Takes frames until the screen has been still for several frame times.
    void choYen() {
        do {
            nhan.xoa();
            troiQua(0.4);
        } while (nhan.dangCho() > 0);
    }

    KhachX x;
    std::string noi;  // what the user was told
    std::unique_ptr<ManHinh::Nen> nen = taoNenManHinh([this](const std::string& lyDo) { noi = lyDo; });
    BoNhan nhan;
    std::unique_ptr<ManHinh::Luong> luong;
};

}  // namespace tovira::thu

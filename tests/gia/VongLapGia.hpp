#pragma once
// The main queue with its clock in the test's hand: nothing runs until the test says so.

#include <algorithm>
#include <deque>
#include <map>
#include <mutex>
#include <thread>

#include "HangDoi.hpp"

namespace tovira::gia {

class VongLapGia final : public VongLap {
  public:
    void chay(std::function<void()> viec) override {
        std::lock_guard khoa(khoa_);
        hang_.push_back(std::move(viec));
    }

    void chaySau(double giay, std::function<void()> viec) override {
        std::lock_guard khoa(khoa_);
        hen_.emplace(luc_ + giay, MucHen{0, 0, std::move(viec)});
    }

    std::unique_ptr<HenGio> lapLai(double giay, std::function<void()> viec) override {
        std::lock_guard khoa(khoa_);
        const int so = ++soHen_;
        hen_.emplace(luc_ + giay, MucHen{so, giay, std::move(viec)});
        return std::make_unique<The>(*this, so);
    }

    double dongHo() const override {
        std::lock_guard khoa(khoa_);
        return luc_;
    }
    double gioTu1970() const override { return 1'700'000'000.0 + dongHo(); }
    bool dangOChinh() const override { return std::this_thread::get_id() == chinh_; }

    // Runs everything queued now, and what that queues in turn. Returns how many pieces ran.
    int xa() {
        int dem = 0;
        while (auto viec = layMotViec()) {
            viec();
            ++dem;
        }
        return dem;
    }

    // Moves the clock forward, firing each timer at its own moment and the queue in between.
    void tien(double giay) {
        const double dich = dongHo() + giay;
        xa();
        while (auto viec = layMotHen(dich)) {
            viec();
            xa();
        }
        std::lock_guard khoa(khoa_);
        luc_ = dich;
    }

    [[nodiscard]] std::size_t soHenDangCho() const {
        std::lock_guard khoa(khoa_);
        return hen_.size();
    }

  private:
    struct MucHen {
        int so;  // 0: once
        double chuKy;
        std::function<void()> viec;
    };

    struct The final : HenGio {
        The(VongLapGia& v, int s) : vong(v), so(s) {}
        ~The() override { vong.huy(so); }
        VongLapGia& vong;
        int so;
    };

    void huy(int so) {
        std::lock_guard khoa(khoa_);
        std::erase_if(hen_, [so](const auto& muc) { return muc.second.so == so; });
    }

    std::function<void()> layMotViec() {
        std::lock_guard khoa(khoa_);
        if (hang_.empty()) return {};
        auto viec = std::move(hang_.front());
        hang_.pop_front();
        return viec;
    }

    std::function<void()> layMotHen(double dich) {
        std::lock_guard khoa(khoa_);
        if (hen_.empty() || hen_.begin()->first > dich) return {};
        auto nut = hen_.extract(hen_.begin());
        luc_ = std::max(luc_, nut.key());
        auto viec = nut.mapped().viec;
        if (nut.mapped().so != 0) {
            nut.key() += nut.mapped().chuKy;
            hen_.insert(std::move(nut));
        }
        return viec;
    }

    mutable std::mutex khoa_;
    std::deque<std::function<void()>> hang_;
    std::multimap<double, MucHen> hen_;
    double luc_ = 0;
    int soHen_ = 0;
    std::thread::id chinh_ = std::this_thread::get_id();
};

}  // namespace tovira::gia

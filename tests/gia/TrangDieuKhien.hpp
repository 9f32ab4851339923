#pragma once
// Any thread. A rendezvous server for the program under test, whose application is a page that does what the
// test says: scripts go to the page, what it reports comes back. Every wait is bounded.

#include <asio.hpp>
#include <atomic>
#include <chrono>
#include <condition_variable>
#include <deque>
#include <mutex>
#include <optional>
#include <string>
#include <thread>
#include <vector>

namespace tovira::gia {

class TrangDieuKhien {
  public:
    TrangDieuKhien() : nghe_(vong_, {asio::ip::address_v4::loopback(), 0}) {
        luong_ = std::thread([this] { nhan(); });
    }
    ~TrangDieuKhien() {
        {
            std::lock_guard khoa(khoa_);
            het_ = true;
        }
        coViec_.notify_all();
        // One more connection, so that the accept that waits comes back and sees the end.
        asio::io_context vong;
        asio::ip::tcp::socket o(vong);
        asio::error_code loi;
        o.connect(nghe_.local_endpoint(loi), loi);
        luong_.join();
        for (auto& t : phuc_)
            t.join();
    }
    TrangDieuKhien(const TrangDieuKhien&) = delete;
    TrangDieuKhien& operator=(const TrangDieuKhien&) = delete;

    [[nodiscard]] std::string goc() const {
        return "http://127.0.0.1:" + std::to_string(nghe_.local_endpoint().port());
    }

    // Hands a script to the page, which runs it with `bao(text)` to answer by.
    void chay(std::string js) {
        std::lock_guard khoa(khoa_);
        viec_.push_back(std::move(js));
        coViec_.notify_all();
    }
    // The page's next report; absent when none comes in time.
    std::optional<std::string> doiBao() {
        std::unique_lock khoa(khoa_);
        if (!coBao_.wait_for(khoa, std::chrono::seconds(30), [this] { return !bao_.empty(); }))
            return std::nullopt;
        auto ra = std::move(bao_.front());
        bao_.pop_front();
        return ra;
    }
    // The value of an expression on the page, as text.
    std::string hoi(const std::string& bieuThuc) {
        chay("bao('=' + (" + bieuThuc + "))");
        while (const auto tra = doiBao())
            if (tra->substr(0, 1) == "=") return tra->substr(1);
        return "(no answer)";
    }
    // Asks until the expression is true; false when it is not in time.
    bool cho(const std::string& bieuThuc) {
        const auto han = std::chrono::steady_clock::now() + std::chrono::seconds(30);
        while (std::chrono::steady_clock::now() < han)
            if (hoi("!!(" + bieuThuc + ")") == "true") return true;
        return false;
    }

  private:
    static constexpr const char* trang =
        R"(<!DOCTYPE html><html lang="vi"><meta charset="utf-8"><title>Thử</title>
<body><button id="bc-stop">dừng</button><script>
var bao = function (chu) { return fetch('/bao', { method: 'POST', body: String(chu) }); };
var lanBam = 0, hinh = { lan: 0 };
document.getElementById('bc-stop').onclick = function () { lanBam++; if (window.tovira) tovira.dungManHinh(); };
(async function () {
  for (;;) {
    var js = await (await fetch('/lenh')).text();
    if (js) { try { (0, eval)(js); } catch (e) { bao('=' + e); } }
  }
})();
</script>)";

    void nhan() {
        for (;;) {
            asio::ip::tcp::socket o(vong_);
            asio::error_code loi;
            nghe_.accept(o, loi);
            std::lock_guard khoa(khoa_);
            if (het_) return;
            if (!loi) phuc_.emplace_back([this, o = std::move(o)]() mutable { phucVu(o); });
        }
    }

    void phucVu(asio::ip::tcp::socket& o) {
        std::string dem;
        asio::error_code loi;
        const std::size_t dau = asio::read_until(o, asio::dynamic_buffer(dem), "\r\n\r\n", loi);
        if (loi) return;
        std::string than;
        if (dem.rfind("POST /bao", 0) == 0) {
            std::size_t dai = 0;
            for (const char* ten : {"Content-Length: ", "content-length: "})
                if (const auto cho = dem.find(ten); cho != std::string::npos)
                    dai = std::stoul(dem.substr(cho + 16));
            if (dem.size() < dau + dai)
                asio::read(o, asio::dynamic_buffer(dem), asio::transfer_at_least(dau + dai - dem.size()),
                           loi);
            std::lock_guard khoa(khoa_);
            bao_.push_back(dem.substr(dau, dai));
            coBao_.notify_all();
        } else if (dem.rfind("GET /lenh", 0) == 0) {
            than = layViec();
        } else if (dem.rfind("GET /app", 0) == 0) {
            than = trang;
        }
        asio::write(
            o,
            asio::buffer("HTTP/1.1 200 OK\r\nContent-Type: text/html; charset=utf-8\r\nCache-Control: "
                         "no-store\r\nConnection: close\r\nContent-Length: " +
                         std::to_string(than.size()) + "\r\n\r\n" + than),
            loi);
    }

    std::string layViec() {
        std::unique_lock khoa(khoa_);
        coViec_.wait_for(khoa, std::chrono::seconds(5), [this] { return het_ || !viec_.empty(); });
        if (het_ || viec_.empty()) return {};
        auto ra = std::move(viec_.front());
        viec_.pop_front();
        return ra;
    }

    asio::io_context vong_;
    asio::ip::tcp::acceptor nghe_;
    std::mutex khoa_;
    std::condition_variable coViec_, coBao_;
    std::deque<std::string> viec_, bao_;
    bool het_ = false;
    std::vector<std::thread> phuc_;
    std::thread luong_;
};

}  // namespace tovira::gia

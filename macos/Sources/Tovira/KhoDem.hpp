#pragma once
// On one server's queue. Lends the memory that bodies are gathered in: never more than its cap at a time;
// who asks beyond it waits its turn.

#include <cstddef>
#include <deque>
#include <functional>
#include <memory>
#include <span>

namespace tovira {

class KhoDem {
  public:
    // A loan; given back when it ends. Empty when the system has no memory.
    class Dem {
      public:
        Dem() = default;
        ~Dem();
        Dem(Dem&& kia) noexcept;
        Dem& operator=(Dem&& kia) noexcept;
        // As many bytes as were asked for, contents of no meaning.
        [[nodiscard]] std::span<std::byte> vung() const { return {o_.get(), dai_}; }

      private:
        friend class KhoDem;
        KhoDem* kho_ = nullptr;
        std::unique_ptr<std::byte[]> o_;
        std::size_t dai_ = 0;
        std::size_t sucChua_ = 0;
    };
    using KhiCo = std::function<void(Dem)>;

    // `toiDa`: bytes on loan or kept, all together.
    explicit KhoDem(std::size_t toiDa) : toiDa_(toiDa) {}
    // Loans must have ended.
    KhoDem(const KhoDem&) = delete;
    KhoDem& operator=(const KhoDem&) = delete;

    // Calls `xong` once, before it returns or when enough has been given back, in the order of asking. `dai`
    // is at least 1 and at most toiDa.
    void muon(std::size_t dai, KhiCo xong);
    // Lets go of what is kept for the next loan.
    void buong();

    // Bytes on loan or kept.
    [[nodiscard]] std::size_t dangGiu() const { return dangGiu_; }
    [[nodiscard]] std::size_t soDangCho() const { return dangCho_.size(); }

  private:
    struct Cho {
        std::size_t dai;
        KhiCo xong;
    };
    [[nodiscard]] bool duCho(std::size_t dai) const;
    Dem lay(std::size_t dai);
    void nhanLai(Dem& dem);
    void phatTiep();

    std::size_t toiDa_;
    std::size_t dangGiu_ = 0;
    // The last large loan, kept: fresh memory costs a page fault every few kilobytes.
    std::unique_ptr<std::byte[]> danhSan_;
    std::size_t sucDanhSan_ = 0;
    std::deque<Cho> dangCho_;
};

}  // namespace tovira

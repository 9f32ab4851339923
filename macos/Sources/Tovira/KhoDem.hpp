#pragma once
// On one server's queue. Lends the memory that bodies are gathered in, piece by piece as they come: a sender
// holds no more than it has sent. All loans together stay below a cap; who asks beyond it waits. Nobody is
// lent the piece that everybody else's end would need: however the loans stand, someone can always be served
// to the end.

#include <cstddef>
#include <deque>
#include <functional>
#include <memory>
#include <span>
#include <vector>

namespace tovira {

class KhoDem {
  public:
    static constexpr std::size_t dayManh = std::size_t{1} << 20;  // bytes of a piece
    static constexpr std::size_t toiDaGiuLai = 64;                // pieces kept for the next body

    // Called with room for the next bytes, contents of no meaning; empty when the system has no memory.
    using KhiCo = std::function<void(std::span<std::byte>)>;

  private:
    // Whole pages: a heap would touch one more for each.
    struct TraTrang {
        void operator()(std::byte* manh) const;
    };
    using ManhLon = std::unique_ptr<std::byte, TraTrang>;

  public:
    // The memory of one body. What it has been lent is given back when it ends.
    class Than {
      public:
        ~Than();
        Than(const Than&) = delete;
        Than& operator=(const Than&) = delete;

        // Asks for the next piece, of dayManh bytes or what the body lacks. Calls `xong` once, before it
        // returns or when enough has been given back; never after thoiCho. Not while waiting, nor once the
        // body has all its pieces.
        void xinManh(KhiCo xong);
        void thoiCho();
        [[nodiscard]] bool dangCho() const;
        // The pieces lent so far, in order.
        [[nodiscard]] std::span<const std::span<const std::byte>> cacManh() const { return cacManh_; }

      private:
        friend class KhoDem;
        Than(KhoDem& kho, std::size_t dai);
        [[nodiscard]] std::size_t conThieu() const { return phi_ - giu_; }
        [[nodiscard]] std::size_t manhToi() const;

        KhoDem& kho_;
        std::size_t dai_;      // of the body
        std::size_t phi_;      // what it costs in all: its length in whole pieces, or a small body's own
        std::size_t giu_ = 0;  // of which it holds so much
        std::unique_ptr<std::byte[]> nho_;
        std::vector<ManhLon> lon_;
        std::vector<std::span<const std::byte>> cacManh_;
    };

    // `toiDa`: bytes on loan or kept, all together.
    explicit KhoDem(std::size_t toiDa) : toiDa_(toiDa) {}
    // Bodies must have ended.
    KhoDem(const KhoDem&) = delete;
    KhoDem& operator=(const KhoDem&) = delete;

    // For a body of `dai` bytes, at least 1; in whole pieces no more than toiDa.
    [[nodiscard]] std::unique_ptr<Than> moThan(std::size_t dai);
    // Lets go of what is kept for the next body.
    void buong();

    // Bytes on loan or kept.
    [[nodiscard]] std::size_t dangGiu() const { return dangMuon_ + danhSan_.size() * dayManh; }
    [[nodiscard]] std::size_t soDangCho() const { return dangCho_.size(); }

  private:
    struct Cho {
        Than* than;
        KhiCo xong;
    };
    [[nodiscard]] bool choDuoc(const Than& than) const;
    std::span<std::byte> lay(Than& than);
    [[nodiscard]] ManhLon layManhLon();
    void nhanLai(Than& than);
    void phatTiep();

    std::size_t toiDa_;
    std::size_t dangMuon_ = 0;
    std::vector<Than*> dangGiuManh_;  // whoever has been lent something
    // Fresh memory costs a page fault every few kilobytes.
    std::vector<ManhLon> danhSan_;
    std::deque<Cho> dangCho_;
};

}  // namespace tovira

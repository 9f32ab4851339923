#pragma once
// Owned on the main thread; its connections live on its own queue, one named thread. What the three loopback
// servers share: listen on 127.0.0.1, read one head a connection, send one answer, close. What to answer is
// the server's own business, told through PhiaNhan.

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <future>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <utility>

#include "DauYeuCau.hpp"
#include "Loi.hpp"

namespace tovira {

// One accepted connection whose head is complete. Everything here is called on the server's queue, and so is
// every completion: once, never before the call that was given it has returned, also when the connection
// closes. Whoever is handed a connection must end it with traRoiDong or huy; until then it counts against the
// cap.
class KetNoi {
  public:
    enum class KetCuc : std::uint8_t { xong, hong };
    // How many bytes came; 0 when the peer has finished, failed or kept silent for too long.
    using KhiDoc = std::function<void(std::size_t)>;
    using KhiGui = std::function<void(KetCuc)>;

    KetNoi() = default;
    virtual ~KetNoi() = default;
    KetNoi(const KetNoi&) = delete;
    KetNoi& operator=(const KetNoi&) = delete;

    // Reads at least 1 byte and at most vao.size() (not 0) into `vao`, which must live until `xong` ran.
    // Silence of `hanIm` closes the connection. One read at a time.
    virtual void doc(std::span<std::byte> vao, std::chrono::milliseconds hanIm, KhiDoc xong) = 0;
    // Sends what the system takes of `dem` at this moment, without waiting: how many bytes, possibly 0;
    // nothing when the connection has failed. Not while a send is under way.
    [[nodiscard]] virtual std::optional<std::size_t> guiNgay(std::span<const std::byte> dem) = 0;
    // Sends all of `dem`, which must live until `xong` ran, however long the peer takes. One send at a time.
    virtual void gui(std::span<const std::byte> dem, KhiGui xong) = 0;
    // Has the whole request been read, as far as its sender keeps its word?
    enum class YeuCau : std::uint8_t { docDo, docHet };
    // Sends the last bytes of this connection and closes it so that they arrive: what the peer is still
    // sending is read and dropped for a bounded while, because closing over unread bytes would reset the
    // connection and take the answer with it. After a request read to its end that while is saved unless
    // something more has come. A peer that takes nothing for CauHinh::hanGui is dropped.
    virtual void traRoiDong(std::string cau, YeuCau yeuCau) = 0;
    void traRoiDong(std::string cau) { traRoiDong(std::move(cau), YeuCau::docDo); }
    // From now on drops whatever the peer sends, a bounded amount at a time, and calls `khiMat` once when the
    // peer is gone. Reading is the only way to learn that while nothing is sent. Not called after huy.
    virtual void theoDoi(std::function<void()> khiMat) = 0;
    enum class ThoiCanh : std::uint8_t { mat, quaHan };
    using KhiThoiCanh = std::function<void(ThoiCanh)>;
    // Leaves what the peer sends unread and calls `xong` once, when the peer has finished or gone, or after
    // `han`. An end that the peer's own unread bytes hold back is seen only by reading on. Not called after
    // huy or the next doc.
    virtual void canh(std::chrono::milliseconds han, KhiThoiCanh xong) = 0;
    // Closes now. Harmless when closed.
    virtual void huy() = 0;
};

class LangNghe {
  public:
    struct CauHinh {
        std::string nhan;  // the queue's label
        LuatDau luatDau;
        std::chrono::milliseconds hanDau{15'000};  // from accepting to a complete head
        std::chrono::milliseconds hanGui{60'000};  // of no progress with an answer
        std::chrono::milliseconds hanNan{2'000};   // of reading on after an answer
        std::size_t toiDaKetNoi = 256;
    };

    // Called on the queue. Both must end the connection sooner or later.
    struct PhiaNhan {
        // A head is complete: its text, and the bytes that came after it (valid during the call).
        std::function<void(std::shared_ptr<KetNoi>, std::string phanDau, std::span<const std::byte> thua)>
            khiCoDau;
        // A head has grown beyond luatDau.toiDa.
        std::function<void(std::shared_ptr<KetNoi>)> khiDauQuaDai;
    };

    LangNghe(CauHinh cauHinh, PhiaNhan phiaNhan);
    // Closes everything, lets every pending completion run and joins the thread.
    ~LangNghe();
    LangNghe(const LangNghe&) = delete;
    LangNghe& operator=(const LangNghe&) = delete;

    // Opens the listener on a port of the system's choice; harmless when already open. Blocks for at most 5
    // s. Fails with the system's own error when no socket can be made, with `khongMoDuoc` in every other
    // case.
    KetQua<void> batDau(const Loi& khongMoDuoc);
    // Stops listening; `cong` is 0 at once. Connections stay. Waits for the queue for at most 1 s, so that
    // normally the port refuses connections when this returns.
    void dung();
    // On the queue. Closes every connection that has not been answered yet.
    void dongKetNoi();

    // Any thread. The bound port, 0 while stopped.
    [[nodiscard]] std::uint16_t cong() const;
    // True on the queue's thread.
    [[nodiscard]] bool dangOHang() const;
    // Any thread. Runs `viec` on the queue, later and in order.
    void chay(std::function<void()> viec);
    // Never on the queue. Runs `viec` there and returns its answer; nothing when the server has never been
    // started or its queue has not got to it within `han`.
    template <class F>
    std::optional<std::invoke_result_t<F>> hoi(F viec,
                                               std::chrono::milliseconds han = std::chrono::seconds(5)) {
        if (!coHang()) return std::nullopt;
        auto hua = std::make_shared<std::promise<std::invoke_result_t<F>>>();
        auto cho = hua->get_future();
        chay([hua, viec = std::move(viec)]() mutable { hua->set_value(viec()); });
        if (cho.wait_for(han) != std::future_status::ready) return std::nullopt;
        return cho.get();
    }

  private:
    struct Ruot;
    // Is there a queue, and is the caller not on it?
    [[nodiscard]] bool coHang() const;
    std::unique_ptr<Ruot> ruot_;
};

}  // namespace tovira

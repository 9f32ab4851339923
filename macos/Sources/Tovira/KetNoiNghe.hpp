#pragma once
// On one server's queue. One connection that a listener has accepted, from its first byte to its close.

#include <memory>
#include <optional>
#include <string>

#include "DauYeuCau.hpp"
#include "LangNghe.hpp"
#include "SoKetNoi.hpp"

namespace tovira {

class KetNoiNghe final : public KetNoi, public std::enable_shared_from_this<KetNoiNghe> {
  public:
    KetNoiNghe(SoKetNoi& so, SoKetNoi::CoSo coSo);

    // Its place in the book; before batDau.
    void datCho(SoKetNoi::DanhSach::iterator cho) { cho_ = cho; }
    void batDau();
    [[nodiscard]] bool chuaCoDau() const { return gom_.has_value(); }

    void doc(std::span<std::byte> vao, std::chrono::milliseconds hanIm, KhiDoc xong) override;
    [[nodiscard]] std::optional<std::size_t> guiNgay(std::span<const std::byte> dem) override;
    void gui(std::span<const std::byte> dem, KhiGui xong) override;
    void traRoiDong(std::string cau, YeuCau yeuCau) override;
    void theoDoi(std::function<void()> khiMat) override;
    void canh(std::chrono::milliseconds han, KhiThoiCanh xong) override;
    void huy() override;

    // The book's: the deadline, and what follows on it.
    SoKetNoi::MocGio han = SoKetNoi::MocGio::max();
    void khiHetHan();

  private:
    enum class KhiHetHan : std::uint8_t { dong, boDiTiep, nhinLai };

    void hetHanSau(std::chrono::milliseconds sau, KhiHetHan viec);
    void docDau();
    void khiDocDau(const asio::error_code& loi, std::size_t so);
    std::optional<std::size_t> guiNgay(std::span<const std::byte> dem, asio::socket_base::message_flags co);
    void ghi(std::span<const std::byte> con, std::chrono::milliseconds hanIm, KhiGui xong);
    void khiTraXong(YeuCau yeuCau);
    void nan();
    void boDi();
    void khiBoDi(const asio::error_code& loi);
    void nhinLai();

    SoKetNoi* chu_;
    std::optional<SoKetNoi::CoSo> so_;  // absent once closed
    std::optional<GomDau> gom_;         // present until the head is complete
    SoKetNoi::DanhSach::iterator cho_;
    bool dangNan_ = false;
    KhiHetHan khiHetHan_ = KhiHetHan::dong;
    std::string cauTra_;
    std::function<void()> khiMat_;
    KhiThoiCanh khiThoiCanh_;
    SoKetNoi::MocGio hanCanh_;
};

}  // namespace tovira

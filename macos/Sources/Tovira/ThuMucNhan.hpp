#pragma once
// Made on any thread, then used by one thread at a time. The folder that received files go to: where a
// relative path leads, and how a file gets there whole, or not at all, and never outside.

#include <sys/stat.h>

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "DiTheoThuMuc.hpp"
#include "SoTep.hpp"

namespace tovira {

class ThuMucNhan {
  public:
    // How it is told that a place lies in the folder: by the bytes of its path, or, where one place answers
    // to several spellings, by the identity of the folders on the way.
    enum class SoNoi : std::uint8_t { theoByte, theoMaTep };
    // Is a file handed to the disk before it counts as written, or when the system gets to it?
    enum class DoBen : std::uint8_t { xuongDia, tuyHeThong };

    // `goc`: a path, whose links are resolved here; it need not exist. `soNoi`: found out when absent.
    explicit ThuMucNhan(std::string_view goc, DoBen doBen = DoBen::xuongDia,
                        std::optional<SoNoi> soNoi = std::nullopt);

    // The resolved absolute path.
    [[nodiscard]] const std::string& goc() const { return goc_; }

    // A place in the folder: the folders on the way, links resolved, and the last name as it was given.
    struct Dich {
        std::vector<std::string> cha;
        std::string ten;
    };
    // Where `duong` leads; absent when it may not be written to. Changes nothing on disk.
    [[nodiscard]] std::optional<Dich> giaiDuongDan(std::string_view duong);

    // What a file is to hold, piece after piece.
    using CacManh = std::span<const std::span<const std::byte>>;
    // Called with the descriptor of a file that is being written, before its first byte.
    using DanhDau = std::function<void(int tep)>;

    // Puts a file there, replacing what has its name unless that is a folder. Folders that are missing are
    // made. False when it cannot be done; then nothing of it is left. Never follows a link, so that a folder
    // swapped for one since giaiDuongDan leads nowhere.
    [[nodiscard]] bool ghi(const Dich& dich, CacManh than, const DanhDau& danhDau = {});

    // giaiDuongDan and ghi in one, for a file that is already here.
    enum class KetCuc : std::uint8_t { duoc, duongXau, hong };
    [[nodiscard]] KetCuc nhan(std::string_view duong, std::span<const std::byte> than,
                              const DanhDau& danhDau = {});

  private:
    [[nodiscard]] DiTheoThuMuc::KhiTao khiTao() const;
    bool ghiO(DiTheoThuMuc& di, const std::string& ten, CacManh than, const DanhDau& danhDau);
    bool gocConDo();
    bool moGoc();
    [[nodiscard]] std::optional<std::vector<std::string>> phanTrongGoc(const std::string& duong) const;
    [[nodiscard]] std::optional<std::vector<std::string>> cacChaThat(
        const std::vector<std::string_view>& cha) const;

    DoBen doBen_;
    std::string goc_;
    SoNoi soNoi_;
    // Names that nobody else can have: a text of chance and a number.
    std::string tenTam_;
    std::uint64_t soTam_ = 0;
    // The folder itself, held so that no other can take its identity; absent while it does not exist.
    SoTep tepGoc_;
    struct stat maGoc_ {};
};

}  // namespace tovira

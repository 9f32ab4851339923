#pragma once
// Main thread; requests are answered on its own queue "tv-nhan". Receives the files that a page hands over
// and puts them into the folder that the user chose: one endpoint on 127.0.0.1, open while a folder is.

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "Cau.hpp"
#include "Chung.hpp"
#include "HangDoi.hpp"
#include "Loi.hpp"
#include "NenChung.hpp"
#include "ThuMucNhan.hpp"

namespace tovira {

class MayChuNhan final : public Cau::NhanTep, public CoChung<MayChuNhan> {
  public:
    struct Nen {
        // What the folder panel says. It lets one existing folder be chosen, or a new one be made.
        struct Bang {
            std::string nut;      // on the button that confirms
            std::string loiNhan;  // what the choice is for
        };
        virtual ~Nen() = default;
        // Main thread, one at a time. Shows the panel; `xong` is called once, on the main thread, with the
        // path that was chosen, or nothing when the user gave up.
        virtual void hoiThuMuc(const Bang& bang, std::function<void(std::optional<std::string>)> xong) = 0;
        // On the queue "tv-nhan". Marks the open file `tep` as come from another machine, where the system
        // has such a mark.
        virtual void danhDauTuXa(int tep) = 0;
    };

    struct CauHinh {
        std::size_t toiDaDem = std::size_t{512} << 20;  // bytes of bodies held at a time; at least one body
        std::chrono::milliseconds hanIm{60'000};        // of silence within a body
        std::chrono::milliseconds hanCho{180'000};      // of waiting for memory
        ThuMucNhan::DoBen doBen = ThuMucNhan::DoBen::xuongDia;
    };

    // The grounds outlive this object. `gocMayChu`: the origin whose pages may read the answers.
    MayChuNhan(Nen& nen, TepNguoiDung& tep, VongLap& vongLap, std::string gocMayChu);
    MayChuNhan(Nen& nen, TepNguoiDung& tep, VongLap& vongLap, std::string gocMayChu, CauHinh cauHinh);
    // Waits until the queue's thread has ended.
    ~MayChuNhan() override;
    MayChuNhan(const MayChuNhan&) = delete;
    MayChuNhan& operator=(const MayChuNhan&) = delete;

    // The panels open later, from the main queue, one after the other. While one is open, one request of each
    // kind waits for its turn; a newer one takes its place, and the older one is answered as given up.
    void chonThuMuc(std::function<void(TraLoi)> xong) override;
    void chiChonThuMuc(std::function<void(std::string duong, std::string loi)> xong) override;
    void moTaiDuong(const std::string& duong, std::function<void(TraLoi)> xong) override;
    void dongThuMuc() override;
    void hienTrongFinder(const std::string& duong, const std::string& ten) override;

    // Serves the folder `duong` as batDau does. `loi` is "khong-con" when it is no existing folder.
    [[nodiscard]] TraLoi moTaiDuong(const std::string& duong);

    // Serves the folder `goc`, instead of any served before, on a new port and with a new secret. Blocks for
    // at most 5 s. Fails with domain "Tovira", code 2, "Không mở được máy chủ nhận tệp", or with the system's
    // own error when there is no socket to be had.
    KetQua<void> batDau(const std::string& goc);
    // Stops. A request whose secret has been accepted still ends in its folder; every other is refused.
    void dung();

    // The folder's path with its links resolved, absent while stopped.
    [[nodiscard]] std::optional<std::string> goc() const;
    // 48 lower-case hexadecimal characters, empty while stopped.
    [[nodiscard]] std::string biMat() const;
    // Any thread. The bound port, 0 while stopped.
    [[nodiscard]] std::uint16_t cong() const;
    // Any thread. Files written since the last start.
    [[nodiscard]] std::int64_t daGhi() const;

  private:
    using KhiChon = std::function<void(std::optional<std::string>)>;
    enum class ViecHoi : std::uint8_t { moRoiNhan, chiChon };
    struct ChoHoi {
        ViecHoi viec;
        KhiChon xong;
    };
    struct Ruot;
    void hoiThuMuc(ViecHoi viec, KhiChon xong);
    void hoiTiep();
    [[nodiscard]] TraLoi moRoiTraLoi(const std::string& duong);

    Nen& nen_;
    TepNguoiDung& tep_;
    VongLap& vongLap_;
    KhiChon dangHoi_;            // its panel is open
    std::deque<ChoHoi> choHoi_;  // one of each kind at most
    std::unique_ptr<Ruot> ruot_;
    // What is posted to the main queue must not outlive this object.
    std::shared_ptr<MayChuNhan*> conSong_ = std::make_shared<MayChuNhan*>(this);
};

}  // namespace tovira

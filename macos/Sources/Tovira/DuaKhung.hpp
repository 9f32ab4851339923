#pragma once
// Frame queue "tv-khung", save `dong` and `khiCoNguoiRanh`. The road of the frames of one share from the
// capture to the frame server: encodes only what somebody can take, and sees to it that the last picture
// reaches everybody. Held by shared_ptr, because work of the frame queue may outlive the share.

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <vector>

#include "HangDoi.hpp"
#include "ManHinh.hpp"
#include "MjpegServer.hpp"

namespace tovira {

class DuaKhung : public std::enable_shared_from_this<DuaKhung> {
  public:
    // JPEG quality, 0…1.
    static constexpr double chatLuong = 0.95;
    // A picture counts as settled after so many seconds without a newer one.
    static constexpr double hanLang = 0.25;

    // Where encoded frames go. Called on the frame queue; each call returns at once.
    struct NoiGui {
        virtual ~NoiGui() = default;
        // Is there a viewer that could take a frame now?
        virtual bool coNguoiRanh() = 0;
        // Asks for one khiCoNguoiRanh as soon as there is such a viewer.
        virtual void baoKhiRanh() = 0;
        virtual void dangKhung(const MjpegServer::Khung& khung, MjpegServer::Gui gui) = 0;
    };

    // `noi` is used until `dong` has returned.
    DuaKhung(HangDoi& hangDoi, NoiGui& noi) : hangDoi_(hangDoi), noi_(&noi) {}

    // Any thread. From now on only frames of stream number `luot` count.
    void chonLuot(std::uint64_t luot);

    // A frame of stream number `luot` has arrived. Only complete ones count; the newest one waits, not yet
    // encoded, while nobody can take it.
    void nhan(std::uint64_t luot, std::unique_ptr<ManHinh::Khung> khung);

    // What the server calls, on its own queue, when a viewer has become free.
    [[nodiscard]] std::function<void()> khiCoNguoiRanh();

    // Main thread. Ends the road: `noi` is not touched again and what is kept is let go on the frame queue.
    void dong();

  private:
    void khiRanh();
    void thuGui();
    [[nodiscard]] MjpegServer::Khung maHoa(ManHinh::Khung& khung);
    void henLang();
    void khiLang(std::uint64_t hen);
    bool coNguoiRanh();
    void gui(MjpegServer::Gui gui);

    HangDoi& hangDoi_;
    std::mutex khoa_;  // guards noi_, which the main thread takes away
    NoiGui* noi_;

    // On the frame queue only.
    std::uint64_t luot_ = 0;
    std::unique_ptr<ManHinh::Khung> cho_;  // the newest complete frame, while it is not encoded
    MjpegServer::Khung cuoi_;              // the last encoded frame
    std::size_t coDem_ = 0;                // bytes that the last frame took
    std::uint64_t hen_ = 0;                // counts what makes an earlier settling void
    bool daNhoBao_ = false;                // baoKhiRanh is outstanding
};

}  // namespace tovira

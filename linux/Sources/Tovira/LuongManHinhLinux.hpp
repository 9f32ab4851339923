#pragma once
// Main thread; what it starts runs on the frame queue. A capture of one monitor of the X screen: reads only
// what changed since the picture at hand, at most so many times a second, and nothing while nothing changes.

#include <memory>

#include "HangDoiKhungLinux.hpp"
#include "ManHinh.hpp"

namespace tovira {

class LuongManHinhLinux final : public ManHinh::Luong {
  public:
    // `hangDoi` must outlive this; frames may outlive both.
    LuongManHinhLinux(HangDoiKhungLinux& hangDoi, const ManHinh::Nguon& nguon,
                      const ManHinh::CauHinh& cauHinh, ManHinh::PhiaNhan phiaNhan);
    // Returns once no callback runs any more, save the one that it was called from.
    ~LuongManHinhLinux() override;
    LuongManHinhLinux(const LuongManHinhLinux&) = delete;
    LuongManHinhLinux& operator=(const LuongManHinhLinux&) = delete;

    void batDau(std::function<void(KetQua<void>)> xong) override;
    void doiCauHinh(const ManHinh::CauHinh& cauHinh) override;
    void dung() override;

  private:
    class Ruot;
    HangDoiKhungLinux& hangDoi_;
    std::shared_ptr<Ruot> ruot_;
};

}  // namespace tovira

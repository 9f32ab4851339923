#pragma once
// Main thread. Moves the pointer and presses its buttons through XTEST; turns wheel pixels into notches.

#include "DieuKhien.hpp"
#include "XcbLinux.hpp"

namespace tovira {

class ChuotLinux {
  public:
    // `x` outlives this.
    explicit ChuotLinux(const ManX& x) : x_(x) {}

    void lam(const SuKienChuot& e);
    // 120 pixels are a notch; what is short of one waits for the next event.
    void lam(const SuKienCuon& e);

  private:
    void gui(std::uint8_t loai, std::uint8_t chiTiet, Diem diem = {});
    void lan(int& du, std::int32_t them, std::uint8_t duong, std::uint8_t am);

    const ManX& x_;
    int duDoc_ = 0;
    int duNgang_ = 0;
};

}  // namespace tovira

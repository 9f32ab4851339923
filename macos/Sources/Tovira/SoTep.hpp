#pragma once
// Any thread. Owns one file descriptor.

#include <unistd.h>

#include <utility>

namespace tovira {

class SoTep {
  public:
    explicit SoTep(int so = -1) : so_(so) {}
    ~SoTep() {
        if (so_ >= 0) ::close(so_);
    }
    SoTep(SoTep&& kia) noexcept : so_(std::exchange(kia.so_, -1)) {}
    SoTep& operator=(SoTep&& kia) noexcept {
        std::swap(so_, kia.so_);
        return *this;
    }

    explicit operator bool() const { return so_ >= 0; }
    [[nodiscard]] int so() const { return so_; }
    // Closes now; some file systems report here that the bytes could not be stored.
    [[nodiscard]] bool dong() { return ::close(std::exchange(so_, -1)) == 0; }

  private:
    int so_;
};

}  // namespace tovira

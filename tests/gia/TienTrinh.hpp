#pragma once
// Any thread, one at a time. A program started beside this one, which ends with it, whatever comes of it.

#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <string>
#include <vector>

#include "gia/KhachThu.hpp"

namespace tovira::gia {

class TienTrinh {
  public:
    explicit TienTrinh(std::vector<std::string> lenh) : ma_(fork()) {
        if (ma_ != 0) return;
        std::vector<char*> cac;
        for (auto& mot : lenh)
            cac.push_back(mot.data());
        cac.push_back(nullptr);
        execvp(cac[0], cac.data());
        _exit(127);
    }
    ~TienTrinh() {
        if (ma_ > 0 && !het_) {
            kill(ma_, SIGKILL);
            waitpid(ma_, nullptr, 0);
        }
    }
    TienTrinh(const TienTrinh&) = delete;
    TienTrinh& operator=(const TienTrinh&) = delete;

    [[nodiscard]] pid_t ma() const { return ma_; }
    void bao(int tinHieu) const { kill(ma_, tinHieu); }
    // Its exit status; -1 when it does not end in time or by a signal.
    int doiHet() {
        int tt = 0;
        if (!choDen([&] { return waitpid(ma_, &tt, WNOHANG) == ma_; })) return -1;
        het_ = true;
        return WIFEXITED(tt) ? WEXITSTATUS(tt) : -1;
    }

  private:
    pid_t ma_;
    bool het_ = false;
};

}  // namespace tovira::gia

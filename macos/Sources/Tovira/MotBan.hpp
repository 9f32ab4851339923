#pragma once
// Main thread. One running program per user and display: whoever runs holds a place; a second start brings
// the first one forward and ends; a relaunch takes the place over.

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

namespace tovira {

class MotBan {
  public:
    // How this start came about: by the user, quietly ("--ngam"), or as the new instance of a relaunch.
    enum class Cach : std::uint8_t { thuong, ngam, thayThe };
    enum class Viec : std::uint8_t { chay, ketThuc };

    struct Nen {
        virtual ~Nen() = default;
        // Takes the place unless a running program of this user on this display has it; true when it is ours.
        // Where places cannot be kept (no display) everybody has one.
        virtual bool giuCho() = 0;
        // Asks the one that has it to come forward.
        virtual void goiBanKia() = 0;
        // Takes the place from whoever has it, which tells that program to end; returns once it has ended, at
        // the latest after `han` seconds.
        virtual void nhanCho(double han) = 0;
        // From now on calls back on the main thread: `khiDuocGoi` when a second start asks this program to
        // come forward, `khiMatCho` when another one has taken the place.
        virtual void nghe(std::function<void()> khiDuocGoi, std::function<void()> khiMatCho) = 0;
    };

    // Set in a relaunched program's environment.
    static constexpr const char* bienThay = "TOVIRA_THAY";
    // Seconds that the one before may take to put its things away.
    static constexpr double hanNhuong = 10;

    MotBan(Nen& nen, Cach cach) : nen_(nen), cach_(cach) {}
    MotBan(const MotBan&) = delete;
    MotBan& operator=(const MotBan&) = delete;

    // `giaTriThay` is the value of bienThay, null when it is not set.
    [[nodiscard]] static Cach cach(const std::vector<std::string>& thamSo, const char* giaTriThay);

    // At the very start: does this program run, or has it done all that there is to do?
    [[nodiscard]] Viec batDau();
    // This program is certain to run and about to open what only one can have open.
    void vaoCho();
    void nghe(std::function<void()> khiDuocGoi, std::function<void()> khiMatCho) {
        nen_.nghe(std::move(khiDuocGoi), std::move(khiMatCho));
    }

  private:
    Nen& nen_;
    Cach cach_;
};

}  // namespace tovira

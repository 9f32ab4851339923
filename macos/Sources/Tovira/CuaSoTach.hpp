#pragma once
// Main thread. Pop-ups: which requests become one, how large, and that there is one at a time.

#include <cstdint>
#include <optional>
#include <string_view>

namespace tovira {

// This program's identity of one pop-up; never reused.
using MaTach = std::uint64_t;

// A pop-up that the platform is to open: same style as the main window, titled "Tovira", centred, at least
// rongNhoNhat × caoNhoNhat, shown and key. Its web view carries neither the bridge script nor the channel.
struct MoTach {
    static constexpr double rongNhoNhat = 480, caoNhoNhat = 320;

    MaTach ma = 0;
    double rong = 0;  // of the content, in points
    double cao = 0;
    friend bool operator==(const MoTach&, const MoTach&) = default;
};

class CuaSoTach {
  public:
    // The pop-up windows that this type let in.
    struct Nen {
        virtual ~Nen() = default;
        // Closes the window as the user would: khiSapDong follows, if its window still exists.
        virtual void dong(MaTach ma) = 0;
        // Takes the window off the screen and forgets it.
        virtual void an(MaTach ma) = 0;
        // Runs a script in its page.
        virtual void chay(MaTach ma, const char* js) = 0;
    };

    explicit CuaSoTach(Nen& nen) : nen_(nen) {}

    // Does a page's request for a window name an address that belongs into the user's browser?
    [[nodiscard]] static bool moNgoai(std::string_view diaChi);

    // Lets a blank window in, closing the one before. Sizes as the page gave them.
    [[nodiscard]] MoTach mo(std::optional<double> rong, std::optional<double> cao);
    // The user closes its window, which is still there: its page's own close handling is to run.
    void khiSapDong(MaTach ma);
    // Its page closed itself.
    void khiTuDong(MaTach ma);

  private:
    Nen& nen_;
    MaTach truoc_ = 0;
    std::optional<MaTach> cuaSoTach_;
};

}  // namespace tovira

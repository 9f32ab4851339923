#pragma once
// Any thread: pure. Decides from the command line what this run of the program is.

#include <string>
#include <vector>

namespace tovira {

// The modes, in the order in which the entry looks for them.
enum class CheDo { tuKiem, quyen, taoIcon, taoIconIOS, ungDung };

struct DongLenh {
    CheDo cheDo = CheDo::ungDung;
    // taoIcon: the output folder. taoIconIOS: the output file. Empty otherwise.
    std::string dich;

    // All arguments take part, the program's own path too; matches are whole and case-sensitive. The first
    // mode in the order of CheDo that is asked for wins, wherever its flag stands; an icon mode takes the
    // argument after its flag whatever it looks like.
    [[nodiscard]] static DongLenh chon(const std::vector<std::string>& thamSo);

    // Is the application asked to start without showing its window ("--ngam")?
    [[nodiscard]] static bool ngam(const std::vector<std::string>& thamSo);
};

}  // namespace tovira

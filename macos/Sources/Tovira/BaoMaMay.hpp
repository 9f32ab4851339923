#pragma once
// Main thread. What a script that started the program where nobody sees its window is told: the machine code
// and the password that the page shows.

#include <string>
#include <string_view>

namespace tovira {

struct BaoMaMay {
    // Reads them out of the page: a text of two lines, empty where the page shows none.
    static const char kichBan[];

    // The two lines as a terminal may print them, each ended by a line feed. Empty when `tuTrang` is anything
    // but nine digits and a password of 1 to 64 small letters and digits: what the page says is not trusted
    // with a terminal.
    static std::string ghi(std::string_view tuTrang);
};

}  // namespace tovira

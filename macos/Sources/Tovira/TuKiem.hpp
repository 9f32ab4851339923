#pragma once
// Main thread. The self-check: tries the program's own servers, tables, parsers and icon where it is
// installed, says what a person looking for a fault needs to know, and leaves nothing behind.

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "ManHinh.hpp"

namespace tovira {

class TuKiem {
  public:
    // What one check came to. `lyDo` says why it failed or was left out.
    struct KetLuan {
        enum class Loai : std::uint8_t { dat, hong, boQua };
        Loai loai = Loai::dat;
        std::string lyDo = {};
    };
    [[nodiscard]] static KetLuan dat() { return {}; }
    [[nodiscard]] static KetLuan hong(std::string lyDo) { return {KetLuan::Loai::hong, std::move(lyDo)}; }
    [[nodiscard]] static KetLuan boQua(std::string lyDo) { return {KetLuan::Loai::boQua, std::move(lyDo)}; }

    // The machine as it stands. No call prompts, injects or changes anything; all but the first four are made
    // only where there is a display.
    struct Nen {
        virtual ~Nen() = default;
        // The folder of the packaged web application.
        [[nodiscard]] virtual std::string thuMucGiaoDien() = 0;
        // The kind of desktop session and the web engine's version, for a person to read.
        [[nodiscard]] virtual std::string loaiPhien() = 0;
        [[nodiscard]] virtual std::string phienBanWeb() = 0;
        // Why there is no display to try anything on; empty when there is one.
        [[nodiscard]] virtual std::string lyDoKhongManHinh() = 0;
        // Why input cannot be injected, why the screen cannot be captured; empty when they can.
        [[nodiscard]] virtual std::string lyDoKhongDieuKhien() = 0;
        [[nodiscard]] virtual std::string lyDoKhongGhi() = 0;
        [[nodiscard]] virtual std::vector<ManHinh::Nguon> cacManHinh() = 0;
        // The system's own codes of the keys that are down at this moment; absent where they cannot be read.
        [[nodiscard]] virtual std::optional<std::vector<std::uint32_t>> phimDangGiu() = 0;
    };

    // Where the report goes, line by line, without line feeds.
    using Dong = std::function<void(const std::string&)>;

    struct TongKet {
        int dat = 0;
        int hong = 0;
        int boQua = 0;
        // The exit status.
        [[nodiscard]] int trangThai() const { return hong == 0 ? 0 : 1; }
    };

    // Runs every check. What passed, was left out or is a plain fact goes to `ra`, what failed to `loi`.
    static TongKet chay(Nen& nen, const Dong& ra, const Dong& loi);

    // The command-line mode: reports on standard output and standard error, returns the exit status.
    static int chay(Nen& nen);
};

}  // namespace tovira

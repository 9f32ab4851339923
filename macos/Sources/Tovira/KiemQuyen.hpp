#pragma once
// Main thread. The two permissions that the host needs, and the report that tells a user how to mend them.

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "Cau.hpp"
#include "DieuKhien.hpp"
#include "ManHinh.hpp"

namespace tovira {

class KiemQuyen {
  public:
    // What the system knows of the running program's code signature.
    struct ChuKy {
        std::uint32_t co = 0;  // kSecCodeInfoFlags
        // kSecCodeInfoCertificates, leaf first: each certificate's subject summary, where it has a readable
        // one.
        std::vector<std::optional<std::string>> chungChi;
        std::optional<std::vector<std::uint8_t>> maDuyNhat;  // kSecCodeInfoUnique
    };

    // The running program as the system packages it.
    struct Goi {
        std::string duongDan;                 // the bundle, or the folder of a bare executable
        std::optional<std::string> dinhDanh;  // the bundle identifier
        std::optional<ChuKy> chuKy;           // absent when no signing information can be read
    };

    struct Nen {
        virtual ~Nen() = default;
        [[nodiscard]] virtual Goi docGoi() = 0;
    };

    KiemQuyen(Cau::Nen& xinQuyen, DieuKhien::Nen& dieuKhien, ManHinh::Nen& manHinh)
        : xinQuyen_(xinQuyen), dieuKhien_(dieuKhien), manHinh_(manHinh) {}

    // Neither prompts.
    [[nodiscard]] bool duocGhiManHinh() const { return manHinh_.duocGhi(); }
    [[nodiscard]] bool duocTroNang() const { return dieuKhien_.duocPhep(); }

    // Asks for the permission if it is missing, then in any case shows where it is granted.
    void moGhiManHinh();
    void moTroNang();

    [[nodiscard]] static std::string kieuChuKy(const std::optional<ChuKy>& chuKy);
    // Lower-case hexadecimal without separators; absent where there is no code directory hash.
    [[nodiscard]] static std::optional<std::string> cdHash(const std::optional<ChuKy>& chuKy);

    struct Quyen {
        bool ghiManHinh = false;
        bool troNang = false;
    };
    struct BaoCao {
        std::string chu;    // whole lines, each with its line feed
        int trangThai = 1;  // exit status: 0 exactly when both permissions are granted
    };
    [[nodiscard]] static BaoCao lapBaoCao(const Goi& goi, Quyen quyen);

  private:
    Cau::Nen& xinQuyen_;
    DieuKhien::Nen& dieuKhien_;
    ManHinh::Nen& manHinh_;
};

}  // namespace tovira

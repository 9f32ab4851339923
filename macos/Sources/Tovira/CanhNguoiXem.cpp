#include "CanhNguoiXem.hpp"

namespace tovira {

CanhNguoiXem::Viec CanhNguoiXem::nhip(std::optional<std::size_t> soKhach, double luc) {
    if (!soKhach) return Viec::tiep;
    if (*soKhach > 0) {
        vangTu_.reset();
        return Viec::tiep;
    }
    if (!vangTu_) {
        vangTu_ = luc;
        return Viec::vuaVang;
    }
    return luc - *vangTu_ >= hanVang ? Viec::ketThuc : Viec::tiep;
}

}  // namespace tovira

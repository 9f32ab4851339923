#include "MotBan.hpp"

#include "DongLenh.hpp"

namespace tovira {

MotBan::Cach MotBan::cach(const std::vector<std::string>& thamSo, const char* giaTriThay) {
    if (giaTriThay != nullptr && *giaTriThay != '\0') return Cach::thayThe;
    return DongLenh::ngam(thamSo) ? Cach::ngam : Cach::thuong;
}

MotBan::Viec MotBan::batDau() {
    // The one that it replaces goes on until this one is certain to run.
    if (cach_ == Cach::thayThe || nen_.giuCho()) return Viec::chay;
    if (cach_ == Cach::thuong) nen_.goiBanKia();
    return Viec::ketThuc;
}

void MotBan::vaoCho() {
    if (cach_ == Cach::thayThe) nen_.nhanCho(hanNhuong);
}

}  // namespace tovira

#include "TenLuong.hpp"

#include <pthread.h>

namespace tovira {
namespace {

// The call has two shapes in the world; overload resolution picks the one this system declares.
// With a thread argument names are limited to 15 bytes and longer ones are refused.
[[maybe_unused]] void goi(int (*ham)(pthread_t, const char*), const std::string& nhan) {
    ham(pthread_self(), nhan.substr(0, 15).c_str());
}
[[maybe_unused]] void goi(int (*ham)(const char*), const std::string& nhan) {
    ham(nhan.c_str());
}

}  // namespace

void datTenLuong(const std::string& nhan) {
    goi(&pthread_setname_np, nhan);
}

}  // namespace tovira

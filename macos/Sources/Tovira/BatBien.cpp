#include "BatBien.hpp"

#include <cstdio>
#include <cstdlib>

namespace tovira {

void ketThucVi(const char* vi, const char* tep, int dong) {
    std::fprintf(stderr, "Tovira: %s (%s:%d)\n", vi, tep, dong);
    std::fflush(stderr);
    std::abort();
}

}  // namespace tovira

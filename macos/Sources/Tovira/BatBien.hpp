#pragma once
// Any thread. Broken invariants end the process, in release builds too.

namespace tovira {

// Writes "Tovira: <vi>" and the place to standard error and aborts.
[[noreturn]] void ketThucVi(const char* vi, const char* tep, int dong);

}  // namespace tovira

// Ends the process when `dieuKien` does not hold.
#define TOVIRA_BUOC(dieuKien) \
    ((dieuKien) ? static_cast<void>(0) : ::tovira::ketThucVi(#dieuKien, __FILE__, __LINE__))

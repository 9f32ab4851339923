#pragma once
// Any thread. Apple only: owners of Core Foundation objects, for the Objective-C++ files.

#include <CoreFoundation/CoreFoundation.h>

#include <memory>
#include <type_traits>

namespace tovira {

struct NhaCf {
    void operator()(const void* doiTuong) const { CFRelease(doiTuong); }
};

// Owns what a Create or Copy call returned; may hold nothing. GiuCf<CGEventRef> suKien(CGEventCreate…(…));
template <class Ref>
using GiuCf = std::unique_ptr<std::remove_pointer_t<Ref>, NhaCf>;

}  // namespace tovira

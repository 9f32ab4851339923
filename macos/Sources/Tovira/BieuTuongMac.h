#pragma once
// Main thread. Apple only: the icon as the system's own image types.

#import <AppKit/AppKit.h>

#include "BieuTuong.hpp"

namespace tovira {

// `canh` pixels square: device RGB, 8 bits a sample, alpha not premultiplied. nil when the system cannot make
// it.
[[nodiscard]] NSBitmapImageRep* lop(int canh, BieuTuong::BoGoc boGoc);

// The running application's image: 512 points, one representation for each of BieuTuong::canhUngDung.
[[nodiscard]] NSImage* anhUngDung();

}  // namespace tovira

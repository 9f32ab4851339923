#if !__has_feature(objc_arc)
#error "This file needs automatic reference counting."
#endif

#include "BieuTuongMac.h"

#include <algorithm>

namespace tovira {

namespace {

constexpr int mauMoiDiem = 4;  // R, G, B, A
constexpr CGFloat canhAnh = 512;

static_assert(NSBitmapFormatAlphaNonpremultiplied == 2);

}  // namespace

NSBitmapImageRep* lop(int canh, BieuTuong::BoGoc boGoc) {
    NSBitmapImageRep* ra =
        [[NSBitmapImageRep alloc] initWithBitmapDataPlanes:nullptr
                                                pixelsWide:canh
                                                pixelsHigh:canh
                                             bitsPerSample:8
                                           samplesPerPixel:mauMoiDiem
                                                  hasAlpha:YES
                                                  isPlanar:NO
                                            colorSpaceName:NSDeviceRGBColorSpace
                                              bitmapFormat:NSBitmapFormatAlphaNonpremultiplied
                                               bytesPerRow:canh * mauMoiDiem
                                              bitsPerPixel:8 * mauMoiDiem];
    if (ra == nil || ra.bitmapData == nullptr) return nil;
    const auto diem = BieuTuong::rgba(canh, boGoc);
    std::copy(diem.begin(), diem.end(), ra.bitmapData);
    return ra;
}

NSImage* anhUngDung() {
    NSImage* ra = [[NSImage alloc] initWithSize:NSMakeSize(canhAnh, canhAnh)];
    for (const int canh : BieuTuong::canhUngDung) {
        if (NSBitmapImageRep* mot = lop(canh, BieuTuong::BoGoc::co)) [ra addRepresentation:mot];
    }
    return ra;
}

}  // namespace tovira

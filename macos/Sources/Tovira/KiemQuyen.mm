#if !__has_feature(objc_arc)
#error "This file needs automatic reference counting."
#endif

#import <Foundation/Foundation.h>
#import <Security/Security.h>

#include "ChuMac.h"
#include "GiuCf.h"
#include "KiemQuyenNen.hpp"

namespace tovira {

namespace {

static_assert(kSecCSSigningInformation == 2);
static_assert(kSecCodeSignatureAdhoc == 2);

// nil where any step fails: an unsigned program has none.
NSDictionary* thongTinChuKy() {
    SecCodeRef toi = nullptr;
    if (SecCodeCopySelf(kSecCSDefaultFlags, &toi) != errSecSuccess) return nil;
    const GiuCf<SecCodeRef> giuToi(toi);
    SecStaticCodeRef trenDia = nullptr;
    if (SecCodeCopyStaticCode(toi, kSecCSDefaultFlags, &trenDia) != errSecSuccess) return nil;
    const GiuCf<SecStaticCodeRef> giuTrenDia(trenDia);
    CFDictionaryRef thongTin = nullptr;
    if (SecCodeCopySigningInformation(trenDia, kSecCSSigningInformation, &thongTin) != errSecSuccess)
        return nil;
    return CFBridgingRelease(thongTin);
}

std::optional<std::string> tenChungChi(id chungChi) {
    NSString* ten = CFBridgingRelease(SecCertificateCopySubjectSummary((__bridge SecCertificateRef)chungChi));
    return ten == nil ? std::nullopt : std::optional(chuCpp(ten));
}

std::optional<KiemQuyen::ChuKy> docChuKy() {
    NSDictionary* thongTin = thongTinChuKy();
    if (thongTin == nil) return std::nullopt;
    KiemQuyen::ChuKy ra;
    NSNumber* co = thongTin[(__bridge NSString*)kSecCodeInfoFlags];
    ra.co = co.unsignedIntValue;
    NSArray* chungChi = thongTin[(__bridge NSString*)kSecCodeInfoCertificates];
    for (id mot in chungChi) ra.chungChi.push_back(tenChungChi(mot));
    NSData* ma = thongTin[(__bridge NSString*)kSecCodeInfoUnique];
    if (ma != nil) {
        const auto* dau = static_cast<const std::uint8_t*>(ma.bytes);
        ra.maDuyNhat.emplace(dau, dau + ma.length);
    }
    return ra;
}

struct NenKiemQuyenMac final : KiemQuyen::Nen {
    KiemQuyen::Goi docGoi() override {
        NSBundle* goi = NSBundle.mainBundle;
        NSString* dinhDanh = goi.bundleIdentifier;
        return {chuCpp(goi.bundlePath), dinhDanh == nil ? std::nullopt : std::optional(chuCpp(dinhDanh)),
                docChuKy()};
    }
};

}  // namespace

std::unique_ptr<KiemQuyen::Nen> taoNenKiemQuyen() { return std::make_unique<NenKiemQuyenMac>(); }

}  // namespace tovira

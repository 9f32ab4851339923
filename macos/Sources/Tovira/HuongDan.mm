#if !__has_feature(objc_arc)
#error "This file needs automatic reference counting."
#endif

#include "HuongDan.hpp"

#include "ChuMac.h"
#include "CuaSoPhuMac.h"

namespace tovira {

namespace {

NSColor* mauMac(MauChu mau) {
    switch (mau) {
        case MauChu::chinh:
            return NSColor.labelColor;
        case MauChu::phu:
            return NSColor.secondaryLabelColor;
        case MauChu::nhan:
            return NSColor.controlAccentColor;
    }
}

NSFont* phong(double co, bool dam) {
    return dam ? [NSFont boldSystemFontOfSize:co] : [NSFont systemFontOfSize:co];
}

NSParagraphStyle* dangDoan(const KieuChuKhoi& kieu) {
    NSMutableParagraphStyle* ra = [[NSMutableParagraphStyle alloc] init];
    ra.lineSpacing = HuongDan::gianDong;
    ra.paragraphSpacingBefore = kieu.truoc;
    ra.paragraphSpacing = kieu.sau;
    if (kieu.thut > 0) {
        ra.headIndent = kieu.thut;
        ra.tabStops = @[ [[NSTextTab alloc] initWithTextAlignment:NSTextAlignmentLeft
                                                         location:kieu.thut
                                                          options:@{}] ];
    }
    return ra;
}

void themKhoi(NSMutableAttributedString* ra, const KhoiHuongDan& khoi) {
    const KieuChuKhoi kieu = HuongDan::kieuChu(khoi.kieu);
    NSMutableDictionary<NSAttributedStringKey, id>* dang = [@{
        NSFontAttributeName : phong(kieu.co, kieu.dam),
        NSForegroundColorAttributeName : mauMac(kieu.mau),
        NSParagraphStyleAttributeName : dangDoan(kieu),
    } mutableCopy];
    if (kieu.gianChu > 0) dang[NSKernAttributeName] = @(kieu.gianChu);
    if (const std::string dau = HuongDan::dauDong(khoi); !dau.empty()) {
        NSMutableDictionary<NSAttributedStringKey, id>* dangDau = [dang mutableCopy];
        dangDau[NSFontAttributeName] = phong(kieu.co, khoi.kieu == KieuKhoi::so);
        [ra appendAttributedString:[[NSAttributedString alloc] initWithString:chuMac(dau + "\t")
                                                                   attributes:dangDau]];
    }
    [ra appendAttributedString:[[NSAttributedString alloc]
                                   initWithString:chuMac(HuongDan::chuHien(khoi) + "\n")
                                       attributes:dang]];
}

NSAttributedString* dungChu() {
    NSMutableAttributedString* ra = [[NSMutableAttributedString alloc] init];
    for (const KhoiHuongDan& khoi : HuongDan::cacKhoi) themKhoi(ra, khoi);
    return ra;
}

NSTextView* dungKhungChu(NSSize co) {
    NSTextView* ra = [[NSTextView alloc] initWithFrame:NSMakeRect(0, 0, co.width, co.height)];
    ra.editable = NO;
    ra.selectable = YES;
    ra.drawsBackground = YES;
    ra.backgroundColor = NSColor.textBackgroundColor;
    ra.textContainerInset = NSMakeSize(HuongDan::leNgang, HuongDan::leDoc);
    ra.verticallyResizable = YES;
    ra.horizontallyResizable = NO;
    ra.minSize = NSMakeSize(0, co.height);
    ra.maxSize = NSMakeSize(CGFLOAT_MAX, CGFLOAT_MAX);
    ra.autoresizingMask = NSViewWidthSizable;
    ra.textContainer.containerSize = NSMakeSize(co.width, CGFLOAT_MAX);
    ra.textContainer.widthTracksTextView = YES;
    [ra.textStorage setAttributedString:dungChu()];
    return ra;
}

NSScrollView* dungKhungCuon(NSRect khung) {
    NSScrollView* ra = [[NSScrollView alloc] initWithFrame:khung];
    ra.borderType = NSNoBorder;
    ra.hasVerticalScroller = YES;
    ra.hasHorizontalScroller = NO;
    ra.autohidesScrollers = YES;
    ra.documentView = dungKhungChu(ra.contentSize);
    return ra;
}

NSWindow* dungCuaSo() {
    const NSRect khung = NSMakeRect(0, 0, HuongDan::rong, HuongDan::cao);
    NSWindow* ra = [[NSWindow alloc] initWithContentRect:khung
                                               styleMask:NSWindowStyleMaskTitled | NSWindowStyleMaskClosable |
                                                         NSWindowStyleMaskMiniaturizable
                                                 backing:NSBackingStoreBuffered
                                                   defer:NO];
    ra.releasedWhenClosed = NO;
    ra.title = chuMac(HuongDan::tieuDeCuaSo);
    ra.minSize = NSMakeSize(HuongDan::rongToiThieu, HuongDan::caoToiThieu);
    ra.contentView = dungKhungCuon(khung);
    [ra center];
    return ra;
}

}  // namespace

void hienHuongDan() {
    static NSWindow* const cuaSo = dungCuaSo();
    raTruocHet(cuaSo);
}

}  // namespace tovira

#if !__has_feature(objc_arc)
#error "This file needs automatic reference counting."
#endif

#include "GioiThieu.hpp"

#import "BamMac.h"
#include "BieuTuongMac.h"
#include "ChuMac.h"
#include "CuaSoPhuMac.h"

namespace tovira {

namespace {

NSTextField* nhan(const char* chu, NSFont* phong, NSColor* mau) {
    NSTextField* ra = [NSTextField labelWithString:chuMac(chu)];
    ra.font = phong;
    ra.textColor = mau;
    ra.selectable = YES;
    return ra;
}

NSTextField* nhanXuongDong(const char* chu, double co, CGFloat rong) {
    NSTextField* ra = [NSTextField wrappingLabelWithString:chuMac(chu)];
    ra.font = [NSFont systemFontOfSize:co];
    ra.textColor = NSColor.secondaryLabelColor;
    ra.alignment = NSTextAlignmentCenter;
    ra.preferredMaxLayoutWidth = rong;
    [ra.widthAnchor constraintLessThanOrEqualToConstant:rong].active = YES;
    return ra;
}

// A rounded box around `trong`: as high as that asks for, higher where its neighbours are.
NSBox* hop(NSView* trong, NSEdgeInsets le) {
    NSBox* ra = [[NSBox alloc] init];
    ra.boxType = NSBoxCustom;
    ra.titlePosition = NSNoTitle;
    ra.cornerRadius = 10;
    ra.borderWidth = 1;
    ra.borderColor = NSColor.separatorColor;
    ra.fillColor = NSColor.controlBackgroundColor;
    ra.contentViewMargins = NSZeroSize;
    trong.translatesAutoresizingMaskIntoConstraints = NO;
    [ra.contentView addSubview:trong];
    NSLayoutConstraint* vuaKhit = [trong.bottomAnchor constraintEqualToAnchor:ra.bottomAnchor
                                                                     constant:-le.bottom];
    vuaKhit.priority = NSLayoutPriorityDefaultLow;
    [NSLayoutConstraint activateConstraints:@[
        [trong.topAnchor constraintEqualToAnchor:ra.topAnchor constant:le.top],
        [trong.bottomAnchor constraintLessThanOrEqualToAnchor:ra.bottomAnchor constant:-le.bottom],
        vuaKhit,
        [trong.leadingAnchor constraintEqualToAnchor:ra.leadingAnchor constant:le.left],
        [trong.trailingAnchor constraintEqualToAnchor:ra.trailingAnchor constant:-le.right],
    ]];
    return ra;
}

NSBox* the(const GioiThieu::The& mot) {
    NSImage* anh = [NSImage imageWithSystemSymbolName:chuMac(mot.kyHieu) accessibilityDescription:nil];
    NSImageView* hinh = [NSImageView imageViewWithImage:anh != nil ? anh : [[NSImage alloc] init]];
    hinh.symbolConfiguration = [NSImageSymbolConfiguration configurationWithPointSize:15
                                                                               weight:NSFontWeightRegular];
    hinh.contentTintColor = NSColor.controlAccentColor;
    NSStackView* xep =
        [NSStackView stackViewWithViews:@[ hinh, nhanXuongDong(mot.chu, 10.5, GioiThieu::rongChuThe) ]];
    xep.orientation = NSUserInterfaceLayoutOrientationVertical;
    xep.alignment = NSLayoutAttributeCenterX;
    xep.spacing = 6;
    [xep setHuggingPriority:NSLayoutPriorityDefaultHigh forOrientation:NSLayoutConstraintOrientationVertical];
    return hop(xep, NSEdgeInsetsMake(13, 6, 13, 6));
}

NSStackView* hangThe() {
    NSStackView* ra = [[NSStackView alloc] init];
    for (const auto& mot : GioiThieu::cacThe) [ra addArrangedSubview:the(mot)];
    ra.orientation = NSUserInterfaceLayoutOrientationHorizontal;
    ra.distribution = NSStackViewDistributionFillEqually;
    ra.alignment = NSLayoutAttributeHeight;
    ra.spacing = 8;
    return ra;
}

NSBox* hopThongTin() {
    NSGridView* luoi = [NSGridView gridViewWithNumberOfColumns:2 rows:0];
    for (const auto& dong : GioiThieu::cacDong) {
        NSFont* phong = [NSFont systemFontOfSize:11.5];
        [luoi addRowWithViews:@[
            nhan(dong.nhan, phong, NSColor.secondaryLabelColor), nhan(dong.giaTri, phong, NSColor.labelColor)
        ]];
    }
    luoi.rowSpacing = 6;
    [luoi columnAtIndex:1].xPlacement = NSGridCellPlacementTrailing;
    return hop(luoi, NSEdgeInsetsMake(10, 14, 10, 14));
}

NSButton* nutHuongDan() {
    NSButton* ra = [NSButton buttonWithTitle:chuMac(GioiThieu::nutHuongDan)
                                      target:TVBam.chung
                                      action:@selector(huongDan:)];
    ra.bezelStyle = NSBezelStyleRounded;
    ra.controlSize = NSControlSizeLarge;
    return ra;
}

NSImageView* hinhBieuTuong() {
    NSImageView* ra = [NSImageView imageViewWithImage:anhUngDung()];
    ra.imageScaling = NSImageScaleProportionallyUpOrDown;
    [NSLayoutConstraint activateConstraints:@[
        [ra.widthAnchor constraintEqualToConstant:GioiThieu::canhBieuTuong],
        [ra.heightAnchor constraintEqualToConstant:GioiThieu::canhBieuTuong],
    ]];
    return ra;
}

NSStackView* dungNoiDung() {
    NSStackView* ra = [[NSStackView alloc] init];
    ra.orientation = NSUserInterfaceLayoutOrientationVertical;
    ra.alignment = NSLayoutAttributeCenterX;
    const auto them = [ra](NSView* muc, CGFloat cachSau) {
        [ra addArrangedSubview:muc];
        [ra setCustomSpacing:cachSau afterView:muc];
    };
    const auto trai = [](NSView* muc) {
        [muc.widthAnchor constraintEqualToConstant:GioiThieu::rong - 2 * GioiThieu::leNgang].active = YES;
        return muc;
    };
    them(hinhBieuTuong(), 14);
    them(nhan(GioiThieu::ten, [NSFont boldSystemFontOfSize:22], NSColor.labelColor), 3);
    them(nhan(GioiThieu::phienBan, [NSFont monospacedSystemFontOfSize:11.5 weight:NSFontWeightRegular],
              NSColor.secondaryLabelColor),
         10);
    them(nhanXuongDong(GioiThieu::khauHieu, 13, GioiThieu::rongKhauHieu), 20);
    them(trai(hangThe()), 16);
    them(trai(hopThongTin()), 16);
    [ra addArrangedSubview:nutHuongDan()];
    return ra;
}

NSWindow* dungCuaSo() {
    NSWindow* ra = [[NSWindow alloc] initWithContentRect:NSMakeRect(0, 0, GioiThieu::rong, GioiThieu::cao)
                                               styleMask:NSWindowStyleMaskTitled | NSWindowStyleMaskClosable |
                                                         NSWindowStyleMaskFullSizeContentView
                                                 backing:NSBackingStoreBuffered
                                                   defer:NO];
    ra.releasedWhenClosed = NO;
    ra.title = chuMac(GioiThieu::tieuDeCuaSo);
    ra.titlebarAppearsTransparent = YES;
    ra.titleVisibility = NSWindowTitleHidden;
    ra.movableByWindowBackground = YES;
    NSView* nen = ra.contentView;
    NSStackView* xep = dungNoiDung();
    xep.translatesAutoresizingMaskIntoConstraints = NO;
    [nen addSubview:xep];
    [NSLayoutConstraint activateConstraints:@[
        [xep.centerXAnchor constraintEqualToAnchor:nen.centerXAnchor],
        [xep.centerYAnchor constraintEqualToAnchor:nen.centerYAnchor],
        [nen.widthAnchor constraintEqualToConstant:GioiThieu::rong],
        [nen.heightAnchor constraintEqualToConstant:GioiThieu::cao],
    ]];
    [ra center];
    return ra;
}

}  // namespace

void hienGioiThieu() {
    static NSWindow* const cuaSo = dungCuaSo();
    raTruocHet(cuaSo);
}

}  // namespace tovira

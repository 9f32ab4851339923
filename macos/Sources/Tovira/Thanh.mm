#if !__has_feature(objc_arc)
#error "This file needs automatic reference counting."
#endif

#import "ThanhMac.h"

#import <QuartzCore/QuartzCore.h>

#include "ChiBao.hpp"
#include "ChuMac.h"
#include "HinhHocMac.h"
#import "NutNgayMac.h"

NSNotificationName const TVThanhDaHien = @"TVThanhDaHien";

namespace tovira {

namespace {

constexpr NSWindowLevel mucThanh = NSStatusWindowLevel;
static_assert(mucThanh == 25);
static_assert(NSWindowSharingNone == 0);

NSRect choTrenThanh(const ChiBao::Chu& chu) { return sangMac(chu.cho, ChiBao::cao); }

NSTextField* nhan(const ChiBao::Chu& chu) {
    NSTextField* ra = [NSTextField labelWithString:chuMac(chu.chu)];
    ra.frame = choTrenThanh(chu);
    ra.textColor = NSColor.whiteColor;
    ra.font = [NSFont systemFontOfSize:chu.co weight:chu.dam ? NSFontWeightSemibold : NSFontWeightRegular];
    return ra;
}

NSButton* nutDung(id dich, SEL viec) {
    NSButton* ra = [TVNutNgay buttonWithTitle:chuMac(ChiBao::nut.chu) target:dich action:viec];
    ra.bezelStyle = NSBezelStyleRounded;
    ra.controlSize = NSControlSizeSmall;
    ra.font = [NSFont boldSystemFontOfSize:ChiBao::nut.co];
    ra.bezelColor = NSColor.systemRedColor;  // a content tint would not reach a button that has a bezel
    ra.frame = choTrenThanh(ChiBao::nut);
    return ra;
}

NSVisualEffectView* nenMo(NSRect khung) {
    NSVisualEffectView* ra = [[NSVisualEffectView alloc] initWithFrame:khung];
    ra.material = NSVisualEffectMaterialHUDWindow;
    ra.blendingMode = NSVisualEffectBlendingModeBehindWindow;
    ra.state = NSVisualEffectStateActive;
    ra.wantsLayer = YES;
    ra.layer.cornerRadius = ChiBao::boGoc;
    ra.layer.masksToBounds = YES;
    return ra;
}

// The red lies above the material on a view of its own: the effect view's layer is the system's to fill.
NSView* nenDo(NSRect khung) {
    NSView* ra = [[NSView alloc] initWithFrame:khung];
    ra.wantsLayer = YES;
    ra.layer.backgroundColor = [NSColor.systemRedColor colorWithAlphaComponent:ChiBao::doDac].CGColor;
    return ra;
}

}  // namespace

}  // namespace tovira

@implementation TVThanh {
    std::function<void()> _khiBam;
}

- (instancetype)initVoiKhung:(NSRect)khung khiBam:(std::function<void()>)khiBam {
    self = [super initWithContentRect:khung
                            styleMask:NSWindowStyleMaskBorderless | NSWindowStyleMaskNonactivatingPanel
                              backing:NSBackingStoreBuffered
                                defer:NO];
    if (self == nil) return nil;
    _khiBam = std::move(khiBam);
    self.releasedWhenClosed = NO;
    // Neither another program in front nor "Hide" takes the bar away.
    self.hidesOnDeactivate = NO;
    self.canHide = NO;
    self.opaque = NO;
    self.backgroundColor = NSColor.clearColor;
    self.hasShadow = YES;
    self.level = tovira::mucThanh;
    self.collectionBehavior = NSWindowCollectionBehaviorCanJoinAllSpaces |
                              NSWindowCollectionBehaviorStationary | NSWindowCollectionBehaviorIgnoresCycle |
                              NSWindowCollectionBehaviorFullScreenAuxiliary;
    self.sharingType = NSWindowSharingNone;
    [self dungNoiDung:NSMakeRect(0, 0, NSWidth(khung), NSHeight(khung))];
    return self;
}

- (void)dungNoiDung:(NSRect)khung {
    NSView* nenMo = tovira::nenMo(khung);
    NSView* nenDo = tovira::nenDo(khung);
    [nenDo addSubview:tovira::nhan(tovira::ChiBao::cham)];
    [nenDo addSubview:tovira::nhan(tovira::ChiBao::loi)];
    [nenDo addSubview:tovira::nutDung(self, @selector(bamDung:))];
    [nenMo addSubview:nenDo];
    self.contentView = nenMo;
}

- (BOOL)canBecomeKeyWindow {
    return NO;
}

- (BOOL)canBecomeMainWindow {
    return NO;
}

- (void)bamDung:(id)sender {
    const auto goi = _khiBam;  // a copy: the call takes the bar away
    goi();
}

@end

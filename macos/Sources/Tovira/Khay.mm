#if !__has_feature(objc_arc)
#error "This file needs automatic reference counting."
#endif

#import <AppKit/AppKit.h>

#include "ChuMac.h"
#include "CuaSoPhuMac.h"
#include "HienDienMac.h"

// The menu's delegate and the target of its items. Its Khay outlives the event loop.
@interface TVKhay : NSObject <NSMenuDelegate>
- (instancetype)initVoiChu:(tovira::Khay*)chu;
@end

@implementation TVKhay {
    tovira::Khay* _chu;
}

- (instancetype)initVoiChu:(tovira::Khay*)chu {
    self = [super init];
    if (self != nil) _chu = chu;
    return self;
}

- (void)menuNeedsUpdate:(NSMenu*)menu {
    [menu removeAllItems];
    for (const tovira::MucKhay& muc : _chu->lapMenu()) [menu addItem:[self taoMuc:muc]];
}

- (NSMenuItem*)taoMuc:(const tovira::MucKhay&)muc {
    if (muc.laNgan()) return [NSMenuItem separatorItem];
    const bool coViec = muc.lenh != tovira::LenhKhay::khongCo;
    NSMenuItem* ra = [[NSMenuItem alloc] initWithTitle:tovira::chuMac(muc.ten)
                                                action:coViec ? @selector(bam:) : nil
                                         keyEquivalent:tovira::chuMac(muc.phim)];
    ra.target = self;
    ra.tag = static_cast<NSInteger>(muc.lenh);
    ra.enabled = muc.batDuoc;
    ra.state = muc.danhDau ? NSControlStateValueOn : NSControlStateValueOff;
    if (!muc.meo.empty()) ra.toolTip = tovira::chuMac(muc.meo);
    return ra;
}

- (void)bam:(NSMenuItem*)muc {
    _chu->bam(static_cast<tovira::LenhKhay>(muc.tag));
}

@end

namespace tovira {

namespace {

class KhayMac final : public Khay::Nen {
   public:
    KhayMac() = default;
    ~KhayMac() override {
        if (muc_ != nil) [NSStatusBar.systemStatusBar removeStatusItem:muc_];
    }
    KhayMac(const KhayMac&) = delete;
    KhayMac& operator=(const KhayMac&) = delete;

    void dungMuc(Khay& chu, const VeKhay& ve, const char* moTa) override {
        moTa_ = chuMac(moTa);
        uyQuyen_ = [[TVKhay alloc] initVoiChu:&chu];
        muc_ = [NSStatusBar.systemStatusBar statusItemWithLength:NSVariableStatusItemLength];
        doiVe(ve);
        NSMenu* menu = [[NSMenu alloc] init];
        menu.autoenablesItems = NO;
        menu.delegate = uyQuyen_;
        muc_.menu = menu;
    }

    void doiVe(const VeKhay& ve) override {
        NSImage* anh = [NSImage imageWithSystemSymbolName:chuMac(ve.kyHieu) accessibilityDescription:moTa_];
        // The tint reaches template images only; any other carries its colour itself.
        if (ve.toDo && !ve.khuonMau) {
            NSArray* mau = @[ NSColor.systemRedColor ];
            anh = [anh
                imageWithSymbolConfiguration:[NSImageSymbolConfiguration configurationWithPaletteColors:mau]];
        }
        [anh setTemplate:ve.khuonMau];
        muc_.button.image = anh;
        muc_.button.contentTintColor = ve.toDo ? NSColor.systemRedColor : nil;
        muc_.button.toolTip = chuMac(ve.meo);
    }

    bool coChoDat() override { return true; }  // the menu bar is always there
    void moHuongDan() override { hienHuongDan(); }
    void moGioiThieu() override { hienGioiThieu(); }

   private:
    NSString* moTa_ = @"";
    TVKhay* uyQuyen_ = nil;
    NSStatusItem* muc_ = nil;
};

}  // namespace

std::unique_ptr<Khay::Nen> taoNenKhay() { return std::make_unique<KhayMac>(); }

}  // namespace tovira

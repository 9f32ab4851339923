#if !__has_feature(objc_arc)
#error "This file needs automatic reference counting."
#endif

#include "MenuChinh.hpp"

#include "ChuMac.h"
#include "MenuChinhMac.h"
#import "UngDungUyQuyenMac.h"

// What the first responder may offer; AppKit declares it for no class of its own.
@protocol TVSuaDuoc
- (void)undo:(id)sender;
- (void)redo:(id)sender;
@end

namespace tovira {

namespace {

SEL viec(LenhMenu lenh) {
    switch (lenh) {
        case LenhMenu::ngan:
            return nil;
        case LenhMenu::gioiThieu:
            return @selector(moGioiThieu:);
        case LenhMenu::an:
            return @selector(hide:);
        case LenhMenu::thoat:
            return @selector(terminate:);
        case LenhMenu::hoanTac:
            return @selector(undo:);
        case LenhMenu::lamLai:
            return @selector(redo:);
        case LenhMenu::cat:
            return @selector(cut:);
        case LenhMenu::saoChep:
            return @selector(copy:);
        case LenhMenu::dan:
            return @selector(paste:);
        case LenhMenu::chonTatCa:
            return @selector(selectAll:);
        case LenhMenu::huongDan:
            return @selector(moHuongDan:);
    }
}

NSMenuItem* taoMuc(const MucMenu& muc, id uyQuyen) {
    if (muc.lenh == LenhMenu::ngan) return [NSMenuItem separatorItem];
    NSMenuItem* ra = [[NSMenuItem alloc] initWithTitle:chuMac(muc.ten)
                                                action:viec(muc.lenh)
                                         keyEquivalent:chuMac(muc.phim)];
    if (muc.lenh == LenhMenu::gioiThieu || muc.lenh == LenhMenu::huongDan) ra.target = uyQuyen;
    return ra;
}

}  // namespace

void datMenuChinh(id uyQuyen) {
    NSMenu* thanh = [[NSMenu alloc] init];
    for (const MenuCon& con : menuChinh) {
        NSMenu* menu = [[NSMenu alloc] initWithTitle:chuMac(con.ten)];
        menu.autoenablesItems = NO;  // the page, not AppKit, knows what it can cut and paste
        for (const MucMenu& muc : con.muc) [menu addItem:taoMuc(muc, uyQuyen)];
        NSMenuItem* cho = [[NSMenuItem alloc] initWithTitle:menu.title action:nil keyEquivalent:@""];
        cho.submenu = menu;
        [thanh addItem:cho];
    }
    NSApp.mainMenu = thanh;
    NSApp.helpMenu = thanh.itemArray.lastObject.submenu;
}

}  // namespace tovira

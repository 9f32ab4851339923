#if !__has_feature(objc_arc)
#error "This file needs automatic reference counting."
#endif

#import <AppKit/AppKit.h>

#include "ChuMac.h"
#include "NenChungMac.h"

namespace tovira {

namespace {

NSAlert* hop(NSAlertStyle kieu, const std::string& tin) {
    NSAlert* ra = [[NSAlert alloc] init];
    ra.alertStyle = kieu;
    ra.messageText = chuMac(tin);
    [ra addButtonWithTitle:@"Đã hiểu"];
    return ra;
}

class HopBaoMac final : public HopBao {
   public:
    void canhBao(const std::string& tieuDe, const std::string& chiTiet) override {
        NSAlert* ra = hop(NSAlertStyleWarning, tieuDe);
        ra.informativeText = chuMac(chiTiet);
        [ra runModal];
    }
    void thongBao(const std::string& noiDung) override { [hop(NSAlertStyleInformational, noiDung) runModal]; }
};

}  // namespace

std::unique_ptr<HopBao> taoHopBao() { return std::make_unique<HopBaoMac>(); }

}  // namespace tovira

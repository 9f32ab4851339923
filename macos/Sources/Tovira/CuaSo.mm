#if !__has_feature(objc_arc)
#error "This file needs automatic reference counting."
#endif

#include "CuaSoMac.h"

#include "BatBien.hpp"
#import "CauMac.h"
#include "ChuMac.h"
#import "CuaSoUyQuyenMac.h"

namespace tovira {

namespace {

// What the three grounds share: made with the web view, there from then on.
struct Chung {
    TVCuaSo* uyQuyen = nil;
    std::weak_ptr<CuaSo> chu;
};

class TrangMac final : public CuaSo::NenTrang {
   public:
    explicit TrangMac(Chung& chung) : c_(chung) {}

    void dung(CuaSo& chu) override {
        c_.chu = chu.yeu();
        c_.uyQuyen = [[TVCuaSo alloc] initVoiChu:c_.chu];
        TVCau* cau = [[TVCau alloc] initVoiChu:c_.chu];
        WKWebViewConfiguration* cauHinh = [[WKWebViewConfiguration alloc] init];
        cauHinh.userContentController = [[WKUserContentController alloc] init];
        [cauHinh.userContentController addScriptMessageHandler:cau name:chuMac(Cau::tenKenh)];
        cauHinh.websiteDataStore = [WKWebsiteDataStore defaultDataStore];
        // The remote picture and voice start without a click, and may fill the screen.
        cauHinh.mediaTypesRequiringUserActionForPlayback = WKAudiovisualMediaTypeNone;
        cauHinh.preferences.elementFullscreenEnabled = YES;
#if __MAC_OS_X_VERSION_MAX_ALLOWED >= 140000
        // Behind a hidden window the page waits for calls; the system would put it to sleep.
        if (@available(macOS 14.0, *))
            cauHinh.preferences.inactiveSchedulingPolicy = WKInactiveSchedulingPolicyNone;
#endif
        WKWebView* web = [[WKWebView alloc] initWithFrame:NSMakeRect(0, 0, CuaSo::rongDau, CuaSo::caoDau)
                                            configuration:cauHinh];
        web.navigationDelegate = c_.uyQuyen;
        web.UIDelegate = c_.uyQuyen;
        web.allowsBackForwardNavigationGestures = NO;
        cau.web = web;
        c_.uyQuyen.web = web;
    }

    void datKichBan(const std::string& kichBan, const std::vector<std::string>&) override {
        WKUserContentController* kho = web().configuration.userContentController;
        [kho removeAllUserScripts];
        [kho addUserScript:[[WKUserScript alloc] initWithSource:chuMac(kichBan)
                                                  injectionTime:WKUserScriptInjectionTimeAtDocumentStart
                                               forMainFrameOnly:YES]];
    }

    void tai(const std::string& diaChi, double cho) override {
        NSURL* url = [NSURL URLWithString:chuMac(diaChi)];
        const auto chu = c_.chu.lock();
        if (url == nil && chu) return chu->neuHongThiBao(LyDoHong::khac);
        [web() loadRequest:[NSURLRequest requestWithURL:url
                                            cachePolicy:NSURLRequestUseProtocolCachePolicy
                                        timeoutInterval:cho]];
    }

    void taiHtml(const std::string& html) override { [web() loadHTMLString:chuMac(html) baseURL:nil]; }

    void chay(const std::string& js) override { [web() evaluateJavaScript:chuMac(js) completionHandler:nil]; }

   private:
    [[nodiscard]] WKWebView* web() const {
        TOVIRA_BUOC(c_.uyQuyen.web != nil);
        return c_.uyQuyen.web;
    }

    Chung& c_;
};

class CuaMac final : public CuaSo::NenCua {
   public:
    explicit CuaMac(Chung& chung) : c_(chung) {}

    void dung(CuaSo&) override {
        TVCuaSoChinh* cua = [[TVCuaSoChinh alloc]
            initWithContentRect:c_.uyQuyen.web.frame
                      styleMask:NSWindowStyleMaskTitled | NSWindowStyleMaskClosable |
                                NSWindowStyleMaskMiniaturizable | NSWindowStyleMaskResizable
                        backing:NSBackingStoreBuffered
                          defer:NO];
        cua.releasedWhenClosed = NO;
        cua.title = chuMac(CuaSo::tieuDe);
        cua.contentView = c_.uyQuyen.web;
        cua.delegate = c_.uyQuyen;
        [cua center];
        [cua setFrameAutosaveName:chuMac(CuaSo::tenLuuKhung)];
        cua.minSize = NSMakeSize(CuaSo::rongNhoNhat, CuaSo::caoNhoNhat);
        c_.uyQuyen.cuaSo = cua;
    }

    DoCuaSo::TrangThai trangThai() const override {
        const NSRect khung = cua().frame;
        return {{khung.origin.x, khung.origin.y, khung.size.width, khung.size.height},
                static_cast<bool>(cua().visible),
                static_cast<bool>(cua().miniaturized)};
    }

    void hien(DoCuaSo::CachHien cach) override {
        if (cach == DoCuaSo::CachHien::thuNho) return [cua() miniaturize:nil];
        [cua() makeKeyAndOrderFront:nil];
        [NSApp activateIgnoringOtherApps:YES];
    }

    void an() override { [cua() orderOut:nil]; }

    // The system saves every move under the autosave name; the parked place is not one to come back to.
    void doXa() override {
        [cua() setFrameAutosaveName:@""];
        cua().dangDo = YES;
        [cua() setFrameOrigin:NSMakePoint(DoCuaSo::gocXa.x, DoCuaSo::gocXa.y)];
    }

    void veCho(Diem goc) override {
        cua().dangDo = NO;
        [cua() setFrameOrigin:NSMakePoint(goc.x, goc.y)];
        [cua() setFrameAutosaveName:chuMac(CuaSo::tenLuuKhung)];
    }

    void raTruoc() override {
        if (cua().miniaturized) [cua() deminiaturize:nil];
        [cua() orderFront:nil];
    }

    void choThuNho() override { cua().styleMask |= NSWindowStyleMaskMiniaturizable; }

   private:
    [[nodiscard]] TVCuaSoChinh* cua() const {
        TOVIRA_BUOC(c_.uyQuyen.cuaSo != nil);
        return c_.uyQuyen.cuaSo;
    }

    Chung& c_;
};

class TachMac final : public CuaSo::NenTach {
   public:
    explicit TachMac(Chung& chung) : c_(chung) {}

    void dong(MaTach ma) override { [cua(ma) close]; }

    void an(MaTach ma) override {
        NSWindow* cu = cua(ma);
        if (cu == nil) return;
        [cu orderOut:nil];
        c_.uyQuyen.cuaSoTach = nil;
        c_.uyQuyen.webTach = nil;
    }

    void chay(MaTach ma, const char* js) override {
        if (c_.uyQuyen.maTach == ma) [c_.uyQuyen.webTach evaluateJavaScript:@(js) completionHandler:nil];
    }

   private:
    // nil once that pop-up is forgotten.
    [[nodiscard]] NSWindow* cua(MaTach ma) const {
        return c_.uyQuyen.maTach == ma ? c_.uyQuyen.cuaSoTach : nil;
    }

    Chung& c_;
};

class NenWebMac final : public NenWeb {
   public:
    CuaSo::NenCua& cua() override { return cua_; }
    CuaSo::NenTrang& trang() override { return trang_; }
    CuaSo::NenTach& tach() override { return tach_; }

   private:
    Chung chung_;
    CuaMac cua_{chung_};
    TrangMac trang_{chung_};
    TachMac tach_{chung_};
};

}  // namespace

std::unique_ptr<NenWeb> taoNenWeb() { return std::make_unique<NenWebMac>(); }

}  // namespace tovira

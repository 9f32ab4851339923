#if !__has_feature(objc_arc)
#error "This file needs automatic reference counting."
#endif

#import "CuaSoUyQuyenMac.h"

#include "ChuMac.h"
#import "DongCuaSoTachMac.h"

namespace {

using namespace tovira;

constexpr NSInteger maBiChan = 102;  // WebKitErrorFrameLoadInterruptedByPolicyChange

LyDoHong lyDo(NSError* loi) {
    if ([loi.domain isEqualToString:NSURLErrorDomain] && loi.code == NSURLErrorCancelled)
        return LyDoHong::daHuy;
    if ([loi.domain isEqualToString:@"WebKitErrorDomain"] && loi.code == maBiChan) return LyDoHong::biChan;
    return LyDoHong::khac;
}

WKNavigationActionPolicy chinhSach(TraLoiDieuHuong traLoi) {
    switch (traLoi) {
        case TraLoiDieuHuong::choPhep:
            return WKNavigationActionPolicyAllow;
        case TraLoiDieuHuong::taiXuong:
            return WKNavigationActionPolicyDownload;
        case TraLoiDieuHuong::huy:
            break;
    }
    return WKNavigationActionPolicyCancel;
}

std::optional<double> soThuc(NSNumber* so) {
    return so == nil ? std::nullopt : std::optional<double>(so.doubleValue);
}

}  // namespace

@implementation TVCuaSo {
    std::weak_ptr<CuaSo> _chu;
    NSMapTable<WKDownload*, NSNumber*>* _maTai;
    MaTai _maTaiTruoc;
}

- (instancetype)initVoiChu:(std::weak_ptr<CuaSo>)chu {
    self = [super init];
    if (self != nil) {
        _chu = std::move(chu);
        _maTai = [NSMapTable strongToStrongObjectsMapTable];
        __weak TVCuaSo* yeu = self;
        TVDongCuaSoTach.chung.khiSapDong = ^(WKWebView* web) {
            [yeu sapDongTach:web];
        };
    }
    return self;
}

- (void)sapDongTach:(WKWebView*)web {
    const auto chu = _chu.lock();
    if (chu && web == self.webTach) chu->khiTachSapDong(self.maTach);
}

#pragma mark NSWindowDelegate

- (BOOL)windowShouldClose:(NSWindow*)sender {
    if (const auto chu = _chu.lock()) chu->khiXinDong();
    return NO;
}

- (void)windowDidMiniaturize:(NSNotification*)notification {
    if (const auto chu = _chu.lock()) chu->khiThuNho();
}

- (void)windowDidChangeOcclusionState:(NSNotification*)notification {
    const auto chu = _chu.lock();
    if (chu && (self.cuaSo.occlusionState & NSWindowOcclusionStateVisible) == 0) chu->khiChe();
}

#pragma mark WKNavigationDelegate

- (void)webView:(WKWebView*)webView
    decidePolicyForNavigationAction:(WKNavigationAction*)navigationAction
                    decisionHandler:(void (^)(WKNavigationActionPolicy))decisionHandler {
    const auto chu = _chu.lock();
    if (!chu) return decisionHandler(WKNavigationActionPolicyCancel);
    ThaoTacDieuHuong thaoTac;
    NSURL* url = navigationAction.request.URL;
    if (url != nil) thaoTac.diaChi = chuCpp(url.absoluteString);
    const bool lienKet = navigationAction.navigationType == WKNavigationTypeLinkActivated;
    thaoTac.loai = lienKet ? LoaiDieuHuong::bamLienKet : LoaiDieuHuong::khac;
    thaoTac.taiVe = navigationAction.shouldPerformDownload ? YeuCauTai::co : YeuCauTai::khong;
    decisionHandler(chinhSach(chu->khiDieuHuong(thaoTac)));
}

- (void)webView:(WKWebView*)webView
    decidePolicyForNavigationResponse:(WKNavigationResponse*)navigationResponse
                      decisionHandler:(void (^)(WKNavigationResponsePolicy))decisionHandler {
    const auto chu = _chu.lock();
    if (!chu) return decisionHandler(WKNavigationResponsePolicyCancel);
    const auto hienDuoc = navigationResponse.canShowMIMEType ? HienDuoc::co : HienDuoc::khong;
    const bool choPhep = chu->khiPhanHoi(hienDuoc) == TraLoiDieuHuong::choPhep;
    decisionHandler(choPhep ? WKNavigationResponsePolicyAllow : WKNavigationResponsePolicyDownload);
}

- (void)webView:(WKWebView*)webView
     navigationAction:(WKNavigationAction*)navigationAction
    didBecomeDownload:(WKDownload*)download {
    download.delegate = self;
}

- (void)webView:(WKWebView*)webView
    navigationResponse:(WKNavigationResponse*)navigationResponse
     didBecomeDownload:(WKDownload*)download {
    download.delegate = self;
}

- (void)webView:(WKWebView*)webView
    didFailProvisionalNavigation:(WKNavigation*)navigation
                       withError:(NSError*)error {
    if (const auto chu = _chu.lock()) chu->neuHongThiBao(lyDo(error));
}

- (void)webView:(WKWebView*)webView didFailNavigation:(WKNavigation*)navigation withError:(NSError*)error {
    if (const auto chu = _chu.lock()) chu->neuHongThiBao(lyDo(error));
}

- (void)webViewWebContentProcessDidTerminate:(WKWebView*)webView {
    if (const auto chu = _chu.lock()) chu->khiTrangChet();
}

#pragma mark WKUIDelegate

- (WKWebView*)webView:(WKWebView*)webView
    createWebViewWithConfiguration:(WKWebViewConfiguration*)configuration
               forNavigationAction:(WKNavigationAction*)navigationAction
                    windowFeatures:(WKWindowFeatures*)windowFeatures {
    const auto chu = _chu.lock();
    if (!chu) return nil;
    const auto tach = chu->khiXinTach(chuCpp(navigationAction.request.URL.absoluteString),
                                      soThuc(windowFeatures.width), soThuc(windowFeatures.height));
    return tach ? [self moTach:*tach voi:configuration] : nil;
}

// The configuration that the system hands over carries the opener's scripts and channel.
- (WKWebView*)moTach:(const MoTach&)tach voi:(WKWebViewConfiguration*)configuration {
    configuration.userContentController = [[WKUserContentController alloc] init];
    const NSRect khung = NSMakeRect(0, 0, tach.rong, tach.cao);
    WKWebView* web = [[WKWebView alloc] initWithFrame:khung configuration:configuration];
    web.UIDelegate = self;
    NSWindow* cua = [[NSWindow alloc] initWithContentRect:khung
                                                styleMask:self.cuaSo.styleMask & ~NSWindowStyleMaskFullScreen
                                                  backing:NSBackingStoreBuffered
                                                    defer:NO];
    cua.title = chuMac(CuaSo::tieuDe);
    cua.releasedWhenClosed = NO;
    cua.minSize = NSMakeSize(MoTach::rongNhoNhat, MoTach::caoNhoNhat);
    cua.contentView = web;
    [cua center];
    TVDongCuaSoTach.chung.web = web;
    cua.delegate = TVDongCuaSoTach.chung;
    self.cuaSoTach = cua;
    self.webTach = web;
    self.maTach = tach.ma;
    [cua makeKeyAndOrderFront:nil];
    return web;
}

- (void)webViewDidClose:(WKWebView*)webView {
    const auto chu = _chu.lock();
    if (chu && webView == self.webTach) chu->khiTachTuDong(self.maTach);
}

- (void)webView:(WKWebView*)webView
    runJavaScriptAlertPanelWithMessage:(NSString*)message
                      initiatedByFrame:(WKFrameInfo*)frame
                     completionHandler:(void (^)(void))completionHandler {
    if (const auto chu = _chu.lock()) chu->khiThongBao(chuCpp(message));
    completionHandler();
}

- (void)webView:(WKWebView*)webView
    requestMediaCapturePermissionForOrigin:(WKSecurityOrigin*)origin
                          initiatedByFrame:(WKFrameInfo*)frame
                                      type:(WKMediaCaptureType)type
                           decisionHandler:(void (^)(WKPermissionDecision decision))decisionHandler {
    const auto chu = _chu.lock();
    const bool tin = chu && chu->gocTinDuoc(chuCpp(origin.host));
    decisionHandler(tin ? WKPermissionDecisionGrant : WKPermissionDecisionDeny);
}

- (void)webView:(WKWebView*)webView
    runOpenPanelWithParameters:(WKOpenPanelParameters*)parameters
              initiatedByFrame:(WKFrameInfo*)frame
             completionHandler:(void (^)(NSArray<NSURL*>* _Nullable URLs))completionHandler {
    const auto chu = _chu.lock();
    if (!chu) return completionHandler(nil);
    const auto cach = chu->khiXinTep(parameters.allowsMultipleSelection ? ChonNhieu::co : ChonNhieu::khong,
                                     parameters.allowsDirectories ? ChonThuMuc::co : ChonThuMuc::khong);
    NSOpenPanel* bang = [NSOpenPanel openPanel];
    bang.allowsMultipleSelection = cach.nhieu == ChonNhieu::co;
    bang.canChooseDirectories = cach.thuMuc == ChonThuMuc::co;
    bang.canChooseFiles = cach.thuMuc == ChonThuMuc::khong;
    bang.canCreateDirectories = NO;
    bang.prompt = chuMac(cach.nhan);
    void (^xong)(NSModalResponse) = ^(NSModalResponse traLoi) {
        completionHandler(traLoi == NSModalResponseOK ? bang.URLs : nil);
    };
    if (webView.window != nil) {
        [bang beginSheetModalForWindow:webView.window completionHandler:xong];
    } else {
        xong([bang runModal]);
    }
}

#pragma mark WKDownloadDelegate

- (void)download:(WKDownload*)download
    decideDestinationUsingResponse:(NSURLResponse*)response
                 suggestedFilename:(NSString*)suggestedFilename
                 completionHandler:(void (^)(NSURL* _Nullable destination))completionHandler {
    const auto chu = _chu.lock();
    if (!chu) return completionHandler(nil);
    const MaTai ma = ++_maTaiTruoc;
    [_maTai setObject:@(ma) forKey:download];
    completionHandler([NSURL fileURLWithPath:chuMac(chu->khiChonNoiLuu(ma, chuCpp(suggestedFilename)))]);
}

- (void)downloadDidFinish:(WKDownload*)download {
    const MaTai ma = [self ketThucTai:download];
    if (const auto chu = _chu.lock()) chu->khiTaiXong(ma);
}

- (void)download:(WKDownload*)download didFailWithError:(NSError*)error resumeData:(NSData*)resumeData {
    const MaTai ma = [self ketThucTai:download];
    if (const auto chu = _chu.lock()) chu->khiTaiHong(ma, chuCpp(error.localizedDescription));
}

// 0, which no download has, where no destination was ever asked for.
- (MaTai)ketThucTai:(WKDownload*)download {
    const MaTai ma = [_maTai objectForKey:download].unsignedLongLongValue;
    [_maTai removeObjectForKey:download];
    return ma;
}

@end

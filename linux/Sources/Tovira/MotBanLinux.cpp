// The place is a selection of the display, named after the user: the server gives it to one program at a
// time, tells the one that loses it, and takes it back when its program is gone, however that ended.

#include <poll.h>
#include <unistd.h>

#include <QSocketNotifier>
#include <chrono>
#include <string>

#include "MotBanNen.hpp"
#include "ThietBiLinux.hpp"
#include "XcbLinux.hpp"

namespace tovira {

namespace {

using DongHo = std::chrono::steady_clock;

class MotBanLinux final : public MotBan::Nen {
  public:
    MotBanLinux() : x_(moManX()) {
        if (!x_) return;
        cho_ = nguyenTuX(x_.c(), ("_TOVIRA_CHO_" + std::to_string(::getuid())).c_str());
        goi_ = nguyenTuX(x_.c(), "_TOVIRA_HIEN");
        cua_ = xcb_generate_id(x_.c());
        xcb_create_window(x_.c(), 0, cua_, x_.goc(), 0, 0, 1, 1, 0, XCB_WINDOW_CLASS_INPUT_ONLY,
                          XCB_COPY_FROM_PARENT, 0, nullptr);
    }

    bool giuCho() override {
        if (!x_) return true;
        // Nobody may come between the look and the taking.
        xcb_grab_server(x_.c());
        const bool coAi = chuCho() != XCB_NONE;
        if (!coAi) xcb_set_selection_owner(x_.c(), cua_, cho_, XCB_CURRENT_TIME);
        xcb_ungrab_server(x_.c());
        return !coAi && chuCho() == cua_;
    }

    void goiBanKia() override {
        if (!x_) return;
        const xcb_window_t chu = chuCho();
        xcb_client_message_event_t loi{};
        loi.response_type = XCB_CLIENT_MESSAGE;
        loi.format = 32;
        loi.window = chu;
        loi.type = goi_;
        // No mask: it goes to whoever made the window.
        static_cast<void>(
            daLam(x_.c(), xcb_send_event_checked(x_.c(), 0, chu, 0, reinterpret_cast<const char*>(&loi))));
    }

    void nhanCho(double han) override {
        if (!x_) return;
        const xcb_window_t cu = chuCho();
        const std::uint32_t matNa = XCB_EVENT_MASK_STRUCTURE_NOTIFY;
        const bool con = cu != XCB_NONE && daLam(x_.c(), xcb_change_window_attributes_checked(
                                                             x_.c(), cu, XCB_CW_EVENT_MASK, &matNa));
        xcb_set_selection_owner(x_.c(), cua_, cho_, XCB_CURRENT_TIME);
        xcb_flush(x_.c());
        if (con) choMat(cu, han);
    }

    void nghe(std::function<void()> khiDuocGoi, std::function<void()> khiMatCho) override {
        if (!x_) return;
        nghe_ = std::make_unique<QSocketNotifier>(xcb_get_file_descriptor(x_.c()), QSocketNotifier::Read);
        const auto doc = [this, khiDuocGoi = std::move(khiDuocGoi), khiMatCho = std::move(khiMatCho)] {
            while (const PhanXcb<xcb_generic_event_t> sk{xcb_poll_for_event(x_.c())}) {
                const int loai = sk->response_type & 0x7f;
                if (loai == XCB_SELECTION_CLEAR) khiMatCho();
                if (loai == XCB_CLIENT_MESSAGE &&
                    reinterpret_cast<const xcb_client_message_event_t&>(*sk).type == goi_)
                    khiDuocGoi();
            }
            if (xcb_connection_has_error(x_.c()) != 0) nghe_->setEnabled(false);
        };
        QObject::connect(nghe_.get(), &QSocketNotifier::activated, nghe_.get(), doc);
        // What came before the main loop began.
        QMetaObject::invokeMethod(nghe_.get(), doc, Qt::QueuedConnection);
    }

  private:
    [[nodiscard]] xcb_window_t chuCho() const {
        const PhanXcb<xcb_get_selection_owner_reply_t> chu(
            xcb_get_selection_owner_reply(x_.c(), xcb_get_selection_owner(x_.c(), cho_), nullptr));
        return chu ? chu->owner : XCB_NONE;
    }

    // A program's windows go when it does.
    void choMat(xcb_window_t cua, double han) const {
        const auto het = DongHo::now() + std::chrono::duration<double>(han);
        for (;;) {
            while (const PhanXcb<xcb_generic_event_t> sk{xcb_poll_for_event(x_.c())})
                if ((sk->response_type & 0x7f) == XCB_DESTROY_NOTIFY &&
                    reinterpret_cast<const xcb_destroy_notify_event_t&>(*sk).window == cua)
                    return;
            const auto con = std::chrono::duration_cast<std::chrono::milliseconds>(het - DongHo::now());
            if (con.count() <= 0 || xcb_connection_has_error(x_.c()) != 0) return;
            pollfd cho{xcb_get_file_descriptor(x_.c()), POLLIN, 0};
            ::poll(&cho, 1, static_cast<int>(con.count()));
        }
    }

    ManX x_;
    xcb_atom_t cho_ = XCB_NONE;
    xcb_atom_t goi_ = XCB_NONE;
    xcb_window_t cua_ = XCB_NONE;
    std::unique_ptr<QSocketNotifier> nghe_;
};

}  // namespace

std::unique_ptr<MotBan::Nen> taoNenMotBan() {
    return std::make_unique<MotBanLinux>();
}

}  // namespace tovira

#pragma once
// Any thread: constant data. The script that the packaged interface server answers for the socket.io client.

#include <string_view>

namespace tovira {

inline constexpr std::string_view socketIoThay =
    R"js(// Stands in for the socket.io client while the application runs without a server.
// It lives in the host: macos/Sources/Tovira/GiaoDienKem
(function () {
  'use strict';
  var thongBao = 'Đang chạy không có máy chủ';

  window.io = function () {
    var nghe = {};
    var o = {
      connected: false,
      io: { on: function () {}, off: function () {} },
      on: function (ten, ham) {
        (nghe['$' + ten] = nghe['$' + ten] || []).push(ham);
        return o;
      },
      off: function () { return o; },
      // Without a server every send fails. An acknowledgement is answered at once, in so
      // many words, so that no caller is left waiting for a reply that can never come.
      emit: function () {
        var cuoi = arguments[arguments.length - 1];
        if (typeof cuoi === 'function') cuoi({ ok: false, error: thongBao, code: 'khong_may_chu' });
        return o;
      },
      disconnect: function () { return o; }
    };
    o.once = o.on;
    // One turn later: the caller registers its handlers after this function has returned.
    setTimeout(function () {
      (nghe.$connect_error || []).forEach(function (ham) {
        try { ham(new Error(thongBao)); } catch (e) { /* none may keep out the others */ }
      });
    }, 0);
    return o;
  };
})();
)js";
// The page's copy of the client is exactly this long, to the byte.
static_assert(socketIoThay.size() == 1296);

}  // namespace tovira

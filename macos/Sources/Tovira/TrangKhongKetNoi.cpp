#include "TrangKhongKetNoi.hpp"

namespace tovira {

const std::string_view trangKhongKetNoi = R"html(<!DOCTYPE html>
<html lang="vi">
<head>
<meta charset="utf-8">
<meta name="viewport" content="width=device-width, initial-scale=1">
<meta name="color-scheme" content="dark">
<title>Tovira</title>
<style>
  :root { color-scheme: dark; }
  * { box-sizing: border-box; }
  html, body { height: 100%; margin: 0; }
  body {
    display: flex; align-items: center; justify-content: center; padding: 24px;
    background: #0f1117; color: #e5e7eb; font: 15px/1.6 system-ui, sans-serif;
    -webkit-user-select: none; user-select: none; cursor: default;
  }
  .hop { width: 100%; max-width: 400px; text-align: center; }
  .vong {
    width: 88px; height: 88px; margin: 0 auto 24px; border-radius: 50%; background: #1a1d27;
    display: flex; align-items: center; justify-content: center;
  }
  h1 { margin: 0 0 12px; font-size: 20px; font-weight: 600; }
  p { margin: 0; color: #9ca3af; }
  a {
    display: inline-block; margin-top: 28px; padding: 10px 28px; border-radius: 8px;
    background: #2563eb; color: #fff; font-weight: 500; text-decoration: none;
  }
  a:hover { background: #1d4ed8; }
</style>
</head>
<body>
<div class="hop">
  <div class="vong">
    <svg width="44" height="44" viewBox="0 0 24 24" fill="none" stroke="#f87171" stroke-width="1.8"
         stroke-linecap="round" stroke-linejoin="round" aria-hidden="true">
      <path d="M2.5 9a14 14 0 0 1 19 0"/>
      <path d="M5.8 12.6a9.2 9.2 0 0 1 12.4 0"/>
      <path d="M9 16.1a4.6 4.6 0 0 1 6 0"/>
      <path d="M12 19.6h.01"/>
      <path d="M4 4l16 16"/>
    </svg>
  </div>
  <h1>Chưa vào được máy chủ</h1>
  <p>Kiểm tra kết nối mạng của máy này.</p>
  <p>Ứng dụng sẽ tự vào lại ngay khi máy chủ trả lời.</p>
  <a href="tovira://tai-lai" draggable="false">Thử lại</a>
</div>
</body>
</html>
)html";

}  // namespace tovira

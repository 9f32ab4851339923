#pragma once
// Any thread: constant data. The page that is shown when neither the server nor the packaged interface can
// be.

#include <string_view>

namespace tovira {

// A whole HTML document without external resources. Its one link is ChinhSachDieuHuong::diaChiTaiLai.
extern const std::string_view trangKhongKetNoi;

}  // namespace tovira

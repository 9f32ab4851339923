#pragma once
// Main thread. The shape of a socket.io-style WebSocket client: what one connection would remember. It has no
// operations, and nothing uses it yet: the page's own client carries the session.

#include <cstdint>
#include <functional>
#include <map>
#include <string>
#include <vector>

namespace tovira {

class OSocket {
  public:
    // Receives an event's or an acknowledgement's arguments as the text of a JSON array.
    using NguoiNghe = std::function<void(const std::string& thamSo)>;

  private:
    [[maybe_unused]] std::int64_t demXacNhan_ = 0;  // number of the next acknowledgement asked for
    std::map<std::int64_t, NguoiNghe> choXacNhan_;  // pending acknowledgements by number
    std::map<std::string, std::vector<NguoiNghe>, std::less<>> nghe_;  // listeners by event name, in order
};

}  // namespace tovira

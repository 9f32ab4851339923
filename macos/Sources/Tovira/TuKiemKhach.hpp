#pragma once
// Main thread. The self-check's client of the loopback servers: no wait of its is longer than a second.

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace tovira::tu_kiem {

class KhachTuKiem {
  public:
    explicit KhachTuKiem(std::uint16_t cong);
    ~KhachTuKiem();
    KhachTuKiem(const KhachTuKiem&) = delete;
    KhachTuKiem& operator=(const KhachTuKiem&) = delete;

    [[nodiscard]] bool noiDuoc() const { return so_ >= 0; }
    // False when the connection takes no more bytes.
    bool gui(std::string_view byte);
    // Exactly `soByte` more bytes; fewer when the connection ends or falls silent first.
    [[nodiscard]] std::string doc(std::size_t soByte);
    // Has the other side ended the connection, with nothing more to read?
    [[nodiscard]] bool daDong();
    // All that comes until the other side ends the connection; absent when it does not.
    [[nodiscard]] std::optional<std::string> docHet();

  private:
    [[nodiscard]] long nhan(char* vao, std::size_t toiDa);
    int so_ = -1;
};

// One request and its whole answer; a text that no server gives where there is none.
[[nodiscard]] std::string hoi(std::uint16_t cong, std::string_view yeuCau);

}  // namespace tovira::tu_kiem

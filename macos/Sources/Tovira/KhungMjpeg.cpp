#include "KhungMjpeg.hpp"

#include <algorithm>
#include <atomic>
#include <string>

#include "BatBien.hpp"

namespace tovira {
namespace {

std::uint64_t soKeTiep() {
    static std::atomic<std::uint64_t> dem = 0;
    return ++dem;
}

}  // namespace

KhungMjpeg::KhungMjpeg(std::vector<std::byte> dem, std::size_t dau)
    : dem_(std::move(dem)), dau_(dau), so_(soKeTiep()) {}

std::shared_ptr<const KhungMjpeg> KhungMjpeg::dong(std::vector<std::byte> dem) {
    TOVIRA_BUOC(dem.size() >= leDau);
    const std::string dauPhan =
        "--" + std::string(boundary) +
        "\r\nContent-Type: image/jpeg\r\nContent-Length: " + std::to_string(dem.size() - leDau) + "\r\n\r\n";
    TOVIRA_BUOC(dauPhan.size() <= leDau);
    const std::size_t dau = leDau - dauPhan.size();
    const auto nguon = std::as_bytes(std::span(dauPhan));
    std::copy(nguon.begin(), nguon.end(), dem.begin() + static_cast<std::ptrdiff_t>(dau));
    dem.push_back(std::byte{'\r'});
    dem.push_back(std::byte{'\n'});
    return std::shared_ptr<const KhungMjpeg>(new KhungMjpeg(std::move(dem), dau));
}

std::shared_ptr<const KhungMjpeg> KhungMjpeg::tao(std::span<const std::byte> jpeg) {
    std::vector<std::byte> dem;
    dem.reserve(leDau + jpeg.size() + leCuoi);
    dem.resize(leDau);
    dem.insert(dem.end(), jpeg.begin(), jpeg.end());
    return dong(std::move(dem));
}

}  // namespace tovira

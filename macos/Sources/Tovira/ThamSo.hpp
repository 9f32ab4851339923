#pragma once
// Main thread. Which rendezvous server to talk to: computed once at start and never again.

#include <optional>
#include <string>
#include <vector>

#include "Chung.hpp"
#include "NenChung.hpp"

namespace tovira {

struct ThamSo : CoChung<ThamSo> {
    // The server base; never ends in "/"; not checked to be a URL.
    std::string mayChu;
    // `mayChu` + "/app", or the built-in application address where that is no URL.
    std::string duongDanApp;
    // Scheme, "://", host and the port if named explicitly; `mayChu` itself where it is no such URL, so that
    // a broken override can never widen trust.
    std::string gocMayChu;

    // "--server" and the argument after it, else the user default "mayChu" unless empty, else the built-in.
    [[nodiscard]] static ThamSo tinh(const std::vector<std::string>& thamSo, const CaiDat& caiDat);

    // What the user is to be told when this server's own pages will not be trusted, because location.origin
    // never spells itself as gocMayChu does; one sentence. Absent when all is well.
    [[nodiscard]] std::optional<std::string> nhacDiaChi() const;

    // The server that this build was configured with: an https origin.
    [[nodiscard]] static const char* mayChuMacDinh();
};

// This version of the program, as the page and the user see it.
inline constexpr const char* phienBanTovira = "1.0.3";

}  // namespace tovira

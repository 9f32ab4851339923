// A million mixed input commands: parse and verdict, beside simdjson's bare parse of the same texts.

#include <benchmark/benchmark.h>
#include <simdjson.h>

#include <random>
#include <string>
#include <vector>

#include "DieuKhien.hpp"

namespace {

constexpr std::size_t soLenh = 1'000'000;

// The texts lie one behind the other, each followed by the padding that simdjson wants to read into.
struct CacLenh {
    std::string vung;
    std::vector<std::pair<std::size_t, std::size_t>> doan;

    [[nodiscard]] std::string_view lay(std::size_t i) const {
        return {vung.data() + doan[i].first, doan[i].second};
    }
};

// What a controlling page sends: mostly moves, whose fractions have all the digits that a script writes.
std::string mauLenh(std::mt19937& ngau) {
    char chu[256];
    const double x = ngau() / 4294967296.0;
    const double y = ngau() / 4294967296.0 / 1.0001;
    const unsigned loai = ngau() % 100;
    if (loai < 60)
        std::snprintf(chu, sizeof chu, R"({"t":"mouse_move","x":%.*g,"y":%.*g})", loai < 30 ? 17 : 4, x,
                      loai < 30 ? 17 : 4, y);
    else if (loai < 72)
        std::snprintf(chu, sizeof chu, R"({"t":"mouse_%s","x":%.17g,"y":%.17g,"button":"left"})",
                      loai % 2 ? "up" : "down", x, y);
    else if (loai < 82)
        std::snprintf(chu, sizeof chu, R"({"t":"mouse_wheel","x":%.17g,"y":%.17g,"dx":0,"dy":%d})", x, y,
                      int(ngau() % 240) - 120);
    else if (loai < 96)
        std::snprintf(chu, sizeof chu, R"({"t":"key_%s","code":"Key%c","modifiers":[%s]})",
                      loai % 2 ? "up" : "down", int('A' + ngau() % 26), loai < 86 ? R"("ctrl","shift")" : "");
    else
        std::snprintf(chu, sizeof chu, R"({"t":"text","value":"xin ch\u00e0o, tôi là %u"})",
                      unsigned(ngau()));
    return chu;
}

const CacLenh& cacLenh() {
    static const CacLenh lenh = [] {
        CacLenh ra;
        std::mt19937 ngau(1);
        for (std::size_t i = 0; i < soLenh; ++i) {
            const std::string chu = mauLenh(ngau);
            ra.doan.emplace_back(ra.vung.size(), chu.size());
            ra.vung += chu;
            ra.vung.append(simdjson::SIMDJSON_PADDING, ' ');
        }
        return ra;
    }();
    return lenh;
}

// One command an iteration, so that the printed time is nanoseconds per command (limit: 150).
void hopLe(benchmark::State& trangThai) {
    const CacLenh& lenh = cacLenh();
    std::size_t i = 0;
    std::size_t nhan = 0;
    for (auto _ : trangThai) {
        nhan += tovira::DieuKhien::hopLe(lenh.lay(i));
        if (++i == soLenh) i = 0;
    }
    if (nhan != static_cast<std::size_t>(trangThai.iterations()))
        trangThai.SkipWithError("a good command was rejected");
}

void simdjsonDom(benchmark::State& trangThai) {
    const CacLenh& lenh = cacLenh();
    simdjson::dom::parser doc;
    std::size_t i = 0;
    std::size_t nhan = 0;
    for (auto _ : trangThai) {
        const auto chu = lenh.lay(i);
        nhan += doc.parse(chu.data(), chu.size(), false).error() == simdjson::SUCCESS;
        if (++i == soLenh) i = 0;
    }
    if (nhan != static_cast<std::size_t>(trangThai.iterations()))
        trangThai.SkipWithError("a good command was rejected");
}

BENCHMARK(hopLe)->Iterations(soLenh)->Repetitions(5)->ReportAggregatesOnly();
BENCHMARK(simdjsonDom)->Iterations(soLenh)->Repetitions(5)->ReportAggregatesOnly();

}  // namespace

BENCHMARK_MAIN();

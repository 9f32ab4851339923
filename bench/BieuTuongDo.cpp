// The icon at 1024 × 1024 in one thread, beside cairo filling the same shapes; and the whole set written.

#include <benchmark/benchmark.h>
#include <cairo.h>

#include <cstdlib>
#include <filesystem>
#include <string>

#include "BieuTuong.hpp"

using namespace tovira;

namespace {

constexpr int canh = BieuTuong::canhIOS;
constexpr double pi = 3.14159265358979323846;

void veIcon(benchmark::State& tt) {
    for (auto _ : tt)
        benchmark::DoNotOptimize(BieuTuong::rgba(canh, BieuTuong::BoGoc::co));
}

void khungBo(cairo_t* c, double cx, double cy, double hx, double hy, double r) {
    cairo_new_sub_path(c);
    cairo_arc(c, cx + hx - r, cy - hy + r, r, -pi / 2, 0);
    cairo_arc(c, cx + hx - r, cy + hy - r, r, 0, pi / 2);
    cairo_arc(c, cx - hx + r, cy + hy - r, r, pi / 2, pi);
    cairo_arc(c, cx - hx + r, cy - hy + r, r, pi, 3 * pi / 2);
    cairo_close_path(c);
}

void tron(cairo_t* c, double cx, double cy, double r) {
    cairo_new_sub_path(c);
    cairo_arc(c, cx, cy, r, 0, 2 * pi);
}

void veCairo(benchmark::State& tt) {
    for (auto _ : tt) {
        cairo_surface_t* mat = cairo_image_surface_create(CAIRO_FORMAT_ARGB32, canh, canh);
        cairo_t* c = cairo_create(mat);
        cairo_scale(c, canh, canh);
        cairo_pattern_t* sac = cairo_pattern_create_linear(0, 0, 1, 1);
        cairo_pattern_add_color_stop_rgb(sac, 0, 37 / 255.0, 99 / 255.0, 235 / 255.0);
        cairo_pattern_add_color_stop_rgb(sac, 1, 124 / 255.0, 58 / 255.0, 237 / 255.0);
        cairo_set_source(c, sac);
        khungBo(c, 0.5, 0.5, 0.5, 0.5, 0.22);
        cairo_fill(c);
        cairo_set_source_rgb(c, 1, 1, 1);
        khungBo(c, 0.5, 0.44, 0.31, 0.235, 0.1);
        tron(c, 0.27, 0.79, 0.036);
        tron(c, 0.34, 0.70, 0.075);
        cairo_fill(c);
        cairo_set_source(c, sac);
        for (const double u : {0.36, 0.5, 0.64})
            tron(c, u, 0.44, 0.045);
        cairo_fill(c);
        cairo_surface_flush(mat);
        benchmark::DoNotOptimize(cairo_image_surface_get_data(mat));
        cairo_pattern_destroy(sac);
        cairo_destroy(c);
        cairo_surface_destroy(mat);
    }
}

void ghiBo(benchmark::State& tt) {
    std::string thuMuc = (std::filesystem::temp_directory_path() / "bieu-tuong-do-XXXXXX").string();
    if (mkdtemp(thuMuc.data()) == nullptr) return tt.SkipWithError("mkdtemp");
    for (auto _ : tt) {
        if (!BieuTuong::ghiBoIcon(thuMuc)) tt.SkipWithError("ghiBoIcon");
    }
    std::filesystem::remove_all(thuMuc);
}

BENCHMARK(veIcon)->Unit(benchmark::kMillisecond);
BENCHMARK(veCairo)->Unit(benchmark::kMillisecond);
BENCHMARK(ghiBo)->Unit(benchmark::kMillisecond);

}  // namespace

BENCHMARK_MAIN();

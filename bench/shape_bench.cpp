// Shapes: the fill of a 2,000-vertex star into a UHD float image at 4x
// sampling (the raster and the paint rows on the pool, as sRender runs them)
// beside cairo filling the same path with antialiasing into an ARGB image of
// the same size; and sBoolean's union of two 10,000-vertex polygons beside
// the same union called on polyclipping with paths already converted.
#include <cairo.h>
#include <cmath>
#include <memory>
#include <polyclipping/clipper.hpp>
#include "shape/clip.h"
#include "shape/raster.h"
#include "support.h"

using namespace zvbench;

namespace {

constexpr int kWidth = 3840, kHeight = 2160;

// A star of n vertices around the middle of the picture, in shape space.
std::unique_ptr<KShape> Star(int n, float cx, float cy, float inner, float outer)
{
    auto s = std::make_unique<KShape>();
    for (int i = 0; i < n; ++i) {
        const double a = 2 * M_PI * i / n;
        const float r = i % 2 ? inner : outer;
        const Vector2f p{cx + r * float(std::cos(a)), cy + r * float(std::sin(a))};
        if (i == 0) s->MoveTo(p);
        else s->LineTo(p, i == n - 1);
    }
    return s;
}

double CairoFill(const KShape& star)
{
    cairo_surface_t* surface = cairo_image_surface_create(CAIRO_FORMAT_ARGB32, kWidth, kHeight);
    cairo_t* cr = cairo_create(surface);
    cairo_set_antialias(cr, CAIRO_ANTIALIAS_DEFAULT);
    const double t = Best(5, [&] {
        cairo_set_operator(cr, CAIRO_OPERATOR_CLEAR);
        cairo_paint(cr);
        cairo_set_operator(cr, CAIRO_OPERATOR_OVER);
        cairo_new_path(cr);
        for (const KShapeNode& n : star.Nodes()) {
            if (n.type == kNodeMove) cairo_move_to(cr, n.x * kWidth, n.y * kWidth);
            else cairo_line_to(cr, n.x * kWidth, n.y * kWidth);
        }
        cairo_close_path(cr);
        cairo_set_source_rgba(cr, 1, 0.5, 0.2, 1);
        cairo_fill(cr);
        cairo_surface_flush(surface);
    });
    cairo_destroy(cr);
    cairo_surface_destroy(surface);
    return t;
}

void ShapeRenderStar(benchmark::State& state)
{
    const std::unique_ptr<KShape> star = Star(2000, 0.5f, 0.28125f, 0.12f, 0.27f);
    std::unique_ptr<KImage> from(KImage::Create(kWidth, kHeight, true)), to(KImage::Create(kWidth, kHeight, true));
    KShapePaint paint;
    paint.color = {1.0f, 0.5f, 0.2f, 1.0f};
    paint.DeriveColor16();
    const double cairo = CairoFill(*star);
    const double floor = MemcpyFloor(*from, *to);
    double best = 1e30;
    for (auto _ : state) {
        best = std::min(best, Seconds([&] {
            KPolygonRaster raster(*to, 4);
            raster.Raster(*star, 1);
            host::DoMultiProcess(to->height, [&](int y) {
                std::memset(to->RowW(y), 0, to->RowBytes());
                KPaintRow(*to, y, raster, paint, 1);
            });
        }));
    }
    state.counters["ms"] = best * 1e3;
    state.counters["floor_ms"] = floor * 1e3;
    state.counters["cairo_ms"] = cairo * 1e3;
    state.counters["vs_cairo"] = best / cairo;
}

void ShapeBooleanUnion(benchmark::State& state)
{
    const std::unique_ptr<KShape> a = Star(10000, 0.45f, 0.3f, 0.15f, 0.2f), b = Star(10000, 0.55f, 0.3f, 0.16f, 0.21f);
    const ClipperLib::Paths pa = KToPaths(*a), pb = KToPaths(*b);
    const double library = Best(5, [&] {
        ClipperLib::Clipper c;
        c.AddPaths(pa, ClipperLib::ptSubject, true);
        c.AddPaths(pb, ClipperLib::ptClip, true);
        ClipperLib::Paths solution;
        c.Execute(ClipperLib::ctUnion, solution, ClipperLib::pftEvenOdd, ClipperLib::pftEvenOdd);
        benchmark::DoNotOptimize(solution.data());
    });
    double best = 1e30;
    for (auto _ : state) {
        best = std::min(best, Seconds([&] {
            std::unique_ptr<KShape> r(KBooleanShape(*a, b.get(), 1, 0));
            benchmark::DoNotOptimize(r.get());
        }));
    }
    state.counters["ms"] = best * 1e3;
    state.counters["library_ms"] = library * 1e3;
    state.counters["vs_library"] = best / library;
}

}  // namespace

BENCHMARK(ShapeRenderStar)->Unit(benchmark::kMillisecond)->Iterations(5)->UseRealTime();
BENCHMARK(ShapeBooleanUnion)->Unit(benchmark::kMillisecond)->Iterations(5)->UseRealTime();

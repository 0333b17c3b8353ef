// Shape tools: tracing a 4K plate of discs beside the potrace command on the
// same bitmap, and triangulating a polygon of 10,000 points with 50 holes.
#include <unistd.h>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <string>
#include "shape/effect_shape.h"
#include "shape/reshape.h"
#include "support.h"

namespace {

// 500 discs placed by the reference generator, in every channel.
KImage* Discs()
{
    KImage* img = KImage::Create(3840, 2160, false);
    uint32_t seed = 1;
    auto next = [&] {
        seed = seed * 1103515245u + 12345u;
        return float((seed >> 16) & 0x7FFF) / 32768.0f;
    };
    for (int i = 0; i < 500; ++i) {
        const float cx = next() * 3840.0f, cy = next() * 2160.0f, r = 10.0f + next() * 60.0f;
        for (int32_t y = std::max(0, int(cy - r)); y < std::min(2160, int(cy + r) + 1); ++y) {
            uint16_t* row = img->RowW(y);
            for (int32_t x = std::max(0, int(cx - r)); x < std::min(3840, int(cx + r) + 1); ++x)
                if ((x - cx) * (x - cx) + (y - cy) * (y - cy) < r * r)
                    for (int c = 0; c < 4; ++c) row[4 * x + c] = 65535;
        }
    }
    return img;
}

// The same bitmap as a binary PBM, top row first, 1 for black: potrace traces black.
void WritePbm(const KImage& img, const std::string& path)
{
    std::ofstream f(path, std::ios::binary);
    f << "P4\n" << img.width << " " << img.height << "\n";
    std::vector<unsigned char> row((img.width + 7) / 8);
    for (int32_t y = img.height - 1; y >= 0; --y) {
        std::fill(row.begin(), row.end(), 0);
        const uint16_t* p = img.RowW(y);
        for (int32_t x = 0; x < img.width; ++x)
            if (p[4 * x] > 32767) row[x / 8] |= 0x80 >> (x % 8);
        f.write(reinterpret_cast<const char*>(row.data()), std::streamsize(row.size()));
    }
}

void BM_Trace(benchmark::State& state)
{
    std::unique_ptr<KImage> plate(Discs()), copy(Discs());
    const std::string pbm = "/tmp/zv_trace_bench_" + std::to_string(getpid()) + ".pbm";
    WritePbm(*plate, pbm);
    const std::string command = "potrace -s -o /dev/null " + pbm;
    const double potrace = zvbench::Best(3, [&] {
        if (std::system(command.c_str()) != 0) state.SkipWithError("the potrace command failed");
    });
    std::remove(pbm.c_str());

    std::unique_ptr<host::Operator> op(host::Registry::Get().FindClass("ZV_ShapeTraceCreate")->creator());
    auto* zv = dynamic_cast<ZV_ThreadedOperator*>(op.get());
    auto* effect = zv ? dynamic_cast<KEffectShapeTool*>(zv->Effect()) : nullptr;
    if (!effect) return state.SkipWithError("sTrace Create is not a shape tool");
    KImage** image = nullptr;
    for (KParameter* p = effect->inputs(); p; p = p->Next())
        if (p->valueKind == kValueImage) image = static_cast<KImage**>(p->field);
    *image = plate.get();
    double best = 1e30, floor = zvbench::MemcpyFloor(*plate, *copy);
    for (auto _ : state) {
        best = std::min(best, zvbench::Seconds([&] { effect->FinishRender(); }));
        state.PauseTiming();
        floor = std::min(floor, zvbench::Seconds([&] { zvbench::CopyBytes(*plate, *copy); }));
        state.ResumeTiming();
    }
    *image = nullptr;
    int32_t outlines = 0;
    for (KOutput* o = effect->outputs(); o; o = o->Next())
        if (auto* v = *static_cast<ShapeListVector**>(o->field); v && v->Count() && v->At(0)->First())
            for (const KShapeNode& n : v->At(0)->First()->Nodes()) outlines += n.type == kNodeMove;
    state.counters["outlines"] = outlines;
    state.counters["best_ms"] = best * 1e3;
    state.counters["floor_ms"] = floor * 1e3;
    state.counters["x_floor"] = best / floor;
    state.counters["potrace_ms"] = potrace * 1e3;
    state.counters["x_potrace"] = best / potrace;
}
BENCHMARK(BM_Trace)->Unit(benchmark::kMillisecond)->UseRealTime()->Iterations(5);

// A wavy ring of 5,000 points holding 50 round holes of 100 points each.
std::unique_ptr<KShape> Holed()
{
    auto s = std::make_unique<KShape>();
    const float turn = 6.2831855f;
    for (int i = 0; i < 5000; ++i) {
        const float a = turn * float(i) / 5000.0f, r = 1.0f + 0.05f * std::sin(40.0f * a);
        if (i == 0) s->MoveTo({r * std::cos(a), r * std::sin(a)});
        else s->LineTo({r * std::cos(a), r * std::sin(a)}, i == 4999);
    }
    for (int h = 0; h < 50; ++h) {
        const float cx = -0.6f + 0.15f * float(h % 10) - 0.075f, cy = -0.3f + 0.15f * float(h / 10);
        for (int i = 0; i < 100; ++i) {
            const float a = turn * float(i) / 100.0f;
            const Vector2f p{cx + 0.05f * std::cos(a), cy + 0.05f * std::sin(a)};
            if (i == 0) s->MoveTo(p);
            else s->LineTo(p, i == 99);
        }
    }
    return s;
}

void BM_Triangulate(benchmark::State& state)
{
    std::unique_ptr<KShape> shape = Holed();
    double best = 1e30;
    int32_t triangles = 0;
    for (auto _ : state) {
        std::unique_ptr<KShape> out;
        best = std::min(best, zvbench::Seconds([&] { out.reset(KTriangulateShape(*shape, 0)); }));
        triangles = out->NodeCount() / 3;
    }
    state.counters["best_ms"] = best * 1e3;
    state.counters["triangles"] = triangles;
    state.counters["x_goal_50ms"] = best / 0.05;
}
BENCHMARK(BM_Triangulate)->Unit(benchmark::kMillisecond)->UseRealTime()->MinTime(1.0);

}  // namespace

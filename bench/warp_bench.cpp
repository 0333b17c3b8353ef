// Warps over a UHD float plate, against the memcpy floor and ImageBufAlgo::warp
// with a bilinear filter ("triangle", width 2) on the same pixels, thread count
// and pixel matrix (Transform's: 30 degrees, size 0.8):
//   Transform/pixel, Transform/area   "Filtering" Pixel and Area
//   LensDistortion/pixel              its defaults, "Filtering" Pixel
// Each runs two ways: "process" runs the effect's inverse process into a kept
// target, as the bridge's pass loop does; "flow" renders the tool through a
// host flow, with the transfer and a new output image per frame. The
// ImageBufAlgo figure for Lens Distortion is the same affine warp: it has no
// lens warp of its own, so it stands as the cost of a bilinear warp.
#include <OpenImageIO/imagebuf.h>
#include <OpenImageIO/imagebufalgo.h>
#include <map>
#include <memory>
#include "bridge/operator.h"
#include "framework/geometry.h"
#include "framework/process.h"
#include "host/flow.h"
#include "support.h"

using namespace zvbench;

namespace {

constexpr float kDegree = 0.017453292f;
constexpr float kAngle = 30.0f, kSize = 0.8f;

const host::Registration* Find(const char* className)
{
    return host::Registry::Get().FindClass(className);
}




// Transform's map in pixels, forward (source to output) as ImageBufAlgo wants
// it: rows for a row vector (x, y, 1), pixel centres at + 0.5.
struct Matrix33 {
    float m[3][3];
};
Matrix33 TransformMatrix(const KImage& img)
{
    Matrix3f n;  // output to source, normalised; square pixels
    n.Translate(-0.5f, -0.5f).Rotate(-kAngle * kDegree).Scale(1.0f / kSize, 1.0f / kSize).Translate(0.5f, 0.5f);
    const float sx = static_cast<float>(img.width - 1), sy = static_cast<float>(img.height - 1);
    Matrix3f toNormal, toPixel;
    toNormal.Scale(1.0f / sx, 1.0f / sy);
    toPixel.Scale(sx, sy);
    const Matrix3f inverse = Matrix3f::Product(toPixel, Matrix3f::Product(n, toNormal));
    Matrix3f f = inverse.Inverted();
    f.m[0][2] += 0.5f - 0.5f * (f.m[0][0] + f.m[0][1]);
    f.m[1][2] += 0.5f - 0.5f * (f.m[1][0] + f.m[1][1]);
    return {{{f.m[0][0], f.m[1][0], 0.0f}, {f.m[0][1], f.m[1][1], 0.0f}, {f.m[0][2], f.m[1][2], 1.0f}}};
}

// ImageBufAlgo::warp's best time at a thread count, measured once per run.
double Reference(const KImage& source, KImage& target, int threads)
{
    static std::map<int, double> known;
    auto it = known.find(threads);
    if (it != known.end()) return it->second;
    OIIO::ImageBuf a = WrapForOIIO(source), d = WrapForOIIO(target);
    const Matrix33 m = TransformMatrix(source);
    auto run = [&] {
        OIIO::ImageBufAlgo::warp(d, a, m.m, "triangle", 2.0f, false, OIIO::ImageBuf::WrapBlack, {},
                                 threads);
    };
    run();  // warm
    return known[threads] = Best(3, run);
}

enum Which { kTransform, kLens };

void BM_Warp(benchmark::State& state, Which which, bool flow)
{
    const int filter = static_cast<int>(state.range(0));
    const int threads = static_cast<int>(state.range(1));
    Threads pool(threads);
    const host::Registration* reg = Find(which == kTransform ? "ZV_Transform" : "ZV_LensDistortion");
    if (!reg) {
        state.SkipWithError("tool not registered");
        return;
    }
    std::unique_ptr<KImage> source(Plate(true));
    std::unique_ptr<KImage> target(source->CreateLike());
    const double oiio = Reference(*source, *target, threads);
    std::function<void()> body;

    if (flow) {
        host::Flow f;
        host::Flow::Node& node = f.Add("warp", *reg);
        auto set = [&](const char* id, double v) {
            f.SetValue(node, node.op->FindInput(id), host::MakeNumber(v));
        };
        f.SetValue(node, node.op->FindInput("Image"), host::MakeImage(source->HostImage()));
        set("KFil", filter);
        if (which == kTransform) {
            set("Axisangle", kAngle);
            set("SizeX", kSize);
            set("SizeY", kSize);
        }
        body = [&] {
            f.BeginFrame();
            host::Value out = f.Evaluate(node, node.op->MainOutput(), 0.0);
            benchmark::DoNotOptimize(out.get());
        };
        Measure(state, *source, *target, body, oiio);
    } else {
        Tool tool(*reg);
        if (which == kTransform) {
            tool.Set<float>("Angl"_id, -kAngle * kDegree);
            tool.Set<float>("SizX"_id, kSize);
            tool.Set<float>("SizY"_id, kSize);
            tool.Set<KPoint2>("Cent"_id, {0.0f, 0.0f});
        }
        KRenderSettings s;
        s.depth = 2;
        s.filter = filter;
        KImage* out = target.get();
        body = [&] { RunProcess(*tool.effect, source.get(), out, s); };
        Measure(state, *source, *target, body, oiio);
    }
}

void Args(benchmark::internal::Benchmark* b, std::initializer_list<int> filters)
{
    b->ArgNames({"filter", "threads"});
    for (int f : filters)
        for (int t : {1, 2}) b->Args({f, t});
    b->Unit(benchmark::kMillisecond)->UseRealTime()->MinTime(2.0);
}

}  // namespace

BENCHMARK_CAPTURE(BM_Warp, Transform/process, kTransform, false)
    ->Apply([](auto* b) { Args(b, {1, 2}); });
BENCHMARK_CAPTURE(BM_Warp, Transform/flow, kTransform, true)->Apply([](auto* b) { Args(b, {1}); });
BENCHMARK_CAPTURE(BM_Warp, LensDistortion/process, kLens, false)
    ->Apply([](auto* b) { Args(b, {1}); });
BENCHMARK_CAPTURE(BM_Warp, LensDistortion/flow, kLens, true)->Apply([](auto* b) { Args(b, {1}); });

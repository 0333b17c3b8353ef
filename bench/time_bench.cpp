// Time and vector tools over UHD float plates, against the memcpy floor of one
// frame measured in the same run:
//   Average/frames:9      the mean of nine distinct frames (it reads nine: goal
//                         within 12 times the floor)
//   VectorBlur            vectors of about 20 pixels; its time over the number
//                         of samples each pixel spreads to, beside one pass of
//                         Transform with "Filtering" Pixel on the same plate
//                         (one bilinear read a pixel): goal x_transform <= 1
#include <cmath>
#include <memory>
#include <vector>
#include "raster/offsets.h"
#include "support.h"

using namespace zvbench;

namespace {

constexpr int32_t kVectorX = 22, kVectorY = 23;

// Frame k of a plate that drifts: distinct bytes in every frame.
KImage* Frame(int k)
{
    KImage* img = KImage::Create(3840, 2160, true);
    host::DoMultiProcess(img->height, [&](int y) {
        float* row = img->RowF(y);
        for (int32_t x = 0; x < img->width; ++x) {
            row[4 * x] = (x + 7 * k) / 3840.0f;
            row[4 * x + 1] = y / 2160.0f;
            row[4 * x + 2] = 0.1f * k;
            row[4 * x + 3] = 1.0f;
        }
    });
    return img;
}

void BM_Average(benchmark::State& state)
{
    Threads pool(static_cast<int>(state.range(0)));
    std::vector<std::unique_ptr<KImage>> frames;
    for (int k = 0; k < 9; ++k) frames.emplace_back(Frame(k));
    std::unique_ptr<KImage> target(frames[0]->CreateLike());
    Tool tool("ZV_Average");
    tool.Set<int32_t>("NuFr"_id, 9);
    KRenderSettings s;
    s.depth = 2;
    KImage* out = target.get();
    Measure(state, *frames[0], *target, [&] {
        for (int k = 0; k < 9; ++k) tool.effect->frames[k].reset(KImage::Wrap(frames[k]->HostImage(), false));
        RunProcess(*tool.effect, frames[0].get(), out, s);
    });
}

// One Transform pass with pixel filtering over the plate, best of three.
double TransformPass(KImage& source, KImage& target)
{
    Tool transform("ZV_Transform");
    transform.Set<float>("Angl"_id, -30.0f * 0.017453292f);
    transform.Set<float>("SizX"_id, 0.8f);
    transform.Set<float>("SizY"_id, 0.8f);
    transform.Set<KPoint2>("Cent"_id, {0.0f, 0.0f});
    KRenderSettings s;
    s.depth = 2;
    s.filter = 1;
    KImage* out = &target;
    RunProcess(*transform.effect, &source, out, s);
    return Best(3, [&] { RunProcess(*transform.effect, &source, out, s); });
}

void BM_VectorBlur(benchmark::State& state)
{
    Threads pool(static_cast<int>(state.range(0)));
    std::unique_ptr<KImage> plain(Frame(0));
    std::unique_ptr<KImage> source(plain->CreateVectorLike());
    source->CopyFrom(*plain);
    // About 20 pixels, turning a little across the picture.
    const size_t n = size_t(source->width) * source->height;
    float* vx = source->AuxPlane(kVectorX);
    float* vy = source->AuxPlane(kVectorY);
    for (size_t i = 0; i < n; ++i) {
        const float a = 0.6f + 0.2f * static_cast<float>(i % 3840) / 3840.0f;
        vx[i] = 20.0f * std::cos(a);
        vy[i] = 20.0f * std::sin(a);
    }
    // What one pixel spreads to: the centre and both sides of its stroke.
    std::vector<KOffsetsEntry> stroke;
    KOffsetsTable::BuildStraightInto(stroke, 3.1415927f - 0.7f, 10.0f, 1.0f, false);
    const double samples = static_cast<double>(2 * stroke.size() - 1);
    std::unique_ptr<KImage> target(source->CreateLike());
    const double transform = TransformPass(*plain, *target);
    Tool tool("ZV_VectorBlur");
    KRenderSettings s;
    s.depth = 2;
    KImage* out = target.get();
    Measure(state, *plain, *target, [&] { RunProcess(*tool.effect, source.get(), out, s); });
    const double best = state.counters["best_ms"] / 1e3;
    state.counters["samples"] = samples;
    state.counters["transform_ms"] = transform * 1e3;
    state.counters["x_transform"] = best / samples / transform;
}

void Args(benchmark::internal::Benchmark* b)
{
    b->ArgNames({"threads"});
    for (int t : {1, 2}) b->Args({t});
    b->Unit(benchmark::kMillisecond)->UseRealTime()->MinTime(2.0);
}

}  // namespace

BENCHMARK(BM_Average)->Name("Average/frames:9")->Apply(Args);
BENCHMARK(BM_VectorBlur)->Name("VectorBlur")->Apply(Args);

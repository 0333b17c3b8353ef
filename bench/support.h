// Benchmark helpers: the memcpy floor measured in the same run, and ratios.
#pragma once
#include <benchmark/benchmark.h>
#include <algorithm>
#include <chrono>
#include <cstring>
#include <functional>
#include <vector>
#include <OpenImageIO/imagebuf.h>
#include <memory>
#include "bridge/operator.h"
#include "framework/process.h"
#include "host/registry.h"
#include "host/threads.h"
#include "raster/image.h"

namespace zvbench {

using Clock = std::chrono::steady_clock;

inline double Seconds(const std::function<void()>& fn)
{
    auto t0 = Clock::now();
    fn();
    return std::chrono::duration<double>(Clock::now() - t0).count();
}

// Copies the image's bytes row by row on the pool, as a process would spread them.
inline void CopyBytes(const KImage& from, KImage& to)
{
    host::DoMultiProcess(from.height, [&](int y) {
        std::memcpy(to.RowW(y), from.RowW(y), from.RowBytes());
    });
}

// The shortest of `runs` timings of `fn`.
inline double Best(int runs, const std::function<void()>& fn)
{
    double best = 1e30;
    for (int i = 0; i < runs; ++i) best = std::min(best, Seconds(fn));
    return best;
}

// Best of five copies of the same bytes: the floor the figures are measured against.
inline double MemcpyFloor(const KImage& from, KImage& to)
{
    return Best(5, [&] { CopyBytes(from, to); });
}

// Runs `body` in the benchmark loop and reports its best time over the floor
// and, when given, over the reference's best time. A floor copy runs beside
// every iteration and every figure is a best of several runs, so that a shared
// machine's pauses do not land on one side only.
inline void Measure(benchmark::State& state, const KImage& from, KImage& to,
                    const std::function<void()>& body, double reference = 0.0)
{
    double floor = MemcpyFloor(from, to), best = 1e30;
    int64_t n = 0;
    for (auto _ : state) {
        best = std::min(best, Seconds(body));
        state.PauseTiming();
        floor = std::min(floor, Seconds([&] { CopyBytes(from, to); }));
        state.ResumeTiming();
        ++n;
    }
    if (!n) return;
    state.counters["floor_ms"] = floor * 1e3;
    state.counters["best_ms"] = best * 1e3;
    state.counters["x_floor"] = best / floor;
    if (reference > 0.0) {
        state.counters["oiio_ms"] = reference * 1e3;
        state.counters["x_oiio"] = best / reference;
    }
    state.SetBytesProcessed(n * int64_t(from.RowBytes()) * from.height);
}

inline KImage* Plate(bool isFloat)
{
    KImage* img = KImage::Create(3840, 2160, isFloat);
    for (int32_t y = 0; y < img->height; ++y)
        for (int32_t x = 0; x < img->width; ++x)
            img->SetPixel(x, y, KPixelF{x / 3840.0f, y / 2160.0f, 0.5f, 1.0f});
    return img;
}

// Sets the pool size for one benchmark and restores it after.
struct Threads {
    explicit Threads(int n) { host::SetThreadCount(n); }
    ~Threads() { host::SetThreadCount(0); }
};

// A registered tool's effect, its fields set through its declarations as the
// bridge leaves them.
struct Tool {
    explicit Tool(const host::Registration& r)
        : op(r.creator()),
          effect(static_cast<KEffectImage*>(static_cast<ZV_ThreadedOperator*>(op.get())->Effect()))
    {
    }
    explicit Tool(const char* className) : Tool(*host::Registry::Get().FindClass(className)) {}
    template <class T> void Set(uint32_t id, T v)
    {
        *static_cast<T*>(effect->inputList.Find(id)->field) = v;
    }

    std::unique_ptr<host::Operator> op;
    KEffectImage* effect;
};

// The effect's process over source into target, threaded as the bridge runs it.
inline void RunProcess(KEffectImage& effect, KImage* source, KImage*& target, const KRenderSettings& s)
{
    effect.settings = s;
    std::unique_ptr<KProcessImage> p = KCreateProcess(&effect, source, &target, s);
    KRunPasses(*p, [](int32_t jobs, const std::function<void(int32_t)>& job) {
        host::DoMultiProcess(jobs, job);
    });
}

// The image's own pixels as an ImageBuf, without a copy.
inline OIIO::ImageBuf WrapForOIIO(const KImage& img)
{
    OIIO::ImageSpec spec(img.width, img.height, 4,
                         img.IsFloat() ? OIIO::TypeDesc::FLOAT : OIIO::TypeDesc::UINT16);
    return OIIO::ImageBuf(spec, img.RowW(0), OIIO::AutoStride,
                          static_cast<OIIO::stride_t>(img.RowBytes()));
}

// Integer and float plates, one and two threads.
inline void DepthsAndThreads(benchmark::internal::Benchmark* b)
{
    b->ArgNames({"float", "threads"});
    for (int f : {0, 1})
        for (int t : {1, 2}) b->Args({f, t});
    b->Unit(benchmark::kMillisecond)->UseRealTime()->MinTime(2.0);
}

}  // namespace zvbench

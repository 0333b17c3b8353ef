// Benchmark helpers: the memcpy floor measured in the same run, and ratios.
#pragma once
#include <benchmark/benchmark.h>
#include <algorithm>
#include <chrono>
#include <cstring>
#include <functional>
#include <vector>
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

// Best of five copies of the same bytes: the floor the figures are measured against.
inline double MemcpyFloor(const KImage& from, KImage& to)
{
    double best = 1e30;
    for (int i = 0; i < 5; ++i) best = std::min(best, Seconds([&] { CopyBytes(from, to); }));
    return best;
}

// Runs `body` in the benchmark loop and reports its time over the floor.
inline void Measure(benchmark::State& state, const KImage& from, KImage& to,
                    const std::function<void()>& body)
{
    const double floor = MemcpyFloor(from, to);
    double total = 0.0;
    int64_t n = 0;
    for (auto _ : state) {
        total += Seconds(body);
        ++n;
    }
    state.counters["floor_ms"] = floor * 1e3;
    state.counters["x_floor"] = n ? total / n / floor : 0.0;
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

}  // namespace zvbench

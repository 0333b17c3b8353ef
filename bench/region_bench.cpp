// Asking a region: a tree of 16 transformed solids and noises merged into one,
// at 10,000,000 points, a 3840x2160 slice and a batch of random points, at
// 1 and 2 threads.
//   Region/threads:N   `best_ms` the best of the runs; `speedup` t1 / tN, from
//                      the 1-thread figure of the same binary; `allocs` the
//                      allocations made while the 10,000,000 points were
//                      asked, counted by the operator new below (the pool's
//                      dispatch and the slice picture, none per point).
#include <atomic>
#include <cstdlib>
#include <new>
#include "region/region.h"
#include "support.h"

namespace {

std::atomic<int64_t> allocations{0};

}  // namespace

// Every allocation of the program counts; the benchmark reads the difference.
// The pair is malloc and free by design, which the compiler cannot see.
#pragma GCC diagnostic ignored "-Wmismatched-new-delete"
void* operator new(std::size_t n)
{
    allocations.fetch_add(1, std::memory_order_relaxed);
    if (void* p = std::malloc(n ? n : 1)) return p;
    throw std::bad_alloc();
}
void* operator new[](std::size_t n) { return operator new(n); }
void operator delete(void* p) noexcept { std::free(p); }
void operator delete[](void* p) noexcept { operator delete(p); }
void operator delete(void* p, std::size_t) noexcept { operator delete(p); }
void operator delete[](void* p, std::size_t) noexcept { operator delete(p); }

using namespace zvbench;

namespace {

constexpr int32_t kWidth = 3840, kHeight = 2160;
constexpr size_t kBatch = 10'000'000 - size_t(kWidth) * kHeight;

std::shared_ptr<KRegion3DNode> Node(uint32_t kind, float x, float y, float scale, float turn)
{
    auto n = std::make_shared<KRegion3DNode>();
    n->kind = kind;
    n->softness = {0.3f, 0.3f, 0.3f};
    n->noise = {0.15f, 3, {x * 7.0f, y * 7.0f, 1.0f}};
    n->transform.Scale(scale, scale, scale).Rotate(2, turn).Rotate(0, turn * 0.5f).Translate(x, y, 0.05f);
    n->inverseTransform = n->transform.Inverted();
    return n;
}

// 16 leaves (spheres, cubes, noise) under transforms, merged pairwise with every operation.
KRegion3D Tree()
{
    std::vector<std::shared_ptr<const KRegion3DNode>> level;
    static const uint32_t kinds[4] = {kRegionSphere, kRegionCube, kRegionNoise, kRegionSphere};
    for (int i = 0; i < 16; ++i) {
        auto leaf = Node(kinds[i % 4], float(i % 4) * 0.25f - 0.375f, float(i / 4) * 0.14f - 0.21f, 0.12f, 0.3f * i);
        auto placed = Node(kRegionTransform, 0.01f * i, 0.0f, 1.0f, 0.05f * i);
        placed->child1 = leaf;
        level.push_back(placed);
    }
    for (int combine = 0; level.size() > 1; ++combine) {
        std::vector<std::shared_ptr<const KRegion3DNode>> next;
        for (size_t i = 0; i < level.size(); i += 2) {
            auto m = Node(kRegionMerge, 0.0f, 0.0f, 1.0f, 0.0f);
            m->combine = combine++ % 5;
            m->child1 = level[i];
            m->child2 = level[i + 1];
            next.push_back(m);
        }
        level = std::move(next);
    }
    return KRegion3D(level[0]);
}

void BM_Region(benchmark::State& state)
{
    const KRegion3D region = Tree();
    std::vector<Vector3f> points(kBatch);
    uint32_t seed = 1;
    auto next = [&] { return float((seed = seed * 1103515245u + 12345u) >> 8 & 0xFFFF) / 65536.0f - 0.5f; };
    for (Vector3f& p : points) p = {next(), next() * 0.6f, next() * 0.2f};
    std::vector<float> values(kBatch);
    constexpr int kChunks = 64;
    auto body = [&] {
        std::unique_ptr<KImage> slice(KRegionSlice(region, 2, 0.0f, kWidth, kHeight));
        host::DoMultiProcess(kChunks, [&](int c) {
            const size_t from = kBatch * c / kChunks, to = kBatch * (c + 1) / kChunks;
            for (size_t i = from; i < to; ++i) values[i] = region.Value(points[i]);
        });
        benchmark::DoNotOptimize(slice->RowF(kHeight / 2)[0] + values[kBatch / 2]);
    };
    static double one = 0.0;
    const Threads threads(int(state.range(0)));
    double best = 1e30;
    int64_t counted = 0;
    for (auto _ : state) {
        const int64_t before = allocations.load();
        best = std::min(best, Seconds(body));
        counted = allocations.load() - before;
    }
    if (state.range(0) == 1) one = best;
    state.counters["best_ms"] = best * 1e3;
    state.counters["allocs"] = double(counted);
    state.counters["points"] = 1e7;
    if (one > 0.0) state.counters["speedup"] = one / best;
}

}  // namespace

BENCHMARK(BM_Region)->Name("Region")->ArgName("threads")->Arg(1)->Arg(2)->Unit(benchmark::kMillisecond)->UseRealTime()->Iterations(3);

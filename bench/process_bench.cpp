// The processes' own cost: a colour effect that copies and a warp that maps
// every pixel to itself, over a UHD plate, against the memcpy floor.
#include "framework/process.h"
#include "support.h"

using namespace zvbench;

namespace {

class KEffectPass : public KEffectColor {
public:
    void ProcessColor(KPixelF& out, const KPixelF& in) override { out = in; }
    void ProcessColorInt(KPixel& out, const KPixel& in) override { out = in; }
};

class KEffectSame : public KEffectWarp {
public:
    bool InverseMap(KPosition& out, const KPosition& in) override
    {
        out = in;
        return true;
    }
};

void RunProcess(KEffectImage& effect, KImage* source, KImage*& target, KRenderSettings s)
{
    effect.settings = s;
    KProcessImage* p = KCreateProcess(&effect, source, &target, s);
    KRunPasses(*p, [](int32_t jobs, const std::function<void(int32_t)>& job) {
        host::DoMultiProcess(jobs, job);
    });
    delete p;
}

template <class Effect> void BM_Process(benchmark::State& state)
{
    const bool isFloat = state.range(0) != 0;
    Threads threads(static_cast<int>(state.range(1)));
    KImage* source = Plate(isFloat);
    KImage* target = source->CreateLike();
    KRenderSettings s;
    s.depth = isFloat ? 2 : 1;
    Effect effect;
    Measure(state, *source, *target, [&] { RunProcess(effect, source, target, s); });
    delete target;
    delete source;
}

void Args(benchmark::internal::Benchmark* b)
{
    b->ArgNames({"float", "threads"});
    for (int f : {0, 1})
        for (int t : {1, 2}) b->Args({f, t});
    b->Unit(benchmark::kMillisecond)->UseRealTime()->MinTime(0.5);
}

}  // namespace

BENCHMARK_TEMPLATE(BM_Process, KEffectPass)->Name("ColorProcess/pass")->Apply(Args);
BENCHMARK_TEMPLATE(BM_Process, KEffectSame)->Name("InverseProcess/identity")->Apply(Args);

BENCHMARK_MAIN();

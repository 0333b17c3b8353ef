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


}  // namespace

BENCHMARK_TEMPLATE(BM_Process, KEffectPass)->Name("ColorProcess/pass")->Apply(DepthsAndThreads);
BENCHMARK_TEMPLATE(BM_Process, KEffectSame)->Name("InverseProcess/identity")->Apply(DepthsAndThreads);

BENCHMARK_MAIN();

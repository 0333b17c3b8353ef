// Colour tools over a UHD plate through their processes, threaded as the
// bridge runs them, against the memcpy floor and the nearest ImageBufAlgo
// operation on the same pixels and thread count:
//   Invert          ImageBufAlgo::invert
//   Hue/Saturation  ImageBufAlgo::saturate (an RGB saturation scale)
//   Threshold       ImageBufAlgo::contrast_remap with black == white (a hard threshold)
// Hue/Saturation runs again at 8 and 4 lanes, as on processors without AVX-512
// or AVX2.
#include <OpenImageIO/imagebuf.h>
#include <OpenImageIO/imagebufalgo.h>
#include <memory>
#include "bridge/operator.h"
#include "framework/lanes.h"
#include "framework/process.h"
#include "support.h"

using namespace zvbench;

namespace {

enum Which { kInvert, kHueSaturation, kThreshold };

// At most `lanes` pixels at once, as a processor without the wider registers runs.
struct LaneLimit {
    explicit LaneLimit(int lanes) { KLimitLaneWidth(lanes); }
    ~LaneLimit() { KLimitLaneWidth(kLaneWidthMost); }
};

void BM_Colour(benchmark::State& state, Which which, int lanes = kLaneWidthMost)
{
    const bool isFloat = state.range(0) != 0;
    const int threads = static_cast<int>(state.range(1));
    Threads pool(threads);
    LaneLimit limit(lanes);
    std::unique_ptr<KImage> source(Plate(isFloat));
    KImage* target = source->CreateLike();
    KRenderSettings s;
    s.depth = isFloat ? 2 : 1;

    std::unique_ptr<Tool> tool;
    std::function<bool(OIIO::ImageBuf&, const OIIO::ImageBuf&)> reference;
    switch (which) {
    case kInvert:
        tool = std::make_unique<Tool>("ZV_Invert");
        reference = [&](OIIO::ImageBuf& d, const OIIO::ImageBuf& a) {
            return OIIO::ImageBufAlgo::invert(d, a, {}, threads);
        };
        break;
    case kHueSaturation:
        tool = std::make_unique<Tool>("ZV_HueSaturation");
        tool->Set("sHue"_id, 0.1f);
        tool->Set("sSaM"_id, 1.2f);
        tool->Set("sLig"_id, 0.05f);
        reference = [&](OIIO::ImageBuf& d, const OIIO::ImageBuf& a) {
            return OIIO::ImageBufAlgo::saturate(d, a, 1.2f, 0, {}, threads);
        };
        break;
    case kThreshold:
        tool = std::make_unique<Tool>("ZV_Threshold");
        tool->Set("SoRe"_id, 0.3f);
        tool->Set("ReRe"_id, 2.5f);
        tool->Set("RePR"_id, true);
        reference = [&](OIIO::ImageBuf& d, const OIIO::ImageBuf& a) {
            return OIIO::ImageBufAlgo::contrast_remap(d, a, 0.5f, 0.5f, 0.0f, 1.0f, 1.0f, 0.5f,
                                                      {}, threads);
        };
        break;
    }

    OIIO::ImageBuf a = WrapForOIIO(*source), d = WrapForOIIO(*target);
    reference(d, a);  // warm
    const double oiio = Best(5, [&] { reference(d, a); });
    Measure(state, *source, *target, [&] { RunProcess(*tool->effect, source.get(), target, s); },
            oiio);
    delete target;
}


}  // namespace

BENCHMARK_CAPTURE(BM_Colour, Invert, kInvert)->Apply(DepthsAndThreads);
BENCHMARK_CAPTURE(BM_Colour, HueSaturation, kHueSaturation)->Apply(DepthsAndThreads);
BENCHMARK_CAPTURE(BM_Colour, HueSaturationAt8Lanes, kHueSaturation, 8)->Apply(DepthsAndThreads);
BENCHMARK_CAPTURE(BM_Colour, HueSaturationAt4Lanes, kHueSaturation, 4)->Apply(DepthsAndThreads);
BENCHMARK_CAPTURE(BM_Colour, Threshold, kThreshold)->Apply(DepthsAndThreads);

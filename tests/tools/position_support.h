// Helpers of the position tools' tests: a registered tool's effect driven
// through its process, as a filter or as a source.
#pragma once
#include <gtest/gtest.h>
#include <memory>
#include "support.h"

namespace zvposition {

using zvtest::ToolFlow;

// An operator of a registered class; fields are reached through the declarations.
struct Tool : zvtest::EffectDriver<KEffectPosition> {
    using EffectDriver::EffectDriver;

    KImage* Run(KImage* source, bool threaded = false)
    {
        return zvtest::RunEffect(*effect, source, zvtest::Settings(source->IsFloat()), threaded);
    }
    // A source: the zeroed target is its own source.
    KImage* Make(int32_t w, int32_t h, bool isFloat, bool threaded = false, int32_t superSample = 1)
    {
        KImage* target = KImage::Create(w, h, isFloat);
        KRenderSettings s = zvtest::Settings(isFloat);
        s.superSampling = superSample;
        effect->settings = s;
        std::unique_ptr<KProcessImage> process(KCreateProcess(effect, target, &target, s));
        if (threaded) KRunPasses(*process, zvtest::Threaded);
        else process->Run();
        return target;
    }
};

template <class P> P At(const KImage& img, int32_t x, int32_t y)
{
    P p;
    img.GetPixel(x, y, p, kEdgeBlack);
    return p;
}

// Serial and threaded renders of both depths agree bit for bit.
template <class Render> void ExpectThreadsAgree(Render render)
{
    for (bool isFloat : {false, true}) {
        std::unique_ptr<KImage> serial(render(isFloat, false)), threaded(render(isFloat, true));
        EXPECT_EQ(zvtest::Differ(*serial, *threaded), "") << (isFloat ? "float" : "integer");
    }
}

}  // namespace zvposition

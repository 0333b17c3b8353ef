// Helpers of the position tools' tests: a registered tool's effect driven
// through its process, and the same tool in a flow.
#pragma once
#include <gtest/gtest.h>
#include <memory>
#include "bridge/operator.h"
#include "host/flow.h"
#include "host/image.h"
#include "support.h"

namespace zvposition {

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

// A tool in a flow; Render gives its main output as a wrapper that does not own it.
struct Flow {
    explicit Flow(const char* className)
        : node(flow.Add("tool", *host::Registry::Get().FindClass(className)))
    {
    }
    host::Input* Input(const char* id) { return node.op->FindInput(id); }
    void Set(const char* id, double v) { flow.SetValue(node, Input(id), host::MakeNumber(v)); }
    void SetImage(const char* id, KImage* img)
    {
        flow.SetValue(node, Input(id), host::MakeImage(img->HostImage()));
    }
    std::unique_ptr<KImage> Render()
    {
        flow.BeginFrame();
        result = flow.Evaluate(node, node.op->MainOutput(), 0.0);
        auto* v = dynamic_cast<const host::ImageValue*>(result.get());
        return std::unique_ptr<KImage>(v ? KImage::Wrap(v->image, false) : nullptr);
    }

    host::Flow flow;
    host::Flow::Node& node;
    host::Value result;
};

// Serial and threaded renders of both depths agree bit for bit.
template <class Render> void ExpectThreadsAgree(Render render)
{
    for (bool isFloat : {false, true}) {
        std::unique_ptr<KImage> serial(render(isFloat, false)), threaded(render(isFloat, true));
        EXPECT_EQ(zvtest::Differ(*serial, *threaded), "") << (isFloat ? "float" : "integer");
    }
}

}  // namespace zvposition

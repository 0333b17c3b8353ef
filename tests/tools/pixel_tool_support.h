// Helpers of the per-pixel tools' tests: a registered tool's effect driven
// through its process, and the same tool in a flow.
#pragma once
#include <gtest/gtest.h>
#include <memory>
#include <string>
#include "bridge/operator.h"
#include "host/flow.h"
#include "host/image.h"
#include "host/threads.h"
#include "support.h"

namespace zvpixel {

inline KPixelF PixelF(const KImage& img, int32_t x, int32_t y)
{
    KPixelF p;
    img.GetPixel(x, y, p, kEdgeBlack);
    return p;
}

// A float image of w x h pixels whose first channel is `value`.
inline std::unique_ptr<KImage> Constant(int32_t w, int32_t h, float value)
{
    std::unique_ptr<KImage> img(KImage::Create(w, h, true));
    for (int32_t y = 0; y < h; ++y)
        for (int32_t x = 0; x < w; ++x) img->SetPixel(x, y, KPixelF{value, 0.0f, 0.0f, 1.0f});
    return img;
}

// An operator of a registered class; its effect's fields are reached through
// the declarations, as the bridge reaches them. Image fields lent by a test
// must be given back (set to null) before the tool goes.
struct Tool : zvtest::EffectDriver<KEffectPixel> {
    using EffectDriver::EffectDriver;
    KParameter& Declared(uint32_t id) const { return *effect->inputList.Find(id); }
    std::unique_ptr<KImage> Run(KImage* source, bool threaded = false)
    {
        return std::unique_ptr<KImage>(
            zvtest::RunEffect(*effect, source, zvtest::Settings(source->IsFloat()), threaded));
    }
};

// A tool in a flow, fed one image.
struct Flow {
    Flow(const char* className, KImage* image)
        : node(flow.Add("tool", *host::Registry::Get().FindClass(className)))
    {
        flow.SetValue(node, node.op->FindInput("Image"), host::MakeImage(image->HostImage()));
    }
    void Set(const char* id, double v)
    {
        flow.SetValue(node, node.op->FindInput(id), host::MakeNumber(v));
    }
    bool Visible(const char* id) { return node.op->FindInput(id)->attrs.visible; }
    std::unique_ptr<KImage> Render()
    {
        flow.BeginFrame();
        host::Value v = flow.Evaluate(node, node.op->MainOutput(), 0.0);
        std::unique_ptr<KImage> out(
            KImage::Wrap(static_cast<const host::ImageValue*>(v.get())->image, false));
        return std::unique_ptr<KImage>(out->Clone());
    }

    // Renders on one thread, on two, and serially; empty when all three agree.
    std::string ThreadsAgree()
    {
        host::SetThreadCount(1);
        std::unique_ptr<KImage> one = Render();
        host::SetThreadCount(2);
        std::unique_ptr<KImage> two = Render();
        host::SetThreadCount(0);
        Set("ZVMT", 0);
        std::unique_ptr<KImage> serial = Render();
        Set("ZVMT", 1);
        const std::string a = zvtest::Differ(*one, *two), b = zvtest::Differ(*one, *serial);
        return a.empty() && b.empty() ? "" : "two threads: " + a + "; serial: " + b;
    }

    host::Flow flow;
    host::Flow::Node& node;
};

}  // namespace zvpixel

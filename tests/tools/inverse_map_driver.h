// Helpers of the warp tool tests: a warp made through the registry and driven
// directly (fields written through its declarations, Start on an image, then
// InverseMap), and the same tool rendered through a host flow.
#pragma once
#include <gtest/gtest.h>
#include <array>
#include <cstdint>
#include <memory>
#include <string>
#include "bridge/operator.h"
#include "host/flow.h"
#include "host/image.h"
#include "host/registry.h"
#include "support.h"
#include "raster/image.h"

namespace zvwarp {

using zvtest::Registered;

// A warp's effect without a request. Values are written as they arrive from
// the bridge: angles negated in radians, points already in their unit.
class Warp : public zvtest::EffectDriver<KEffectWarp> {
public:
    explicit Warp(const char* className) : EffectDriver(className) {}
    ~Warp() { Stop(); }

    // Starts on an image of this size and pixel aspect (only its geometry is read).
    bool Start(int32_t w = 9, int32_t h = 9, float pixelAspect = 1.0f)
    {
        Stop();
        image.reset(KImage::Create(w, h, true, pixelAspect, 1.0f));
        started = true;
        KImage* slot = nullptr;
        return effect->Start(image.get(), &slot, effect);
    }
    void Stop()
    {
        if (!started) return;
        KImage* slot = nullptr;
        effect->Stop(&slot);
        started = false;
    }
    bool Map(float x, float y, KPosition& out) const { return effect->InverseMap(out, {x, y}); }

    std::unique_ptr<KImage> image;
    bool started = false;
};

// Expects the mapping of (x, y) to be (ex, ey) within `tol`.
inline void ExpectMap(const Warp& w, float x, float y, float ex, float ey, float tol = 1e-5f)
{
    KPosition out;
    ASSERT_TRUE(w.Map(x, y, out)) << x << "," << y;
    EXPECT_NEAR(out.x, ex, tol) << "x of " << x << "," << y;
    EXPECT_NEAR(out.y, ey, tol) << "y of " << x << "," << y;
}

// One tool in a flow with an image on its input.
class Render {
public:
    Render(const char* className, KImage* plate)
        : node(flow.Add("warp", Registered(className)))
    {
        flow.SetValue(node, In("Image"), host::MakeImage(plate->HostImage()));
    }
    host::Input* In(const char* id)
    {
        host::Input* in = node.op->FindInput(id);
        EXPECT_NE(in, nullptr) << id;
        return in;
    }
    void Set(const char* id, double v) { flow.SetValue(node, In(id), host::MakeNumber(v)); }
    void SetPoint(const char* id, double x, double y)
    {
        flow.SetValue(node, In(id), host::MakePoint(x, y));
    }
    // Renders and wraps the result; the wrapper does not own the host image,
    // which the returned value keeps alive until the next render.
    KImage* Run()
    {
        flow.BeginFrame();
        result = flow.Evaluate(node, node.op->MainOutput(), 1.0);
        auto* v = dynamic_cast<const host::ImageValue*>(result.get());
        if (!v || !v->image) return nullptr;
        wrapped.reset(KImage::Wrap(v->image, false));
        return wrapped.get();
    }

    host::Flow flow;
    host::Flow::Node& node;
    host::Value result;
    std::unique_ptr<KImage> wrapped;
};

// The stored channels of a pixel, 16-bit codes or floats as they are; zero
// outside the image.
inline std::array<float, 4> Raw(const KImage& img, int32_t x, int32_t y)
{
    std::array<float, 4> r{0.0f, 0.0f, 0.0f, 0.0f};
    if (x < 0 || y < 0 || x >= img.width || y >= img.height) return r;
    for (int c = 0; c < 4; ++c)
        r[c] = img.IsFloat() ? img.RowF(y)[4 * x + c] : static_cast<float>(img.RowW(y)[4 * x + c]);
    return r;
}

}  // namespace zvwarp

// Helpers of the warp tools' tests: a registered warp driven directly through
// its declarations, and the same tool driven through a host flow.
#pragma once
#include <gtest/gtest.h>
#include <algorithm>
#include <cmath>
#include <memory>
#include "bridge/operator.h"
#include "host/flow.h"
#include "host/image.h"
#include "host/registry.h"
#include "support.h"

namespace warptest {

// The effect of a registered tool on an 11 x 11 picture; fields are written
// as the bridge leaves them (angles negated and in radians).
struct Warp : zvtest::EffectDriver<KEffectWarp> {
    KImage* image = KImage::Create(11, 11, false);

    explicit Warp(const char* className) : EffectDriver(className) {}
    ~Warp() { delete image; }

    void Set(uint32_t id, float v) { Field<float>(id) = v; }
    void SetInt(uint32_t id, int32_t v) { Field<int32_t>(id) = v; }
    void SetBool(uint32_t id, bool v) { Field<bool>(id) = v; }
    void SetPoint(uint32_t id, float x, float y) { Field<KPoint2>(id) = {x, y}; }
    void SetDegrees(uint32_t id, float d) { Field<float>(id) = -d * 0.017453292f; }
    bool Start()
    {
        KImage* slot = nullptr;
        return effect->Start(image, &slot, effect);
    }
    KPosition Map(float x, float y)
    {
        KPosition out;
        EXPECT_TRUE(effect->InverseMap(out, {x, y}));
        return out;
    }
};

inline void ExpectMaps(Warp& w, float x, float y, float ex, float ey, float tolerance, int line)
{
    const KPosition m = w.Map(x, y);
    EXPECT_NEAR(m.x, ex, tolerance) << "x of " << x << "," << y << ", line " << line;
    EXPECT_NEAR(m.y, ey, tolerance) << "y of " << x << "," << y << ", line " << line;
}
#define EXPECT_MAPS(w, px, py, ex, ey) warptest::ExpectMaps(w, px, py, ex, ey, 2e-6f, __LINE__)
#define EXPECT_MAPS_NEAR(w, px, py, ex, ey) \
    warptest::ExpectMaps(w, px, py, ex, ey, 1e-5f, __LINE__)

// A registered tool in a flow, rendered at time 0.
struct ToolFlow {
    host::Flow flow;
    host::Flow::Node& node;

    explicit ToolFlow(const char* className)
        : node(flow.Add("tool", *host::Registry::Get().FindClass(className)))
    {
    }
    host::Input* In(const char* id)
    {
        host::Input* in = node.op->FindInput(id);
        EXPECT_NE(in, nullptr) << id;
        return in;
    }
    void Set(const char* id, double v) { flow.SetValue(node, In(id), host::MakeNumber(v)); }
    void SetImage(const char* id, KImage* image)
    {
        flow.SetValue(node, In(id), host::MakeImage(image->HostImage()));
    }
    // The output, holding a use of the host's image.
    KImage* Render()
    {
        flow.BeginFrame();
        host::Value v = flow.Evaluate(node, node.op->MainOutput(), 0.0);
        host::Image* out = static_cast<const host::ImageValue*>(v.get())->image;
        out->Use();
        return KImage::Wrap(out, true);
    }
};

// Largest difference of any channel, in float units, between a's pixel x, y and
// b's pixel x - dx, y - dy, over columns x0..x1-1 and rows y0..y1-1.
inline float MaxDiff(const KImage& a, const KImage& b, int32_t x0, int32_t y0, int32_t x1,
                     int32_t y1, int32_t dx = 0, int32_t dy = 0)
{
    float worst = 0.0f;
    for (int32_t y = y0; y < y1; ++y)
        for (int32_t x = x0; x < x1; ++x) {
            KPixelF p, q;
            a.GetPixel(x, y, p, kEdgeBlack);
            b.GetPixel(x - dx, y - dy, q, kEdgeBlack);
            for (int c = 0; c < 4; ++c) worst = std::max(worst, std::fabs(p[c] - q[c]));
        }
    return worst;
}

}  // namespace warptest

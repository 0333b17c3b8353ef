// Helpers of the colour tools' tests: a registered tool's effect driven
// through its process on one row of pixels, and the same tool in a flow.
#pragma once
#include <gtest/gtest.h>
#include <cstring>
#include <memory>
#include <vector>
#include "framework/lanes.h"
#include "support.h"

namespace zvcolour {

template <class P> constexpr bool kIsFloat = std::is_same_v<P, KPixelF>;

// One row image of the given pixels, and its pixels read back.
template <class P> KImage* Row(const std::vector<P>& pixels)
{
    KImage* img = KImage::Create(static_cast<int32_t>(pixels.size()), 1, kIsFloat<P>);
    for (size_t x = 0; x < pixels.size(); ++x) img->SetPixel(static_cast<int32_t>(x), 0, pixels[x]);
    return img;
}

template <class P> std::vector<P> Pixels(const KImage& img)
{
    std::vector<P> out(img.width);
    for (int32_t x = 0; x < img.width; ++x) img.GetPixel(x, 0, out[x], kEdgeBlack);
    return out;
}

// An operator of a registered class. Its effect's fields are reached through
// the declarations, as the bridge reaches them.
struct Tool : zvtest::EffectDriver<KEffectColor> {
    using EffectDriver::EffectDriver;

    // The pixels through the effect's process, serial or threaded.
    template <class P> std::vector<P> Run(const std::vector<P>& pixels, bool threaded = false)
    {
        std::unique_ptr<KImage> in(Row(pixels));
        std::unique_ptr<KImage> out(
            zvtest::RunEffect(*effect, in.get(), zvtest::Settings(kIsFloat<P>), threaded));
        return Pixels<P>(*out);
    }
    template <class P> P Run(const P& pixel) { return Run(std::vector<P>{pixel})[0]; }
};

// A tool in a flow, fed one row image that it keeps.
struct Flow : zvtest::ToolFlow {
    Flow(const char* className, KImage* image)
        : ToolFlow(className, std::unique_ptr<KImage>(image))
    {
    }
    host::Input* Input(const char* id) { return In(id); }
    template <class P> std::vector<P> Render(double time = 0.0)
    {
        return Pixels<P>(*ToolFlow::Render(time));
    }
};

// A lane effect's rows, run four, eight or thirty-two pixels at a time, must come out as
// each pixel alone, bit for bit, in both depths and at every lane width: over
// greys, ties, primaries, hue sector edges and values outside 0..1.
inline void ExpectRowsEqualOneAtATime(Tool& t)
{
    std::vector<KPixelF> pixels = {
        {0.4f, 0.4f, 0.4f, 1.0f}, {1.0f, 0.0f, 0.0f, 0.5f}, {0.0f, 1.0f, 0.0f, 1.0f},
        {0.0f, 0.0f, 1.0f, 0.0f}, {0.7f, 0.7f, 0.2f, 1.0f}, {0.2f, 0.7f, 0.7f, 1.0f},
        {0.7f, 0.2f, 0.7f, 1.0f}, {-0.5f, 1.75f, 0.3f, 2.0f}, {0.0f, 0.0f, 0.0f, 0.0f},
        {1.0f, 1.0f, 1.0f, 1.0f}, {1.0f, 0.5f, 0.0f, 1.0f}, {1.0f, 0.0f, 1.0f / 6.0f, 1.0f},
    };
    uint32_t seed = 12345;
    auto next = [&] {
        seed = seed * 1103515245u + 12345u;
        return static_cast<float>((seed >> 8) & 0xFFFF) / 52000.0f - 0.1f;
    };
    while (pixels.size() < 403) pixels.push_back({next(), next(), next(), next()});
    std::vector<KPixel> codes;
    for (const KPixelF& f : pixels) {
        KPixel p;
        KToInt(f, p);
        codes.push_back(p);
    }
    for (int width : {32, 8, 4}) {
        KLimitLaneWidth(width);  // the AVX-512 and AVX2 builds where the processor has them
        const std::vector<KPixelF> row = t.Run(pixels);
        const std::vector<KPixel> rowInt = t.Run(codes);
        for (size_t i = 0; i < pixels.size(); ++i) {
            KPixelF one;
            t.effect->ProcessColor(one, pixels[i]);
            KPixel oneInt;
            t.effect->ProcessColorInt(oneInt, codes[i]);
            ASSERT_EQ(std::memcmp(&row[i], &one, sizeof one), 0) << "float " << i << " at " << width;
            ASSERT_EQ(std::memcmp(&rowInt[i], &oneInt, sizeof oneInt), 0) << "int " << i << " at " << width;
        }
    }
    KLimitLaneWidth(kLaneWidthMost);
}

}  // namespace zvcolour

// Helpers of the colour tools' tests: a registered tool's effect driven
// through its process on one row of pixels, and the same tool in a flow.
#pragma once
#include <gtest/gtest.h>
#include <memory>
#include <vector>
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

}  // namespace zvcolour

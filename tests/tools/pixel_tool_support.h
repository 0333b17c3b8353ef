// Helpers of the per-pixel tools' tests: a registered tool's effect driven
// through its process, and the same tool in a flow.
#pragma once
#include <gtest/gtest.h>
#include <memory>
#include <string>
#include "support.h"

namespace zvpixel {

using Flow = zvtest::ToolFlow;

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
    std::unique_ptr<KImage> Run(KImage* source, bool threaded = false)
    {
        return std::unique_ptr<KImage>(
            zvtest::RunEffect(*effect, source, zvtest::Settings(source->IsFloat()), threaded));
    }
};

// The visibility messages of one change, as 0 and 1 in the order sent; each
// message's target must be the next of `targets`.
inline std::string Shown(KEffect& effect, uint32_t id, int32_t value,
                         const std::vector<uint32_t>& targets)
{
    KMessageValue v;
    v.intValue = value;
    const KMessageList list = effect.OnChange(id, v);
    std::string shown;
    size_t i = 0;
    for (KMessage* m = list.First(); m; m = static_cast<KMessage*>(m->next), ++i) {
        EXPECT_EQ(m->kind, kMessageVisible) << i;
        EXPECT_EQ(m->target, i < targets.size() ? targets[i] : 0u) << i;
        shown += m->value.intValue > 0 ? '1' : '0';
    }
    return shown;
}

}  // namespace zvpixel

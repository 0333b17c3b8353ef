// Combine: lays a foreground over the image, or mixes the two by one of the
// usual blend operations, pixel by pixel in premultiplied colour. The
// foreground is read at the same pixel; where it is smaller, or absent, the
// image comes through.
#include <algorithm>
#include <cmath>
#include "framework/effect.h"
#include "framework/registration.h"
#include "raster/image.h"

class KEffectCombine : public KEffectPixel {
public:
    enum Operation : int32_t { kOver, kUnder, kAdd, kMultiply, kScreen, kDifference, kMaximum, kMinimum };

    KEffectCombine()
    {
        inputList.AddPage("Combine");
        inputList.AddImageInput(&foreground, "Foreground", 2, kFlagMain);
        inputList.AddMultiButton(&operation, kOver, "Operation", "COpr"_id, 0,
                                 {"Over", "Under", "Add", "Multiply", "Screen", "Difference", "Maximum", "Minimum",
                                  "[end]"});
        inputList.AddSlider(&blend, 1.0f, "Blend", "CBln"_id, 0, 0.0, 1.0);
    }

    void ProcessPixelFloat(KPixelF& out, int32_t x, int32_t y, KImage* image) override
    {
        KPixelF b, f;
        image->GetPixel(x, y, b, kEdgeBlack);
        if (foreground) foreground->GetPixel(x, y, f, kEdgeBlack);
        KPixelF c;
        for (int i = 0; i < 4; ++i) c[i] = Mix(f, b, i);
        for (int i = 0; i < 4; ++i) out[i] = b[i] + (c[i] - b[i]) * blend;
    }

private:
    // Channel i of the combination; alpha combines as a cover (over) does,
    // except where the operation is on alpha itself.
    float Mix(const KPixelF& f, const KPixelF& b, int i) const
    {
        const float fa = f.a, ba = b.a;
        switch (operation) {
        case kOver: return f[i] + b[i] * (1.0f - fa);
        case kUnder: return b[i] + f[i] * (1.0f - ba);
        case kAdd: return f[i] + b[i];
        case kMultiply: return i == 3 ? fa + ba * (1.0f - fa) : f[i] * b[i] + f[i] * (1.0f - ba) + b[i] * (1.0f - fa);
        case kScreen: return f[i] + b[i] - f[i] * b[i];
        case kDifference: return i == 3 ? fa + ba * (1.0f - fa) : std::fabs(f[i] - b[i]);
        case kMaximum: return std::max(f[i], b[i]);
        default: return std::min(f[i], b[i]);
        }
    }

    KImage* foreground = nullptr;
    int32_t operation = kOver;
    float blend = 1.0f;
};

ZV_TOOL(KEffectCombine, ZV_Combine);

// Color: replaces the image with one colour or combines it with the pixels.
// All four components are treated alike, alpha included.
#include <algorithm>
#include "framework/effect.h"
#include "framework/registration.h"
#include "raster/pixel_store.h"

class KEffectSolid : public KEffectColor {
public:
    enum Type : int32_t { kReplace = 0, kAdd, kSubtract, kMultiply, kDivide };

    KEffectSolid()
    {
        inputList.AddPage("Color");
        inputList.AddColor(&color, {1.0f, 1.0f, 1.0f, 1.0f}, "Color", "ColR"_id, 0);
        inputList.AddMultiButton(&type, 0, "Type", "InTy"_id, 0,
                                 {"Replace", "Add", "Subtract", "Multiply", "Divide", "[end]"});
    }

    bool Start(KImage* input, KImage** output, void* extras) override
    {
        KEffectImage::Start(input, output, extras);
        for (int c = 0; c < 4; ++c) colorInt[c] = KFloatToIntDouble((&color.r)[c]);
        return true;
    }

    void ProcessColor(KPixelF& out, const KPixelF& in) override
    {
        const float* c = &color.r;
        float v[4];
        for (int k = 0; k < 4; ++k) {
            switch (type) {
            case kReplace: v[k] = c[k]; break;
            case kAdd: v[k] = in[k] + c[k]; break;
            case kSubtract: v[k] = in[k] - c[k]; break;
            case kMultiply: v[k] = in[k] * c[k]; break;
            case kDivide:
                // A zero component divides by one, so it leaves the channel alone.
                v[k] = static_cast<float>(static_cast<double>(in[k]) /
                                          (c[k] == 0.0f ? 1.0 : static_cast<double>(c[k])));
                break;
            default: v[k] = in[k]; break;
            }
        }
        KStorePixel(out, v[0], v[1], v[2], v[3]);
    }

    void ProcessColorInt(KPixel& out, const KPixel& in) override
    {
        uint32_t v[4];
        for (int k = 0; k < 4; ++k) {
            const int64_t p = in[k], c = colorInt[k];
            int64_t x;
            switch (type) {
            case kReplace: x = c; break;
            case kAdd: x = p + c; break;
            case kSubtract: x = p - c; break;
            case kMultiply: x = p * c / 65535; break;
            // Divides the integer values themselves, not their 0..1 meaning.
            case kDivide:
                x = static_cast<int64_t>(static_cast<double>(p) /
                                         (c == 0 ? 1.0 : static_cast<double>(c)));
                break;
            default: x = p; break;
            }
            v[k] = static_cast<uint32_t>(std::clamp<int64_t>(x, 0, 65535));
        }
        KStorePixel(out, v[0], v[1], v[2], v[3]);
    }

private:
    KColor color;
    int32_t type = 0;
    uint32_t colorInt[4] = {65535, 65535, 65535, 65535};
};

ZV_TOOL(KEffectSolid, ZV_Color);

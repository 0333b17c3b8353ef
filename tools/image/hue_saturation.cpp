// Hue/Saturation: shifts hue and scales and offsets saturation and lightness
// in HLS, or colorizes with one hue. The lightness offset reaches alpha too.
#include <algorithm>
#include "bridge/operator.h"
#include "framework/effect.h"
#include "framework/numeric.h"
#include "raster/pixel_store.h"

class KEffectHueSaturation : public KEffectColor {
public:
    KEffectHueSaturation()
    {
        inputList.AddPage("Hue/Saturation");
        inputList.AddSlider(&hue, 0.0f, "Hue", "sHue"_id, kFlagHardMin | kFlagHardMax, -1.0, 1.0);
        inputList.AddSlider(&satMul, 1.0f, "Saturation Multiply", "sSaM"_id, kFlagHardMax, 0.0,
                            2.0);
        inputList.AddSlider(&satAdd, 0.0f, "Saturation Add", "sSat"_id,
                            kFlagHardMin | kFlagHardMax, -1.0, 1.0);
        inputList.AddSlider(&lightMul, 1.0f, "Lightness Multiply", "sLiM"_id, kFlagHardMax, 0.0,
                            2.0);
        inputList.AddSlider(&lightAdd, 0.0f, "Lightness Add", "sLig"_id,
                            kFlagHardMin | kFlagHardMax, -1.0, 1.0);
        inputList.AddCheckbox(&colorize, false, "Colorize", "cCol"_id, 0, 1);
    }

    // Neutral settings copy the input untouched.
    bool Start(KImage* input, KImage** output, void* extras) override
    {
        KEffectImage::Start(input, output, extras);
        return hue != 0.0f || satAdd != 0.0f || lightAdd != 0.0f || satMul != 1.0f ||
               lightMul != 1.0f || colorize;
    }

    void ProcessColor(KPixelF& out, const KPixelF& in) override { Adjust(out, in); }

    void ProcessColorInt(KPixel& out, const KPixel& in) override
    {
        KPixelF f, o;
        KLoadFloat(f, in);
        Adjust(o, f);
        KStoreIntDouble(out, o);
    }

private:
    void Adjust(KPixelF& out, const KPixelF& in) const
    {
        const float r = in.r, g = in.g, b = in.b;
        const float hi = std::max(r, std::max(g, b));
        const float lo = std::min(r, std::min(g, b));
        const float l = (lo + hi) * 0.5f;
        float h = 0.0f, s = 0.0f;
        if (hi != lo) {
            const float span = hi - lo;
            s = l <= 0.5f ? span / (hi + lo) : span / (2.0f - (hi + lo));
            const float k = 1.0f / span;
            if (hi == r) h = (g - b) * k;
            else if (hi != g) h = (r - g) * k + 4.0f;
            else h = (b - r) * k + 2.0f;
            h = h * 0.16666667f;
            if (h < 0.0f) h += 1.0f;
        }
        const float s2 = std::clamp(s * satMul + satAdd, 0.0f, 1.0f);
        const float l2 = std::clamp(l * lightMul + lightAdd, 0.0f, 1.0f);
        float h2 = colorize ? hue : h + hue;
        if (h2 >= 1.0f) h2 -= 1.0f;
        if (h2 < 0.0f) h2 += 1.0f;
        const float a = lightAdd + in.a;
        if (s2 == 0.0f) {
            KStorePixel(out, l2, l2, l2, a);
            return;
        }
        const float m2 = l2 > 0.5f ? s2 + l2 - s2 * l2 : (s2 + 1.0f) * l2;
        const float m1 = 2.0f * l2 - m2;
        const float hr = static_cast<float>(h2 + 1.0 / 3.0);
        const float hb = static_cast<float>(h2 - 1.0 / 3.0);
        KStorePixel(out, KHueSegment(m1, m2, hr), KHueSegment(m1, m2, h2),
                    KHueSegment(m1, m2, hb), a);
    }

    float hue = 0.0f, satMul = 1.0f, satAdd = 0.0f, lightMul = 1.0f, lightAdd = 0.0f;
    bool colorize = false;
};

ZV_TOOL(KEffectHueSaturation, ZV_HueSaturation, "Hue/Saturation", "Zelvarine\\Image Color", "HSL",
        "");

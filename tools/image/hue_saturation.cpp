// Hue/Saturation: shifts hue and scales and offsets saturation and lightness
// in HLS, or colorizes with one hue. The lightness offset reaches alpha too.
#include <algorithm>
#include "framework/color_lanes.h"
#include "framework/numeric.h"
#include "framework/registration.h"

class KEffectHueSaturation : public KEffectColorLanes<KEffectHueSaturation> {
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

    // One pixel, or one in each lane: through HLS and back.
    template <bool, class V> [[gnu::always_inline]] void Adjust(V r, V g, V b, V a, V out[4]) const
    {
        const V hi = KMax(r, KMax(g, b));
        const V lo = KMin(r, KMin(g, b));
        const V sum = lo + hi;
        const V l = sum * 0.5f;
        const auto grey = hi == lo;
        const V span = hi - lo;
        const V k = 1.0f / span;
        V s = span / KSelect(l <= 0.5f, sum, 2.0f - sum);
        V h = KSelect(hi == r, (g - b) * k,
                      KSelect(hi != g, (r - g) * k + 4.0f, (b - r) * k + 2.0f));
        h = h * 0.16666667f;
        h = KSelect(h < 0.0f, h + 1.0f, h);
        h = KSelect(grey, KSplat<V>(0.0f), h);
        s = KSelect(grey, KSplat<V>(0.0f), s);
        const V s2 = KClamp(s * satMul + satAdd, 0.0f, 1.0f);
        const V l2 = KClamp(l * lightMul + lightAdd, 0.0f, 1.0f);
        V h2 = colorize ? KSplat<V>(hue) : h + hue;
        h2 = KSelect(h2 >= 1.0f, h2 - 1.0f, h2);
        h2 = KSelect(h2 < 0.0f, h2 + 1.0f, h2);
        const V m2 = KSelect(l2 > 0.5f, s2 + l2 - s2 * l2, (s2 + 1.0f) * l2);
        const V m1 = 2.0f * l2 - m2;
        V rgb[3];
        KHlsToRgb(m1, m2, h2, rgb);
        // No saturation leaves the lightness in all three.
        const auto flat = s2 == 0.0f;
        out[0] = KSelect(flat, l2, rgb[0]);
        out[1] = KSelect(flat, l2, rgb[1]);
        out[2] = KSelect(flat, l2, rgb[2]);
        out[3] = lightAdd + a;
    }

private:
    float hue = 0.0f, satMul = 1.0f, satAdd = 0.0f, lightMul = 1.0f, lightAdd = 0.0f;
    bool colorize = false;
};

ZV_TOOL(KEffectHueSaturation, ZV_HueSaturation);

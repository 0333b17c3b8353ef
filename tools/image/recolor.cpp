// Recolor: replaces each pixel that matches a "From" colour within the
// tolerance by that pair's "To" colour, alpha included; the first matching
// pair wins. Unmatched pixels stay, or are cleared.
#include <algorithm>
#include <cmath>
#include <string>
#include "framework/effect.h"
#include "framework/registration.h"
#include "raster/pixel_store.h"

class KEffectRecolor : public KEffectColor {
public:
    static constexpr int32_t kPairs = 64;
    static constexpr uint32_t kStep = 256;           // pair n's ids: the third letter rises
    static constexpr uint32_t kFromBelowTo = 3581;   // "CoTo" - "CoFr"

    KEffectRecolor()
    {
        inputList.AddPage("Recolor");
        // Bound but never read: pre-divide comes from the family's own input.
        inputList.AddCheckbox(&preDivide, false, "Pre-Divide / Post-Multiply", "PDPM"_id, 0, 1);
        inputList.AddSlider(&tolerance, 0.01f, "Tolerance", "Tole"_id, kFlagHardMax, 0.0, 0.1);
        inputList.AddMultiButton(&other, 0, "Other Pixels", "Othe"_id, kFlagNotify,
                                 {"Keep", "Clear", "[end]"});
        inputList.AddSlider(&count, 3, "Number of colors", "Coun"_id, kFlagNotify, 1, 63);
        const KColor black{0.0f, 0.0f, 0.0f, 1.0f};
        for (int32_t n = 0; n < kPairs; ++n) {
            const std::string number = std::to_string(n + 1);
            const uint32_t step = kStep * static_cast<uint32_t>(n);
            inputList.AddColor(&from[n], black, ("Color From " + number).c_str(),
                               "CoFr"_id + step, 0);
            inputList.AddColor(&to[n], black, ("Color To " + number).c_str(), "CoTo"_id + step, 0);
        }
    }

    KMessageList OnChange(uint32_t id, const KMessageValue& value) override
    {
        KMessageList list;
        if (id == "Coun"_id) {
            count = value.intValue;
            int32_t n = 0;
            for (uint32_t toId = "CoTo"_id; toId < kToEnd; toId += kStep, ++n) {
                const float show = n < count ? 1.0f : 0.0f;
                list.Add(kMessageVisible, toId - kFromBelowTo, show);
                list.Add(kMessageVisible, toId, show);
            }
        }
        return list;
    }

    bool Start(KImage* input, KImage** output, void* extras) override
    {
        KEffectImage::Start(input, output, extras);
        pairs = std::clamp(count, 0, kPairs);
        return true;
    }

    void ProcessColor(KPixelF& out, const KPixelF& in) override { Match(out, in); }

    // The family's default conversions, without its second virtual call.
    void ProcessColorInt(KPixel& out, const KPixel& in) override
    {
        KPixelF f, o;
        KLoadFloat(f, in);
        Match(o, f);
        KStorePixel(out, KFloatToInt(o.r), KFloatToInt(o.g), KFloatToInt(o.b), KFloatToInt(o.a));
    }

private:
    static constexpr uint32_t kToEnd = 1131385967;  // "CoTo" + 64 steps

    void Match(KPixelF& out, const KPixelF& in) const
    {
        for (int32_t n = 0; n < pairs; ++n) {
            const KColor& f = from[n];
            if (std::fabs(in.r - f.r) <= tolerance && std::fabs(in.g - f.g) <= tolerance &&
                std::fabs(in.b - f.b) <= tolerance) {
                out = {to[n].r, to[n].g, to[n].b, to[n].a};
                return;
            }
        }
        out = other == 1 ? KPixelF{} : in;
    }

    bool preDivide = false;
    float tolerance = 0.01f;
    int32_t other = 0;
    int32_t count = 3;
    KColor from[kPairs], to[kPairs];
    int32_t pairs = 3;
};

ZV_TOOL(KEffectRecolor, ZV_Recolor);

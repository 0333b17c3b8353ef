// Sample Brightness: the host's own example, and the model a new tool copies.
// Multiplies red, green and blue by "Brightness"; alpha passes.
#include "framework/effect.h"
#include "framework/registration.h"

class KEffectSampleBrightness : public KEffectColor {
public:
    KEffectSampleBrightness()
    {
        inputList.AddSlider(&brightness, 1.0f, "Brightness", "Brit"_id, 0, 0.0, 2.0);
    }

    void ProcessColor(KPixelF& out, const KPixelF& in) override
    {
        out.r = in.r * brightness;
        out.g = in.g * brightness;
        out.b = in.b * brightness;
        out.a = in.a;
    }

    void ProcessColorInt(KPixel& out, const KPixel& in) override
    {
        out.r = Scale(in.r);
        out.g = Scale(in.g);
        out.b = Scale(in.b);
        out.a = in.a;
    }

private:
    uint32_t Scale(uint32_t c) const
    {
        const float v = static_cast<float>(c) * brightness + 0.5f;
        return v >= 65535.0f ? 65535u : static_cast<uint32_t>(v);
    }

    float brightness = 1.0f;
};

ZV_TOOL(KEffectSampleBrightness, Sample_Brightness);

// Gradient: a linear, radial or light-cone ramp between two colours, merged
// over, added to or subtracted from the image.
#include <algorithm>
#include <cmath>
#include <cstring>
#include "framework/effect.h"
#include "framework/registration.h"
#include "raster/image.h"

class KEffectGradient : public KEffectPosition {
public:
    enum Type : int32_t { kLinear = 0, kRadial, kLight };
    enum Combine : int32_t { kMerge = 0, kAdd, kSubtract };

    KEffectGradient()
    {
        inputList.AddPage("Gradient");
        inputList.AddMultiButton(&type, kLinear, "Type", "cTyp"_id, kFlagNotify,
                                 {"Linear", "Radial", "Light", "[end]"});
        inputList.AddMultiButton(&combine, kMerge, "Combine", "cCom"_id, kFlagNotify,
                                 {"Merge", "Add", "Subtract", "[end]"});
        inputList.AddSlider(&negative, 1.0f,
                            "Negative                   signed                   full",
                            "sCom"_id, kFlagHidden, 0.0, 1.0);
        inputList.AddPoint(&start, {0.25f, 0.5f}, "Start", "oSta"_id, 0, 1);
        inputList.AddPoint(&end, {0.75f, 0.5f}, "End", "oEnd"_id, 0, 1);
        inputList.AddSlider(&startOffset, 0.0f, "Start offset", "sStO"_id, 0, 0.0, 1.0);
        inputList.AddSlider(&midpoint, 0.5f, "Midpoint", "GrMi"_id, 0, 0.0, 1.0);
        inputList.AddCheckbox(&relative, false, "End relative to start position", "cRel"_id, 0, 0);
        inputList.AddSlider(&lightZ, 0.5f, "Light Z distance", "sLiD"_id, kFlagHidden, 0.0, 1.0);
        inputList.AddSlider(&coneAngle, 30.0f, "Light cone angle", "sLiC"_id, kFlagHidden, 0.0,
                            180.0);
        inputList.AddSlider(&fadeDistance, 0.0f, "Light fade with distance", "sLiF"_id,
                            kFlagHidden, 0.0, 1.0);
        inputList.AddSlider(&fadeAngle, 0.0f, "Light fade with angle", "sLiA"_id, kFlagHidden,
                            0.0, 1.0);
        inputList.AddPage("Colors");
        inputList.AddColor(&startColor, {1.0f, 1.0f, 1.0f, 1.0f}, "Start Color", "CSRd"_id, 0);
        inputList.AddSlider(&startTransparency, 0.0f, "Start Transparency", "sStT"_id, 0, 0.0,
                            1.0);
        inputList.AddColor(&endColor, {0.0f, 0.0f, 0.0f, 1.0f}, "End Color", "CERd"_id, 0);
        inputList.AddSlider(&endTransparency, 0.0f, "End Transparency", "sEnT"_id, 0, 0.0, 1.0);
    }

    // The light controls belong to "Light"; the signed slider to Add and Subtract.
    KMessageList OnChange(uint32_t id, const KMessageValue& value) override
    {
        KMessageList list;
        const float show = 1.0f, hide = 0.0f;
        if (id == "cTyp"_id) {
            const float v = value.intValue == kLight ? show : hide;
            for (uint32_t light : {"sLiD"_id, "sLiC"_id, "sLiF"_id, "sLiA"_id})
                list.Add(kMessageVisible, light, v);
        } else if (id == "cCom"_id) {
            list.Add(kMessageVisible, "sCom"_id,
                                   value.intValue == kMerge ? hide : show);
        }
        return list;
    }

    bool Start(KImage* input, KImage** output, void* extras) override
    {
        KEffectImage::Start(input, output, extras);
        extraCount = input ? std::min(input->AuxCount(), kPositionExtraFloats) : 0;
        from = start;
        to = end;
        if (relative) {
            to.x += from.x;
            to.y += from.y;
        }
        for (int c = 0; c < 4; ++c) {
            startF[c] = (&startColor.r)[c];
            endF[c] = (&endColor.r)[c];
            startI[c] = static_cast<float>(KFloatToInt(startF[c]));
            endI[c] = static_cast<float>(KFloatToInt(endF[c]));
        }
        dx = to.x - from.x;
        dy = to.y - from.y;
        length2 = dx * dx + dy * dy;
        length = std::sqrt(length2);
        z2 = lightZ * lightZ;
        axisLength = std::sqrt(std::max(length2 + z2, 1e-05f));
        if (type == kLight) length2 = length = coneAngle * 0.017453292f;
        lengthDivisor = std::max(length, 1e-05f);
        offsetDivisor = std::max(1.0f - startOffset, 1e-05f);
        const float n = negative;
        scale = n > 0.5f ? 3.0f - 2.0f * n : 2.0f * n + 1.0f;
        biasF = 1.0f - n;
        bias = biasF * 65535.0f;
        fadeOn = fadeDistance > 1e-05f;
        fadeReach = fadeOn ? 1.0f / fadeDistance - 1.0f : 0.0f;
        return true;
    }

    // Merge weighs the colour by t itself, Add and Subtract by 1 - t.
    void ProcessPosition(KPositionPixel& out, const KPositionPixel& in,
                         const KPosition& p) override
    {
        float k, t;
        Blend(p, k, t);
        CopyExtras(out, in);
        const float amount = (1.0f - t) * scale;
        for (int c = 0; c < 4; ++c) {
            const float colour = (1.0f - k) * endF[c] + k * startF[c];
            switch (combine) {
            case kAdd: out[c] = in[c] + (colour - biasF) * amount; break;
            case kSubtract: out[c] = in[c] - (colour - biasF) * amount; break;
            default: out[c] = in[c] * (1.0f - t) + colour * t; break;
            }
        }
    }

    void ProcessPositionInt(KPositionPixelInt& out, const KPositionPixelInt& in,
                            const KPosition& p) override
    {
        float k, t;
        Blend(p, k, t);
        CopyExtras(out, in);
        const float amount = (1.0f - t) * scale;
        for (int c = 0; c < 4; ++c) {
            const float colour = (1.0f - k) * endI[c] + k * startI[c];
            const float bg = static_cast<float>(in[c]);
            float v;
            switch (combine) {
            case kAdd: v = bg + (colour - bias) * amount; break;
            case kSubtract: v = bg - (colour - bias) * amount; break;
            default: v = bg * (1.0f - t) + colour * t; break;
            }
            out[c] = ToCode(v);
        }
    }

private:
    static uint32_t ToCode(float v)
    {
        if (!(v > 0.0f)) return 0;
        if (v >= 65535.0f) return 65535;
        return static_cast<uint32_t>(v + 0.5f);
    }

    template <class P> void CopyExtras(P& out, const P& in) const
    {
        if (extraCount > 0) std::memcpy(out.extra, in.extra, sizeof(float) * extraCount);
    }

    // k weighs the start colour against the end colour, t the transparencies.
    void Blend(const KPosition& p, float& k, float& t) const
    {
        const float px = p.x - from.x, py = p.y - from.y;
        float s, r = 0.0f;
        switch (type) {
        case kRadial: s = px * px + py * py; break;
        case kLight: {
            const float lx = p.x - to.x, ly = p.y - to.y;
            r = std::sqrt(std::max(lx * lx + ly * ly + z2, 1e-05f));
            const float c = (-dx * lx - dy * ly + z2) / (axisLength * r);
            s = std::acos(std::max(-1.0f, std::min(1.0f, c)));
            break;
        }
        default: s = dx * px + dy * py; break;
        }
        if (s > length2) {
            k = 0.0f;
        } else if (s < 0.0f) {
            k = 1.0f;
        } else {
            float position;
            switch (type) {
            case kRadial: position = std::sqrt(s); break;
            case kLight: position = s; break;
            default: position = length != 0.0f ? s / length : 1000000.0f; break;
            }
            position /= lengthDivisor;
            k = std::min((1.0f - position) / offsetDivisor, 1.0f);
            if (midpoint != 0.5f) k *= (2.0f * midpoint - 1.0f) * k + 2.0f * (1.0f - midpoint);
            if (type == kLight) {
                if (fadeOn) {
                    if (r > fadeReach) k = 0.0f;
                    else k *= 1.0f - r / fadeReach;
                }
                if (fadeAngle != 0.0f) k *= (lightZ / r - 1.0f) * fadeAngle + 1.0f;
            }
        }
        t = (1.0f - k) * endTransparency + k * startTransparency;
    }

    int32_t type = kLinear, combine = kMerge;
    float negative = 1.0f;
    KPoint2 start, end;
    float startOffset = 0.0f, midpoint = 0.5f;
    bool relative = false;
    float lightZ = 0.5f, coneAngle = 30.0f, fadeDistance = 0.0f, fadeAngle = 0.0f;
    KColor startColor, endColor;
    float startTransparency = 0.0f, endTransparency = 0.0f;

    // Set in Start.
    KPoint2 from, to;
    float dx = 0.0f, dy = 0.0f, length2 = 0.0f, length = 0.0f, lengthDivisor = 1e-05f;
    float z2 = 0.0f, axisLength = 1.0f, offsetDivisor = 1.0f, fadeReach = 0.0f;
    bool fadeOn = false;
    float scale = 1.0f, bias = 0.0f, biasF = 0.0f;
    float startF[4] = {}, endF[4] = {}, startI[4] = {}, endI[4] = {};
    int32_t extraCount = 0;
};

ZV_TOOL(KEffectGradient, ZV_Gradient);

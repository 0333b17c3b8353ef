// Threshold: each output channel steps from 0 to its end value where the
// chosen source value crosses the threshold, over a soft ramp that may repeat
// as a saw or fold back and forth (ping-pong). Locks share the first
// channel's settings with the other three.
#include <cmath>
#include "framework/color_lanes.h"
#include "framework/registration.h"

class KEffectThreshold : public KEffectColorLanes<KEffectThreshold> {
public:
    enum Channel : int32_t { kRed = 0, kGreen, kBlue, kAlpha, kLumin, kEach };

    KEffectThreshold()
    {
        static const char* const kThreshold[4] = {"Threshold", "Threshold Green",
                                                  "Threshold Blue", "Threshold Alpha"};
        static const char* const kSoftness[4] = {"Softness", "Softness Green", "Softness Blue",
                                                 "Softness Alpha"};
        static const char* const kRepeat[4] = {"Repeat", "Repeat Green", "Repeat Blue",
                                               "Repeat Alpha"};
        static const char* const kPingPong[4] = {"Ping-pong", "Ping-pong Green",
                                                 "Ping-pong Blue", "Ping-pong Alpha"};
        static const uint32_t kThresholdIds[4] = {"ThRe"_id, "ThGr"_id, "ThBl"_id, "ThAl"_id};
        static const uint32_t kSoftnessIds[4] = {"SoRe"_id, "SoGr"_id, "SoBl"_id, "SoAl"_id};
        inputList.AddPage("Threshold");
        inputList.AddMultiButton(&channel, kLumin, "Channel used as threshold", "ThCh"_id, 0,
                                 {"Red", "Green", "Blue", "Alpha", "Lumin.", "Each", "[end]"});
        inputList.AddCheckbox(&invert, false, "Invert", "Inve"_id, 0, 0);
        inputList.AddCheckbox(&lockThreshold, true, "Lock threshold for all color channels",
                              "ThLo"_id, kFlagNotify, 0);
        for (int i = 0; i < 4; ++i)
            inputList.AddSlider(&threshold[i], 0.5f, kThreshold[i], kThresholdIds[i],
                                i == 0 ? 0u : uint32_t{kFlagHidden}, 0.0, 1.0);
        inputList.AddCheckbox(&lockSoftness, true, "Lock Softness for all color channels",
                              "SoLo"_id, kFlagNotify, 0);
        // The unlocked softness controls start visible, unlike the others.
        for (int i = 0; i < 4; ++i)
            inputList.AddSlider(&softness[i], 0.0f, kSoftness[i], kSoftnessIds[i], kFlagHardMax,
                                0.0, 1.0);
        inputList.AddCheckbox(&lockRepeat, true, "Lock Repeat for all color channels", "ReLo"_id,
                              kFlagNotify, 0);
        for (int i = 0; i < 4; ++i) {
            const uint32_t hidden = i == 0 ? 0u : uint32_t{kFlagHidden};
            inputList.AddSlider(&repeat[i], 1.0f, kRepeat[i], kRepeatIds[i],
                                kFlagHardMax | hidden, 0.0, 5.0);
            inputList.AddCheckbox(&pingPong[i], false, kPingPong[i], kPingPongIds[i], hidden, 0);
        }
    }

    // An unlocked row shows its green, blue and alpha controls.
    KMessageList OnChange(uint32_t id, const KMessageValue& value) override
    {
        KMessageList list;
        const float show = value.intValue > 0 ? 0.0f : 1.0f;
        if (id == "ThLo"_id) {
            for (uint32_t target : {"ThGr"_id, "ThBl"_id, "ThAl"_id})
                list.Add(kMessageVisible, target, show);
        } else if (id == "SoLo"_id) {
            for (uint32_t target : {"SoGr"_id, "SoBl"_id, "SoAl"_id})
                list.Add(kMessageVisible, target, show);
        } else if (id == "ReLo"_id) {
            for (int i = 1; i < 4; ++i) {
                list.Add(kMessageVisible, kRepeatIds[i], show);
                list.Add(kMessageVisible, kPingPongIds[i], show);
            }
        }
        return list;
    }

    bool Start(KImage* input, KImage** output, void* extras) override
    {
        KEffectImage::Start(input, output, extras);
        mode = channel >= kRed && channel <= kEach ? channel : kLumin;
        for (int i = 0; i < 4; ++i) {
            const float t = threshold[lockThreshold ? 0 : i];
            const float soft = softness[lockSoftness ? 0 : i];
            const int r = lockRepeat ? 0 : i;
            const float rep = repeat[r];
            ramp.threshold[i] = t;
            ramp.softness[i] = soft;
            ramp.half[i] = soft * 0.5f;
            ramp.low[i] = t - ramp.half[i];
            ramp.high[i] = t + ramp.half[i];
            ramp.repeat[i] = rep;
            ramp.pingPong[i] = pingPong[r];
            float m;
            if (pingPong[r]) {
                m = std::fmod(rep, 2.0f);
                if (m > 1.0f) m = 2.0f - m;
            } else {
                m = std::fmod(rep, 1.0f);
                if (m == 0.0f && rep > 0.0f) m = 1.0f;
            }
            ramp.end[i] = m;
        }
        return true;
    }

    // One pixel, or one in each lane. The integer operation takes the
    // luminance from the integer channels, halved with the remainder dropped.
    template <bool Integer, class V>
    [[gnu::always_inline]] void Adjust(V r, V g, V b, V a, V out[4]) const
    {
        // The one value every channel steps on, unless each steps on its own.
        V v = KSplat<V>(0.0f);
        switch (mode) {
        case kRed: v = r; break;
        case kGreen: v = g; break;
        case kBlue: v = b; break;
        case kAlpha: v = a; break;
        case kLumin: {
            const V hi = KMax(r, KMax(g, b)), lo = KMin(r, KMin(g, b));
            if constexpr (Integer) {
                // Each channel lies within a millionth of its code over 65535.
                const V codes = KTrunc(hi * 65535.0f + 0.5f) + KTrunc(lo * 65535.0f + 0.5f);
                v = KTrunc(codes * 0.5f) * kIntToFloat;
            } else {
                v = (hi + lo) * 0.5f;
            }
            break;
        }
        }
        const bool each = mode == kEach;
        out[0] = Ramp(each ? r : v, 0);
        out[1] = Ramp(each ? g : v, 1);
        out[2] = Ramp(each ? b : v, 2);
        out[3] = Ramp(each ? a : v, 3);
    }

private:
    static constexpr uint32_t kRepeatIds[4] = {"ReRe"_id, "ReGr"_id, "ReBl"_id, "ReAl"_id};
    static constexpr uint32_t kPingPongIds[4] = {"RePR"_id, "RePG"_id, "RePB"_id, "RePA"_id};

    // Channel c's step at value v: 0 up to the ramp, the end value past it,
    // and between them the ramp repeated as a saw or folded back (ping-pong).
    // fmod by 1 and by 2 come exactly from the truncation.
    template <class V> [[gnu::always_inline]] V Ramp(V v, int c) const
    {
        const V t = (v - ramp.threshold[c] + ramp.half[c]) * ramp.repeat[c] / ramp.softness[c];
        V r;
        if (ramp.pingPong[c]) {
            r = t - 2.0f * KTrunc(t * 0.5f);
            r = KSelect(r > 1.0f, 2.0f - r, r);
        } else {
            r = t - KTrunc(t);
        }
        r = KSelect(v >= ramp.high[c], KSplat<V>(ramp.end[c]), r);
        r = KSelect(v <= ramp.low[c], KSplat<V>(0.0f), r);
        return invert ? 1.0f - r : r;
    }

    // Per channel, each with its lock applied.
    struct Ramps {
        float threshold[4], softness[4], half[4], low[4], high[4], repeat[4], end[4];
        bool pingPong[4];
    };

    int32_t channel = kLumin;
    bool invert = false;
    bool lockThreshold = true;
    float threshold[4] = {0.5f, 0.5f, 0.5f, 0.5f};
    bool lockSoftness = true;
    float softness[4] = {0.0f, 0.0f, 0.0f, 0.0f};
    bool lockRepeat = true;
    float repeat[4] = {1.0f, 1.0f, 1.0f, 1.0f};
    bool pingPong[4] = {false, false, false, false};

    int32_t mode = kLumin;
    Ramps ramp{};
};

ZV_TOOL(KEffectThreshold, ZV_Threshold);

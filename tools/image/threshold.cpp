// Threshold: each output channel steps from 0 to its end value where the
// chosen source value crosses the threshold, over a soft ramp that may repeat
// as a saw or fold back and forth (ping-pong). Locks share the first
// channel's settings with the other three.
#include <algorithm>
#include <cmath>
#include "bridge/operator.h"
#include "framework/effect.h"
#include "raster/pixel_store.h"

class KEffectThreshold : public KEffectColor {
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
    KMessageList* OnChange(uint32_t id, const KMessageValue& value) override
    {
        auto* list = new KMessageList;
        const float show = value.intValue > 0 ? 0.0f : 1.0f;
        if (id == "ThLo"_id) {
            for (uint32_t target : {"ThGr"_id, "ThBl"_id, "ThAl"_id})
                list->Add(new KMessage(kMessageVisible, target, show));
        } else if (id == "SoLo"_id) {
            for (uint32_t target : {"SoGr"_id, "SoBl"_id, "SoAl"_id})
                list->Add(new KMessage(kMessageVisible, target, show));
        } else if (id == "ReLo"_id) {
            for (int i = 1; i < 4; ++i) {
                list->Add(new KMessage(kMessageVisible, kRepeatIds[i], show));
                list->Add(new KMessage(kMessageVisible, kPingPongIds[i], show));
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
            ramp.pingPong[i] = pingPong[r] ? ~0u : 0u;
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

    void ProcessColor(KPixelF& out, const KPixelF& in) override
    {
        float lumin = 0.0f;
        if (mode == kLumin)
            lumin = (std::max(in.r, std::max(in.g, in.b)) + std::min(in.r, std::min(in.g, in.b))) *
                    0.5f;
        Apply(out, in, lumin);
    }

    // Channels read as integers, the result truncated from double.
    void ProcessColorInt(KPixel& out, const KPixel& in) override
    {
        KPixelF f, o;
        KLoadFloat(f, in);
        float lumin = 0.0f;
        if (mode == kLumin)
            lumin = KIntToFloat((std::max(in.r, std::max(in.g, in.b)) +
                                 std::min(in.r, std::min(in.g, in.b))) / 2);
        Apply(o, f, lumin);
        KStoreIntDouble(out, o);
    }

private:
    static constexpr uint32_t kRepeatIds[4] = {"ReRe"_id, "ReGr"_id, "ReBl"_id, "ReAl"_id};
    static constexpr uint32_t kPingPongIds[4] = {"RePR"_id, "RePG"_id, "RePB"_id, "RePA"_id};

    // Per channel, side by side so that the four ramps run as one.
    struct alignas(16) Lanes {
        float threshold[4], softness[4], half[4], low[4], high[4], repeat[4], end[4];
        uint32_t pingPong[4];
    };

    void Apply(KPixelF& out, const KPixelF& in, float lumin) const
    {
#if defined(__SSE2__)
        __m128 v;
        if (mode == kEach) v = _mm_loadu_ps(&in.r);
        else v = _mm_set1_ps(mode == kLumin ? lumin : in[mode]);
        const __m128 one = _mm_set1_ps(1.0f), two = _mm_set1_ps(2.0f);
        const __m128 from = _mm_add_ps(_mm_sub_ps(v, _mm_load_ps(ramp.threshold)),
                                       _mm_load_ps(ramp.half));
        const __m128 t =
            _mm_div_ps(_mm_mul_ps(from, _mm_load_ps(ramp.repeat)), _mm_load_ps(ramp.softness));
        // fmod by 1 and by 2, exactly.
        const __m128 saw = _mm_sub_ps(t, Trunc(t));
        __m128 fold = _mm_sub_ps(t, _mm_mul_ps(two, Trunc(_mm_mul_ps(t, _mm_set1_ps(0.5f)))));
        fold = Select(_mm_cmpgt_ps(fold, one), _mm_sub_ps(two, fold), fold);
        __m128 r = Select(_mm_load_ps(reinterpret_cast<const float*>(ramp.pingPong)), fold, saw);
        r = Select(_mm_cmpge_ps(v, _mm_load_ps(ramp.high)), _mm_load_ps(ramp.end), r);
        r = _mm_andnot_ps(_mm_cmple_ps(v, _mm_load_ps(ramp.low)), r);
        if (invert) r = _mm_sub_ps(one, r);
        _mm_storeu_ps(&out.r, r);
#else
        for (int i = 0; i < 4; ++i) {
            const float v = mode == kEach ? in[i] : mode == kLumin ? lumin : in[mode];
            float r;
            if (v <= ramp.low[i]) {
                r = 0.0f;
            } else if (v >= ramp.high[i]) {
                r = ramp.end[i];
            } else {
                const float t =
                    (v - ramp.threshold[i] + ramp.half[i]) * ramp.repeat[i] / ramp.softness[i];
                if (ramp.pingPong[i]) {
                    r = std::fmod(t, 2.0f);
                    if (r > 1.0f) r = 2.0f - r;
                } else {
                    r = std::fmod(t, 1.0f);
                }
            }
            out[i] = invert ? 1.0f - r : r;
        }
#endif
    }

#if defined(__SSE2__)
    static __m128 Select(__m128 mask, __m128 yes, __m128 no)
    {
        return _mm_or_ps(_mm_and_ps(mask, yes), _mm_andnot_ps(mask, no));
    }
    // Values of 2^23 and more are whole already and stay as they are.
    static __m128 Trunc(__m128 x)
    {
        const __m128 whole = _mm_cvtepi32_ps(_mm_cvttps_epi32(x));
        const __m128 size = _mm_and_ps(x, _mm_castsi128_ps(_mm_set1_epi32(0x7fffffff)));
        return Select(_mm_cmplt_ps(size, _mm_set1_ps(8388608.0f)), whole, x);
    }
#endif

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
    Lanes ramp{};
};

ZV_TOOL(KEffectThreshold, ZV_Threshold, "Threshold", "Zelvarine\\Image Color", "Thr", "");

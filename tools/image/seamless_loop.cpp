// Seamless Loop: plays the source from frame "Dissolve length" on and, over the
// last frames of each loop, cross-fades into the frames before that start, so
// that the loop's last frame runs on into its first.
#include <algorithm>
#include <cmath>
#include "framework/effect.h"
#include "framework/registration.h"
#include "raster/image.h"

class KEffectSeamlessLoop : public KEffectPixel {
public:
    enum Fade : int32_t { kLinear = 0, kSmooth };

    KEffectSeamlessLoop()
    {
        AllocFrames(2);
        inputList.AddPage("Seamless Loop");
        inputList.AddSlider(&loopLength, 100, "Loop length", "TiLL"_id, kFlagNotify | kFlagNotExternal | kFlagHardMax, 1, 1000);
        inputList.AddSlider(&dissolveLength, 25, "Dissolve length", "TiDL"_id,
                            kFlagNotify | kFlagNotExternal | kFlagHardMax, 0, 100);
        inputList.AddMultiButton(&fadeType, kLinear, "Fade type", "FaTy"_id, 0, {"Linear", "Smooth", "[end]"});
        inputList.AddLabel("This loop will require XXXX frames.", "LaRe"_id, 0);
        inputList.AddLabel("The first frame will be frame XXXX of the source.", "LaFi"_id, 0);
    }

    int32_t GetFrameTimes(int32_t, float time, float* times) override
    {
        if (!times) return 2;
        const int32_t L = loopLength, d = std::min(loopLength, dissolveLength);
        const float T = L != 0 ? static_cast<float>(static_cast<int32_t>(time + 0.0001f) % L) : time;
        times[0] = static_cast<float>(d) + T;
        times[1] = T >= static_cast<float>(L - d) && d <= L ? static_cast<float>(d) + T - static_cast<float>(L) : 1e10f;
        return 2;
    }

    bool Start(KImage* input, KImage** output, void* extras) override
    {
        KEffectImage::Start(input, output, extras);
        const KImage* a = frames[0].get();
        const KImage* b = frames[1].get();
        if (!b || !input || !a || b->width != a->width || b->height != a->height || b->IsFloat() != a->IsFloat())
            return false;
        const int32_t L = loopLength, d = std::min(loopLength, dissolveLength);
        if (L < 1) return false;
        const int32_t n = static_cast<int32_t>(settings.time + 1.1920929e-07f) % L;
        if (n <= L - d) return false;
        double w = static_cast<double>(n - L + d) / static_cast<double>(d);
        if (fadeType == kSmooth) w = 0.5 - std::cos(3.141592653589793 * w) * 0.5;
        weight = static_cast<float>(w);
        weightInt = static_cast<uint32_t>(w * 65536.0);
        return true;
    }

    void ProcessPixel(KPixel& out, int32_t x, int32_t y, KImage*) override
    {
        const uint16_t* a = frames[0]->RowW(y) + 4 * x;
        const uint16_t* b = frames[1]->RowW(y) + 4 * x;
        for (int c = 0; c < 4; ++c) out[c] = (a[c] * (65536u - weightInt) + b[c] * weightInt) >> 16;
    }

    void ProcessPixelFloat(KPixelF& out, int32_t x, int32_t y, KImage*) override
    {
        const float* a = frames[0]->RowF(y) + 4 * x;
        const float* b = frames[1]->RowF(y) + 4 * x;
        for (int c = 0; c < 4; ++c) out[c] = b[c] * weight + a[c] * (1.0f - weight);
    }

    KMessageList OnChange(uint32_t id, const KMessageValue& value) override
    {
        KMessageList list;
        if (id == "TiLL"_id) knownLoop = value.intValue, haveLoop = true;
        else if (id == "TiDL"_id) knownDissolve = value.intValue, haveDissolve = true;
        else return list;
        // A dissolve longer than the loop would fade past its start.
        if (haveLoop && haveDissolve && knownLoop < knownDissolve)
            list.Add(kMessageValue, "TiDL"_id, static_cast<float>(knownLoop));
        return list;
    }

    // The weight of the later frame, as the last Start found it.
    float weight = 0.0f;
    uint32_t weightInt = 0;

private:
    int32_t loopLength = 100;
    int32_t dissolveLength = 25;
    int32_t fadeType = kLinear;
    int32_t knownLoop = 0, knownDissolve = 0;
    bool haveLoop = false, haveDissolve = false;
};

ZV_TOOL(KEffectSeamlessLoop, ZV_SeamlessLoop);

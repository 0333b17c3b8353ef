// Average: the mean of a run of frames after (and before) the current one,
// stepping by "Frames step"; frames that do not exist count as black or are
// left out of the mean.
#include <vector>
#include "framework/effect.h"
#include "framework/registration.h"
#include "tools/image/time_adjust.h"
#include "raster/image.h"

class KEffectAverage : public KEffectPixel {
public:
    static constexpr int32_t kTimes = 128;
    enum Missing : int32_t { kBlack = 0, kIgnore };

    KEffectAverage()
    {
        AllocFrames(kTimes);
        inputList.AddPage("Average");
        inputList.AddMultiButton(&mainTime, kTimeAsIs, "Main Time", "TiAd"_id, kFlagNotify,
                                 {"Flow Time", "Time Speed", "Time Stretch", "[end]"});
        inputList.AddSlider(&speed, 1.0f, "Speed", "TiSp"_id, kFlagHardMax, 0.0001, 32.0);
        inputList.AddSlider(&sourceTime, 0.0f, "Source time", "TiSo"_id, kFlagHardMin | kFlagHardMax, 0.0, 100.0);
        inputList.AddSlider(&count, 8, "Number of frames", "NuFr"_id, 0, 1, 64);
        inputList.AddSlider(&before, 0, "Number of frames before", "NuFB"_id, 0, 0, 64);
        inputList.AddSlider(&step, 1, "Frames step", "FrSt"_id, kFlagHardMax, 1, 16);
        inputList.AddCheckbox(&current, true, "Include current frame", "Curr"_id, 0, 0);
        inputList.AddMultiButton(&missing, kBlack, "Non-existing frames", "NoEx"_id, kFlagNotify,
                                 {"Black", "Ignore", "[end]"});
    }

    int32_t GetFrameTimes(int32_t, float time, float* times) override
    {
        if (!times) return kTimes;
        const float base = KAdjustedTime(mainTime, time, speed, sourceTime);
        for (int32_t i = 0; i < kTimes; ++i) times[i] = 1e10f;
        int32_t n = 0;
        for (int32_t i = 0; i < count && n < kTimes; ++i) times[n++] = base + static_cast<float>(i * step);
        for (int32_t i = 0; i < before && n < kTimes; ++i) times[n++] = base - static_cast<float>((i + 1) * step);
        return kTimes;
    }

    bool Start(KImage* input, KImage** output, void* extras) override
    {
        KEffectImage::Start(input, output, extras);
        kept.clear();
        const int32_t wanted = std::min(count + before, kTimes);
        for (int32_t i = current ? 0 : 1; i < wanted; ++i) {
            const KImage* f = frames[i].get();
            // A frame of another size or depth is as good as missing.
            if (f && input && f->width == input->width && f->height == input->height &&
                f->IsFloat() == input->IsFloat())
                kept.push_back(f);
        }
        if (kept.empty()) return false;
        // "Black" divides by all the frames asked for, even with the current one left out.
        divisor = missing == kIgnore ? static_cast<int32_t>(kept.size()) : count + before;
        reciprocal = 1.0f / static_cast<float>(divisor);
        return true;
    }

    void ProcessPixel(KPixel& out, int32_t x, int32_t y, KImage*) override
    {
        uint32_t sum[4] = {0, 0, 0, 0};
        for (const KImage* f : kept) {
            const uint16_t* p = f->RowW(y) + 4 * x;
            for (int c = 0; c < 4; ++c) sum[c] += p[c];
        }
        const uint32_t d = static_cast<uint32_t>(divisor);
        out = {sum[0] / d, sum[1] / d, sum[2] / d, sum[3] / d};
    }

    void ProcessPixelFloat(KPixelF& out, int32_t x, int32_t y, KImage*) override
    {
        float sum[4] = {0.0f, 0.0f, 0.0f, 0.0f};
        for (const KImage* f : kept) {
            const float* p = f->RowF(y) + 4 * x;
            for (int c = 0; c < 4; ++c) sum[c] += p[c];
        }
        out = {sum[0] * reciprocal, sum[1] * reciprocal, sum[2] * reciprocal, sum[3] * reciprocal};
    }

private:
    int32_t mainTime = kTimeAsIs;
    float speed = 1.0f;
    float sourceTime = 0.0f;
    int32_t count = 8;
    int32_t before = 0;
    int32_t step = 1;
    bool current = true;
    int32_t missing = kBlack;
    std::vector<const KImage*> kept;
    int32_t divisor = 1;
    float reciprocal = 1.0f;
};

ZV_TOOL(KEffectAverage, ZV_Average);

// Time Mapper: each pixel shows the clip at its own time offset, read from a
// map: black takes "Time offset black" frames away, white "Time offset white",
// in half frames, mixed between neighbours when asked.
#include <algorithm>
#include <cmath>
#include <vector>
#include "framework/effect.h"
#include "framework/registration.h"
#include "raster/image.h"

class KEffectTimeMapper : public KEffectThreads {
public:
    static constexpr int32_t kTimes = 2048;
    enum MainTime : int32_t { kFlowTime = 0, kSlider };

    KEffectTimeMapper()
    {
        AllocFrames(kTimes);
        inputList.AddPage("Time Mapper");
        inputList.AddMultiButton(&mainTime, kFlowTime, "Main Time", "TiAd"_id, kFlagNotify,
                                 {"Flow Time", "Slider", "[end]"});
        inputList.AddSlider(&sourceTime, 0.0f, "Source time", "TiSo"_id, kFlagHardMin | kFlagHardMax, 0.0, 100.0);
        inputList.AddSlider(&offsetBlack, 0, "Time offset black", "TiOB"_id, kFlagHardMin | kFlagHardMax, -8, 8);
        inputList.AddSlider(&offsetWhite, 8, "Time offset white", "TiOW"_id, kFlagHardMin | kFlagHardMax, -8, 8);
        inputList.AddCheckbox(&interpolate, true, "Interpolate between frames", "TiIn"_id, kFlagNotify, 0);
        inputList.AddChannelSelect(&channel, 4, "Channel", "TiCh"_id, 0);
        inputList.AddImageInput(&map, "Time map", 2, kFlagMain);
    }

    int32_t GetFrameTimes(int32_t, float time, float* times) override
    {
        if (!times) return kTimes;
        const float T = mainTime == kSlider ? sourceTime : time;
        const int32_t n = Count(), s = Sign();
        for (int32_t i = 0; i < kTimes; ++i)
            times[i] = i < n ? std::floor(2.0f * (T + static_cast<float>(offsetBlack)) + 0.5f +
                                          static_cast<float>(2 * i * s) + 0.0001f) * 0.5f
                             : 1e10f;
        return kTimes;
    }
    int32_t GetJobCount(int32_t) override { return height; }

    bool Start(KImage* input, KImage** output, void* extras) override
    {
        KEffectImage::Start(input, output, extras);
        count = Count();
        if (!map || count < 1 || !input) return false;
        // A missing frame shows the last one before it that exists.
        used.assign(count, nullptr);
        const KImage* last = nullptr;
        for (int32_t i = 0; i < count; ++i) {
            const KImage* f = frames[i].get();
            if (f && f->width == input->width && f->height == input->height && f->IsFloat() == input->IsFloat())
                last = f;
            used[i] = last;
        }
        if (!last || map->width < input->width || map->height < input->height) return false;
        // Before the first that exists, that first one.
        const KImage* first = nullptr;
        for (const KImage* f : used) if (f && !first) first = f;
        for (auto& f : used) if (!f) f = first;
        span = Sign() * (offsetWhite - offsetBlack);
        return true;
    }

    void ProcessJob(int32_t, int32_t y, KImage*, KImage* target) override
    {
        for (int32_t x = 0; x < width; ++x) {
            KPixel m;
            map->GetPixel(x, y, m, kEdgeBlack);
            const int32_t sum = static_cast<int32_t>(std::min({m.r, m.g, m.b}) + std::max({m.r, m.g, m.b}));
            const float v = static_cast<float>(sum * span) * 7.629511e-06f;
            const int32_t i = static_cast<int32_t>(v);
            const KImage* a = used[std::clamp(i, 0, count - 1)];
            const KImage* b = interpolate ? used[std::clamp(i + 1, 0, count - 1)] : nullptr;
            const float t = v - static_cast<float>(i);
            if (target->IsFloat()) {
                KPixelF p, q;
                a->GetPixel(x, y, p, kEdgeBlack);
                if (b) {
                    b->GetPixel(x, y, q, kEdgeBlack);
                    for (int c = 0; c < 4; ++c) p[c] += (q[c] - p[c]) * t;
                }
                target->SetPixel(x, y, p);
            } else {
                KPixel p, q;
                a->GetPixel(x, y, p, kEdgeBlack);
                if (b) {
                    b->GetPixel(x, y, q, kEdgeBlack);
                    for (int c = 0; c < 4; ++c)
                        p[c] = static_cast<uint32_t>(static_cast<float>(p[c]) +
                                                     (static_cast<float>(q[c]) - static_cast<float>(p[c])) * t);
                }
                target->SetPixel(x, y, p);
            }
        }
    }

    KMessageList OnChange(uint32_t id, const KMessageValue& value) override
    {
        KMessageList list;
        if (id == "TiAd"_id) list.Add(kMessageVisible, "TiSo"_id, value.intValue == kSlider ? 1.0f : 0.0f);
        return list;
    }

private:
    int32_t Sign() const { return offsetWhite > offsetBlack ? 1 : -1; }
    int32_t Count() const { return std::min(std::abs(offsetBlack - offsetWhite) + 1, kTimes); }

    int32_t mainTime = kFlowTime;
    float sourceTime = 0.0f;
    int32_t offsetBlack = 0, offsetWhite = 8;
    bool interpolate = true;
    int32_t channel = 4;
    KImage* map = nullptr;
    int32_t count = 0;
    std::vector<const KImage*> used;
    int32_t span = 0;
};

ZV_TOOL(KEffectTimeMapper, ZV_TimeMapper);

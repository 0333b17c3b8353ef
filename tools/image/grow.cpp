// Grow: reveals the picture by its distance from seed points, walking around
// the pixels that the channel range closes off. Pixels between Grow Start and
// Grow End show, with soft edges at both ends; all others are cleared.
#include <algorithm>
#include <memory>
#include <string>
#include "framework/effect.h"
#include "framework/registration.h"
#include "raster/grow_field.h"
#include "raster/image.h"

namespace {
constexpr int32_t kSeeds = 128;
constexpr uint32_t kSeedId = 1399153968u, kOffsetId = 1332110896u;  // "See0", "Off0" and on
}  // namespace

class KEffectGrow : public KEffectThreads {
public:
    KEffectGrow()
    {
        KParameterList& in = inputList;
        in.AddPage("Grow");
        in.AddChannelSelect(&channel, 4, "Channel", "Chan"_id, 0);
        in.AddRange(&walls, 0.0f, 0.01f, "Channel Low", "Channel High", 1198683973u, 1198683987u, 0, 0.0, 1.0);
        // Both ends of the growth share one code, as they always have.
        in.AddSlider(&growStart, 0.0f, "Grow Start", "GrwS"_id, kFlagHardMax, 0.0, 1.0);
        in.AddSlider(&growEnd, 0.5f, "Grow End", "GrwS"_id, kFlagHardMax, 0.0, 1.0);
        in.AddSlider(&softStart, 0.01f, "Softness Start", "SofS"_id, kFlagHardMax, 0.0, 0.1);
        in.AddSlider(&softEnd, 0.01f, "Softness End", "SofE"_id, kFlagHardMax, 0.0, 0.1);
        in.AddSlider(&seedCount, 1, "Seed Number", "SeNu"_id, kFlagNotify, 1, kSeeds);
        in.AddPage("Seeds");
        for (int32_t i = 0; i < kSeeds; ++i) {
            const std::string n = std::to_string(i + 1);
            in.AddPoint(&seeds[i], {0.5f, 0.5f}, ("Seed " + n).c_str(), kSeedId + i, 0, 0);
            in.AddSlider(&offsets[i], 0.0f, ("Offset " + n).c_str(), kOffsetId + i, 0, 0.0, 1.0);
        }
    }

    KMessageList OnChange(uint32_t id, const KMessageValue& value) override
    {
        KMessageList list;
        if (id != "SeNu"_id) return list;
        for (int32_t i = 0; i < kSeeds; ++i) {
            list.Add(kMessageVisible, kSeedId + i, i < value.intValue ? 1.0f : 0.0f);
            list.Add(kMessageVisible, kOffsetId + i, i < value.intValue ? 1.0f : 0.0f);
        }
        return list;
    }

    bool Start(KImage* input, KImage** output, void* extras) override
    {
        if (!KEffectThreads::Start(input, output, extras)) return false;
        const float w = static_cast<float>(width);
        from = std::min(growStart, growEnd) * w;
        to = std::max(growStart, growEnd) * w;
        fromSoft = softStart * w;
        toSoft = softEnd * w;
        field.reset();
        return true;
    }

    int32_t GetPassCount() override { return 2; }
    // Pass 0 is one job, the first; it answers the row count too because a
    // serial run asks pass 0's count for every pass.
    int32_t GetJobCount(int32_t pass) override { return height; }

    void ProcessJob(int32_t pass, int32_t job, KImage* source, KImage* target) override
    {
        if (pass == 0) {
            if (job != 0) return;
            field = std::make_unique<KGrowField>(*source, channel, walls);
            const int32_t n = std::clamp(seedCount, 0, kSeeds);
            for (int32_t i = 0; i < n; ++i)
                field->Seed(static_cast<int32_t>(seeds[i].x * static_cast<float>(width)),
                            static_cast<int32_t>(seeds[i].y * static_cast<float>(height)),
                            offsets[i] * static_cast<float>(width));
            field->Grow();
            return;
        }
        if (job >= target->height) return;
        for (int32_t x = 0; x < target->width; ++x) {
            const float d = field->At(x, job);
            float k = 0.0f;
            if (d >= from && d < to) {
                k = 1.0f;
                if (d > to - toSoft) k *= (to - d) / toSoft;
                if (d < fromSoft + from) k *= (d - from) / fromSoft;
            }
            if (target->IsFloat()) {
                const float* s = source->RowF(job) + 4 * x;
                float* o = target->RowF(job) + 4 * x;
                for (int c = 0; c < 4; ++c) o[c] = k == 1.0f ? s[c] : k == 0.0f ? 0.0f : s[c] * k;
            } else {
                const uint16_t* s = source->RowW(job) + 4 * x;
                uint16_t* o = target->RowW(job) + 4 * x;
                for (int c = 0; c < 4; ++c) o[c] = static_cast<uint16_t>(static_cast<float>(s[c]) * k);
            }
        }
    }

    void Stop(KImage** output) override
    {
        field.reset();
        KEffectThreads::Stop(output);
    }

private:
    int32_t channel = 4;
    KRange2 walls{0.0f, 0.01f};
    float growStart = 0.0f, growEnd = 0.5f, softStart = 0.01f, softEnd = 0.01f;
    int32_t seedCount = 1;
    KPoint2 seeds[kSeeds];
    float offsets[kSeeds] = {};

    // From Start and pass 0.
    float from = 0.0f, to = 0.0f, fromSoft = 0.0f, toSoft = 0.0f;
    std::unique_ptr<KGrowField> field;
};

ZV_TOOL(KEffectGrow, ZV_Grow);

// Grow Color: fills the transparent parts of a picture from their edges. Each
// round blurs what is there, wider every round, and lays the blur under what
// is still transparent; the rounds stop early once every pixel has enough
// alpha. At the end colour is divided by alpha, so the fill comes out opaque
// and the picture's own opaque pixels come out as they went in.
#include <atomic>
#include <cmath>
#include <memory>
#include "framework/effect.h"
#include "framework/registration.h"
#include "raster/image.h"

class KEffectGrowColor : public KEffectThreads {
public:
    KEffectGrowColor()
    {
        KParameterList& in = inputList;
        in.AddPage("Grow Color");
        in.AddSlider(&iterations, 8, "Iterations", "Iter"_id, kFlagHardMax, 1, 16);
        in.AddSlider(&interrupt, 0.05f, "Iteration Interrupt", "ItIn"_id, 0, 0.0, 1.0);
        in.AddCheckbox(&lock, true, "Lock X/Y", "ReLo"_id, kFlagNotify, 0);
        in.AddSlider(&resolution, 1.5f, "Resolution", "Reso"_id, kFlagHardMax, 0.5, 5.0);
        in.AddSlider(&resolutionY, 1.5f, "Resolution Y", "ResY"_id, kFlagHardMax, 0.5, 5.0);
        in.AddSlider(&exponent, 2.0f, "Iteration Exponent", "Expo"_id, kFlagHardMax, 1.0, 5.0);
        in.AddSlider(&threshold, 0.005f, "Threshold", "Thre"_id, 0, 0.001, 0.1);
        in.AddSlider(&softness, 0.005f, "Threshold Softness", "ThSo"_id, 0, 0.001, 0.1);
    }

    KMessageList OnChange(uint32_t id, const KMessageValue& value) override
    {
        KMessageList list;
        if (id == "ReLo"_id) list.Add(kMessageVisible, "ResY"_id, value.intValue ? 0.0f : 1.0f);
        return list;
    }

    bool Start(KImage* input, KImage** output, void* extras) override
    {
        if (!KEffectThreads::Start(input, output, extras)) return false;
        blurred.reset();
        done = false;
        blurNeeded = true;
        return true;
    }

    int32_t GetPassCount() override { return 2 * iterations; }
    // Even passes are one job, the first; they answer the row count too because
    // a serial run asks pass 0's count for every pass.
    int32_t GetJobCount(int32_t pass) override { return height; }

    void ProcessJob(int32_t pass, int32_t job, KImage* source, KImage* target) override
    {
        if (done) return;
        if (pass % 2 == 0) {
            if (job != 0) return;
            if (pass == 0) target->CopyFrom(*source);
            if (!blurNeeded) {
                done = true;
                return;
            }
            const float s = std::pow(exponent, static_cast<float>(pass / 2));
            const float x = s * resolution, y = lock ? x : s * resolutionY;
            blurred.reset(target->Blur(x, y, 9, 15, 1.0f, 1.0f));
            blurNeeded = false;
            return;
        }
        if (job >= target->height) return;
        bool thin = false;
        if (target->IsFloat()) {
            float* t = target->RowF(job);
            const float* b = blurred->RowF(job);
            for (int32_t x = 0; x < 4 * target->width; x += 4) {
                if (!(t[x + 3] < 1.0f)) continue;
                const float k = 1.0f - t[x + 3];
                for (int c = 0; c < 4; ++c) t[x + c] += b[x + c] * k;
                thin |= t[x + 3] < interrupt;
            }
        } else {
            uint16_t* t = target->RowW(job);
            const uint16_t* b = blurred->RowW(job);
            const float limit = interrupt * 65535.0f;
            for (int32_t x = 0; x < 4 * target->width; x += 4) {
                if (t[x + 3] == 65535) continue;
                const uint32_t k = 65535u - t[x + 3];
                for (int c = 0; c < 4; ++c) t[x + c] = static_cast<uint16_t>(std::min(t[x + c] + KScaleInt(b[x + c], k), 65535u));
                thin |= static_cast<float>(t[x + 3]) < limit;
            }
        }
        // Rows only ever raise the flag within a pass.
        if (thin) blurNeeded.store(true, std::memory_order_relaxed);
    }

    void Stop(KImage** output) override
    {
        blurred.reset();
        KImage* target = output ? *output : nullptr;
        if (target) {
            target->EachRow([&](int32_t y, const uint16_t*, const float*) {
                for (int32_t x = 0; x < target->width; ++x) {
                    if (target->IsFloat()) {
                        float* p = target->RowF(y) + 4 * x;
                        const float k = Scale(p[3], p[3]);
                        for (int c = 0; c < 3; ++c) p[c] = k == 0.0f ? 0.0f : p[c] * k;
                    } else {
                        uint16_t* p = target->RowW(y) + 4 * x;
                        float alpha;
                        const float k = Scale(KIntToFloat(p[3]), alpha);
                        for (int c = 0; c < 3; ++c) {
                            const float v = static_cast<float>(p[c]) * k;
                            p[c] = static_cast<uint16_t>(!(v > 0.0f) ? 0.0f : std::min(v, 65535.0f));
                        }
                        p[3] = alpha == 1.0f ? 65535 : static_cast<uint16_t>(KFloatToInt(alpha));
                    }
                }
            });
        }
        KEffectThreads::Stop(output);
    }

private:
    // The factor for colour at alpha a, and the alpha that goes out: opaque at
    // from threshold plus softness up, nothing below the threshold, a ramp between. An opaque pixel's
    // factor is exactly 1, so it leaves unchanged.
    float Scale(float a, float& alpha) const
    {
        if (a >= threshold + softness) {
            alpha = 1.0f;
            return 1.0f / a;
        }
        if (a < threshold) {
            alpha = 0.0f;
            return 0.0f;
        }
        alpha = (a - threshold) / softness;
        return alpha / a;
    }

    int32_t iterations = 8;
    float interrupt = 0.05f;
    bool lock = true;
    float resolution = 1.5f, resolutionY = 1.5f, exponent = 2.0f, threshold = 0.005f, softness = 0.005f;

    // The rounds' state, from Start.
    bool done = false;
    std::atomic<bool> blurNeeded{true};
    std::unique_ptr<KImage> blurred;
};

ZV_TOOL(KEffectGrowColor, ZV_GrowColor);

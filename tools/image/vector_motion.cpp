// Vector Motion: measures how the picture moves between the frame before, this
// one and the one after by tracking small blocks with strong edges, and writes
// the motion into the vector channels, in pixels at full resolution.
#include <algorithm>
#include <cstring>
#include <memory>
#include "framework/effect.h"
#include "framework/registration.h"
#include "raster/image.h"
#include "tools/image/motion_tracker.h"

class KEffectVectorMotion : public KEffectThreads {
public:
    enum Direction : int32_t { kBackward = 0, kBoth, kForward };

    KEffectVectorMotion()
    {
        AllocFrames(3);
        inputList.AddPage("Vector Motion");
        inputList.AddMultiButton(&direction, kBoth, "Motion analysis direction", "MoDi"_id, 0,
                                 {"Backward", "Both", "Forward", "[end]"});
        inputList.AddSlider(&edgeThreshold, 0.1f, "Edge threshold to locate points to track", "MoEd"_id, 0x80000000u,
                            0.0, 1.0);
        inputList.AddSlider(&separation, 0.02f, "Edge separation", "MoRW"_id, kFlagHardMax, 0.0, 0.05);
        inputList.AddSlider(&search, 0.05f, "Maximum motion distance", "MoSW"_id, kFlagHardMax, 0.0, 0.1);
        inputList.AddSlider(&percentage, 1.0f, "Percentage of points to track", "MoTP"_id, 0x80000000u, 0.0, 1.0);
        inputList.AddSlider(&matchLevel, 0.5f, "Minimum match level to allow tracked points", "MoMM"_id,
                            0x80000000u, 0.0, 1.0);
        inputList.AddSlider(&radius, 1.5f, "Motion influence radius on other points", "MoRa"_id, kFlagHardMax, 0.0,
                            15.0);
    }

    bool HasFeature(int32_t code) override { return code == kFeatureVectors; }

    int32_t GetFrameTimes(int32_t, float time, float* times) override
    {
        if (times) {
            times[0] = time;
            times[1] = time - 1.0f;
            times[2] = time + 1.0f;
        }
        return 3;
    }

    int32_t GetPassCount() override { return 2; }
    int32_t GetJobCount(int32_t) override { return height; }

    bool Start(KImage* input, KImage** output, void* extras) override
    {
        KEffectImage::Start(input, output, extras);
        tracker.reset();
        if (!input || !frames[0] || !output || !*output || !(*output)->AuxPlane(kVectorX)) return false;
        tracker = std::make_unique<KMotionTracker>(*input);
        tracker->edgeThreshold = edgeThreshold;
        tracker->borderFraction = separation;
        tracker->separationFraction = separation;
        tracker->searchX = tracker->searchY = search;
        tracker->percentage = percentage;
        tracker->matchLevel = matchLevel;
        tracker->radiusPower = radius;
        step = std::max(settings.underSample, 1);
        if (settings.quick) step = std::max(step, 4);
        vectorScale = input->ProxyScale();
        tracker->FindCandidates();
        tracker->SelectCandidates();
        tracker->Track(direction == kForward ? nullptr : frames[1].get(),
                       direction == kBackward ? nullptr : frames[2].get());
        return true;
    }

    void Stop(KImage** output) override
    {
        tracker.reset();
        KEffectImage::Stop(output);
    }

    void ProcessJob(int32_t pass, int32_t y, KImage* source, KImage* target) override
    {
        float* vx = target->AuxPlane(kVectorX) + size_t(y) * width;
        float* vy = target->AuxPlane(kVectorY) + size_t(y) * width;
        if (pass == 0) {
            if (y % step != 0) return;
            CopyRow(*source, *target, y);
            float m0x, m0y, m1x = 0.0f, m1y = 0.0f;
            Motion(0, y, m0x, m0y);
            for (int32_t x = 0; x < width; ++x) {
                const int32_t r = x % step;
                if (r == 0) {
                    if (x > 0) m0x = m1x, m0y = m1y;
                    Motion(x + step, y, m1x, m1y);
                    vx[x] = m0x;
                    vy[x] = m0y;
                } else {
                    const float f = static_cast<float>(r) / static_cast<float>(step);
                    vx[x] = m0x + (m1x - m0x) * f;
                    vy[x] = m0y + (m1y - m0y) * f;
                }
            }
            return;
        }
        const int32_t r = y % step;
        if (r == 0) return;
        CopyRow(*source, *target, y);
        const int32_t y0 = y - r;
        const int32_t y1 = y0 + step > height - 1 ? y0 : y0 + step;
        const float f = static_cast<float>(r) / static_cast<float>(step);
        const float* ax = target->AuxPlane(kVectorX) + size_t(y0) * width;
        const float* ay = target->AuxPlane(kVectorY) + size_t(y0) * width;
        const float* bx = target->AuxPlane(kVectorX) + size_t(y1) * width;
        const float* by = target->AuxPlane(kVectorY) + size_t(y1) * width;
        for (int32_t x = 0; x < width; ++x) {
            vx[x] = ax[x] + (bx[x] - ax[x]) * f;
            vy[x] = ay[x] + (by[x] - ay[x]) * f;
        }
    }

private:
    static constexpr int32_t kVectorX = 22, kVectorY = 23;

    void Motion(int32_t x, int32_t y, float& mx, float& my) const
    {
        tracker->MotionAt(x, y, mx, my);
        mx *= vectorScale;
        my *= vectorScale;
    }

    // The colour and every plane but the vectors, as they come.
    static void CopyRow(const KImage& source, KImage& target, int32_t y)
    {
        std::memcpy(target.RowW(y), source.RowW(y), std::min(source.RowBytes(), target.RowBytes()));
        for (int32_t i = 0; i < target.AuxCount(); ++i) {
            const int32_t c = target.AuxChannel(i);
            if (c == kVectorX || c == kVectorY) continue;
            if (const float* from = source.AuxPlane(c))
                std::memcpy(target.AuxPlane(c) + size_t(y) * target.width, from + size_t(y) * source.width,
                            sizeof(float) * std::min(source.width, target.width));
        }
    }

    int32_t direction = kBoth;
    float edgeThreshold = 0.1f, separation = 0.02f, search = 0.05f, percentage = 1.0f, matchLevel = 0.5f,
          radius = 1.5f;
    std::unique_ptr<KMotionTracker> tracker;
    int32_t step = 1;
    float vectorScale = 1.0f;
};

ZV_TOOL(KEffectVectorMotion, ZV_VectorMotion);

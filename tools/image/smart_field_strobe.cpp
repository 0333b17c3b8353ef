// Smart Field Strobe: replaces the rows of one field by the mean of their
// neighbours, but only where the picture moves between frames, measured
// against the frames before and after and softened by blur and levels.
#include <algorithm>
#include <cmath>
#include <memory>
#include "framework/effect.h"
#include "framework/registration.h"
#include "tools/image/time_adjust.h"
#include "raster/image.h"

class KEffectSmartFieldStrobe : public KEffectThreads {
public:
    enum Strip : int32_t { kOne = 0, kTwo, kTimeOne, kTimeTwo };

    KEffectSmartFieldStrobe()
    {
        AllocFrames(3);
        inputList.AddPage("Field Strobe");
        inputList.AddCombo(&strip, kTimeOne, "Strip field", "SmSe"_id, 0,
                           {"One", "Two", "Based on time (one dominant)", "Based on time (two dominant)", "[end]"});
        inputList.AddSlider(&smart, 1.0f, "Classic                              Smart", "Smrt"_id, 0x80000000u, 0.0,
                            1.0);
        inputList.AddCheckbox(&toAlpha, false, "Output pixel selection to alpha", "SmOA"_id, 0, 0);
        inputList.AddSlider(&blur, 0.0f, "Blur", "SmBl"_id, kFlagHardMax, 0.0, 20.0);
        inputList.AddSlider(&contract, 0.0f, "Contract / Expand", "SmCo"_id, kFlagHardMin | kFlagHardMax, -1.0, 1.0);
        inputList.AddSlider(&gamma, 1.0f, "Gamma", "SmGa"_id, kFlagHardMax, 0.0, 3.0);
        inputList.AddRange(&levels, 0.015f, 1.0f, "Low", "High", 1399673928u, 1399673932u, 0, 0.0, 1.0);
        inputList.AddPage("Time");
        timeAdjust.Declare(inputList);
    }

    int32_t GetFrameTimes(int32_t, float time, float* times) override
    {
        if (times) {
            const float T = timeAdjust.At(time);
            times[0] = std::floor(T + 0.0001f);
            times[1] = std::floor(T - 1.0f + 0.0001f);
            times[2] = std::floor(T + 1.0f + 0.0001f);
        }
        return 3;
    }
    int32_t GetPassCount() override { return 3; }
    int32_t GetJobCount(int32_t pass) override { return pass == 1 ? 1 : height; }

    bool Start(KImage* input, KImage** output, void* extras) override
    {
        KEffectImage::Start(input, output, extras);
        if (!frames[0] || !input) return false;
        current = frames[0].get();
        if (current->width != input->width || current->height != input->height || current->IsFloat() != input->IsFloat())
            current = input;
        int32_t s = strip;
        // Each render swaps the pairs of items, as a host that prepares its tools does.
        if (settings.prepared) s = s == kOne ? kTwo : s == kTwo ? kOne : s == kTimeOne ? kTimeTwo : s == kTimeTwo ? kTimeOne : s;
        const float T = timeAdjust.At(settings.time) + 0.0001f;
        const float fraction = T - std::floor(T);
        field = s == kTimeOne ? (fraction < 0.5f ? 1 : 0) : s == kTimeTwo ? (fraction >= 0.5f ? 1 : 0) : s;
        low = static_cast<int32_t>(levels.low * 65535.0f);
        high = static_cast<int32_t>(levels.high * 65535.0f);
        auto usable = [&](const KImage* f) {
            return f && f->width == current->width && f->height == current->height && f->IsFloat() == current->IsFloat();
        };
        before = usable(frames[1].get()) ? frames[1].get() : nullptr;
        after = usable(frames[2].get()) ? frames[2].get() : nullptr;
        work.reset(current->CreateLike());
        return true;
    }

    void Stop(KImage** output) override
    {
        work.reset();
        KEffectImage::Stop(output);
    }

    void ProcessJob(int32_t pass, int32_t y, KImage*, KImage* target) override
    {
        if (pass == 0) return Measure(y);
        if (pass == 1) return Soften();
        Replace(y, *target);
    }

    KMessageList OnChange(uint32_t id, const KMessageValue& value) override
    {
        KMessageList list;
        timeAdjust.Show(id, value, list);
        return list;
    }

private:

    static void Codes(const KImage& img, int32_t x, int32_t y, KPixel& p) { img.GetPixel(x, y, p, kEdgeDuplicate); }

    // The work image: the current pixel, its alpha how much it moved.
    void Measure(int32_t y)
    {
        for (int32_t x = 0; x < width; ++x) {
            KPixel p, q;
            Codes(*current, x, y, p);
            uint32_t m = before || after ? 0 : 65535;
            for (const KImage* n : {before, after}) {
                if (!n) continue;
                Codes(*n, x, y, q);
                for (int c = 0; c < 3; ++c)
                    m = std::max(m, static_cast<uint32_t>(std::abs(int32_t(p[c]) - int32_t(q[c]))));
            }
            p.a = m;
            work->SetPixel(x, y, p);
        }
    }

    void Soften()
    {
        // Vertically, on the measure alone.
        if (blur > 0.0f) work.reset(work->Blur(0.0f, blur, settings.quick ? 1 : 4, 8, 1.0f, 1.0f));
        if (contract == 0.0f && gamma == 1.0f && low == 0 && high == 65535) return;
        // Levels on the measure: low to high stretched to the full range, then
        // the gamma, then contract / expand shifting the result.
        const float span = std::max(static_cast<float>(high - low), 1.0f);
        for (int32_t y = 0; y < height; ++y)
            for (int32_t x = 0; x < width; ++x) {
                KPixel p;
                work->GetPixel(x, y, p, kEdgeBlack);
                float v = std::clamp((static_cast<float>(p.a) - static_cast<float>(low)) / span, 0.0f, 1.0f);
                if (gamma > 0.0f && gamma != 1.0f) v = std::pow(v, 1.0f / gamma);
                v = std::clamp(v + contract, 0.0f, 1.0f);
                p.a = static_cast<uint32_t>(v * 65535.0f);
                work->SetPixel(x, y, p);
            }
    }
    uint32_t MeasureAt(int32_t x, int32_t y) const
    {
        KPixel p;
        work->GetPixel(x, std::clamp(y, 0, height - 1), p, kEdgeBlack);
        return p.a;
    }

    void Replace(int32_t y, KImage& target)
    {
        const bool replaced = y % 2 == field;
        for (int32_t x = 0; x < width; ++x) {
            const uint32_t w = std::max({MeasureAt(x, y - 1), MeasureAt(x, y), MeasureAt(x, y + 1)});
            if (current->IsFloat()) {
                KPixelF p, above, below;
                current->GetPixel(x, y, p, kEdgeDuplicate);
                if (replaced) {
                    current->GetPixel(x, y + 1, above, kEdgeDuplicate);
                    current->GetPixel(x, y - 1, below, kEdgeDuplicate);
                    const float k = static_cast<float>(w) / 65535.0f;
                    for (int c = 0; c < 4; ++c) p[c] = k * (above[c] + below[c]) * 0.5f + (1.0f - k) * p[c];
                }
                if (toAlpha) p.a = replaced ? static_cast<float>(w) / 65535.0f : static_cast<float>(MeasureAt(x, y)) / 65535.0f;
                target.SetPixel(x, y, p);
            } else {
                KPixel p, above, below;
                current->GetPixel(x, y, p, kEdgeDuplicate);
                if (replaced) {
                    current->GetPixel(x, y + 1, above, kEdgeDuplicate);
                    current->GetPixel(x, y - 1, below, kEdgeDuplicate);
                    for (int c = 0; c < 4; ++c) p[c] = KScaleInt(w, (above[c] + below[c]) >> 1) + KScaleInt(65535 - w, p[c]);
                }
                if (toAlpha) p.a = replaced ? w : MeasureAt(x, y);
                target.SetPixel(x, y, p);
            }
        }
    }

    int32_t strip = kTimeOne;
    float smart = 1.0f;
    bool toAlpha = false;
    float blur = 0.0f, contract = 0.0f, gamma = 1.0f;
    KRange2 levels{0.015f, 1.0f};
    KTimeAdjust timeAdjust;

    const KImage* current = nullptr;
    const KImage* before = nullptr;
    const KImage* after = nullptr;
    int32_t field = 0, low = 0, high = 65535;
    std::unique_ptr<KImage> work;
};

ZV_TOOL(KEffectSmartFieldStrobe, ZV_SmartFieldStrobe);

// Morph: warps the picture by curve pairs so that what lies on the first
// curves comes to lie `Warp` of the way to the second; with a target, warps
// the target the other way, from its second curves to the same place, and
// fades from the one to the other. The warps are the warp process run over
// the curves' own mapping, its passes in turn among this tool's passes.
#include <algorithm>
#include <memory>
#include "framework/effect.h"
#include "framework/process.h"
#include "framework/registration.h"
#include "raster/image.h"
#include "tools/image/warp_data.h"

namespace {

// The integer weight of a blend, as the whole-image blend takes it.
uint32_t Weight(float amount)
{
    const int32_t a = static_cast<int32_t>(static_cast<double>(amount) * 65535.5);
    return static_cast<uint32_t>(std::clamp(a, 0, 65535));
}

}  // namespace

class KEffectMorph : public KEffectThreads {
public:
    KEffectMorph()
    {
        KParameterList& in = inputList;
        in.AddPage("Setup");
        in.AddMorphInput(&setup, "Morph/warp setup", 0, 0);
        in.AddSlider(&subdivisions, 4, "Curve subdivisions", "MeCu"_id, 0, 1, 20);
        in.AddCheckbox(&lock, true, "Lock warp and fade", "MWL0"_id, kFlagNotify, 0);
        in.AddSlider(&warp, 1.0f, "Warp", "MWM0"_id, 0, 0.0, 1.0);
        in.AddMultiButton(&fadeType, 0, "Fade Type", "MFT0"_id, kFlagNotify, {"Slider", "Map", "[end]"});
        in.AddSlider(&fade, 1.0f, "Fade", "MWF0"_id, 0, 0.0, 1.0);
        in.AddImageInput(&fadeMap, "Fade map", "MFM0"_id, 0);
        in.AddMultiButton(&warpType, 0, "Warp Type", "MWWT"_id, kFlagNotify, {"Field", "Radial", "[end]"});
        in.AddSlider(&adherence, 0.0001f, "Adherence", "MoPA"_id, 0, 0.0, 2.0);
        in.AddSlider(&locality, 1.5f, "Locality", "MoPB"_id, 0, 0.0, 15.0);
        in.AddSlider(&lengthInfluence, 0.0f, "Length Influence", "MoPP"_id, 0, 0.0, 5.0);
        in.AddSlider(&radius, 0.0f, "Radius", "MoPR"_id, 0, 0.0, 1.0);
        in.AddImageInput(&target, "Morph target", 2, kFlagMain);
        // The warps' own controls, as every warp has them.
        in.AddStandard(&underSample, 1, kStdUnderSample, 0);
        in.AddStandard(&filtering, 1, kStdFiltering, 0);
        in.AddStandard(&edges, 0, kStdEdges, 0);
    }

    KMessageList OnChange(uint32_t id, const KMessageValue& value) override
    {
        KMessageList list;
        if (id == "MWWT"_id) {
            const float field = value.intValue == 0 ? 1.0f : 0.0f;
            list.Add(kMessageVisible, "MoPA"_id, field);
            list.Add(kMessageVisible, "MoPB"_id, field);
            list.Add(kMessageVisible, "MoPP"_id, field);
            list.Add(kMessageVisible, "MoPR"_id, 1.0f - field);
            return list;
        }
        if (id == "MWL0"_id) shownLock = value.intValue != 0;
        else if (id == "MFT0"_id) shownFadeType = value.intValue;
        else return list;
        // The fade's controls hang on both the lock and the fade type.
        list.Add(kMessageVisible, "MFT0"_id, shownLock ? 0.0f : 1.0f);
        list.Add(kMessageVisible, "MWF0"_id, !shownLock && shownFadeType == 0 ? 1.0f : 0.0f);
        list.Add(kMessageVisible, "MFM0"_id, !shownLock && shownFadeType == 1 ? 1.0f : 0.0f);
        return list;
    }

    bool Start(KImage* input, KImage** output, void* extras) override
    {
        if (!KEffectThreads::Start(input, output, extras) || !input) return false;
        MW_WarpData data = setup ? *setup : MW_WarpData{};
        data.subdivisions = subdivisions;
        amount = lock ? warp : fade;

        sourceWarp = MakeWarp(data.At(0, warp));
        sourceRun = std::make_unique<KProcessImageInverse>(input, output, sourceWarp.get(), settings);
        jobs = std::max(height, sourceRun->JobCount(0));
        if (target) {
            // The target is taken at the picture's size, warped into a clean
            // image of the picture's kind.
            const KImage* from = target;
            if (target->width != width || target->height != height) {
                resizedTarget.reset(target->Resize(width, height));
                from = resizedTarget.get();
            }
            second = (*output)->CreateLike();
            targetWarp = MakeWarp(data.At(1, warp));
            targetRun = std::make_unique<KProcessImageInverse>(const_cast<KImage*>(from), &second, targetWarp.get(),
                                                               settings);
            jobs = std::max(jobs, targetRun->JobCount(0));
            map = nullptr;
            if (!lock && fadeType == 1 && fadeMap) {
                map = fadeMap;
                if (fadeMap->width != width || fadeMap->height != height) {
                    resizedMap.reset(fadeMap->Resize(width, height));
                    map = resizedMap.get();
                }
            }
        }
        return true;
    }

    void Stop(KImage** output) override
    {
        targetRun.reset();
        sourceRun.reset();
        targetWarp.reset();
        sourceWarp.reset();
        delete second;
        second = nullptr;
        resizedTarget.reset();
        resizedMap.reset();
        map = nullptr;
        KEffectThreads::Stop(output);
    }

    // The picture's warp, then the target's, then the fade.
    int32_t GetPassCount() override
    {
        return sourceRun->PassCount() + (targetRun ? targetRun->PassCount() + 1 : 0);
    }
    // The same count on every pass, the most any pass needs: a serial run asks
    // pass 0's count for all of them, and each warp pass passes over jobs beyond its own.
    int32_t GetJobCount(int32_t) override { return jobs; }

    void ProcessJob(int32_t pass, int32_t job, KImage*, KImage* out) override
    {
        const int32_t sourcePasses = sourceRun->PassCount();
        if (pass < sourcePasses) return sourceRun->DoJob(job, pass);
        pass -= sourcePasses;
        if (!targetRun) return;
        if (pass < targetRun->PassCount()) return targetRun->DoJob(job, pass);
        if (job >= height) return;
        if (out->IsFloat()) FadeRow<float>(out->RowF(job), second->RowF(job), job);
        else FadeRow<uint16_t>(out->RowW(job), second->RowW(job), job);
    }

private:
    std::unique_ptr<KWarpByCurves> MakeWarp(const MW_WarpData& data) const
    {
        std::unique_ptr<KWarpByCurves> w;
        if (warpType == 1) w = std::make_unique<KWarpRadial>(data);
        else w = std::make_unique<KWarpField>(data);
        w->adherence = adherence;
        w->locality = locality;
        w->lengthInfluence = lengthInfluence;
        w->radius = radius;
        w->settings = settings;
        return w;
    }

    // Toward the warped target by the slider, or by the map's luminance.
    template <class T> void FadeRow(T* d, const T* s, int32_t y) const
    {
        KPixelF m;
        for (int32_t x = 0; x < width; ++x, d += 4, s += 4) {
            float f = amount;
            if (map) {
                map->GetPixel(x, y, m, kEdgeBlack);
                f = std::clamp(m.r * 0.299f + m.g * 0.587f + m.b * 0.114f, 0.0f, 1.0f);
            }
            if (!(f > 0.0f)) continue;
            if constexpr (std::is_same_v<T, float>) {
                for (int c = 0; c < 4; ++c) d[c] = s[c] * f + d[c] * (1.0f - f);
            } else {
                const uint32_t a = Weight(f), b = 65535u - a;
                for (int c = 0; c < 4; ++c)
                    d[c] = static_cast<uint16_t>(std::min(KScaleInt(s[c], a) + KScaleInt(d[c], b), 65535u));
            }
        }
    }

    MW_WarpData* setup = nullptr;
    int32_t subdivisions = 4;
    bool lock = true;
    float warp = 1.0f;
    int32_t fadeType = 0;
    float fade = 1.0f;
    KImage* fadeMap = nullptr;
    int32_t warpType = 0;
    float adherence = 0.0001f, locality = 1.5f, lengthInfluence = 0.0f, radius = 0.0f;
    KImage* target = nullptr;
    int32_t underSample = 1, filtering = 1, edges = 0;

    // What the controls show: the fade's visibility hangs on two of them.
    bool shownLock = true;
    int32_t shownFadeType = 0;

    // Made in Start, read by the jobs, freed in Stop.
    float amount = 1.0f;
    int32_t jobs = 0;
    std::unique_ptr<KWarpByCurves> sourceWarp, targetWarp;
    std::unique_ptr<KProcessImageInverse> sourceRun, targetRun;
    KImage* second = nullptr;
    std::unique_ptr<KImage> resizedTarget, resizedMap;
    const KImage* map = nullptr;
};

ZV_TOOL(KEffectMorph, ZV_Morph);

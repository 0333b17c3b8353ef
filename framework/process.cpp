#include "framework/process.h"
#include <algorithm>
#include <cstring>
#include "framework/process_rows.h"
#include "raster/image.h"

// ---------------------------------------------------------------------------
// KProcessImage

KProcessImage::KProcessImage(KImage* src, KImage** tgt, KEffectImage* e,
                             const KRenderSettings& s)
{
    settings = s;
    skip = false;
    started = false;
    source = src;
    target = tgt;
    if (target && *target) {
        width = (*target)->width;
        height = (*target)->height;
        pixelAspect = (*target)->PixelAspect();
        pictureAspect = (*target)->PictureAspect();
    }
    effect = e;
    if (!settings.red && !settings.green && !settings.blue && !settings.alpha) {
        skip = true;
    } else {
        bool ok = effect->Start(source, target, effect);
        started = true;
        skip = !ok;
    }
}

KProcessImage::~KProcessImage()
{
    if (started) effect->Stop(target);
}

void KProcessImage::Run()
{
    int32_t passes = PassCount();
    for (int32_t pass = 0; pass < passes; ++pass) {
        int32_t jobs = JobCount(0);
        for (int32_t job = 0; job < jobs; ++job) DoJob(job, pass);
    }
}

void KProcessImage::EndPass(int32_t pass)
{
    if (pass != PassCount() - 1 || !(settings.postBlur > 0.0f) || !target || !*target) return;
    int32_t mask = (settings.red ? 1 : 0) | (settings.green ? 2 : 0) | (settings.blue ? 4 : 0) |
                   (settings.alpha ? 8 : 0);
    KImage* blurred = (*target)->Blur(settings.postBlur, settings.postBlur,
                                      settings.quick ? 0 : 4, mask, 1.0f, 1.0f);
    KImage::ReplaceIn(target, blurred);
}

void KProcessImage::CopyRow(int32_t y)
{
    KImage* out = *target;
    if (y < 0 || y >= out->height) return;
    if (!source || y >= source->height || source->IsFloat() != out->IsFloat()) {
        std::memset(out->RowW(y), 0, out->RowBytes());
        return;
    }
    size_t bytes = std::min(out->RowBytes(), source->RowBytes());
    std::memcpy(out->RowW(y), source->RowW(y), bytes);
    int32_t n = std::min(out->width, source->width);
    for (int32_t i = 0; i < out->AuxCount(); ++i) {
        const float* from = source->AuxPlane(out->AuxChannel(i));
        if (from) std::memcpy(out->AuxPlane(out->AuxChannel(i)) + size_t(y) * out->width,
                              from + size_t(y) * source->width, n * sizeof(float));
    }
}

// ---------------------------------------------------------------------------
// Shape and Threads

// No effect answers this family: shape tools over images are Threads effects.
void KProcessImageShape::DoJob(int32_t, int32_t) { (*target)->CopyFrom(*source); }

int32_t KProcessImageThreads::PassCount()
{
    return skip ? 1 : static_cast<KEffectThreads*>(effect)->GetPassCount();
}

int32_t KProcessImageThreads::JobCount(int32_t pass)
{
    return skip ? height : static_cast<KEffectThreads*>(effect)->GetJobCount(pass);
}

void KProcessImageThreads::DoJob(int32_t job, int32_t pass)
{
    if (skip) return CopyRow(job);
    static_cast<KEffectThreads*>(effect)->ProcessJob(pass, job, source, *target);
}

// ---------------------------------------------------------------------------

std::unique_ptr<KProcessImage> KCreateProcess(KEffect* effect, KImage* source, KImage** target,
                                              const KRenderSettings& settings)
{
    // Only image families have a process; any other effect is not a KEffectImage.
    auto* e = dynamic_cast<KEffectImage*>(effect);
    if (!e) return nullptr;
    switch (effect->GetFamily()) {
    case kFamilyColor: return std::make_unique<KProcessImageColor>(source, target, e, settings);
    case kFamilyWarp: return std::make_unique<KProcessImageInverse>(source, target, e, settings);
    case kFamilyPixel: return std::make_unique<KProcessImagePixel>(source, target, e, settings);
    case kFamilyPosition: return std::make_unique<KProcessImagePosition>(source, target, e, settings);
    case kFamilyShapeImage: return std::make_unique<KProcessImageShape>(source, target, e, settings);
    case kFamilyThreads: return std::make_unique<KProcessImageThreads>(source, target, e, settings);
    default: return nullptr;
    }
}

void KRunPasses(KProcessImage& process, const KJobRunner& runner)
{
    for (int32_t pass = 0; pass < process.PassCount(); ++pass) {
        process.BeginPass(pass);
        int32_t jobs = process.JobCount(pass);
        runner(jobs, [&](int32_t job) { process.DoJob(job, pass); });
        process.EndPass(pass);
    }
}

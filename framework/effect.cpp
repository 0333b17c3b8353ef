#include "framework/effect.h"
#include <algorithm>
#include <cstring>
#include <stdexcept>
#include "raster/image.h"

bool KEffect::HasFeature(int32_t) { return false; }

bool KEffect::GetOutputSize(int32_t, int32_t&, int32_t&, float&, float&) { return false; }

float KEffect::GetStandardDefault(int32_t standardInput)
{
    switch (standardInput) {
    case kStdUnderSample:
    case kStdFilterSize:
    case kStdSubPixel:
    case kStdFiltering:
        return 1.0f;
    default:
        return 0.0f;
    }
}

bool KEffect::Start(KImage*, KImage**, void*) { return true; }

void KEffect::FinishRender() {}

void KEffect::Stop(KImage**) {}

KMessageList KEffect::OnChange(uint32_t, const KMessageValue&) { return {}; }

int32_t KEffect::GetFrameTimes(int32_t, float, float*) { return 1; }

int32_t KEffect::CountOutputs(int32_t valueKind) const
{
    int32_t n = 0;
    for (KOutput* o = outputs(); o; o = o->Next())
        if (o->valueKind == valueKind) ++n;
    return n;
}

KEffectImage::KEffectImage()
{
    outputList.AddImageOutput(nullptr, "Output", 1, kFlagNotify);
}

KEffectImage::~KEffectImage() = default;

bool KEffectImage::Start(KImage* input, KImage**, void*)
{
    if (input) {
        pictureAspect = input->PictureAspect();
        pixelAspect = input->PixelAspect();
        width = input->width;
        height = input->height;
    } else {
        pictureAspect = 1.0f;
        pixelAspect = 1.0f;
    }
    return true;
}

void KEffectImage::Stop(KImage**)
{
    for (auto& frame : frames) frame.reset();
}

void KEffectImage::AllocFrames(int32_t n)
{
    frames.clear();
    frames.resize(std::max(n, 0));
}

void KEffectImage::SetTrailImage(KImage* image)
{
    if (image != trailImage.get()) trailImage.reset(image);
}

void KEffectColor::ProcessColorInt(KPixel& out, const KPixel& in)
{
    KPixelF fin, fout;
    KToFloat(in, fin);
    ProcessColor(fout, fin);
    KToInt(fout, out);
}

void KEffectColor::ProcessColors(KPixelF* out, const KPixelF* in, int32_t n)
{
    for (int32_t i = 0; i < n; ++i) ProcessColor(out[i], in[i]);
}

void KEffectColor::ProcessColorsInt(KPixelW* out, const KPixelW* in, int32_t n)
{
    for (int32_t i = 0; i < n; ++i) {
        KPixel o;
        ProcessColorInt(o, KPixel{in[i].r, in[i].g, in[i].b, in[i].a});
        out[i] = {uint16_t(o.r), uint16_t(o.g), uint16_t(o.b), uint16_t(o.a)};
    }
}

void KEffectPixel::ProcessPixel(KPixel& out, int32_t x, int32_t y, KImage* image)
{
    KPixelF f;
    ProcessPixelFloat(f, x, y, image);
    KToInt(f, out);
}

void KEffectPixel::ProcessPixelFloat(KPixelF& out, int32_t x, int32_t y, KImage* image)
{
    KPixel p;
    ProcessPixel(p, x, y, image);
    KToFloat(p, out);
}

void KEffectPosition::ProcessPosition(KPositionPixel& out, const KPositionPixel& in,
                                      const KPosition& position)
{
    KPositionPixelInt iin, iout;
    for (int c = 0; c < 4; ++c) iin[c] = KFloatToInt(in[c]);
    std::memcpy(iin.extra, in.extra, sizeof in.extra);
    ProcessPositionInt(iout, iin, position);
    for (int c = 0; c < 4; ++c) out[c] = KIntToFloat(iout[c]);
    std::memcpy(out.extra, in.extra, sizeof out.extra);
}

void KEffectPosition::ProcessPositionInt(KPositionPixelInt& out, const KPositionPixelInt& in,
                                         const KPosition& position)
{
    KPositionPixel fin, fout;
    for (int c = 0; c < 4; ++c) fin[c] = KIntToFloat(in[c]);
    std::memcpy(fin.extra, in.extra, sizeof in.extra);
    ProcessPosition(fout, fin, position);
    for (int c = 0; c < 4; ++c) out[c] = KFloatToInt(fout[c]);
    std::memcpy(out.extra, in.extra, sizeof out.extra);
}

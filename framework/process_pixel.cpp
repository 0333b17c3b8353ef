#include "framework/process_rows.h"

// ---------------------------------------------------------------------------
// Pixel: the effect reads the source itself.

void KProcessImagePixel::DoJob(int32_t y, int32_t)
{
    if (skip) return CopyRow(y);
    auto* e = static_cast<KEffectPixel*>(effect);
    KImage& out = **target;
    const bool keep = !effect->HasFeature(kFeatureSource) && !AllChannels() && source;
    if (settings.depth == 2) {
        float* o = out.RowF(y);
        const float* in = keep ? source->RowF(y) : nullptr;
        for (int32_t x = 0; x < width; ++x, o += 4) {
            KPixelF p;
            e->ProcessPixelFloat(p, x, y, source);
            if (keep) {
                KPixelF s;
                RowAccess<KPixelF>::Load(in + 4 * x, s);
                MergeOff(p, s, settings);
            }
            RowAccess<KPixelF>::Store(o, p);
        }
    } else {
        uint16_t* o = out.RowW(y);
        const uint16_t* in = keep ? source->RowW(y) : nullptr;
        for (int32_t x = 0; x < width; ++x, o += 4) {
            KPixel p;
            e->ProcessPixel(p, x, y, source);
            if (keep) {
                KPixel s;
                RowAccess<KPixel>::Load(in + 4 * x, s);
                MergeOff(p, s, settings);
            }
            RowAccess<KPixel>::Store(o, p);
        }
    }
}

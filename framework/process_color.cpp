#include <algorithm>
#include "framework/process_rows.h"

namespace {

inline void Colour(KEffectColor* e, KPixelF& out, const KPixelF& in) { e->ProcessColor(out, in); }
inline void Colour(KEffectColor* e, KPixel& out, const KPixel& in) { e->ProcessColorInt(out, in); }
inline void Colours(KEffectColor* e, KPixelF* out, const KPixelF* in, int32_t n)
{
    e->ProcessColors(out, in, n);
}
inline void Colours(KEffectColor* e, KPixelW* out, const KPixelW* in, int32_t n)
{
    e->ProcessColorsInt(out, in, n);
}

}  // namespace

// ---------------------------------------------------------------------------
// Colour: one call per pixel, or n * n calls with super-sampling.

int32_t KProcessImageColor::JobCount(int32_t) { return source ? source->height : height; }

void KProcessImageColor::DoJob(int32_t y, int32_t)
{
    if (skip) return CopyRow(y);
    bool isFloat = settings.depth == 2;
    if (settings.superSampling > 1) {
        if (isFloat) SuperSampledRow<KPixelF>(y);
        else SuperSampledRow<KPixel>(y);
    } else {
        if (isFloat) Row<KPixelF>(y);
        else Row<KPixel>(y);
    }
}

template <class P> void KProcessImageColor::Row(int32_t y)
{
    using A = RowAccess<P>;
    using T = typename A::T;
    using S = typename A::Stored;
    constexpr int32_t kChunk = 64;
    auto* e = static_cast<KEffectColor*>(effect);
    const T* in = A::Row(*source, y);
    T* out = A::Row(**target, y);
    const int32_t n = std::min(width, source->width);
    const bool all = AllChannels();
    const bool pre = settings.preDivide;
    // Pixels are finished in a small buffer and streamed out a chunk at a time.
    Chunk<S, kChunk> done;
    for (int32_t x0 = 0; x0 < n; x0 += kChunk) {
        const int32_t m = std::min(kChunk, n - x0);
        const T* s = in + 4 * x0;
        // Ask for the next chunk now: a slow effect leaves the memory idle
        // between its reads, and each read would otherwise wait for it.
        if (x0 + 2 * kChunk <= n)
            for (size_t b = 0; b < kChunk * sizeof(S); b += 64)
                __builtin_prefetch(reinterpret_cast<const char*>(s + 4 * kChunk) + b);
        if (all && !pre) {
            // The effect reads the row as stored and writes the buffer.
            Colours(e, done, reinterpret_cast<const S*>(s), m);
        } else {
            Chunk<S, kChunk> from;
            for (int32_t i = 0; i < m; ++i) {
                P p;
                A::Load(s + 4 * i, p);
                if (pre) Divide(p);
                A::Store(&from[i].r, p);
            }
            Colours(e, done, from, m);
            for (int32_t i = 0; i < m; ++i) {
                P o;
                A::Load(&done[i].r, o);
                if (pre) Multiply(o);
                if (!all) {
                    P p;
                    A::Load(s + 4 * i, p);
                    MergeOn(p, o, settings);
                    o = p;
                }
                A::Store(&done[i].r, o);
            }
        }
        KStreamCopy(out + 4 * x0, done, size_t(m) * sizeof(S));
    }
    KStreamFence();
}

template <class P> void KProcessImageColor::SuperSampledRow(int32_t y)
{
    using A = RowAccess<P>;
    auto* e = static_cast<KEffectColor*>(effect);
    typename A::T* out = A::Row(**target, y);
    const int32_t n = settings.superSampling;
    const float step = settings.filterSize / static_cast<float>(n);
    const float start = static_cast<float>(n - 1) * -0.5f * step;
    const float inv = 1.0f / static_cast<float>(n * n);
    for (int32_t x = 0; x < width; ++x, out += 4) {
        P last, o;
        float fsum[4] = {0, 0, 0, 0};
        uint32_t isum[4] = {0, 0, 0, 0};
        for (int32_t i = 0; i < n; ++i) {
            float sy = static_cast<float>(y) + start + static_cast<float>(i) * step;
            for (int32_t j = 0; j < n; ++j) {
                float sx = static_cast<float>(x) + start + static_cast<float>(j) * step;
                source->SamplePixel(sx, sy, last, kEdgeDuplicate);
                P c = last;
                if (settings.preDivide) Divide(c);
                Colour(e, o, c);
                if (settings.preDivide) Multiply(o);
                for (int k = 0; k < 4; ++k) {
                    if constexpr (std::is_same_v<P, KPixelF>) fsum[k] += o[k];
                    else isum[k] += o[k];
                }
            }
        }
        for (int k = 0; k < 4; ++k) {
            if constexpr (std::is_same_v<P, KPixelF>) o[k] = fsum[k] * inv;
            else o[k] = isum[k] / static_cast<uint32_t>(n * n);
        }
        // Switched-off channels keep the last sample's, not the centre pixel's.
        MergeOn(last, o, settings);
        A::Store(out, last);
    }
}

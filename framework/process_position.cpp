#include <algorithm>
#include "framework/process_rows.h"

// ---------------------------------------------------------------------------
// Position: the effect gets the pixel and its position in units of width.

int32_t KProcessImagePosition::JobCount(int32_t) { return source ? source->height : height; }

void KProcessImagePosition::DoJob(int32_t y, int32_t)
{
    if (skip) return CopyRow(y);
    if (settings.depth == 2) Row<KPositionPixel>(y);
    else Row<KPositionPixelInt>(y);
}

template <class P> void KProcessImagePosition::Row(int32_t y)
{
    constexpr bool isFloat = std::is_same_v<P, KPositionPixel>;
    auto* e = static_cast<KEffectPosition*>(effect);
    KImage& out = **target;
    const int32_t auxIn = std::min(source->AuxCount(), kPositionExtraFloats);
    const float* planesIn[kPositionExtraFloats];
    float* planesOut[kPositionExtraFloats];
    for (int32_t i = 0; i < auxIn; ++i) {
        planesIn[i] = source->AuxPlane(source->AuxChannel(i)) + size_t(y) * source->width;
        float* o = out.AuxPlane(source->AuxChannel(i));
        planesOut[i] = o ? o + size_t(y) * out.width : nullptr;
    }
    const int32_t n = settings.superSampling;
    const float fw = static_cast<float>(width);
    const float fh = static_cast<float>(height) * pictureAspect;
    const float fx = (1.0f / n) / fw;
    const float fy = (1.0f / n) * (1.0f / height) * (1.0f / pictureAspect);
    const float o = (n - 1) * -0.5f;
    const float inv = 1.0f / static_cast<float>(n * n);
    const int32_t w = std::min(width, source->width);
    for (int32_t x = 0; x < w; ++x) {
        P in, res;
        if constexpr (isFloat) {
            const float* s = source->RowF(y) + 4 * x;
            for (int k = 0; k < 4; ++k) in[k] = s[k];
        } else {
            const uint16_t* s = source->RowW(y) + 4 * x;
            for (int k = 0; k < 4; ++k) in[k] = s[k];
        }
        for (int32_t i = 0; i < auxIn; ++i) in.extra[i] = planesIn[i][x];
        if (settings.preDivide) Divide(in);
        if (n <= 1) {
            KPosition pos{x / fw, y / fh};
            if constexpr (isFloat) e->ProcessPosition(res, in, pos);
            else e->ProcessPositionInt(res, in, pos);
        } else {
            // The start offset is divided by the size twice: the grid is
            // deliberately not centred on the pixel.
            float sum[4] = {0, 0, 0, 0};
            KPosition pos;
            float y0 = (y + o * fy) / fh;
            float x0 = (x + o * fx) / fw;
            for (int32_t i = 0; i < n; ++i) {
                pos.y = y0 + i * fy;
                for (int32_t j = 0; j < n; ++j) {
                    pos.x = x0 + j * fx;
                    if constexpr (isFloat) e->ProcessPosition(res, in, pos);
                    else e->ProcessPositionInt(res, in, pos);
                    for (int k = 0; k < 4; ++k) sum[k] += static_cast<float>(res[k]);
                }
            }
            for (int k = 0; k < 4; ++k) {
                if constexpr (isFloat) res[k] = sum[k] * inv;
                else res[k] = static_cast<uint32_t>(sum[k] * inv);
            }
        }
        MergeOff(res, in, settings);
        if (settings.preDivide) Multiply(res);
        if constexpr (isFloat) {
            float* d = out.RowF(y) + 4 * x;
            for (int k = 0; k < 4; ++k) d[k] = res[k];
        } else {
            uint16_t* d = out.RowW(y) + 4 * x;
            for (int k = 0; k < 4; ++k) d[k] = static_cast<uint16_t>(res[k]);
        }
        for (int32_t i = 0; i < auxIn; ++i)
            if (planesOut[i]) planesOut[i][x] = res.extra[i];
    }
}

// Whole-pixel stores and conversions for per-pixel code. The colour process
// reads a finished pixel as one 16-byte value; four narrower stores in front
// of that read would stall store forwarding on every pixel, so per-pixel code
// hands its result over in one store. The conversions give the same bits as
// their scalar forms.
#pragma once
#include "raster/pixel.h"
#if defined(__SSE2__)
#include <emmintrin.h>
#endif

inline void KStorePixel(KPixelF& out, float r, float g, float b, float a)
{
#if defined(__SSE2__)
    _mm_storeu_ps(&out.r, _mm_setr_ps(r, g, b, a));
#else
    out = {r, g, b, a};
#endif
}

inline void KStorePixel(KPixel& out, uint32_t r, uint32_t g, uint32_t b, uint32_t a)
{
#if defined(__SSE2__)
    _mm_storeu_si128(reinterpret_cast<__m128i*>(&out.r),
                     _mm_setr_epi32(static_cast<int>(r), static_cast<int>(g),
                                    static_cast<int>(b), static_cast<int>(a)));
#else
    out = {r, g, b, a};
#endif
}

// The pixel conversion to float, all four channels at once.
inline void KLoadFloat(KPixelF& out, const KPixel& in)
{
#if defined(__SSE2__)
    const __m128i v = _mm_loadu_si128(reinterpret_cast<const __m128i*>(&in.r));
    _mm_storeu_ps(&out.r, _mm_mul_ps(_mm_cvtepi32_ps(v), _mm_set1_ps(kIntToFloat)));
#else
    KToFloat(in, out);
#endif
}

// To integers through double: below 0 and NaN give 0, above 1 gives 65535,
// else the value widened to double times 65535.0, truncated. Unlike the
// pixel conversion, which multiplies in single precision.
inline uint32_t KFloatToIntDouble(float v)
{
    if (!(v >= 0.0f)) return 0;
    if (v > 1.0f) return 65535;
    return static_cast<uint32_t>(static_cast<double>(v) * 65535.0);
}


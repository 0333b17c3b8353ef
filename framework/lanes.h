// Several pixels at once for colour code written once.
//
// Per-pixel arithmetic written as a template over its number type runs on one
// pixel with `float` and on eight with `KLanes`, giving the same bits: every
// operation, comparison and selection below is the IEEE operation the scalar
// form performs. Branches become selections, so both sides of a choice are
// computed; a division by zero on the side not taken is harmless.
//
// KLanes is a compiler vector: two SSE registers on any x86-64, one AVX
// register in the AVX2 clone a kernel marked ZV_LANES_CLONES also gets.
#pragma once
#include <algorithm>
#include <cstdint>
#include "raster/pixel_store.h"

// One pixel: the operations on plain numbers.
inline float KSelect(bool m, float a, float b) { return m ? a : b; }
inline bool KAny(bool m) { return m; }
inline float KMax(float a, float b) { return std::max(a, b); }
inline float KMin(float a, float b) { return std::min(a, b); }
inline float KClamp(float v, float lo, float hi) { return std::clamp(v, lo, hi); }
inline double KWiden(float v) { return v; }
inline float KNarrow(double v) { return static_cast<float>(v); }
template <class V> V KSplat(float v);
template <> inline float KSplat<float>(float v) { return v; }

// A kernel's per-pixel lambda, inlined into both of the kernel's builds.
#if defined(__GNUC__)
#define ZV_LANE_INLINE_LAMBDA __attribute__((always_inline))
#else
#define ZV_LANE_INLINE_LAMBDA
#endif

#if defined(__SSE2__) && defined(__GNUC__)
#define ZV_LANES 1
// Everything taking lanes is inlined into its kernel: a call between the
// kernel's AVX2 clone and code built for any x86-64 would pass them differently.
#define ZV_LANE_INLINE [[gnu::always_inline]] inline

constexpr int kLaneCount = 8;
typedef float KLanes __attribute__((vector_size(4 * kLaneCount)));
typedef int32_t KMask __attribute__((vector_size(4 * kLaneCount)));
typedef double KLanesD __attribute__((vector_size(8 * kLaneCount)));
typedef float KQuad __attribute__((vector_size(16)));

template <> ZV_LANE_INLINE KLanes KSplat<KLanes>(float v)
{
    return KLanes{v, v, v, v, v, v, v, v};
}
ZV_LANE_INLINE KLanes KSelect(KMask m, KLanes a, KLanes b) { return m ? a : b; }
// Whether any lane is set: work no lane needs can be skipped.
ZV_LANE_INLINE bool KAny(KMask m)
{
    const auto lo = __builtin_shufflevector(m, m, 0, 1, 2, 3);
    const auto hi = __builtin_shufflevector(m, m, 4, 5, 6, 7);
    return _mm_movemask_ps(_mm_castsi128_ps(__m128i(lo | hi))) != 0;
}
// As std::max(a, b) and std::min(a, b) choose, NaN and signed zeros included.
ZV_LANE_INLINE KLanes KMax(KLanes a, KLanes b) { return a < b ? b : a; }
ZV_LANE_INLINE KLanes KMin(KLanes a, KLanes b) { return b < a ? b : a; }
// As std::clamp(v, lo, hi): (v < lo) ? lo : (hi < v) ? hi : v.
ZV_LANE_INLINE KLanes KClamp(KLanes v, float lo, float hi)
{
    const KLanes l = KSplat<KLanes>(lo), h = KSplat<KLanes>(hi);
    return v < l ? l : (h < v ? h : v);
}
ZV_LANE_INLINE KLanesD KWiden(KLanes v) { return __builtin_convertvector(v, KLanesD); }
ZV_LANE_INLINE KLanes KNarrow(KLanesD v) { return __builtin_convertvector(v, KLanes); }

// Kernels built twice, for any x86-64 and for AVX2, picked when loaded.
#if defined(__x86_64__) && !defined(__clang__)
#define ZV_LANES_CLONES __attribute__((target_clones("avx2", "default")))
#else
#define ZV_LANES_CLONES
#endif

namespace klanes {

// Eight pixels, four channels each, to four channel vectors and back.
ZV_LANE_INLINE void Split(const __m128 px[8], KLanes c[4])
{
    __m128 q[8];
    for (int k = 0; k < 8; ++k) q[k] = px[k];
    _MM_TRANSPOSE4_PS(q[0], q[1], q[2], q[3]);
    _MM_TRANSPOSE4_PS(q[4], q[5], q[6], q[7]);
    for (int ch = 0; ch < 4; ++ch)
        c[ch] = __builtin_shufflevector(KQuad(q[ch]), KQuad(q[4 + ch]), 0, 1, 2, 3, 4, 5, 6, 7);
}

ZV_LANE_INLINE void Join(const KLanes c[4], __m128 px[8])
{
    for (int ch = 0; ch < 4; ++ch) {
        px[ch] = __m128(__builtin_shufflevector(c[ch], c[ch], 0, 1, 2, 3));
        px[4 + ch] = __m128(__builtin_shufflevector(c[ch], c[ch], 4, 5, 6, 7));
    }
    _MM_TRANSPOSE4_PS(px[0], px[1], px[2], px[3]);
    _MM_TRANSPOSE4_PS(px[4], px[5], px[6], px[7]);
}

}  // namespace klanes
#endif

// Runs `f(r, g, b, a, out)` over n pixels, eight at a time where it can; `f`
// is generic over float and KLanes and writes out[0..3]. Integer pixels go in
// by the pixel conversion and come out through double, as KLoadFloat and
// KStoreIntDouble do.
template <class F> [[gnu::always_inline]] inline void KEachPixel(KPixelF* out, const KPixelF* in,
                                                                 int32_t n, F f)
{
    int32_t i = 0;
#if defined(ZV_LANES)
    for (; i + kLaneCount <= n; i += kLaneCount) {
        __m128 px[8];
        KLanes c[4], o[4];
        for (int k = 0; k < 8; ++k) px[k] = _mm_loadu_ps(&in[i + k].r);
        klanes::Split(px, c);
        f(c[0], c[1], c[2], c[3], o);
        klanes::Join(o, px);
        for (int k = 0; k < 8; ++k) _mm_storeu_ps(&out[i + k].r, px[k]);
    }
#endif
    for (; i < n; ++i) {
        float o[4];
        f(in[i].r, in[i].g, in[i].b, in[i].a, o);
        out[i] = {o[0], o[1], o[2], o[3]};
    }
}

template <class F> [[gnu::always_inline]] inline void KEachPixel(KPixel* out, const KPixel* in,
                                                                 int32_t n, F f)
{
    int32_t i = 0;
#if defined(ZV_LANES)
    for (; i + kLaneCount <= n; i += kLaneCount) {
        __m128 px[8];
        KLanes c[4], o[4];
        for (int k = 0; k < 8; ++k) px[k] = KLoadFloatLanes(in[i + k]);
        klanes::Split(px, c);
        f(c[0], c[1], c[2], c[3], o);
        klanes::Join(o, px);
        for (int k = 0; k < 8; ++k) KStoreIntDouble(out[i + k], px[k]);
    }
#endif
    for (; i < n; ++i) {
        float o[4];
        f(KIntToFloat(in[i].r), KIntToFloat(in[i].g), KIntToFloat(in[i].b), KIntToFloat(in[i].a), o);
        out[i] = {KFloatToIntDouble(o[0]), KFloatToIntDouble(o[1]), KFloatToIntDouble(o[2]),
                  KFloatToIntDouble(o[3])};
    }
}

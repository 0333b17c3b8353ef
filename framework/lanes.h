// Several pixels at once for colour code written once.
//
// Per-pixel arithmetic written as a template over its number type runs on one
// pixel with `float` and on four or eight with the lanes, giving the same bits: every
// operation, comparison and selection below is the IEEE operation the scalar
// form performs. Branches become selections, so both sides of a choice are
// computed; a division by zero on the side not taken is harmless.
//
// The lanes are compiler vectors: four in an SSE register on any x86-64,
// eight in an AVX register in kernels built for AVX2 (ZV_AVX2).
#pragma once
#include <algorithm>
#include <cstdint>
#include <type_traits>
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
// Everything taking lanes is inlined into its kernel: a call between an AVX2
// kernel and code built for any x86-64 would pass them differently.
#define ZV_LANE_INLINE [[gnu::always_inline]] inline
#define ZV_AVX2 __attribute__((target("avx2")))

// N float lanes, their comparison masks and their double-precision form: four
// fill one SSE register, eight one AVX register.
template <int N> struct KLaneTypes;
template <> struct KLaneTypes<4> {
    typedef float F __attribute__((vector_size(16)));
    typedef int32_t M __attribute__((vector_size(16)));
    typedef double D __attribute__((vector_size(32)));
};
template <> struct KLaneTypes<8> {
    typedef float F __attribute__((vector_size(32)));
    typedef int32_t M __attribute__((vector_size(32)));
    typedef double D __attribute__((vector_size(64)));
};
using KLanes4 = KLaneTypes<4>::F;
using KLanes8 = KLaneTypes<8>::F;
template <class V> constexpr int kLaneCount = sizeof(V) / sizeof(float);
template <class V> using KMaskOf = typename KLaneTypes<kLaneCount<V>>::M;
template <class V> using KDoubleOf = typename KLaneTypes<kLaneCount<V>>::D;
template <class V>
concept KLaneVector = std::is_same_v<V, KLanes4> || std::is_same_v<V, KLanes8>;

template <> ZV_LANE_INLINE KLanes4 KSplat<KLanes4>(float v) { return KLanes4{v, v, v, v}; }
template <> ZV_LANE_INLINE KLanes8 KSplat<KLanes8>(float v)
{
    return KLanes8{v, v, v, v, v, v, v, v};
}
template <KLaneVector V> ZV_LANE_INLINE V KSelect(KMaskOf<V> m, V a, V b) { return m ? a : b; }
// As std::max(a, b) and std::min(a, b) choose, NaN and signed zeros included.
template <KLaneVector V> ZV_LANE_INLINE V KMax(V a, V b) { return a < b ? b : a; }
template <KLaneVector V> ZV_LANE_INLINE V KMin(V a, V b) { return b < a ? b : a; }
// As std::clamp(v, lo, hi): (v < lo) ? lo : (hi < v) ? hi : v.
template <KLaneVector V> ZV_LANE_INLINE V KClamp(V v, float lo, float hi)
{
    const V l = KSplat<V>(lo), h = KSplat<V>(hi);
    return v < l ? l : (h < v ? h : v);
}
template <KLaneVector V> ZV_LANE_INLINE KDoubleOf<V> KWiden(V v)
{
    return __builtin_convertvector(v, KDoubleOf<V>);
}
ZV_LANE_INLINE KLanes4 KNarrow(KLaneTypes<4>::D v) { return __builtin_convertvector(v, KLanes4); }
ZV_LANE_INLINE KLanes8 KNarrow(KLaneTypes<8>::D v) { return __builtin_convertvector(v, KLanes8); }
// Whether any lane is set: work no lane needs can be skipped.
ZV_LANE_INLINE bool KAny(KLaneTypes<4>::M m) { return _mm_movemask_ps(_mm_castsi128_ps(__m128i(m))) != 0; }
ZV_LANE_INLINE bool KAny(KLaneTypes<8>::M m)
{
    return KAny(__builtin_shufflevector(m, m, 0, 1, 2, 3) | __builtin_shufflevector(m, m, 4, 5, 6, 7));
}

namespace klanes {

// N pixels, four channels each, to four channel vectors and back.
template <class V> ZV_LANE_INLINE void Split(__m128 px[], V c[4])
{
    _MM_TRANSPOSE4_PS(px[0], px[1], px[2], px[3]);
    if constexpr (kLaneCount<V> == 4) {
        for (int ch = 0; ch < 4; ++ch) c[ch] = px[ch];
    } else {
        _MM_TRANSPOSE4_PS(px[4], px[5], px[6], px[7]);
        for (int ch = 0; ch < 4; ++ch)
            c[ch] = __builtin_shufflevector(KLanes4(px[ch]), KLanes4(px[4 + ch]), 0, 1, 2, 3, 4, 5, 6, 7);
    }
}

template <class V> ZV_LANE_INLINE void Join(const V c[4], __m128 px[])
{
    if constexpr (kLaneCount<V> == 4) {
        for (int ch = 0; ch < 4; ++ch) px[ch] = c[ch];
    } else {
        for (int ch = 0; ch < 4; ++ch) {
            px[ch] = __m128(__builtin_shufflevector(c[ch], c[ch], 0, 1, 2, 3));
            px[4 + ch] = __m128(__builtin_shufflevector(c[ch], c[ch], 4, 5, 6, 7));
        }
        _MM_TRANSPOSE4_PS(px[4], px[5], px[6], px[7]);
    }
    _MM_TRANSPOSE4_PS(px[0], px[1], px[2], px[3]);
}

}  // namespace klanes
#endif

// Whether lane kernels run eight AVX2 lanes (where the processor has them) or
// four SSE2 lanes; both give the same bits, which tests check by turning the
// wide lanes off.
bool KWideLanes();
void KAllowWideLanes(bool allow);

namespace klanes {

// A pixel's channels as floats and back: float pixels as they are, integer
// pixels by the pixel conversion in and through double out, as KLoadFloat and
// KStoreIntDouble do.
inline float In(float v) { return v; }
inline float In(uint32_t v) { return KIntToFloat(v); }
inline void Out(KPixelF& p, const float o[4]) { p = {o[0], o[1], o[2], o[3]}; }
inline void Out(KPixel& p, const float o[4])
{
    p = {KFloatToIntDouble(o[0]), KFloatToIntDouble(o[1]), KFloatToIntDouble(o[2]),
         KFloatToIntDouble(o[3])};
}
#if defined(ZV_LANES)
ZV_LANE_INLINE __m128 In(const KPixelF& p) { return _mm_loadu_ps(&p.r); }
ZV_LANE_INLINE __m128 In(const KPixel& p) { return KLoadFloatLanes(p); }
ZV_LANE_INLINE void Out(KPixelF& p, __m128 v) { _mm_storeu_ps(&p.r, v); }
ZV_LANE_INLINE void Out(KPixel& p, __m128 v) { KStoreIntDouble(p, v); }
#endif

}  // namespace klanes

// Runs `f(r, g, b, a, out)` over n pixels, V's lane count at a time where it
// can and one at a time for the rest; `f` is generic over float and the lanes
// and writes out[0..3].
template <class V, class P, class F>
[[gnu::always_inline]] inline void KEachPixel(P* out, const P* in, int32_t n, F f)
{
    int32_t i = 0;
#if defined(ZV_LANES)
    if constexpr (!std::is_same_v<V, float>) {
        constexpr int N = kLaneCount<V>;
        for (; i + N <= n; i += N) {
            __m128 px[N];
            V c[4], o[4];
            for (int k = 0; k < N; ++k) px[k] = klanes::In(in[i + k]);
            klanes::Split(px, c);
            f(c[0], c[1], c[2], c[3], o);
            klanes::Join(o, px);
            for (int k = 0; k < N; ++k) klanes::Out(out[i + k], px[k]);
        }
    }
#endif
    for (; i < n; ++i) {
        float o[4];
        f(klanes::In(in[i].r), klanes::In(in[i].g), klanes::In(in[i].b), klanes::In(in[i].a), o);
        klanes::Out(out[i], o);
    }
}

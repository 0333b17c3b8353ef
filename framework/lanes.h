// Several pixels at once for colour code written once.
//
// Per-pixel arithmetic written as a template over its number type runs on one
// pixel with `float` and on four or eight with the lanes, giving the same bits:
// every operation, comparison and selection below is the IEEE operation the
// scalar form performs. Branches become selections, so both sides of a choice
// are computed; a division by zero on the side not taken is harmless.
//
// The lanes are compiler vectors: four in an SSE register on any x86-64, eight
// in an AVX register in kernels built for AVX2 (ZV_AVX2).
#pragma once
#include <algorithm>
#include <cstdint>
#include <type_traits>
#include <utility>
#include "raster/pixel_store.h"

// One pixel: the operations on plain numbers.
inline float KSelect(bool m, float a, float b) { return m ? a : b; }
inline bool KAny(bool m) { return m; }
inline float KMax(float a, float b) { return std::max(a, b); }
inline float KMin(float a, float b) { return std::min(a, b); }
inline float KClamp(float v, float lo, float hi) { return std::clamp(v, lo, hi); }
// Toward zero; values of 2^23 and more are whole already and stay as they are.
inline float KTrunc(float v)
{
    return (v < 0.0f ? -v : v) < 8388608.0f ? static_cast<float>(static_cast<int32_t>(v)) : v;
}
inline double KWiden(float v) { return v; }
inline float KNarrow(double v) { return static_cast<float>(v); }
template <class V> V KSplat(float v);
template <> inline float KSplat<float>(float v) { return v; }

// A kernel's per-pixel lambda, inlined into each of the kernel's builds.
#if defined(__GNUC__)
#define ZV_LANE_INLINE_LAMBDA __attribute__((always_inline))
#else
#define ZV_LANE_INLINE_LAMBDA
#endif

#if defined(__SSE2__) && defined(__GNUC__)
#define ZV_LANES 1
// Everything taking lanes is inlined into its kernel: a call between an AVX
// kernel and code built for any x86-64 would pass them differently.
#define ZV_LANE_INLINE [[gnu::always_inline]] inline
#define ZV_AVX2 __attribute__((target("avx2")))

// N float lanes, their comparison masks, their double-precision form and N
// lanes of type C.
template <int N> struct KLaneTypes {
    typedef float F __attribute__((vector_size(4 * N)));
    typedef int32_t M __attribute__((vector_size(4 * N)));
    typedef double D __attribute__((vector_size(8 * N)));
    template <class C> struct Of {
        typedef C T __attribute__((vector_size(sizeof(C) * N)));
    };
};
using KLanes4 = KLaneTypes<4>::F;
using KLanes8 = KLaneTypes<8>::F;
template <class V> constexpr int kLaneCount = sizeof(V) / sizeof(float);
template <class V> using KMaskOf = typename KLaneTypes<kLaneCount<V>>::M;
template <class V> using KDoubleOf = typename KLaneTypes<kLaneCount<V>>::D;
template <class V>
concept KLaneVector = std::is_same_v<V, KLanes4> || std::is_same_v<V, KLanes8>;
template <class D>
concept KDoubleLanes = std::is_same_v<D, KLaneTypes<4>::D> || std::is_same_v<D, KLaneTypes<8>::D>;

template <KLaneVector V> ZV_LANE_INLINE V KSplat(float v)
{
    V r;
    for (int i = 0; i < kLaneCount<V>; ++i) r[i] = v;
    return r;
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
template <KLaneVector V> ZV_LANE_INLINE V KTrunc(V v)
{
    const V whole = __builtin_convertvector(__builtin_convertvector(v, KMaskOf<V>), V);
    return (v < 0.0f ? -v : v) < 8388608.0f ? whole : v;
}
template <KLaneVector V> ZV_LANE_INLINE KDoubleOf<V> KWiden(V v)
{
    return __builtin_convertvector(v, KDoubleOf<V>);
}
template <KDoubleLanes D> ZV_LANE_INLINE auto KNarrow(D v)
{
    return __builtin_convertvector(v, typename KLaneTypes<sizeof(D) / sizeof(double)>::F);
}

namespace klanes {

// The two four-lane halves of eight lanes, and two halves joined.
template <class W> ZV_LANE_INLINE auto Lower(W v) { return __builtin_shufflevector(v, v, 0, 1, 2, 3); }
template <class W> ZV_LANE_INLINE auto Upper(W v) { return __builtin_shufflevector(v, v, 4, 5, 6, 7); }
template <class W> ZV_LANE_INLINE auto Join(W lo, W hi)
{
    return __builtin_shufflevector(lo, hi, 0, 1, 2, 3, 4, 5, 6, 7);
}

}  // namespace klanes

// Whether any lane is set: work no lane needs can be skipped.
ZV_LANE_INLINE bool KAny(KLaneTypes<4>::M m)
{
    return _mm_movemask_ps(_mm_castsi128_ps(__m128i(m))) != 0;
}
ZV_LANE_INLINE bool KAny(KLaneTypes<8>::M m) { return KAny(klanes::Lower(m) | klanes::Upper(m)); }

namespace klanes {

// Lane i of the shuffles making a 4x4 transpose within each 128-bit block of
// N lanes: 0 and 1 interleave the first and last pairs of a and b, 2 and 3
// take the first and last pairs of a then b.
template <int N, int Kind> constexpr int TransposeLane(int i)
{
    const int block = i / 4 * 4, j = i % 4;
    if (Kind == 0) return block + j / 2 + (j % 2) * N;
    if (Kind == 1) return block + 2 + j / 2 + (j % 2) * N;
    if (Kind == 2) return block + j % 2 + (j / 2) * N;
    return block + 2 + j % 2 + (j / 2) * N;
}
template <int Kind, class V, int... I> ZV_LANE_INLINE V Mix(V a, V b, std::integer_sequence<int, I...>)
{
    return __builtin_shufflevector(a, b, TransposeLane<sizeof...(I), Kind>(I)...);
}

// Four channel vectors from four registers of one pixel each and back: a 4x4
// transpose, its own inverse. Eight lanes hold two pixels a register, pixel k
// in the lower half and k + 4 in the upper, and transpose each half alone.
template <KLaneVector V> ZV_LANE_INLINE void Transpose(V& a, V& b, V& c, V& d)
{
    constexpr auto lanes = std::make_integer_sequence<int, kLaneCount<V>>{};
    const V t0 = Mix<0>(a, b, lanes), t1 = Mix<1>(a, b, lanes);
    const V t2 = Mix<0>(c, d, lanes), t3 = Mix<1>(c, d, lanes);
    a = Mix<2>(t0, t2, lanes);
    b = Mix<3>(t0, t2, lanes);
    c = Mix<2>(t1, t3, lanes);
    d = Mix<3>(t1, t3, lanes);
}

// Pixel k's four values, and pixel k + 4's beside them in eight lanes.
template <int N, class T> ZV_LANE_INLINE auto PixelGroup(const T* pixels, int k)
{
    typedef std::remove_const_t<std::remove_reference_t<decltype(pixels->r)>> C;
    typename KLaneTypes<4>::Of<C>::T lo, hi;
    __builtin_memcpy(&lo, &pixels[k].r, sizeof lo);
    if constexpr (N == 4) return lo;
    else {
        __builtin_memcpy(&hi, &pixels[k + 4].r, sizeof hi);
        return Join(lo, hi);
    }
}
template <class T, class W> ZV_LANE_INLINE void StoreGroup(T* pixels, int k, W v)
{
    if constexpr (sizeof(W) == 4 * sizeof(v[0])) {
        __builtin_memcpy(&pixels[k].r, &v, sizeof v);
    } else {
        StoreGroup(pixels, k, Lower(v));
        StoreGroup(pixels + 4, k, Upper(v));
    }
}

// N pixels to channel vectors: float pixels as they are, integer pixels by the
// pixel conversion (KIntToFloat).
template <KLaneVector V> ZV_LANE_INLINE void Load(const KPixelF* in, V c[4])
{
#pragma GCC unroll 4
    for (int k = 0; k < 4; ++k) c[k] = PixelGroup<kLaneCount<V>>(in, k);
    Transpose(c[0], c[1], c[2], c[3]);
}
template <KLaneVector V> ZV_LANE_INLINE void Load(const KPixelW* in, V c[4])
{
#pragma GCC unroll 4
    for (int k = 0; k < 4; ++k) {
        const KMaskOf<V> words = __builtin_convertvector(PixelGroup<kLaneCount<V>>(in, k), KMaskOf<V>);
        c[k] = __builtin_convertvector(words, V) * kIntToFloat;
    }
    Transpose(c[0], c[1], c[2], c[3]);
}

// Channel vectors back to N pixels: float as they are, integer through double
// as KFloatToIntDouble does.
template <KLaneVector V> ZV_LANE_INLINE void Store(KPixelF* out, V c[4])
{
    Transpose(c[0], c[1], c[2], c[3]);
#pragma GCC unroll 4
    for (int k = 0; k < 4; ++k) StoreGroup(out, k, c[k]);
}
template <KLaneVector V> ZV_LANE_INLINE void Store(KPixelW* out, V c[4])
{
    typedef typename KLaneTypes<kLaneCount<V>>::template Of<uint16_t>::T Words;
    Transpose(c[0], c[1], c[2], c[3]);
    const V zero = KSplat<V>(0.0f), one = KSplat<V>(1.0f);
#pragma GCC unroll 4
    for (int k = 0; k < 4; ++k) {
        // Below 0 and NaN give 0, above 1 gives 1.
        V v = c[k] > zero ? c[k] : zero;
        v = v < one ? v : one;
        const KMaskOf<V> codes = __builtin_convertvector(KWiden(v) * 65535.0, KMaskOf<V>);
        StoreGroup(out, k, __builtin_convertvector(codes, Words));
    }
}

}  // namespace klanes
#endif

// The most lanes a kernel runs on this processor: 8 with AVX2, else 4. Both
// give the same bits, which tests check by lowering the limit.
int KLaneWidth();
void KLimitLaneWidth(int most);

namespace klanes {

// A pixel's channels as floats and back: float pixels as they are, integer
// pixels by the pixel conversion in (KIntToFloat) and through double out
// (KFloatToIntDouble).
inline float In(float v) { return v; }
inline float In(uint32_t v) { return KIntToFloat(v); }
inline float In(uint16_t v) { return KIntToFloat(v); }
inline void Out(KPixelF& p, const float o[4]) { p = {o[0], o[1], o[2], o[3]}; }
inline void Out(KPixel& p, const float o[4])
{
    p = {KFloatToIntDouble(o[0]), KFloatToIntDouble(o[1]), KFloatToIntDouble(o[2]),
         KFloatToIntDouble(o[3])};
}
inline void Out(KPixelW& p, const float o[4])
{
    p = {uint16_t(KFloatToIntDouble(o[0])), uint16_t(KFloatToIntDouble(o[1])),
         uint16_t(KFloatToIntDouble(o[2])), uint16_t(KFloatToIntDouble(o[3]))};
}

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
        // Two groups a turn while two fit: one group's work is a long chain of
        // dependent steps, and the processor overlaps two chains better when
        // both are near. Unrolled, so that the vectors stay in registers.
        auto groups = [&]<int G>() ZV_LANE_INLINE_LAMBDA {
            for (; i + G * N <= n; i += G * N) {
                V c[G][4], o[G][4];
#pragma GCC unroll 2
                for (int g = 0; g < G; ++g) klanes::Load(in + i + g * N, c[g]);
#pragma GCC unroll 2
                for (int g = 0; g < G; ++g) f(c[g][0], c[g][1], c[g][2], c[g][3], o[g]);
#pragma GCC unroll 2
                for (int g = 0; g < G; ++g) klanes::Store(out + i + g * N, o[g]);
            }
        };
        groups.template operator()<2>();
        groups.template operator()<1>();
    }
#endif
    for (; i < n; ++i) {
        float o[4];
        f(klanes::In(in[i].r), klanes::In(in[i].g), klanes::In(in[i].b), klanes::In(in[i].a), o);
        klanes::Out(out[i], o);
    }
}

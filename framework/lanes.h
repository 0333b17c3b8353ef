// Several pixels at once for colour code written once.
//
// Per-pixel arithmetic written as a template over its number type runs on one
// pixel with `float` and on several at once with the lanes, giving the same bits:
// every operation, comparison and selection below is the IEEE operation the
// scalar form performs. Branches become selections, so both sides of a choice
// are computed; a division by zero on the side not taken is harmless.
//
// Four lanes fill an SSE register on any x86-64, eight an AVX register in
// kernels built for AVX2 (ZV_AVX2), thirty-two fill two AVX-512 registers in
// kernels built for AVX-512 (ZV_AVX512).
#pragma once
#include <algorithm>
#include <cstdint>
#include <type_traits>
#include <utility>
#include "raster/pixel_store.h"
#if defined(__SSE2__) && defined(__GNUC__)
// Its AVX-512 conversions start from registers left undefined on purpose,
// which GCC 12 reports as maybe uninitialized wherever they are inlined.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wmaybe-uninitialized"
#include <immintrin.h>
#pragma GCC diagnostic pop
#endif

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

// Thirty-two lanes in two AVX-512 registers, for kernels built ZV_AVX512. Each
// operation works on both registers side by side: a kernel is a long chain of
// dependent steps, and two chains interleaved step by step keep the processor
// busy where one alone would wait on each step.
//
// These are classes, not compiler vectors: AVX-512 comparisons give mask
// registers, and GCC turns compiler-vector comparisons of this width into
// scalar code when they are written in code built for any x86-64, as kernel
// templates are. Their operations are built for AVX-512 and reach a kernel
// through ZV_LANE_KERNEL, which inlines everything into it.
#define ZV_AVX512 __attribute__((target("avx512f")))
#define ZV_LANE_KERNEL __attribute__((flatten))
#define ZV_AVX512_INLINE ZV_AVX512 inline
#define ZV_EACH_REGISTER(i, n) _Pragma("GCC unroll 4") for (int i = 0; i < (n); ++i)

struct KLanes32 {
    __m512 v[2];
};
struct KMask32 {
    __mmask16 k[2];
};
struct KDoubles32 {
    __m512d v[4];  // eight lanes each, in lane order
};

template <> ZV_AVX512_INLINE KLanes32 KSplat<KLanes32>(float v)
{
    return {{_mm512_set1_ps(v), _mm512_set1_ps(v)}};
}

#define ZV_LANES32_ARITHMETIC(op, ps, pd)                                                         \
    ZV_AVX512_INLINE KLanes32 operator op(KLanes32 a, KLanes32 b)                                 \
    {                                                                                             \
        return {{ps(a.v[0], b.v[0]), ps(a.v[1], b.v[1])}};                                        \
    }                                                                                             \
    ZV_AVX512_INLINE KLanes32 operator op(KLanes32 a, float b) { return a op KSplat<KLanes32>(b); } \
    ZV_AVX512_INLINE KLanes32 operator op(float a, KLanes32 b) { return KSplat<KLanes32>(a) op b; } \
    ZV_AVX512_INLINE KDoubles32 operator op(KDoubles32 a, KDoubles32 b)                           \
    {                                                                                             \
        ZV_EACH_REGISTER(i, 4) a.v[i] = pd(a.v[i], b.v[i]);                                       \
        return a;                                                                                 \
    }                                                                                             \
    ZV_AVX512_INLINE KDoubles32 operator op(KDoubles32 a, double b)                               \
    {                                                                                             \
        const __m512d s = _mm512_set1_pd(b);                                                      \
        return a op KDoubles32{{s, s, s, s}};                                                     \
    }                                                                                             \
    ZV_AVX512_INLINE KDoubles32 operator op(double a, KDoubles32 b)                               \
    {                                                                                             \
        const __m512d s = _mm512_set1_pd(a);                                                      \
        return KDoubles32{{s, s, s, s}} op b;                                                     \
    }
ZV_LANES32_ARITHMETIC(+, _mm512_add_ps, _mm512_add_pd)
ZV_LANES32_ARITHMETIC(-, _mm512_sub_ps, _mm512_sub_pd)
ZV_LANES32_ARITHMETIC(*, _mm512_mul_ps, _mm512_mul_pd)
ZV_LANES32_ARITHMETIC(/, _mm512_div_ps, _mm512_div_pd)
#undef ZV_LANES32_ARITHMETIC

// Ordered comparisons, false with NaN, and != true with NaN, as in C.
#define ZV_LANES32_COMPARISON(op, predicate)                                                      \
    ZV_AVX512_INLINE KMask32 operator op(KLanes32 a, KLanes32 b)                                  \
    {                                                                                             \
        return {{_mm512_cmp_ps_mask(a.v[0], b.v[0], predicate),                                   \
                 _mm512_cmp_ps_mask(a.v[1], b.v[1], predicate)}};                                 \
    }                                                                                             \
    ZV_AVX512_INLINE KMask32 operator op(KLanes32 a, float b) { return a op KSplat<KLanes32>(b); }
ZV_LANES32_COMPARISON(<, _CMP_LT_OQ)
ZV_LANES32_COMPARISON(<=, _CMP_LE_OQ)
ZV_LANES32_COMPARISON(>, _CMP_GT_OQ)
ZV_LANES32_COMPARISON(>=, _CMP_GE_OQ)
ZV_LANES32_COMPARISON(==, _CMP_EQ_OQ)
ZV_LANES32_COMPARISON(!=, _CMP_NEQ_UQ)
#undef ZV_LANES32_COMPARISON

ZV_AVX512_INLINE KMask32 operator&(KMask32 a, KMask32 b)
{
    return {{_kand_mask16(a.k[0], b.k[0]), _kand_mask16(a.k[1], b.k[1])}};
}
ZV_AVX512_INLINE KMask32 operator|(KMask32 a, KMask32 b)
{
    return {{_kor_mask16(a.k[0], b.k[0]), _kor_mask16(a.k[1], b.k[1])}};
}
ZV_AVX512_INLINE KLanes32 operator-(KLanes32 a) { return 0.0f - a; }

ZV_AVX512_INLINE KLanes32 KSelect(KMask32 m, KLanes32 a, KLanes32 b)
{
    return {{_mm512_mask_blend_ps(m.k[0], b.v[0], a.v[0]),
             _mm512_mask_blend_ps(m.k[1], b.v[1], a.v[1])}};
}
ZV_AVX512_INLINE bool KAny(KMask32 m) { return _kortestz_mask16_u8(m.k[0], m.k[1]) == 0; }
ZV_AVX512_INLINE KLanes32 KMax(KLanes32 a, KLanes32 b) { return KSelect(a < b, b, a); }
ZV_AVX512_INLINE KLanes32 KMin(KLanes32 a, KLanes32 b) { return KSelect(b < a, b, a); }
ZV_AVX512_INLINE KLanes32 KClamp(KLanes32 v, float lo, float hi)
{
    const KLanes32 l = KSplat<KLanes32>(lo), h = KSplat<KLanes32>(hi);
    return KSelect(v < l, l, KSelect(h < v, h, v));
}
ZV_AVX512_INLINE KLanes32 KTrunc(KLanes32 v)
{
    KLanes32 whole;
    ZV_EACH_REGISTER(i, 2) whole.v[i] = _mm512_cvtepi32_ps(_mm512_cvttps_epi32(v.v[i]));
    return KSelect(KSelect(v < 0.0f, -v, v) < 8388608.0f, whole, v);
}
ZV_AVX512_INLINE KDoubles32 KWiden(KLanes32 v)
{
    KDoubles32 d;
    ZV_EACH_REGISTER(i, 2) {
        const __m256 upper = _mm256_castpd_ps(_mm512_extractf64x4_pd(_mm512_castps_pd(v.v[i]), 1));
        d.v[2 * i] = _mm512_cvtps_pd(_mm512_castps512_ps256(v.v[i]));
        d.v[2 * i + 1] = _mm512_cvtps_pd(upper);
    }
    return d;
}
ZV_AVX512_INLINE KLanes32 KNarrow(KDoubles32 d)
{
    KLanes32 v;
    ZV_EACH_REGISTER(i, 2) {
        const __m512d lower = _mm512_castps_pd(_mm512_castps256_ps512(_mm512_cvtpd_ps(d.v[2 * i])));
        const __m256d upper = _mm256_castps_pd(_mm512_cvtpd_ps(d.v[2 * i + 1]));
        v.v[i] = _mm512_castpd_ps(_mm512_insertf64x4(lower, upper, 1));
    }
    return v;
}

namespace klanes {

// Sixteen pixels as four registers of four whole pixels, transposed within
// each 128-bit block: channel lane j of block b holds pixel 4j + b. Each
// register of the thirty-two lanes takes sixteen pixels so.
ZV_AVX512_INLINE __m512 PairsOf(__m512 x, __m512 y, bool upper)
{
    const __m512d u = _mm512_castps_pd(x), w = _mm512_castps_pd(y);
    return _mm512_castpd_ps(upper ? _mm512_unpackhi_pd(u, w) : _mm512_unpacklo_pd(u, w));
}
ZV_AVX512_INLINE void Transpose(KLanes32 c[4])
{
    ZV_EACH_REGISTER(i, 2) {
        const __m512 t0 = _mm512_unpacklo_ps(c[0].v[i], c[1].v[i]);
        const __m512 t1 = _mm512_unpackhi_ps(c[0].v[i], c[1].v[i]);
        const __m512 t2 = _mm512_unpacklo_ps(c[2].v[i], c[3].v[i]);
        const __m512 t3 = _mm512_unpackhi_ps(c[2].v[i], c[3].v[i]);
        c[0].v[i] = PairsOf(t0, t2, false);
        c[1].v[i] = PairsOf(t0, t2, true);
        c[2].v[i] = PairsOf(t1, t3, false);
        c[3].v[i] = PairsOf(t1, t3, true);
    }
}

ZV_AVX512_INLINE void Load(const KPixelF* in, KLanes32 c[4])
{
    ZV_EACH_REGISTER(i, 2) ZV_EACH_REGISTER(j, 4) c[j].v[i] = _mm512_loadu_ps(&in[16 * i + 4 * j].r);
    Transpose(c);
}
ZV_AVX512_INLINE void Load(const KPixelW* in, KLanes32 c[4])
{
    ZV_EACH_REGISTER(i, 2) ZV_EACH_REGISTER(j, 4) {
        const __m256i words = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(&in[16 * i + 4 * j]));
        c[j].v[i] = _mm512_mul_ps(_mm512_cvtepi32_ps(_mm512_cvtepu16_epi32(words)),
                                  _mm512_set1_ps(kIntToFloat));
    }
    Transpose(c);
}
ZV_AVX512_INLINE void Store(KPixelF* out, KLanes32 c[4])
{
    Transpose(c);
    ZV_EACH_REGISTER(i, 2) ZV_EACH_REGISTER(j, 4) _mm512_storeu_ps(&out[16 * i + 4 * j].r, c[j].v[i]);
}
ZV_AVX512_INLINE void Store(KPixelW* out, KLanes32 c[4])
{
    Transpose(c);
    ZV_EACH_REGISTER(j, 4) {
        // Below 0 and NaN give 0, above 1 gives 1.
        KLanes32 v = KSelect(c[j] > 0.0f, c[j], KSplat<KLanes32>(0.0f));
        v = KSelect(v < 1.0f, v, KSplat<KLanes32>(1.0f));
        const KDoubles32 scaled = KWiden(v) * 65535.0;
        ZV_EACH_REGISTER(i, 2) {
            const __m512i codes = _mm512_inserti64x4(
                _mm512_castsi256_si512(_mm512_cvttpd_epi32(scaled.v[2 * i])),
                _mm512_cvttpd_epi32(scaled.v[2 * i + 1]), 1);
            _mm256_storeu_si256(reinterpret_cast<__m256i*>(&out[16 * i + 4 * j]),
                                _mm512_cvtepi32_epi16(codes));
        }
    }
}

}  // namespace klanes
#endif

// The most lanes a kernel runs on this processor, 32 with AVX-512, 8 with
// AVX2, else 4, and at most the limit set: the widest of these within it.
// All give the same bits, which tests check by lowering the limit.
constexpr int kLaneWidthMost = 32;  // the widest build, and the limit until one is set
#if defined(ZV_LANES)
static_assert(kLaneCount<KLanes32> == kLaneWidthMost);
#endif
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

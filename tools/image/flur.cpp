// Flur: a radial blur that costs one read-blend-write per pixel whatever its
// length. Square rings around the centre inherit from their neighbour ring,
// outward and then inward, which makes the blur a recursive filter along each
// ray. It works in 16-bit values at any depth: a float picture is taken to
// 16 bits on the way in, so its values clip to 0..1.
#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <vector>
#if defined(__linux__)
#include <sys/mman.h>
#endif
#include <emmintrin.h>
#include "framework/effect.h"
#include "framework/lanes.h"
#include "framework/registration.h"
#include "raster/image.h"
#include "tools/image/rings.h"

namespace {

// The work codes of a line are held in two halves: for each pixel, channels 0
// and 1 in one 32-bit word of the line's first half and channels 2 and 3 in the
// same word of its second half. Sixteen pixels' words then fill an AVX-512
// register a channel pair, a pixel a lane, and a channel comes out of it with a
// mask or a shift.
struct KWords {
    uint32_t* w;  // channels 0 and 1; channels 2 and 3 are `half` words on
    size_t half;
};

// Four channels at once. Values are 16-bit codes held in floats; every blend is
// clamped to 0..65535 and cut, a NaN going to 0 as the clamp's first operand.
inline __m128 Codes(KWords p)
{
    const __m128i q = _mm_unpacklo_epi32(_mm_cvtsi32_si128(static_cast<int>(p.w[0])), _mm_cvtsi32_si128(static_cast<int>(p.w[p.half])));
    return _mm_cvtepi32_ps(_mm_unpacklo_epi16(q, _mm_setzero_si128()));
}
inline __m128i Cut(__m128 v)
{
    return _mm_cvttps_epi32(_mm_min_ps(_mm_max_ps(v, _mm_setzero_ps()), _mm_set1_ps(65535.0f)));
}
inline void Put(KWords p, __m128i v)
{
    // Signed packing of the codes moved down by 32768, then moved back.
    const __m128i half = _mm_set1_epi32(32768);
    const __m128i packed = _mm_xor_si128(_mm_packs_epi32(_mm_sub_epi32(v, half), _mm_setzero_si128()), _mm_set1_epi16(-32768));
    p.w[0] = static_cast<uint32_t>(_mm_cvtsi128_si32(packed));
    p.w[p.half] = static_cast<uint32_t>(_mm_cvtsi128_si32(_mm_srli_si128(packed, 4)));
}

// A pixel of the picture as codes, as the integer pixel read gives it; into the
// work codes; and back out.
inline __m128i SourceInts(const KImage& source, int32_t x, int32_t y)
{
    if (source.IsFloat()) return Cut(_mm_mul_ps(_mm_loadu_ps(source.RowF(y) + 4 * x), _mm_set1_ps(65535.0f)));
    return _mm_unpacklo_epi16(_mm_loadl_epi64(reinterpret_cast<const __m128i*>(source.RowW(y) + 4 * x)), _mm_setzero_si128());
}
inline __m128 SourceCodes(const KImage& source, int32_t x, int32_t y) { return _mm_cvtepi32_ps(SourceInts(source, x, y)); }
inline void PixelIn(const KImage& source, int32_t x, int32_t y, KWords d) { Put(d, SourceInts(source, x, y)); }
inline void PixelOut(KWords s, KImage& target, int32_t x, int32_t y)
{
    if (target.IsFloat()) return _mm_storeu_ps(target.RowF(y) + 4 * x, _mm_mul_ps(Codes(s), _mm_set1_ps(kIntToFloat)));
    const uint32_t w[2] = {s.w[0], s.w[s.half]};
    std::memcpy(target.RowW(y) + 4 * x, w, 8);
}

// own (1 - w) + (a (1 - f) + b f) w, each blend cut to 16 bits.
inline __m128i Step(__m128 own, __m128 a, __m128 b, float f, float w)
{
    const __m128 i = _mm_cvtepi32_ps(Cut(_mm_add_ps(_mm_mul_ps(a, _mm_set1_ps(1.0f - f)), _mm_mul_ps(b, _mm_set1_ps(f)))));
    return Cut(_mm_add_ps(_mm_mul_ps(own, _mm_set1_ps(1.0f - w)), _mm_mul_ps(i, _mm_set1_ps(w))));
}

// A crossing's two pixels, clamped into 0..last, and its fraction.
inline void Crossing(float s, int32_t last, int32_t& i0, int32_t& i1, float& f)
{
    const int32_t i = KCrossing(s, f);
    i0 = std::clamp(i, 0, last);
    i1 = std::clamp(i + 1, 0, last);
}

#if defined(ZV_LANES)
// GCC 12 takes the AVX-512 conversions' undefined starting registers for uninitialized.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wuninitialized"
#pragma GCC diagnostic ignored "-Wmaybe-uninitialized"

// Eight pixels' codes as the picture holds them, four channels in 64 bits, from
// floats and back; and their words, split into halves and joined again.
ZV_AVX512 inline __m256i Pack4(__m512 v) { return _mm512_cvtusepi32_epi16(_mm512_cvttps_epi32(_mm512_max_ps(v, _mm512_setzero_ps()))); }
ZV_AVX512 inline __m512i CodesIn8(const float* f)
{
    const __m512 scale = _mm512_set1_ps(65535.0f);
    return _mm512_inserti64x4(_mm512_castsi256_si512(Pack4(_mm512_mul_ps(_mm512_loadu_ps(f), scale))),
                              Pack4(_mm512_mul_ps(_mm512_loadu_ps(f + 16), scale)), 1);
}
ZV_AVX512 inline void CodesOut8(__m512i v, float* f, bool stream)
{
    const __m512 scale = _mm512_set1_ps(kIntToFloat);
    const __m512 lo = _mm512_mul_ps(_mm512_cvtepi32_ps(_mm512_cvtepu16_epi32(_mm512_castsi512_si256(v))), scale);
    const __m512 hi = _mm512_mul_ps(_mm512_cvtepi32_ps(_mm512_cvtepu16_epi32(_mm512_extracti64x4_epi64(v, 1))), scale);
    if (stream) {
        _mm512_stream_ps(f, lo);
        _mm512_stream_ps(f + 16, hi);
    } else {
        _mm512_storeu_ps(f, lo);
        _mm512_storeu_ps(f + 16, hi);
    }
}
ZV_AVX512 inline void Split8(__m512i v, KWords d)
{
    _mm256_stream_si256(reinterpret_cast<__m256i*>(d.w), _mm512_cvtepi64_epi32(v));
    _mm256_stream_si256(reinterpret_cast<__m256i*>(d.w + d.half), _mm512_cvtepi64_epi32(_mm512_srli_epi64(v, 32)));
}
// Sixteen pixels' codes, two registers of eight in order, out to a line's two
// halves past the caches: a whole cache line each where `d` is aligned to one.
ZV_AVX512 inline void Split16(__m512i first, __m512i second, KWords d)
{
    const __m512i lows = _mm512_setr_epi32(0, 2, 4, 6, 8, 10, 12, 14, 16, 18, 20, 22, 24, 26, 28, 30);
    _mm512_stream_si512(reinterpret_cast<__m512i*>(d.w), _mm512_permutex2var_epi32(first, lows, second));
    _mm512_stream_si512(reinterpret_cast<__m512i*>(d.w + d.half), _mm512_permutex2var_epi32(first, _mm512_add_epi32(lows, _mm512_set1_epi32(1)), second));
}
ZV_AVX512 inline __m512i SourceCodes8(const KImage& source, int32_t x, int32_t y)
{
    return source.IsFloat() ? CodesIn8(source.RowF(y) + 4 * x) : _mm512_loadu_si512(source.RowW(y) + 4 * x);
}
ZV_AVX512 inline __m512i Joined8(KWords s)
{
    return _mm512_or_si512(_mm512_cvtepu32_epi64(_mm256_load_si256(reinterpret_cast<const __m256i*>(s.w))),
                           _mm512_slli_epi64(_mm512_cvtepu32_epi64(_mm256_load_si256(reinterpret_cast<const __m256i*>(s.w + s.half))), 32));
}

// Eight lines of eight pixels become eight lines across them.
[[gnu::always_inline]] ZV_AVX512 inline void Transpose8(__m512i v[8])
{
    __m512i t[8], u[8];
    for (int i = 0; i < 8; i += 2) {
        t[i / 2] = _mm512_unpacklo_epi64(v[i], v[i + 1]);      // pixels 0, 2, 4, 6 of the pair
        t[4 + i / 2] = _mm512_unpackhi_epi64(v[i], v[i + 1]);  // pixels 1, 3, 5, 7
    }
    // Each 128-bit quarter now holds one pixel of a pair of lines: transpose the quarters.
    for (int h = 0; h < 8; h += 4) {
        u[h + 0] = _mm512_shuffle_i64x2(t[h + 0], t[h + 1], _MM_SHUFFLE(2, 0, 2, 0));
        u[h + 1] = _mm512_shuffle_i64x2(t[h + 0], t[h + 1], _MM_SHUFFLE(3, 1, 3, 1));
        u[h + 2] = _mm512_shuffle_i64x2(t[h + 2], t[h + 3], _MM_SHUFFLE(2, 0, 2, 0));
        u[h + 3] = _mm512_shuffle_i64x2(t[h + 2], t[h + 3], _MM_SHUFFLE(3, 1, 3, 1));
    }
    for (int h = 0; h < 2; ++h) {  // even pixels from u[0..3], odd from u[4..7]
        v[h + 0] = _mm512_shuffle_i64x2(u[4 * h + 0], u[4 * h + 2], _MM_SHUFFLE(2, 0, 2, 0));
        v[h + 4] = _mm512_shuffle_i64x2(u[4 * h + 0], u[4 * h + 2], _MM_SHUFFLE(3, 1, 3, 1));
        v[h + 2] = _mm512_shuffle_i64x2(u[4 * h + 1], u[4 * h + 3], _MM_SHUFFLE(2, 0, 2, 0));
        v[h + 6] = _mm512_shuffle_i64x2(u[4 * h + 1], u[4 * h + 3], _MM_SHUFFLE(3, 1, 3, 1));
    }
}

// One channel of a step for sixteen pixels: own (1 - w) + (a (1 - f) + b f) w.
// A blend of two codes by a fraction stays within 0..65535, so its cut is a
// truncation; so is the final cut when the weight is too, which `kInside` says.
template <bool kInside>
[[gnu::always_inline]] ZV_AVX512 inline __m512i Blend16(__m512 a, __m512 b, __m512 own, __m512 rest, __m512 f, __m512 keep, __m512 w)
{
    const __m512 between = _mm512_roundscale_ps(_mm512_add_ps(_mm512_mul_ps(a, rest), _mm512_mul_ps(b, f)), _MM_FROUND_TO_ZERO | _MM_FROUND_NO_EXC);
    const __m512 v = _mm512_add_ps(_mm512_mul_ps(own, keep), _mm512_mul_ps(between, w));
    if constexpr (kInside) return _mm512_cvttps_epi32(v);
    return _mm512_cvttps_epi32(_mm512_min_ps(_mm512_max_ps(v, _mm512_setzero_ps()), _mm512_set1_ps(65535.0f)));
}
[[gnu::always_inline]] ZV_AVX512 inline __m512 Low(__m512i w) { return _mm512_cvtepi32_ps(_mm512_and_si512(w, _mm512_set1_epi32(0xFFFF))); }
[[gnu::always_inline]] ZV_AVX512 inline __m512 High(__m512i w) { return _mm512_cvtepi32_ps(_mm512_srli_epi32(w, 16)); }

// Steps of one line sixteen pixels at a time, with the same operations as Step in
// the same order. A line's pixels read only the line before, so they are
// independent. The caller has checked that 0 <= t <= 1.5, so crossings grow
// with p and sixteen pixels read within thirty-two words of the first; these
// take only blocks whose crossings lie in 0..2e9 and read within lo..hi of the
// near line, so that two loads and a permute fetch each half. Returns where they stopped.
struct KFlurLanes {
    static constexpr size_t kAheadWords = 256;  // words fetched ahead of the step
    float t, c;  // crossing = t (p - c) + c for a pixel at p
    int32_t last, lo, hi;
    float decay, power;
    size_t half;
    ptrdiff_t next;  // words from a pixel to the same pixel of the next ring's line

    // With kClean the caller has checked every block's crossings itself, so that
    // none needs a clamp: the blocks between its ends, where most of a line lies.
    template <bool kSquare, bool kInside, bool kClean>
    ZV_AVX512 int32_t Line(int32_t p, int32_t p1, const uint32_t* near, uint32_t* own) const
    {
        const size_t h = half;
        const float d = decay, e = power;
        const __m512 tv = _mm512_set1_ps(t), cv = _mm512_set1_ps(c), one = _mm512_set1_ps(1.0f), sixteen = _mm512_set1_ps(16.0f);
        const __m512i top = _mm512_set1_epi32(last), low = _mm512_set1_epi32(lo), high = _mm512_set1_epi32(hi), unit = _mm512_set1_epi32(1);
        // Pixel positions are whole floats below 2^24, so adding sixteen is exact.
        __m512 pf = _mm512_cvtepi32_ps(_mm512_add_epi32(_mm512_set1_epi32(p), _mm512_setr_epi32(0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15)));
#pragma GCC unroll 2
        for (; p + 16 <= p1; p += 16, pf = _mm512_add_ps(pf, sixteen)) {
            const __m512 s = _mm512_add_ps(_mm512_mul_ps(tv, _mm512_sub_ps(pf, cv)), cv);
            const __m512i whole = _mm512_cvttps_epi32(s);
            __m512i i0 = whole, i1 = _mm512_add_epi32(whole, unit);
            int32_t first;
            if constexpr (kClean) {
                // The first crossing again in scalar arithmetic, the same operations, so
                // that the addresses do not wait on the vector.
                first = static_cast<int32_t>(t * (static_cast<float>(p) - c) + c);
            } else {
                i0 = _mm512_min_epi32(i0, top);
                i1 = _mm512_min_epi32(i1, top);
                if ((_mm512_cmp_ps_mask(s, _mm512_setzero_ps(), _CMP_GE_OQ) & _mm512_cmp_ps_mask(s, _mm512_set1_ps(2.0e9f), _CMP_LT_OQ) &
                     ~_mm512_cmp_epi32_mask(i0, low, _MM_CMPINT_LT) & ~_mm512_cmp_epi32_mask(i1, high, _MM_CMPINT_NLE)) != 0xFFFF)
                    break;
                first = _mm_cvtsi128_si32(_mm512_castsi512_si128(i0));
            }
            const __m512 f = _mm512_sub_ps(s, _mm512_cvtepi32_ps(whole)), rest = _mm512_sub_ps(one, f);
            __m512 w = _mm512_set1_ps(d);
            if constexpr (!kSquare) {
                alignas(64) float x[16];
                _mm512_store_ps(x, _mm512_sub_ps(pf, s));
                for (float& v : x) v = d * std::pow(v * v + 1.0f, -e);
                w = _mm512_load_ps(x);
            }
            const __m512 keep = _mm512_sub_ps(one, w);
            const __m512i d0 = _mm512_sub_epi32(i0, _mm512_set1_epi32(first)), d1 = _mm512_sub_epi32(i1, _mm512_set1_epi32(first));
            const uint32_t* at = near + first;
            const __m512i lo01 = _mm512_loadu_si512(at), hi01 = _mm512_loadu_si512(at + 16);
            const __m512i lo23 = _mm512_loadu_si512(at + h), hi23 = _mm512_loadu_si512(at + h + 16);
            const __m512i a01 = _mm512_permutex2var_epi32(lo01, d0, hi01), b01 = _mm512_permutex2var_epi32(lo01, d1, hi01);
            const __m512i a23 = _mm512_permutex2var_epi32(lo23, d0, hi23), b23 = _mm512_permutex2var_epi32(lo23, d1, hi23);
            uint32_t* o = own + p;
            // Its own words ahead, and the same words of the next ring's line.
            for (const uint32_t* ahead : {o + kAheadWords, o + next + kAheadWords}) {
                _mm_prefetch(reinterpret_cast<const char*>(ahead), _MM_HINT_T1);
                _mm_prefetch(reinterpret_cast<const char*>(ahead + h), _MM_HINT_T1);
            }
            const __m512i m01 = _mm512_loadu_si512(o), m23 = _mm512_loadu_si512(o + h);
            const __m512i c0 = Blend16<kInside>(Low(a01), Low(b01), Low(m01), rest, f, keep, w);
            const __m512i c1 = Blend16<kInside>(High(a01), High(b01), High(m01), rest, f, keep, w);
            const __m512i c2 = Blend16<kInside>(Low(a23), Low(b23), Low(m23), rest, f, keep, w);
            const __m512i c3 = Blend16<kInside>(High(a23), High(b23), High(m23), rest, f, keep, w);
            _mm512_storeu_si512(o, _mm512_or_si512(c0, _mm512_slli_epi32(c1, 16)));
            _mm512_storeu_si512(o + h, _mm512_or_si512(c2, _mm512_slli_epi32(c3, 16)));
        }
        return p;
    }
};
#pragma GCC diagnostic pop
#endif

// The nearest and farthest distance from c over the n values a..a+n-1.
int32_t Nearest(int32_t a, int32_t n, int32_t c) { return c < a ? a - c : c > a + n - 1 ? c - a - n + 1 : 0; }
int32_t Farthest(int32_t a, int32_t n, int32_t c) { return std::max(std::abs(a - c), std::abs(a + n - 1 - c)); }

// One run of the rings over 16-bit codes. A step updates pixels p0..p1-1 of one
// line, a row or a column, from the line next to it. Each pixel is written once
// on the way out, so until then it still holds its source value.
//
// The codes are held once, or for the AVX-512 steps twice: row by row, and column
// by column so that a column step walks memory in order as a row step does. Each
// copy is then current only where its own steps read it, the rows' copy wherever
// |dx| <= |dy| + 2 from the centre and the columns' wherever |dy| <= |dx| + 2;
// a step writing where both are current writes both.
struct Walk {
    struct Lines {
        uint32_t* base;
        size_t line, pixel, half;  // words from one line to the next, from one pixel to the next, and between a line's halves
        float c;                   // the centre along the lines
        int32_t ic, icAcross;
        int32_t length, count;  // pixels a line, lines

        KWords At(int32_t l, int32_t p) const { return {base + line * static_cast<size_t>(l) + pixel * static_cast<size_t>(p), half}; }
        bool Holds(int32_t l, int32_t p) const { return std::abs(p - ic) <= std::abs(l - icAcross) + 2; }
    };
    // How the codes lie: `span` words a half-line and `stride` a line, for the rows
    // and, held twice, for the columns after them.
    struct Layout {
        size_t span, stride, columnSpan, columnStride;
        bool twice;
    };
    const KRings& r;
    const KImage& source;
    Lines lines[2];  // the rows, the columns
    bool twice;
    float decay, power;
    bool square;
    static constexpr int32_t kEveryRing = 0x7FFFFFFF;

    Walk(const KRings& rings, const KImage& source, uint32_t* base, const Layout& at, float decay, float power, bool square)
        : r(rings), source(source), twice(at.twice), decay(decay), power(power), square(square)
    {
        lines[0] = {base, at.stride, 1, at.span, r.cx, r.icx, r.icy, r.width, r.height};
        lines[1] = twice ? Lines{base + at.stride * size_t(r.height), at.columnStride, 1, at.columnSpan, r.cy, r.icy, r.icx, r.height, r.width}
                         : Lines{base, 1, at.stride, at.span, r.cy, r.icy, r.icx, r.height, r.width};
    }

    float Weight(float d) const { return square ? decay : decay * std::pow(d * d + 1.0f, -power); }
    // Pixel p of line l of axis a: from the source in rings beyond `ring`, which the
    // outward walk has not reached, else from whichever copy holds it.
    __m128 Value(int a, int32_t l, int32_t p, int32_t ring) const
    {
        const Lines& L = lines[a];
        if (std::max(std::abs(p - L.ic), std::abs(l - L.icAcross)) > ring) return a == 0 ? SourceCodes(source, p, l) : SourceCodes(source, l, p);
        return Codes(!twice || L.Holds(l, p) ? L.At(l, p) : lines[1 - a].At(p, l));
    }

    // Pixels p0..p1-1 of a line from the line `from`, in the walk's ring `ring`.
    void Step(int a, int32_t line, int32_t from, int32_t p0, int32_t p1, int32_t ring) const
    {
        const Lines& L = lines[a];
        const float t = a == 0 ? r.RowT(line, from) : r.ColumnT(line, from);
        const int32_t near = std::clamp(from, 0, L.count - 1), last = L.length - 1;
        int32_t p = p0;
        // The next ring's line in this direction is fetched as this one steps: its
        // start now, the rest by the steps themselves.
        const int32_t next = line + (line - from);
        const bool fetch = twice && next >= 0 && next < L.count;
        if (fetch)
            for (int32_t q = p0; q < std::min(p1, p0 + 256); q += 16) {
                const KWords w = L.At(next, q);
                _mm_prefetch(reinterpret_cast<const char*>(w.w), _MM_HINT_T1);
                _mm_prefetch(reinterpret_cast<const char*>(w.w + w.half), _MM_HINT_T1);
            }
#if defined(ZV_LANES)
        // A line at the image's edge reads itself, in order: only pixel by pixel does that.
        if (twice && near == from) {
            const int32_t reach = std::abs(near - L.icAcross) + 2;
            const ptrdiff_t ahead = fetch ? (line - from) * ptrdiff_t(L.line) : 0;
            const KFlurLanes l{t, L.c, last, L.ic - reach, L.ic + reach, decay, power, L.half, ahead};
            const uint32_t* n = L.At(near, 0).w;
            uint32_t* o = L.At(line, 0).w;
            // A weight within 0..1 keeps every blend within the codes' range.
            const bool inside = decay >= 0.0f && decay <= 1.0f;
            auto lanes = [&](int32_t q, int32_t q1, bool clean) {
                if (clean) return square ? (inside ? l.Line<true, true, true>(q, q1, n, o) : l.Line<true, false, true>(q, q1, n, o))
                                         : (inside ? l.Line<false, true, true>(q, q1, n, o) : l.Line<false, false, true>(q, q1, n, o));
                return square ? (inside ? l.Line<true, true, false>(q, q1, n, o) : l.Line<true, false, false>(q, q1, n, o))
                              : (inside ? l.Line<false, true, false>(q, q1, n, o) : l.Line<false, false, false>(q, q1, n, o));
            };
            // Crossings grow with p, so the blocks that need no clamp lie between the
            // line's ends: find them from both ends, a block being clean when its first
            // and last pixels are.
            auto clean = [&](int32_t q) {
                const float s = t * (static_cast<float>(q) - L.c) + L.c;
                if (!(s >= 0.0f && s < 2.0e9f)) return false;
                const int32_t i = static_cast<int32_t>(s);
                return i >= l.lo && i + 1 <= std::min(last, l.hi);
            };
            auto checked = [&](int32_t q, int32_t q1) {
                while (q + 16 <= q1) {
                    q = lanes(q, q1, false);
                    if (q + 16 > q1) break;
                    Plain(a, line, near, t, q, q + 16, ring);
                    q += 16;
                }
                return q;
            };
            if (t >= 0.0f && t <= 1.5f && p + 16 <= p1) {
                int32_t begin = p, end = p + (p1 - p) / 16 * 16;
                while (begin < end && !(clean(begin) && clean(begin + 15))) begin += 16;
                while (end > begin && !(clean(end - 16) && clean(end - 1))) end -= 16;
                checked(p, begin);
                if (end > begin) lanes(begin, end, true);
                p = checked(end, p1);
            }
        }
#endif
        Plain(a, line, near, t, p, p1, ring);
        if (!twice) return;
        // Mirror the pixels the other copy holds: those within two of the line's ends.
        const Lines& other = lines[1 - a];
        const int32_t n = std::abs(line - L.icAcross), low = std::min(p1, L.ic - n + 3);
        auto copy = [&](int32_t q0, int32_t q1) {
            for (int32_t q = q0; q < q1; ++q) {
                const KWords from = L.At(line, q), to = other.At(q, line);
                to.w[0] = from.w[0];
                to.w[to.half] = from.w[from.half];
            }
        };
        copy(p0, low);
        copy(std::max({p0, low, L.ic + n - 2}), p1);
    }

    void Plain(int a, int32_t line, int32_t near, float t, int32_t p, int32_t p1, int32_t ring) const
    {
        const Lines& L = lines[a];
        for (; p < p1; ++p) {
            const float s = t * (static_cast<float>(p) - L.c) + L.c;
            int32_t i0, i1;
            float f;
            Crossing(s, L.length - 1, i0, i1, f);
            const KWords out = L.At(line, p);
            Put(out, ::Step(Codes(out), Value(a, near, i0, ring), Value(a, near, i1, ring), f, Weight(static_cast<float>(p) - s)));
        }
    }

    // Held once, the codes are loaded before the walk (Load) and stored after it
    // (Store). Held twice, the outward walk loads each row a ring before its own
    // and each column with its strip, a ring before the strip's first column, so
    // that a ring's steps fetch the next ring's pixels as they go (until a ring
    // steps, its pixels' values are the source's); and the inward walk delivers
    // each ring to the target as soon as it is final, while it is still in the
    // cache.
    void Run(KImage& target) const
    {
        int32_t ring = kEveryRing;
        auto row = [&](int32_t y, int32_t from, int32_t x0, int32_t x1) { Step(0, y, from, x0, x1, ring); };
        auto column = [&](int32_t x, int32_t from, int32_t y0, int32_t y1) { Step(1, x, from, y0, y1, ring); };
        std::vector<char> strips(twice ? size_t(r.width + kStrip - 1) / kStrip : 0, 0);
        auto reach = [&](int32_t n) {
            if (!twice) return;
            for (int32_t d = n == 0 ? 0 : n + 1; d <= n + 1; ++d) {
                if (r.RowIn(r.icy - d)) LoadRow(r.icy - d);
                if (d > 0 && r.RowIn(r.icy + d)) LoadRow(r.icy + d);
            }
            for (int32_t y : {r.icy - n - 2, r.icy + n + 2})
                if (r.RowIn(y)) FetchRow(y);
            for (int32_t x : {r.icx - n, r.icx + n, r.icx - n - 1, r.icx + n + 1})
                if (r.ColumnIn(x) && !strips[size_t(x / kStrip)]) {
                    strips[size_t(x / kStrip)] = 1;
                    LoadStrip(x / kStrip * kStrip);
                }
        };
        for (int32_t n = 0; n < r.first; ++n) reach(n);
        for (int32_t n = r.first; n < r.count; ++n) {
            reach(n);
            ring = twice ? n : kEveryRing;
            r.Outward(n, row, column, [](int32_t n) { return n % 2 == 0; });
        }
        ring = kEveryRing;
        for (int32_t n = r.count; n >= r.first; --n) {
            r.Inward(n, row, column);
            if (twice) Deliver(target, n);
        }
        if (!twice) return;
        for (int32_t m = r.first - 1; m >= 0; --m) Deliver(target, m);
        DeliverRest(target);
    }

    // Codes held once: rows y0..y0+7 of the source, before the walk.
    void Load(int32_t y0) const
    {
        for (int32_t y = y0; y < std::min(y0 + 8, r.height); ++y)
            for (int32_t x = 0; x < r.width; ++x) PixelIn(source, x, y, lines[0].At(y, x));
    }

    // Row y into the rows' copy where it holds the row; whole groups of sixteen may
    // take a few pixels more, all in rings the walk has not reached.
    void LoadRow(int32_t y) const
    {
        const int32_t reach = std::abs(y - r.icy) + 2, x1 = std::min(r.icx + reach + 1, r.width);
        int32_t x = std::max(r.icx - reach, 0);
#if defined(ZV_LANES)
        x = LoadRun(y, x & ~15, x1);
#endif
        for (; x < x1; ++x) PixelIn(source, x, y, lines[0].At(y, x));
    }

    // The start of row y's source as LoadRow will read it, fetched beforehand; it
    // fetches the rest kAhead pixels ahead as it goes.
    static constexpr int32_t kAhead = 256;  // pixels
    void FetchRow(int32_t y) const
    {
        const int32_t reach = std::abs(y - r.icy) + 2, x1 = std::min({r.icx + reach + 8, r.width, std::max(r.icx - reach, 0) + kAhead});
        const size_t bytes = source.IsFloat() ? 16 : 8;
        const char* row = reinterpret_cast<const char*>(source.RowW(y));
        for (int32_t x = std::max(r.icx - reach, 0) & ~3; x < x1; x += int32_t(64 / bytes)) _mm_prefetch(row + bytes * size_t(x), _MM_HINT_T1);
    }

    // Columns x0..x0+kStrip-1 into the columns' copy where it holds them, likewise:
    // the strip's whole groups of eight by tiles, the rest pixel by pixel.
    static constexpr int32_t kStrip = 16;
    void LoadStrip(int32_t x0) const
    {
        const int32_t x1 = std::min(x0 + kStrip, r.width), groups = (x1 - x0) / 8;
        const int32_t reach = Farthest(x0, x1 - x0, r.icx) + 2;
        const int32_t y0 = std::max(r.icy - reach, 0), y1 = std::min(r.icy + reach + 1, r.height);
        int32_t y = y0;
#if defined(ZV_LANES)
        if (groups > 0) y = LoadTiles(x0, groups, y0 & ~15, y1);
#endif
        for (int32_t x = x0; x < x1; ++x)
            for (int32_t v = x < x0 + 8 * groups ? y : y0; v < y1; ++v) PixelIn(source, x, v, lines[1].At(x, v));
    }

    // Codes held once: rows y0..y0+7 out to the target, after the walk.
    void Store(KImage& target, int32_t y0) const
    {
        for (int32_t y = y0; y < std::min(y0 + 8, r.height); ++y)
            for (int32_t x = 0; x < r.width; ++x) PixelOut(lines[0].At(y, x), target, x, y);
    }

    // Each pixel goes out from the copy whose steps wrote it: the rows' where
    // |dx| <= |dy|, else the columns'.
    bool FromColumns(int32_t x, int32_t y) const { return std::abs(x - r.icx) > std::abs(y - r.icy); }

    // Ring m, now final: its rows' stretch, and a group of kGroup columns whose
    // innermost column is in the ring. The rest waits for DeliverRest.
    static constexpr int32_t kGroup = 16;
    void Deliver(KImage& target, int32_t m) const
    {
        for (int32_t y : {r.icy - m, r.icy + m}) {
            if (!r.RowIn(y) || (m == 0 && y != r.icy - m)) continue;
            const int32_t x1 = std::min(r.icx + m + 1, r.width);
            int32_t x = std::max(r.icx - m, 0);
            for (; x < x1 && x % 8 != 0; ++x) PixelOut(lines[0].At(y, x), target, x, y);
#if defined(ZV_LANES)
            x = DeliverEights(target, y, x, x1);
#endif
            for (; x < x1; ++x) PixelOut(lines[0].At(y, x), target, x, y);
        }
#if defined(ZV_LANES)
        const int32_t whole = r.width / kGroup * kGroup, left = r.icx - m, right = r.icx + m;
        if (m > 0 && left >= kGroup - 1 && left % kGroup == kGroup - 1 && left < whole) DeliverGroup(target, left - kGroup + 1);
        if (m > 0 && right >= 0 && right % kGroup == 0 && right + kGroup <= whole) DeliverGroup(target, right);
#endif
    }

    // The columns' pixels no group took: the group around the centre, the picture's
    // ragged right columns and its ragged bottom rows.
    void DeliverRest(KImage& target) const
    {
        const int32_t whole = r.width / kGroup * kGroup, h8 = r.height & ~7;
#if defined(ZV_LANES)
        if (r.icx >= 0 && r.icx < whole)
            for (int32_t y0 = 0; y0 + 8 <= r.height; y0 += 8)
                for (int32_t x0 = r.icx / kGroup * kGroup; x0 < r.icx / kGroup * kGroup + kGroup; x0 += 8) Tile(target, x0, y0);
#endif
        for (int32_t y = 0; y < r.height; ++y)
            for (int32_t x = y < h8 ? whole : 0; x < r.width; ++x)
                if (FromColumns(x, y)) PixelOut(lines[1].At(x, y), target, x, y);
    }

#if defined(ZV_LANES)
    // Whole groups of eight pixels in and out, the picture's ragged edges left to
    // the callers. The codes loaded are written past the caches, as is the target
    // where its rows allow, and the source is fetched ahead.

    // Row y from x, a multiple of sixteen, sixteen pixels at a time while they
    // start before x1, then eight; returns where they stopped.
    ZV_AVX512 int32_t LoadRun(int32_t y, int32_t x, int32_t x1) const
    {
        const char* row = reinterpret_cast<const char*>(source.RowW(y));
        const size_t bytes = source.IsFloat() ? 16 : 8;
        for (; x < x1 && x + 16 <= r.width; x += 16) {
            for (size_t b = 0; b < 16 * bytes; b += 64) _mm_prefetch(row + bytes * size_t(x + kAhead) + b, _MM_HINT_T0);
            Split16(SourceCodes8(source, x, y), SourceCodes8(source, x + 8, y), lines[0].At(y, x));
        }
        for (; x < x1 && x + 8 <= r.width; x += 8) Split8(SourceCodes8(source, x, y), lines[0].At(y, x));
        return x;
    }

    // Groups of eight columns from xStart, `groups` of them, from row y while the
    // rows end by y1, a tile of eight rows by eight columns at a time. Sixteen
    // rows at a time fill whole cache lines of each column's halves; eight at a
    // time finish.
    ZV_AVX512 int32_t LoadTiles(int32_t xStart, int32_t groups, int32_t y, int32_t y1) const
    {
        for (; y < y1 && y + 16 <= r.height; y += 16)
            for (int32_t x0 = xStart; x0 < xStart + 8 * groups; x0 += 8) {
                __m512i top[8], bottom[8];
                SourceTile(x0, y, top);
                SourceTile(x0, y + 8, bottom);
                for (int j = 0; j < 8; ++j) Split16(top[j], bottom[j], lines[1].At(x0 + j, y));
            }
        for (; y < y1 && y + 8 <= r.height; y += 8)
            for (int32_t x0 = xStart; x0 < xStart + 8 * groups; x0 += 8) {
                __m512i v[8];
                SourceTile(x0, y, v);
                for (int j = 0; j < 8; ++j) Split8(v[j], lines[1].At(x0 + j, y));
            }
        return y;
    }

    // Eight rows from y of eight pixels from x0, across: v[j] is column x0 + j. The
    // rows a strip reaches next are fetched ahead.
    [[gnu::always_inline]] ZV_AVX512 void SourceTile(int32_t x0, int32_t y, __m512i v[8]) const
    {
        for (int j = 0; j < 8; ++j) {
            if (y + 32 + j < r.height) {
                const char* ahead = source.IsFloat() ? reinterpret_cast<const char*>(source.RowF(y + 32 + j) + 4 * x0)
                                                     : reinterpret_cast<const char*>(source.RowW(y + 32 + j) + 4 * x0);
                _mm_prefetch(ahead, _MM_HINT_T1);
                _mm_prefetch(ahead + 64, _MM_HINT_T1);
            }
            v[j] = SourceCodes8(source, x0, y + j);
        }
        Transpose8(v);
    }

    // Pixels x..x1-1 of row y from the rows' copy, eight at a time from x, a
    // multiple of eight; returns where they stopped.
    ZV_AVX512 int32_t DeliverEights(KImage& target, int32_t y, int32_t x, int32_t x1) const
    {
        const bool stream = Streams(target);
        for (; x + 8 <= x1; x += 8) Out8(Joined8(lines[0].At(y, x)), target, x, y, stream);
        return x;
    }

    // The tiles of columns x0..x0+kGroup-1 that hold a pixel of the columns'.
    ZV_AVX512 void DeliverGroup(KImage& target, int32_t x0) const
    {
        const int32_t reach = Farthest(x0, kGroup, r.icx);
        for (int32_t y0 = std::max(r.icy - reach + 1, 0) & ~7; y0 + 8 <= r.height && y0 <= r.icy + reach - 1; y0 += 8)
            for (int32_t x = x0; x < x0 + kGroup; x += 8) Tile(target, x, y0);
    }

    // One eight-by-eight tile, unless the rows' copy alone holds it.
    ZV_AVX512 void Tile(KImage& target, int32_t x0, int32_t y0) const
    {
        const Lines &rows = lines[0], &columns = lines[1];
        const int32_t dyNear = Nearest(y0, 8, r.icy), dyFar = Farthest(y0, 8, r.icy);
        if (Farthest(x0, 8, r.icx) <= dyNear) return;
        const bool allColumns = Nearest(x0, 8, r.icx) > dyFar, stream = Streams(target);
        __m512i v[8];
        for (int j = 0; j < 8; ++j) v[j] = Joined8(columns.At(x0 + j, y0));
        Transpose8(v);
        for (int j = 0; j < 8 && !allColumns; ++j) {
            __mmask8 fromColumns = 0;
            for (int i = 0; i < 8; ++i) fromColumns |= (FromColumns(x0 + i, y0 + j) ? 1 : 0) << i;
            v[j] = _mm512_mask_mov_epi64(Joined8(rows.At(y0 + j, x0)), fromColumns, v[j]);
        }
        for (int j = 0; j < 8; ++j) Out8(v[j], target, x0, y0 + j, stream);
    }

    // Eight pixels' codes out at (x, y), past the caches where the target's rows allow.
    static bool Streams(const KImage& target) { return (reinterpret_cast<uintptr_t>(target.RowW(0)) | target.RowBytes()) % 64 == 0; }
    ZV_AVX512 static void Out8(__m512i v, KImage& target, int32_t x, int32_t y, bool stream)
    {
        if (target.IsFloat()) CodesOut8(v, target.RowF(y) + 4 * x, stream);
        else if (stream) _mm512_stream_si512(reinterpret_cast<__m512i*>(target.RowW(y) + 4 * x), v);
        else _mm512_storeu_si512(target.RowW(y) + 4 * x, v);
    }
#endif
};

}  // namespace

class KEffectFlur : public KEffectThreads {
public:
    enum Shape : int32_t { kSquare = 0, kRound, kAxial };

    KEffectFlur()
    {
        inputList.AddPage("Flur");
        inputList.AddPoint(&center, {0.5f, 0.5f}, "Center", "Cent"_id, kFlagPreview, 0);
        inputList.AddSlider(&length, 0.2f, "Length", "Leng"_id, 0, 0.0, 1.0);
        inputList.AddMultiButton(&shape, 0, "Shape", "Shap"_id, kFlagNotify, {"Square", "Round", "Axial", "[end]"});
        inputList.AddSlider(&exponent, 2.0f, "Exponent", "Expo"_id, kFlagHidden | kFlagHardMax, 0.0, 100.0);
    }

    bool Start(KImage* input, KImage** output, void* extras) override
    {
        if (!KEffectThreads::Start(input, output, extras)) return false;
        const double a = 1.0 - static_cast<double>(length), a2 = a * a;
        const double a5 = a2 * a2 * a;
        const float v = static_cast<float>(a5 * a5);
        power = shape == kRound ? static_cast<float>(v * 0.6666666666666666) : 1.0f / exponent;
        // Below a width of 720 a short length drives k under 0; it is left so.
        decay = static_cast<float>(1.0 - (720.0 / static_cast<double>(width)) * v);
        // A half-line has room for the thirty-one words the AVX-512 steps read past
        // its end, and lines are an odd number of cache lines apart, so that a walk
        // across them spreads over the cache's sets. Those steps keep a second copy,
        // column by column.
        auto spanOf = [](int32_t pixels) { return (size_t(pixels) + 32 + 15) / 16 * 16; };
        layout.twice = KLaneWidth() >= 32;
        layout.span = spanOf(width);
        layout.stride = 2 * layout.span + 16;
        layout.columnSpan = spanOf(height);
        layout.columnStride = 2 * layout.columnSpan + 16;
        const size_t need = layout.stride * size_t(height) + (layout.twice ? layout.columnStride * size_t(width) : 0);
        if (workSize < need) {
            // A step across lines moves a whole line on: in 4 KB pages every step of a
            // UHD column is another page, so the buffer asks for 2 MB pages. It is kept
            // for the next render.
            const size_t page = size_t(1) << 21, bytes = (need * 4 + page - 1) / page * page;
            work.reset(static_cast<uint32_t*>(std::aligned_alloc(page, bytes)));
            if (!work) return false;
#if defined(MADV_HUGEPAGE)
            madvise(work.get(), bytes, MADV_HUGEPAGE);
#endif
            workSize = bytes / 4;
        }
        return true;
    }

    KMessageList OnChange(uint32_t id, const KMessageValue& value) override
    {
        // Only the axial falloff reads the exponent.
        KMessageList list;
        if (id == "Shap"_id) list.Add(kMessageVisible, "Expo"_id, value.intValue == kAxial ? 1.0f : 0.0f);
        return list;
    }

    void ProcessJob(int32_t pass, int32_t job, KImage* source, KImage* target) override
    {
        const int32_t w = target->width, h = target->height;
        const KRings rings(static_cast<float>(w - 1) * center.x, static_cast<float>(h - 1) * center.y, w, h);
        const Walk walk(rings, *source, work.get(), layout, decay, power, shape == kSquare);
        // The source as 16-bit codes, as the integer pixel read gives them, and back.
        if (!layout.twice) source->RunJobs((h + 7) / 8, [&](int32_t band) { walk.Load(8 * band); });
        walk.Run(*target);
        if (!layout.twice) target->RunJobs((h + 7) / 8, [&](int32_t band) { walk.Store(*target, 8 * band); });
#if defined(ZV_LANES)
        _mm_sfence();  // stores past the caches reach memory before the frame is handed on
#endif
    }

private:
    KPoint2 center;
    float length = 0.2f;
    int32_t shape = 0;
    float exponent = 2.0f;

    float power = 0.5f, decay = 0.0f;  // from Start
    struct Free {
        void operator()(uint32_t* p) const { std::free(p); }
    };
    std::unique_ptr<uint32_t[], Free> work;  // the codes, laid out as `layout` says
    size_t workSize = 0;                     // in words
    Walk::Layout layout{};
};

ZV_TOOL(KEffectFlur, ZV_Flur);

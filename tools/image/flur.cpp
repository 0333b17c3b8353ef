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

// Four channels at once. Values are 16-bit codes held in floats; every blend is
// clamped to 0..65535 and cut, a NaN going to 0 as the clamp's first operand.
inline __m128 Codes(const uint16_t* p)
{
    return _mm_cvtepi32_ps(_mm_unpacklo_epi16(_mm_loadl_epi64(reinterpret_cast<const __m128i*>(p)), _mm_setzero_si128()));
}
inline __m128i Cut(__m128 v)
{
    return _mm_cvttps_epi32(_mm_min_ps(_mm_max_ps(v, _mm_setzero_ps()), _mm_set1_ps(65535.0f)));
}
inline void Put(uint16_t* p, __m128i v)
{
    // Signed packing of the codes moved down by 32768, then moved back.
    const __m128i half = _mm_set1_epi32(32768);
    const __m128i packed = _mm_packs_epi32(_mm_sub_epi32(v, half), _mm_setzero_si128());
    _mm_storel_epi64(reinterpret_cast<__m128i*>(p), _mm_xor_si128(packed, _mm_set1_epi16(-32768)));
}

// own (1 - w) + (a (1 - f) + b f) w, each blend cut to 16 bits.
inline void Step(__m128 own, const uint16_t* a, const uint16_t* b, float f, float w, uint16_t* out)
{
    const __m128 i = _mm_cvtepi32_ps(Cut(_mm_add_ps(_mm_mul_ps(Codes(a), _mm_set1_ps(1.0f - f)),
                                                    _mm_mul_ps(Codes(b), _mm_set1_ps(f)))));
    Put(out, Cut(_mm_add_ps(_mm_mul_ps(own, _mm_set1_ps(1.0f - w)), _mm_mul_ps(i, _mm_set1_ps(w)))));
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

ZV_AVX512 inline __m256i Half(__m512i v, int h) { return h ? _mm512_extracti64x4_epi64(v, 1) : _mm512_castsi512_si256(v); }
ZV_AVX512 inline __m512 Codes4(__m256i v) { return _mm512_cvtepi32_ps(_mm512_cvtepu16_epi32(v)); }

// Sixteen values cut to 0..65535 and packed: the float clamp takes NaN to 0, and
// the unsigned narrowing caps everything above (the conversion's overflow value
// reads as 2^31).
ZV_AVX512 inline __m256i Pack4(__m512 v) { return _mm512_cvtusepi32_epi16(_mm512_cvttps_epi32(_mm512_max_ps(v, _mm512_setzero_ps()))); }

// Eight pixels' codes from floats, as the integer pixel read gives them, and back.
ZV_AVX512 inline __m512i CodesIn8(const float* f)
{
    const __m512 scale = _mm512_set1_ps(65535.0f);
    return _mm512_inserti64x4(_mm512_castsi256_si512(Pack4(_mm512_mul_ps(_mm512_loadu_ps(f), scale))),
                              Pack4(_mm512_mul_ps(_mm512_loadu_ps(f + 16), scale)), 1);
}
ZV_AVX512 inline void CodesOut8(__m512i v, float* f, bool stream)
{
    const __m512 scale = _mm512_set1_ps(kIntToFloat);
    const __m512 lo = _mm512_mul_ps(Codes4(Half(v, 0)), scale), hi = _mm512_mul_ps(Codes4(Half(v, 1)), scale);
    if (stream) {
        _mm512_stream_ps(f, lo);
        _mm512_stream_ps(f + 16, hi);
    } else {
        _mm512_storeu_ps(f, lo);
        _mm512_storeu_ps(f + 16, hi);
    }
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

// One step for four pixels: own (1 - w) + (a (1 - f) + b f) w, with f, 1 - f,
// w and 1 - w spread over each pixel's channels. A blend of two codes by a
// fraction stays within 0..65535, so its cut is a truncation.
[[gnu::always_inline]] ZV_AVX512 inline __m256i Blend4(__m256i a, __m256i b, __m256i own, __m512 rest, __m512 f, __m512 keep, __m512 w)
{
    const __m512 between = _mm512_roundscale_ps(_mm512_add_ps(_mm512_mul_ps(Codes4(a), rest), _mm512_mul_ps(Codes4(b), f)),
                                                _MM_FROUND_TO_ZERO | _MM_FROUND_NO_EXC);
    return Pack4(_mm512_add_ps(_mm512_mul_ps(Codes4(own), keep), _mm512_mul_ps(between, w)));
}

// Steps of one line sixteen pixels at a time, with the same operations as Step in
// the same order. A line's pixels read only the line before, so they are
// independent. The caller has checked that 0 <= t <= 1.5, so crossings grow
// with p and each eight pixels read within sixteen pixels of the first; these
// take only blocks whose crossings lie in 0..2e9 and read within lo..hi of the
// near line, so that two loads and a permute fetch them. Returns where they stopped.
struct KFlurLanes {
    float t, c;  // crossing = t (p - c) + c for a pixel at p
    int32_t last, lo, hi;
    float decay, power;

    template <bool kSquare> ZV_AVX512 int32_t Line(int32_t p, int32_t p1, const uint16_t* near, uint16_t* own) const
    {
        const __m512 tv = _mm512_set1_ps(t), cv = _mm512_set1_ps(c), one = _mm512_set1_ps(1.0f);
        const __m512i iota = _mm512_setr_epi32(0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15), top = _mm512_set1_epi32(last);
        const __m512i firsts = _mm512_setr_epi32(0, 0, 0, 0, 0, 0, 0, 0, 8, 8, 8, 8, 8, 8, 8, 8);
        const __m512i quad = _mm512_setr_epi32(0, 0, 0, 0, 1, 1, 1, 1, 2, 2, 2, 2, 3, 3, 3, 3);
        const __m512i spread[4] = {quad, _mm512_add_epi32(quad, _mm512_set1_epi32(4)), _mm512_add_epi32(quad, _mm512_set1_epi32(8)),
                                   _mm512_add_epi32(quad, _mm512_set1_epi32(12))};
        for (; p + 16 <= p1; p += 16) {
            const __m512 pf = _mm512_cvtepi32_ps(_mm512_add_epi32(_mm512_set1_epi32(p), iota));
            const __m512 s = _mm512_add_ps(_mm512_mul_ps(tv, _mm512_sub_ps(pf, cv)), cv);
            const __m512i whole = _mm512_cvttps_epi32(s);
            const __m512i i0 = _mm512_min_epi32(whole, top), i1 = _mm512_min_epi32(_mm512_add_epi32(whole, _mm512_set1_epi32(1)), top);
            if ((_mm512_cmp_ps_mask(s, _mm512_setzero_ps(), _CMP_GE_OQ) & _mm512_cmp_ps_mask(s, _mm512_set1_ps(2.0e9f), _CMP_LT_OQ) &
                 ~_mm512_cmp_epi32_mask(i0, _mm512_set1_epi32(lo), _MM_CMPINT_LT) & ~_mm512_cmp_epi32_mask(i1, _mm512_set1_epi32(hi), _MM_CMPINT_NLE)) != 0xFFFF)
                break;
            const __m512 f = _mm512_sub_ps(s, _mm512_cvtepi32_ps(whole)), rest = _mm512_sub_ps(one, f);
            __m512 w = _mm512_set1_ps(decay);
            if constexpr (!kSquare) {
                alignas(64) float d[16];
                _mm512_store_ps(d, _mm512_sub_ps(pf, s));
                for (float& v : d) v = decay * std::pow(v * v + 1.0f, -power);
                w = _mm512_load_ps(d);
            }
            const __m512 keep = _mm512_sub_ps(one, w);
            const __m512i base = _mm512_permutexvar_epi32(firsts, i0);
            const __m512i d0 = _mm512_sub_epi32(i0, base), d1 = _mm512_sub_epi32(i1, base);
            const int32_t from[2] = {_mm_cvtsi128_si32(_mm512_castsi512_si128(i0)), _mm_cvtsi128_si32(_mm512_extracti32x4_epi32(i0, 2))};
#pragma GCC unroll 2
            for (int g = 0; g < 2; ++g) {
                const uint16_t* at = near + 4 * static_cast<size_t>(from[g]);
                const __m512i lower = _mm512_loadu_si512(at), upper = _mm512_loadu_si512(at + 32);
                const __m512i a8 = _mm512_permutex2var_epi64(lower, _mm512_cvtepi32_epi64(Half(d0, g)), upper);
                const __m512i b8 = _mm512_permutex2var_epi64(lower, _mm512_cvtepi32_epi64(Half(d1, g)), upper);
                uint16_t* o = own + 4 * static_cast<size_t>(p + 8 * g);
                const __m512i mine = _mm512_loadu_si512(o);
                __m256i out[2];
#pragma GCC unroll 2
                for (int h = 0; h < 2; ++h) {
                    const __m512i q = spread[2 * g + h];
                    out[h] = Blend4(Half(a8, h), Half(b8, h), Half(mine, h), _mm512_permutexvar_ps(q, rest), _mm512_permutexvar_ps(q, f),
                                    kSquare ? keep : _mm512_permutexvar_ps(q, keep), kSquare ? w : _mm512_permutexvar_ps(q, w));
                }
                _mm512_storeu_si512(o, _mm512_inserti64x4(_mm512_castsi256_si512(out[0]), out[1], 1));
            }
        }
        return p;
    }
};

#pragma GCC diagnostic pop
#endif

// Pixels x0..x1-1 of a row, to codes and back.
void CodesIn(const KImage& source, int32_t y, int32_t x0, int32_t x1, uint16_t* d)
{
    if (x1 <= x0) return;
    if (!source.IsFloat()) return void(std::memcpy(d, source.RowW(y) + 4 * x0, size_t(x1 - x0) * 8));
    const float* f = source.RowF(y) + 4 * x0;
    for (int32_t x = 0; x < x1 - x0; ++x) Put(d + 4 * x, Cut(_mm_mul_ps(_mm_loadu_ps(f + 4 * x), _mm_set1_ps(65535.0f))));
}
void CodesOut(const uint16_t* s, KImage& target, int32_t y, int32_t x0, int32_t x1)
{
    if (x1 <= x0) return;
    if (!target.IsFloat()) return void(std::memcpy(target.RowW(y) + 4 * x0, s, size_t(x1 - x0) * 8));
    float* d = target.RowF(y) + 4 * x0;
    for (int32_t x = 0; x < x1 - x0; ++x) _mm_storeu_ps(d + 4 * x, _mm_mul_ps(Codes(s + 4 * x), _mm_set1_ps(kIntToFloat)));
}

// The nearest and farthest distance from c over the eight values a..a+7.
int32_t Nearest8(int32_t a, int32_t c) { return c < a ? a - c : c > a + 7 ? c - a - 7 : 0; }
int32_t Farthest8(int32_t a, int32_t c) { return std::max(std::abs(a - c), std::abs(a + 7 - c)); }

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
        uint16_t* base;
        size_t line, pixel;   // channels from one line to the next, and from one pixel to the next
        float c, cAcross;     // the centre along the lines and across them
        int32_t ic, icAcross;
        int32_t length, count;  // pixels a line, lines

        uint16_t* At(int32_t l, int32_t p) const { return base + line * static_cast<size_t>(l) + pixel * static_cast<size_t>(p); }
        bool Holds(int32_t l, int32_t p) const { return std::abs(p - ic) <= std::abs(l - icAcross) + 2; }
    };
    const KRings& r;
    Lines lines[2];  // the rows, the columns
    bool twice;
    float decay, power;
    bool square;

    // Codes held once, `stride` channels a row; or twice, the columns after the rows.
    Walk(const KRings& rings, uint16_t* base, size_t stride, size_t columnStride, bool twice, float decay, float power, bool square)
        : r(rings), twice(twice), decay(decay), power(power), square(square)
    {
        lines[0] = {base, stride, 4, r.cx, r.cy, r.icx, r.icy, r.width, r.height};
        lines[1] = twice ? Lines{base + stride * size_t(r.height), columnStride, 4, r.cy, r.cx, r.icy, r.icx, r.height, r.width}
                         : Lines{base, 4, stride, r.cy, r.cx, r.icy, r.icx, r.height, r.width};
    }

    float Weight(float d) const { return square ? decay : decay * std::pow(d * d + 1.0f, -power); }
    // Pixel p of line l of axis a, from whichever copy holds it.
    const uint16_t* Read(int a, int32_t l, int32_t p) const
    {
        return !twice || lines[a].Holds(l, p) ? lines[a].At(l, p) : lines[1 - a].At(p, l);
    }

    void Step(int a, int32_t line, int32_t from, int32_t p0, int32_t p1) const
    {
        const Lines& L = lines[a];
        const float t = (static_cast<float>(from) - L.cAcross) / (static_cast<float>(line) - L.cAcross);
        const int32_t near = std::clamp(from, 0, L.count - 1), last = L.length - 1;
        int32_t p = p0;
#if defined(ZV_LANES)
        // A line at the image's edge reads itself, in order: only pixel by pixel does that.
        if (twice && near == from) {
            const int32_t reach = std::abs(near - L.icAcross) + 2;
            const KFlurLanes l{t, L.c, last, L.ic - reach, L.ic + reach, decay, power};
            while (t >= 0.0f && t <= 1.5f && p + 16 <= p1) {
                p = square ? l.Line<true>(p, p1, L.At(near, 0), L.At(line, 0)) : l.Line<false>(p, p1, L.At(near, 0), L.At(line, 0));
                if (p + 16 > p1) break;
                Plain(a, line, near, t, p, p + 16);
                p += 16;
            }
        }
#endif
        Plain(a, line, near, t, p, p1);
        if (!twice) return;
        // Mirror the pixels the other copy holds: those within two of the line's ends.
        const Lines& other = lines[1 - a];
        const int32_t n = std::abs(line - L.icAcross), low = std::min(p1, L.ic - n + 3);
        auto copy = [&](int32_t q0, int32_t q1) {
            for (int32_t q = q0; q < q1; ++q) std::memcpy(other.At(q, line), L.At(line, q), 8);
        };
        copy(p0, low);
        copy(std::max({p0, low, L.ic + n - 2}), p1);
    }

    void Plain(int a, int32_t line, int32_t near, float t, int32_t p, int32_t p1) const
    {
        const Lines& L = lines[a];
        for (; p < p1; ++p) {
            const float s = t * (static_cast<float>(p) - L.c) + L.c;
            int32_t i0, i1;
            float f;
            Crossing(s, L.length - 1, i0, i1, f);
            uint16_t* out = L.At(line, p);
            ::Step(Codes(out), Read(a, near, i0), Read(a, near, i1), f, Weight(static_cast<float>(p) - s), out);
        }
    }

    void Run() const
    {
        auto row = [this](int32_t y, int32_t from, int32_t x0, int32_t x1) { Step(0, y, from, x0, x1); };
        auto column = [this](int32_t x, int32_t from, int32_t y0, int32_t y1) { Step(1, x, from, y0, y1); };
        for (int32_t n = r.first; n < r.count; ++n) r.Outward(n, row, column, [](int32_t n) { return n % 2 == 0; });
        for (int32_t n = r.count; n >= r.first; --n) r.Inward(n, row, column);
    }

    // Rows y0..y0+7 of the source into the codes, each copy where it is current.
    void Load(const KImage& source, int32_t y0) const
    {
        const int32_t w = r.width, y1 = std::min(y0 + 8, r.height), yTiles = twice && y1 - y0 == 8 ? y1 : y0;
#if defined(ZV_LANES)
        if (yTiles > y0) LoadTiles(source, y0);
#endif
        for (int32_t y = y0; y < y1; ++y) {
            if (!twice) {
                CodesIn(source, y, 0, w, lines[0].At(y, 0));
                continue;
            }
            for (int32_t x = y < yTiles ? w & ~7 : 0; x < w; ++x) {
                if (lines[0].Holds(y, x)) CodesIn(source, y, x, x + 1, lines[0].At(y, x));
                if (lines[1].Holds(x, y)) CodesIn(source, y, x, x + 1, lines[1].At(x, y));
            }
        }
    }

    // Rows y0..y0+7 out to the target, each pixel from the copy its own steps
    // wrote: the rows' where |dx| <= |dy|, else the columns'.
    void Store(KImage& target, int32_t y0) const
    {
        const int32_t w = r.width, y1 = std::min(y0 + 8, r.height), yTiles = twice && y1 - y0 == 8 ? y1 : y0;
#if defined(ZV_LANES)
        if (yTiles > y0) StoreTiles(target, y0);
#endif
        for (int32_t y = y0; y < y1; ++y) {
            if (!twice) {
                CodesOut(lines[0].At(y, 0), target, y, 0, w);
                continue;
            }
            for (int32_t x = y < yTiles ? w & ~7 : 0; x < w; ++x)
                CodesOut(std::abs(x - r.icx) > std::abs(y - r.icy) ? lines[1].At(x, y) : lines[0].At(y, x), target, y, x, x + 1);
        }
    }

#if defined(ZV_LANES)
    // The eight-by-eight tiles of rows y0..y0+7, the picture's ragged right edge
    // left to the callers. The codes are written past the caches in whole cache
    // lines, as is the target where its rows allow.
    ZV_AVX512 void LoadTiles(const KImage& source, int32_t y0) const
    {
        const Lines &rows = lines[0], &columns = lines[1];
        const int32_t dyNear = Nearest8(y0, r.icy), dyFar = Farthest8(y0, r.icy);
        for (int32_t x0 = 0; x0 + 8 <= r.width; x0 += 8) {
            const bool forRows = Nearest8(x0, r.icx) <= dyFar + 2, forColumns = dyNear <= Farthest8(x0, r.icx) + 2;
            __m512i v[8];
            for (int j = 0; j < 8; ++j) {
                v[j] = source.IsFloat() ? CodesIn8(source.RowF(y0 + j) + 4 * x0) : _mm512_loadu_si512(source.RowW(y0 + j) + 4 * x0);
                if (forRows) _mm512_stream_si512(reinterpret_cast<__m512i*>(rows.At(y0 + j, x0)), v[j]);
            }
            if (!forColumns) continue;
            Transpose8(v);
            for (int j = 0; j < 8; ++j) _mm512_stream_si512(reinterpret_cast<__m512i*>(columns.At(x0 + j, y0)), v[j]);
        }
        _mm_sfence();
    }

    ZV_AVX512 void StoreTiles(KImage& target, int32_t y0) const
    {
        const Lines &rows = lines[0], &columns = lines[1];
        const bool stream = (reinterpret_cast<uintptr_t>(target.RowW(0)) | target.RowBytes()) % 64 == 0;
        const int32_t dyNear = Nearest8(y0, r.icy), dyFar = Farthest8(y0, r.icy);
        for (int32_t x0 = 0; x0 + 8 <= r.width; x0 += 8) {
            const bool allRows = Farthest8(x0, r.icx) <= dyNear, allColumns = Nearest8(x0, r.icx) > dyFar;
            __m512i v[8];
            if (!allRows) {
                for (int j = 0; j < 8; ++j) v[j] = _mm512_load_si512(columns.At(x0 + j, y0));
                Transpose8(v);
            }
            for (int j = 0; j < 8 && !allColumns; ++j) {
                // Each pixel from the copy whose steps wrote it.
                const int32_t dy = std::abs(y0 + j - r.icy);
                __mmask8 fromColumns = 0;
                for (int i = 0; i < 8 && !allRows; ++i) fromColumns |= (std::abs(x0 + i - r.icx) > dy ? 1 : 0) << i;
                v[j] = _mm512_mask_mov_epi64(_mm512_load_si512(rows.At(y0 + j, x0)), fromColumns, v[j]);
            }
            for (int j = 0; j < 8; ++j) {
                if (target.IsFloat()) CodesOut8(v[j], target.RowF(y0 + j) + 4 * x0, stream);
                else if (stream) _mm512_stream_si512(reinterpret_cast<__m512i*>(target.RowW(y0 + j) + 4 * x0), v[j]);
                else _mm512_storeu_si512(target.RowW(y0 + j) + 4 * x0, v[j]);
            }
        }
        _mm_sfence();
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
        // Work lines are an odd number of cache lines apart, so that a walk across
        // them spreads over the cache's sets. The AVX-512 steps keep a second copy,
        // column by column, and read up to fifteen pixels past a line's end.
        twice = KLaneWidth() >= 32;
        auto lineOf = [](int32_t pixels) { return ((size_t(pixels) * 8 + 63) / 64 | 1) * 32; };
        stride = lineOf(width);
        columnStride = lineOf(height);
        const size_t need = stride * size_t(height) + (twice ? columnStride * size_t(width) + 64 : 0);
        if (workSize < need) {
            // A step across lines moves a whole line on: in 4 KB pages every step of a
            // UHD column is another page, so the buffer asks for 2 MB pages. It is kept
            // for the next render.
            const size_t page = size_t(1) << 21, bytes = (need * 2 + page - 1) / page * page;
            work.reset(static_cast<uint16_t*>(std::aligned_alloc(page, bytes)));
            if (!work) return false;
#if defined(MADV_HUGEPAGE)
            madvise(work.get(), bytes, MADV_HUGEPAGE);
#endif
            workSize = bytes / 2;
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
        const Walk walk(rings, work.get(), stride, columnStride, twice, decay, power, shape == kSquare);
        // The source as 16-bit codes, as the integer pixel read gives them, and back.
        // The source as 16-bit codes, as the integer pixel read gives them, and back.
        source->RunJobs((h + 7) / 8, [&](int32_t band) { walk.Load(*source, 8 * band); });
        walk.Run();
        target->RunJobs((h + 7) / 8, [&](int32_t band) { walk.Store(*target, 8 * band); });
    }

private:
    KPoint2 center;
    float length = 0.2f;
    int32_t shape = 0;
    float exponent = 2.0f;

    float power = 0.5f, decay = 0.0f;  // from Start
    struct Free {
        void operator()(uint16_t* p) const { std::free(p); }
    };
    std::unique_ptr<uint16_t[], Free> work;  // 16-bit codes, `stride` channels a row
    size_t workSize = 0;                     // in channels
    size_t stride = 0, columnStride = 0;
    bool twice = false;                      // codes held column by column too
};

ZV_TOOL(KEffectFlur, ZV_Flur);

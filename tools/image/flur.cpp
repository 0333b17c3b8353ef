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
// Sixteen steps of one ring side at once, with the same operations as Step in
// the same order. A side's pixels read only the ring before, so they are
// independent. Pixels sit four to a register, their channels side by side; a
// pixel's crossing, fraction and weight come from sixteen-lane vectors, spread
// over its four channels. `near` is the neighbour line as seen by pixel 0
// (qword offsets into it are crossing * step), `own` is pixel 0's codes,
// `ownStep` the qword distance from one pixel to the next along the side.
struct KFlurLanes {
    float t, c;       // crossing = t (p - c) + c for a pixel at p
    int32_t last;
    float decay, power;
    bool square;

    ZV_AVX512 static __m512 Codes4(__m256i v) { return _mm512_cvtepi32_ps(_mm512_cvtepu16_epi32(v)); }
    ZV_AVX512 static __m512 Cut4(__m512 v)
    {
        return _mm512_cvtepi32_ps(_mm512_cvttps_epi32(_mm512_min_ps(_mm512_max_ps(v, _mm512_setzero_ps()), _mm512_set1_ps(65535.0f))));
    }

    ZV_AVX512 void Sixteen(int32_t p, const uint16_t* near, int32_t nearStep, uint16_t* own, ptrdiff_t ownStep) const
    {
        const __m512 pf = _mm512_cvtepi32_ps(_mm512_add_epi32(_mm512_set1_epi32(p), _mm512_setr_epi32(0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15)));
        const __m512 s = _mm512_add_ps(_mm512_mul_ps(_mm512_set1_ps(t), _mm512_sub_ps(pf, _mm512_set1_ps(c))), _mm512_set1_ps(c));
        // The crossing as KCrossing takes it: whole part and fraction below 2e9, else
        // +-2e9 with no fraction, anything not finite at -2e9.
        const __m512 mag = _mm512_abs_ps(s);
        const __mmask16 inRange = _mm512_cmp_ps_mask(mag, _mm512_set1_ps(2.0e9f), _CMP_LT_OQ);
        const __mmask16 high = _mm512_cmp_ps_mask(mag, _mm512_set1_ps(INFINITY), _CMP_LT_OQ) &
                               _mm512_cmp_ps_mask(s, _mm512_setzero_ps(), _CMP_GT_OQ) & ~inRange;
        const __m512i whole = _mm512_cvttps_epi32(s);
        __m512i i = _mm512_mask_mov_epi32(_mm512_set1_epi32(-2000000000), high, _mm512_set1_epi32(2000000000));
        i = _mm512_mask_mov_epi32(i, inRange, whole);
        const __m512 f = _mm512_maskz_sub_ps(inRange, s, _mm512_cvtepi32_ps(whole));
        const __m512i zero = _mm512_setzero_si512(), top = _mm512_set1_epi32(last);
        const __m512i step = _mm512_set1_epi32(nearStep);
        const __m512i i0 = _mm512_mullo_epi32(_mm512_max_epi32(_mm512_min_epi32(i, top), zero), step);
        const __m512i i1 = _mm512_mullo_epi32(_mm512_max_epi32(_mm512_min_epi32(_mm512_add_epi32(i, _mm512_set1_epi32(1)), top), zero), step);
        __m512 w = _mm512_set1_ps(decay);
        if (!square) {
            alignas(64) float d[16];
            _mm512_store_ps(d, _mm512_sub_ps(pf, s));
            for (float& v : d) v = decay * std::pow(v * v + 1.0f, -power);
            w = _mm512_load_ps(d);
        }
        const __m512 keep = _mm512_sub_ps(_mm512_set1_ps(1.0f), w), rest = _mm512_sub_ps(_mm512_set1_ps(1.0f), f);
        const long long* line = reinterpret_cast<const long long*>(near);
        alignas(64) int32_t o0[16], o1[16];
        _mm512_store_si512(o0, i0);
        _mm512_store_si512(o1, i1);
        for (int q = 0; q < 4; ++q) {
            // Each of the quarter's pixels spread over its four channels.
            const __m512i spread = _mm512_add_epi32(_mm512_set1_epi32(4 * q), _mm512_setr_epi32(0, 0, 0, 0, 1, 1, 1, 1, 2, 2, 2, 2, 3, 3, 3, 3));
            const __m128i at0 = _mm_load_si128(reinterpret_cast<const __m128i*>(o0 + 4 * q));
            const __m128i at1 = _mm_load_si128(reinterpret_cast<const __m128i*>(o1 + 4 * q));
            const __m512 a = Codes4(_mm256_i32gather_epi64(line, at0, 8));
            const __m512 b = Codes4(_mm256_i32gather_epi64(line, at1, 8));
            uint16_t* o = own + 4 * ownStep * 4 * q;
            __m256i mine;
            if (ownStep == 1) mine = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(o));
            else
                mine = _mm256_setr_epi64x(*reinterpret_cast<const long long*>(o), *reinterpret_cast<const long long*>(o + 4 * ownStep),
                                          *reinterpret_cast<const long long*>(o + 8 * ownStep), *reinterpret_cast<const long long*>(o + 12 * ownStep));
            const __m512 between = Cut4(_mm512_add_ps(_mm512_mul_ps(a, _mm512_permutexvar_ps(spread, rest)),
                                                      _mm512_mul_ps(b, _mm512_permutexvar_ps(spread, f))));
            const __m512 keeps = square ? keep : _mm512_permutexvar_ps(spread, keep);
            const __m512 ws = square ? w : _mm512_permutexvar_ps(spread, w);
            const __m512 blend = _mm512_add_ps(_mm512_mul_ps(Codes4(mine), keeps), _mm512_mul_ps(between, ws));
            // Cut to 0..65535, so keeping each value's low 16 bits packs it exactly.
            const __m256i packed = _mm512_cvtepi32_epi16(_mm512_cvttps_epi32(_mm512_min_ps(_mm512_max_ps(blend, _mm512_setzero_ps()), _mm512_set1_ps(65535.0f))));
            if (ownStep == 1) _mm256_storeu_si256(reinterpret_cast<__m256i*>(o), packed);
            else {
                const __m128i lo = _mm256_castsi256_si128(packed), hi = _mm256_extracti128_si256(packed, 1);
                _mm_storel_epi64(reinterpret_cast<__m128i*>(o), lo);
                _mm_storeh_pd(reinterpret_cast<double*>(o + 4 * ownStep), _mm_castsi128_pd(lo));
                _mm_storel_epi64(reinterpret_cast<__m128i*>(o + 8 * ownStep), hi);
                _mm_storeh_pd(reinterpret_cast<double*>(o + 12 * ownStep), _mm_castsi128_pd(hi));
            }
        }
    }
};

// The way in and out of the codes, four pixels at a time; the rest as the plain loops do it.
ZV_AVX512 int32_t KFlurCodesIn(const float* f, uint16_t* d, int32_t channels)
{
    int32_t x = 0;
    for (; x + 16 <= channels; x += 16) {
        const __m512 v = _mm512_mul_ps(_mm512_loadu_ps(f + x), _mm512_set1_ps(65535.0f));
        const __m512 cut = _mm512_min_ps(_mm512_max_ps(v, _mm512_setzero_ps()), _mm512_set1_ps(65535.0f));
        _mm256_storeu_si256(reinterpret_cast<__m256i*>(d + x), _mm512_cvtepi32_epi16(_mm512_cvttps_epi32(cut)));
    }
    return x;
}
ZV_AVX512 int32_t KFlurCodesOut(const uint16_t* s, float* d, int32_t channels)
{
    int32_t x = 0;
    for (; x + 16 <= channels; x += 16)
        _mm512_storeu_ps(d + x, _mm512_mul_ps(KFlurLanes::Codes4(_mm256_loadu_si256(reinterpret_cast<const __m256i*>(s + x))),
                                              _mm512_set1_ps(kIntToFloat)));
    return x;
}
#pragma GCC diagnostic pop
#endif

// One run of the rings over 16-bit codes. Each pixel is written once on the way
// out, so until then it still holds its source value: own and neighbours are
// all read from the one buffer.
struct Walk {
    const KRings& r;
    uint16_t* base;
    size_t stride;  // in channels
    float decay, power;
    bool square;
    bool lanes;  // sixteen steps at once where the processor has AVX-512

    uint16_t* Row(int32_t y) const { return base + stride * static_cast<size_t>(y); }
    float Weight(float d) const { return square ? decay : decay * std::pow(d * d + 1.0f, -power); }

    void Row(int32_t y, int32_t from, int32_t x0, int32_t x1) const
    {
        const float t = r.RowT(y, from);
        const uint16_t* near = Row(std::clamp(from, 0, r.height - 1));
        uint16_t* out = Row(y);
        const int32_t last = r.width - 1;
        int32_t x = x0;
#if defined(ZV_LANES)
        // A line at the image's edge reads itself, in order: only the plain walk does that.
        if (lanes && r.RowIn(from)) {
            const KFlurLanes l{t, r.cx, last, decay, power, square};
            for (; x + 16 <= x1; x += 16) l.Sixteen(x, near, 1, out + 4 * x, 1);
        }
#endif
        for (; x < x1; ++x) {
            const float s = t * (static_cast<float>(x) - r.cx) + r.cx;
            int32_t i0, i1;
            float f;
            Crossing(s, last, i0, i1, f);
            Step(Codes(out + 4 * x), near + 4 * i0, near + 4 * i1, f, Weight(static_cast<float>(x) - s), out + 4 * x);
        }
    }

    void Column(int32_t x, int32_t from, int32_t y0, int32_t y1) const
    {
        const float t = r.ColumnT(x, from);
        const size_t near = 4 * static_cast<size_t>(std::clamp(from, 0, r.width - 1)), at = 4 * static_cast<size_t>(x);
        const int32_t last = r.height - 1;
        int32_t y = y0;
#if defined(ZV_LANES)
        if (lanes && r.ColumnIn(from)) {
            const KFlurLanes l{t, r.cy, last, decay, power, square};
            const int32_t step = static_cast<int32_t>(stride / 4);
            for (; y + 16 <= y1; y += 16) l.Sixteen(y, base + near, step, Row(y) + at, static_cast<ptrdiff_t>(stride / 4));
        }
#endif
        for (; y < y1; ++y) {
            const float s = t * (static_cast<float>(y) - r.cy) + r.cy;
            int32_t i0, i1;
            float f;
            Crossing(s, last, i0, i1, f);
            uint16_t* out = Row(y) + at;
            Step(Codes(out), Row(i0) + near, Row(i1) + near, f, Weight(static_cast<float>(y) - s), out);
        }
    }

    void Run() const
    {
        auto row = [this](int32_t y, int32_t from, int32_t x0, int32_t x1) { Row(y, from, x0, x1); };
        auto column = [this](int32_t x, int32_t from, int32_t y0, int32_t y1) { Column(x, from, y0, y1); };
        for (int32_t n = r.first; n < r.count; ++n) r.Outward(n, row, column, [](int32_t n) { return n % 2 == 0; });
        for (int32_t n = r.count; n >= r.first; --n) r.Inward(n, row, column);
    }
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
        // The work rows are an odd number of cache lines apart, so that a walk down a
        // column spreads over the cache's sets; the buffer is kept for the next render.
        stride = (size_t(width) * 8 + 63) / 64 | 1;
        stride *= 32;
        if (workSize < stride * size_t(height)) {
            // A column step moves a whole row on: in 4 KB pages every step of a
            // UHD column is another page, so the buffer asks for 2 MB pages.
            const size_t page = size_t(1) << 21, bytes = (stride * size_t(height) * 2 + page - 1) / page * page;
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
        uint16_t* codes = work.get();
        // Crossings are gathered by 32-bit qword offsets, which a column's must fit.
        const bool lanes = KLaneWidth() >= 32 && size_t(h) * stride / 4 < (size_t(1) << 31);
        // In: the source as 16-bit codes, as the integer pixel read gives them.
        source->EachRow([&](int32_t y, const uint16_t* s, const float* f) {
            uint16_t* d = codes + stride * size_t(y);
            if (s) return void(std::memcpy(d, s, size_t(w) * 8));
            int32_t x = 0;
#if defined(ZV_LANES)
            if (lanes) x = KFlurCodesIn(f, d, 4 * w);
#endif
            for (; x < 4 * w; x += 4) Put(d + x, Cut(_mm_mul_ps(_mm_loadu_ps(f + x), _mm_set1_ps(65535.0f))));
        });
                Walk{rings, codes, stride, decay, power, shape == kSquare, lanes}.Run();
        target->EachRow([&](int32_t y, const uint16_t*, const float*) {
            const uint16_t* s = codes + stride * size_t(y);
            if (!target->IsFloat()) return void(std::memcpy(target->RowW(y), s, size_t(w) * 8));
            float* d = target->RowF(y);
            int32_t x = 0;
#if defined(ZV_LANES)
            if (lanes) x = KFlurCodesOut(s, d, 4 * w);
#endif
            for (; x < 4 * w; x += 4) _mm_storeu_ps(d + x, _mm_mul_ps(Codes(s + x), _mm_set1_ps(kIntToFloat)));
        });
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
    size_t stride = 0;
};

ZV_TOOL(KEffectFlur, ZV_Flur);

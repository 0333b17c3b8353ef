// Flur: a radial blur that costs one read-blend-write per pixel whatever its
// length. Square rings around the centre inherit from their neighbour ring,
// outward and then inward, which makes the blur a recursive filter along each
// ray. It works in 16-bit values at any depth: a float picture is taken to
// 16 bits on the way in, so its values clip to 0..1.
#include <algorithm>
#include <cmath>
#include <cstring>
#include <memory>
#include <vector>
#include <emmintrin.h>
#include "framework/effect.h"
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

// One run of the rings over 16-bit codes. Each pixel is written once on the way
// out, so until then it still holds its source value: own and neighbours are
// all read from the one buffer.
struct Walk {
    const KRings& r;
    uint16_t* base;
    size_t stride;  // in channels
    float decay, power;
    bool square;

    uint16_t* Row(int32_t y) const { return base + stride * static_cast<size_t>(y); }
    float Weight(float d) const { return square ? decay : decay * std::pow(d * d + 1.0f, -power); }

    void Row(int32_t y, int32_t from, int32_t x0, int32_t x1) const
    {
        const float t = r.RowT(y, from);
        const uint16_t* near = Row(std::clamp(from, 0, r.height - 1));
        uint16_t* out = Row(y);
        const int32_t last = r.width - 1;
        for (int32_t x = x0; x < x1; ++x) {
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
        for (int32_t y = y0; y < y1; ++y) {
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
        if (work.size() < stride * size_t(height)) work.resize(stride * size_t(height));
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
        uint16_t* codes = work.data();
        // In: the source as 16-bit codes, as the integer pixel read gives them.
        source->EachRow([&](int32_t y, const uint16_t* s, const float* f) {
            uint16_t* d = codes + stride * size_t(y);
            if (s) return void(std::memcpy(d, s, size_t(w) * 8));
            for (int32_t x = 0; x < 4 * w; x += 4) Put(d + x, Cut(_mm_mul_ps(_mm_loadu_ps(f + x), _mm_set1_ps(65535.0f))));
        });
        Walk{rings, codes, stride, decay, power, shape == kSquare}.Run();
        target->EachRow([&](int32_t y, const uint16_t*, const float*) {
            const uint16_t* s = codes + stride * size_t(y);
            if (!target->IsFloat()) return void(std::memcpy(target->RowW(y), s, size_t(w) * 8));
            float* d = target->RowF(y);
            for (int32_t x = 0; x < 4 * w; x += 4) _mm_storeu_ps(d + x, _mm_mul_ps(Codes(s + x), _mm_set1_ps(kIntToFloat)));
        });
    }

private:
    KPoint2 center;
    float length = 0.2f;
    int32_t shape = 0;
    float exponent = 2.0f;

    float power = 0.5f, decay = 0.0f;  // from Start
    std::vector<uint16_t> work;  // 16-bit codes, `stride` channels a row
    size_t stride = 0;
};

ZV_TOOL(KEffectFlur, ZV_Flur);

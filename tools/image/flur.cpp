// Flur: a radial blur that costs one read-blend-write per pixel whatever its
// length. Square rings around the centre inherit from their neighbour ring,
// outward and then inward, which makes the blur a recursive filter along each
// ray. It works in 16-bit values at any depth: a float picture is taken to
// 16 bits on the way in, so its values clip to 0..1.
#include <algorithm>
#include <cmath>
#include <cstring>
#include <memory>
#include "framework/effect.h"
#include "framework/registration.h"
#include "raster/image.h"
#include "tools/image/rings.h"

namespace {

// Clamped to 0..65535, the fraction cut.
inline uint16_t Cut(float v)
{
    if (!(v > 0.0f)) return 0;
    if (v >= 65535.0f) return 65535;
    return static_cast<uint16_t>(v);
}

// own (1 - w) + (a (1 - f) + b f) w, each blend cut to 16 bits. `out` may be
// `own`, `a` or `b`: each channel is read before it is written.
inline void Step(const uint16_t* own, const uint16_t* a, const uint16_t* b, float f, float w, uint16_t* out)
{
    const float g = 1.0f - f, v = 1.0f - w;
    for (int c = 0; c < 4; ++c) {
        const float i = Cut(static_cast<float>(a[c]) * g + static_cast<float>(b[c]) * f);
        out[c] = Cut(static_cast<float>(own[c]) * v + i * w);
    }
}

// Rows of 16-bit pixels.
struct Plane {
    uint16_t* base = nullptr;
    size_t stride = 0;  // in channels
    uint16_t* Row(int32_t y) const { return base + stride * static_cast<size_t>(y); }
    static Plane Of(const KImage& image) { return {image.RowW(0), image.RowBytes() / sizeof(uint16_t)}; }
};

// One run of the rings: the own value comes from the source on the way out and
// from the target on the way in; neighbours always from the target.
struct Walk {
    const KRings& r;
    Plane src, dst;
    float decay, power;
    bool square;

    float Weight(float d) const { return square ? decay : decay * std::pow(d * d + 1.0f, -power); }

    void Row(int32_t y, int32_t from, int32_t x0, int32_t x1, bool outward) const
    {
        const float t = r.RowT(y, from);
        const uint16_t* near = dst.Row(std::clamp(from, 0, r.height - 1));
        const uint16_t* own = (outward ? src : dst).Row(y);
        uint16_t* out = dst.Row(y);
        const int32_t last = r.width - 1;
        for (int32_t x = x0; x < x1; ++x) {
            const float s = t * (static_cast<float>(x) - r.cx) + r.cx;
            float f;
            const int32_t i = KCrossing(s, f);
            const int32_t i0 = std::clamp(i, 0, last), i1 = std::clamp(i + 1, 0, last);
            Step(own + 4 * x, near + 4 * i0, near + 4 * i1, f, Weight(static_cast<float>(x) - s), out + 4 * x);
        }
    }

    void Column(int32_t x, int32_t from, int32_t y0, int32_t y1, bool outward) const
    {
        const float t = r.ColumnT(x, from);
        const size_t near = 4 * static_cast<size_t>(std::clamp(from, 0, r.width - 1)), at = 4 * static_cast<size_t>(x);
        const Plane& own = outward ? src : dst;
        const int32_t last = r.height - 1;
        for (int32_t y = y0; y < y1; ++y) {
            const float s = t * (static_cast<float>(y) - r.cy) + r.cy;
            float f;
            const int32_t i = KCrossing(s, f);
            const int32_t i0 = std::clamp(i, 0, last), i1 = std::clamp(i + 1, 0, last);
            Step(own.Row(y) + at, dst.Row(i0) + near, dst.Row(i1) + near, f, Weight(static_cast<float>(y) - s),
                 dst.Row(y) + at);
        }
    }

    void Run() const
    {
        auto row = [this](bool out) {
            return [this, out](int32_t y, int32_t from, int32_t x0, int32_t x1) { Row(y, from, x0, x1, out); };
        };
        auto column = [this](bool out) {
            return [this, out](int32_t x, int32_t from, int32_t y0, int32_t y1) { Column(x, from, y0, y1, out); };
        };
        for (int32_t n = r.first; n < r.count; ++n)
            r.Outward(n, row(true), column(true), [](int32_t n) { return n % 2 == 0; });
        for (int32_t n = r.count; n >= r.first; --n) r.Inward(n, row(false), column(false));
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
        Walk walk{rings, {}, {}, decay, power, shape == kSquare};
        // A float picture is worked in 16-bit copies; a 16-bit one in place.
        std::unique_ptr<KImage> words, result;
        if (target->IsFloat()) {
            words.reset(KImage::Create(w, h, false));
            result.reset(KImage::Create(w, h, false));
            ToWords(*source, *words, *result);
            walk.src = Plane::Of(*words);
            walk.dst = Plane::Of(*result);
        } else {
            for (int32_t y = 0; y < h; ++y) std::memcpy(target->RowW(y), source->RowW(y), size_t(w) * 8);
            walk.src = Plane::Of(*source);
            walk.dst = Plane::Of(*target);
        }
        walk.Run();
        if (target->IsFloat()) FromWords(*result, *target);
    }

private:
    // The float source as 16-bit values, into both work planes.
    static void ToWords(const KImage& from, KImage& a, KImage& b)
    {
        from.EachRow([&](int32_t y, const uint16_t*, const float* f) {
            uint16_t* p = a.RowW(y);
            for (int32_t i = 0; i < 4 * from.width; ++i) p[i] = static_cast<uint16_t>(KFloatToInt(f[i]));
            std::memcpy(b.RowW(y), p, size_t(from.width) * 8);
        });
    }
    static void FromWords(const KImage& from, KImage& to)
    {
        from.EachRow([&](int32_t y, const uint16_t* w, const float*) {
            float* p = to.RowF(y);
            for (int32_t i = 0; i < 4 * from.width; ++i) p[i] = KIntToFloat(w[i]);
        });
    }

    KPoint2 center;
    float length = 0.2f;
    int32_t shape = 0;
    float exponent = 2.0f;

    float power = 0.5f, decay = 0.0f;  // from Start
};

ZV_TOOL(KEffectFlur, ZV_Flur);

// Microwaves: light radiating from a centre. The rings of Flur run outward
// only, on a black target: each pixel adds what it emits to what reaches it
// from the ring before, and the light is then laid over the source. Unlike
// Flur, reads beyond the picture are black, and both depths have their own path.
#include <algorithm>
#include <cmath>
#include <memory>
#include <type_traits>
#include "framework/effect.h"
#include "framework/registration.h"
#include "raster/image.h"
#include "tools/image/rings.h"

namespace {

// The two depths: a channel's type, how the light's inherited part is taken
// before the emitted part is added, and how the sum is stored.
struct Words {
    using T = uint16_t;
    static T* Row(const KImage& i, int32_t y) { return i.RowW(y); }
    static float Carried(float v) { return std::trunc(v); }
    static T Store(float v) { return !(v > 0.0f) ? 0 : v >= 65535.0f ? 65535 : static_cast<T>(v); }
};
struct Floats {
    using T = float;
    static T* Row(const KImage& i, int32_t y) { return i.RowF(y); }
    static float Carried(float v) { return v; }
    static T Store(float v) { return v; }
};

template <class D> struct Light {
    using T = typename D::T;
    const KRings& r;
    const KImage& target;
    const KImage& emitter;
    float decay, power, brightness;
    bool square;

    // A pixel of the target, black beyond the picture.
    const T* Read(int32_t x, int32_t y) const
    {
        static const T black[4] = {};
        if (x < 0 || y < 0 || x >= r.width || y >= r.height) return black;
        return D::Row(target, y) + 4 * static_cast<size_t>(x);
    }
    float Weight(float d) const { return square ? decay : decay * std::pow(d * d + 1.0f, -power); }
    void Put(int32_t x, int32_t y, const T* a, const T* b, float f, float w) const
    {
        const T* e = D::Row(emitter, y) + 4 * static_cast<size_t>(x);
        T* out = D::Row(target, y) + 4 * static_cast<size_t>(x);
        const float g = 1.0f - f;
        for (int c = 0; c < 4; ++c) {
            const float carried = D::Carried(static_cast<float>(a[c]) * g + static_cast<float>(b[c]) * f);
            out[c] = D::Store(carried * w + static_cast<float>(e[c]) * brightness);
        }
    }
    void Row(int32_t y, int32_t from, int32_t x0, int32_t x1) const
    {
        const float t = r.RowT(y, from);
        for (int32_t x = x0; x < x1; ++x) {
            const float s = t * (static_cast<float>(x) - r.cx) + r.cx;
            float f;
            const int32_t i = KCrossing(s, f);
            Put(x, y, Read(i, from), Read(i + 1, from), f, Weight(static_cast<float>(x) - s));
        }
    }
    void Column(int32_t x, int32_t from, int32_t y0, int32_t y1) const
    {
        const float t = r.ColumnT(x, from);
        for (int32_t y = y0; y < y1; ++y) {
            const float s = t * (static_cast<float>(y) - r.cy) + r.cy;
            float f;
            const int32_t i = KCrossing(s, f);
            Put(x, y, Read(from, i), Read(from, i + 1), f, Weight(static_cast<float>(y) - s));
        }
    }
    void Run(bool centreInside) const
    {
        if (centreInside) {
            const T* e = D::Row(emitter, r.icy) + 4 * static_cast<size_t>(r.icx);
            T* out = D::Row(target, r.icy) + 4 * static_cast<size_t>(r.icx);
            for (int c = 0; c < 4; ++c) out[c] = D::Store(static_cast<float>(e[c]) * brightness);
        }
        for (int32_t n = r.first; n < r.count; ++n)
            r.Outward(
                n, [this](int32_t y, int32_t from, int32_t x0, int32_t x1) { Row(y, from, x0, x1); },
                [this](int32_t x, int32_t from, int32_t y0, int32_t y1) { Column(x, from, y0, y1); },
                [](int32_t) { return false; });
    }
};

}  // namespace

class KEffectMicrowaves : public KEffectThreads {
public:
    enum Shape : int32_t { kSquare = 0, kRound, kAxial };

    KEffectMicrowaves()
    {
        KParameterList& in = inputList;
        in.AddPage("Microwave");
        in.AddPoint(&center, {0.5f, 0.5f}, "Center", "Cent"_id, kFlagPreview, 0);
        in.AddSlider(&blendOriginal, 1.0f, "Blend original", "ExBl"_id, 0, 0.0, 1.0);
        in.AddSlider(&brightness, 0.05f, "Brightness", "ExGa"_id, kFlagHardMax, 0.0, 0.1);
        in.AddSlider(&fullEdges, 0.0f, "Full                                                    edges", "ExEd"_id, 0,
                     0.0, 1.0);
        in.AddSlider(&length, 0.5f, "Length", "Leng"_id, 0, 0.0, 1.0);
        in.AddMultiButton(&shape, 0, "Shape", "Shap"_id, kFlagNotify, {"Square", "Round", "Axial", "[end]"});
        in.AddSlider(&exponent, 2.0f, "Exponent", "Expo"_id, kFlagHidden | kFlagHardMax, 0.0, 100.0);
        in.AddMaskInput(&mask, "Microwaves Mask", 0, 0);
    }

    bool Start(KImage* input, KImage** output, void* extras) override
    {
        if (!KEffectThreads::Start(input, output, extras)) return false;
        const float a = 1.0f - length, a2 = a * a, a5 = a2 * a2 * a, v = a5 * a5;
        power = shape == kRound ? v * 0.6666667f : 1.0f / exponent;
        // Geometric in the width, where Flur's decay is linear.
        decay = static_cast<float>(std::pow(1.0 - static_cast<double>(v), 720.0 / static_cast<double>(width)));
        emitter.reset();
        if (fullEdges > 0.0f) {
            emitter.reset(input->SobelEdges());
            emitter->Blend(*input, 1.0f - fullEdges);
        }
        if (mask) {
            if (!emitter) emitter.reset(input->Clone());  // the source itself stays untouched
            emitter->MaskByAlpha(*mask);
        }
        return true;
    }

    void Stop(KImage** output) override
    {
        emitter.reset();
        KEffectThreads::Stop(output);
    }

    KMessageList OnChange(uint32_t id, const KMessageValue& value) override
    {
        KMessageList list;
        if (id == "Shap"_id) list.Add(kMessageVisible, "Expo"_id, value.intValue == kAxial ? 1.0f : 0.0f);
        return list;
    }

    int32_t GetPassCount() override { return 2; }
    // Pass 0 is one job, the first; it answers the row count too because a
    // serial run asks pass 0's count for every pass.
    int32_t GetJobCount(int32_t pass) override { return height; }

    void ProcessJob(int32_t pass, int32_t job, KImage* source, KImage* target) override
    {
        if (target->IsFloat()) Job<Floats>(pass, job, *source, *target);
        else Job<Words>(pass, job, *source, *target);
    }

private:
    template <class D> void Job(int32_t pass, int32_t job, const KImage& source, KImage& target) const
    {
        if (pass == 0) {
            if (job != 0) return;
            target.Clear();
            const int32_t w = target.width, h = target.height;
            const float x = static_cast<float>(w) * center.x, y = static_cast<float>(h) * center.y;
            const KRings rings(x, y, w, h);
            const Light<D> light{rings, target, emitter ? *emitter : source, decay, power, brightness,
                                 shape == kSquare};
            light.Run(x >= 0.0f && y >= 0.0f && x < static_cast<float>(w) && y < static_cast<float>(h));
            return;
        }
        if (!(blendOriginal > 0.0f) || job >= target.height) return;
        const auto* s = D::Row(source, job);
        auto* d = D::Row(target, job);
        for (int32_t x = 0; x < target.width; ++x, s += 4, d += 4) Over<D>(s, d);
    }

    // The source, times Blend original, under the light.
    template <class D> void Over(const typename D::T* s, typename D::T* d) const
    {
        if constexpr (std::is_same_v<D, Floats>) {
            const float k = 1.0f - d[3];
            const bool clear = d[3] == 0.0f;
            for (int c = 0; c < 4; ++c) {
                const float v = blendOriginal < 1.0f ? s[c] * blendOriginal : s[c];
                d[c] = clear ? v + d[c] : v * k + d[c];
            }
        } else {
            const uint32_t k = 65535u - d[3];
            const bool clear = d[3] == 0;
            for (int c = 0; c < 4; ++c) {
                uint32_t v = s[c];
                if (blendOriginal < 1.0f) v = static_cast<uint32_t>(static_cast<float>(v) * blendOriginal);
                d[c] = static_cast<uint16_t>(std::min((clear ? v : KScaleInt(v, k)) + d[c], 65535u));
            }
        }
    }

    KPoint2 center;
    float blendOriginal = 1.0f, brightness = 0.05f, fullEdges = 0.0f, length = 0.5f;
    int32_t shape = 0;
    float exponent = 2.0f;
    KImage* mask = nullptr;

    float power = 0.5f, decay = 0.0f;  // from Start
    std::unique_ptr<KImage> emitter;    // null: the source emits
};

ZV_TOOL(KEffectMicrowaves, ZV_Microwaves);

// Match Color: maps up to three source colours (low, mid, high) onto wanted
// ones, linearly per channel, or through a gamma curve when a mid pair is given.
// Float and integer paths differ on purpose: the float path with fewer than
// three colours computes blue from the input alpha and keeps alpha, with three
// it clears alpha; the integer path reads a table and always keeps alpha.
#include <algorithm>
#include <cmath>
#include <memory>
#include "framework/effect.h"
#include "framework/registration.h"
#include "raster/pixel_store.h"

class KEffectMatchColor : public KEffectColor {
public:
    KEffectMatchColor()
    {
        static const char* const kMatch[3] = {"Shadows match", "Midtones match",
                                              "Highlights match"};
        static const char* const kIs[3] = {"What it is 1", "What it is 2", "What it is 3"};
        static const char* const kShould[3] = {"What it should be 1", "What it should be 2",
                                               "What it should be 3"};
        inputList.AddPage("Match Color");
        inputList.AddMultiButton(&colorCount, 2, "Number of colors", "CoNu"_id, kFlagNotify,
                                 {"Single", "Low and High", "Low, Mid && High", "[end]"});
        for (uint32_t i = 0; i < 3; ++i) {
            const float grey = 0.5f * static_cast<float>(i);
            const KColor def{grey, grey, grey, 0.0f};
            inputList.AddMultiButton(&rowType[i], 0, kMatch[i], "CTy0"_id + i, 0,
                                     {"Full color", "Color tint", "Luminance", "[end]"});
            inputList.AddColor(&source[i], def, kIs[i], "CSR0"_id + i, 0);
            inputList.AddColor(&wanted[i], def, kShould[i], "CDR0"_id + i, 0);
        }
    }


    // Rows ending in 1 (mid) need three colours, rows ending in 2 (high) two.
    KMessageList OnChange(uint32_t id, const KMessageValue& value) override
    {
        KMessageList list;
        if (id == "CoNu"_id) {
            for (uint32_t row = 1; row <= 2; ++row) {
                const float show = value.intValue > static_cast<int32_t>(2 - row) ? 1.0f : 0.0f;
                for (uint32_t base : {"CTy0"_id, "CSR0"_id, "CDR0"_id})
                    list.Add(kMessageVisible, base + row, show);
            }
        }
        return list;
    }

    bool Start(KImage* input, KImage** output, void* extras) override
    {
        KEffectImage::Start(input, output, extras);
        colors = colorCount + 1;
        KColor want[3];
        for (int i = 0; i < 3; ++i) {
            want[i] = wanted[i];
            if (rowType[i] != 1 && rowType[i] != 2) continue;
            const float d = Average(wanted[i]) - Average(source[i]);
            for (int c = 0; c < 3; ++c) {
                float& w = (&want[i].r)[c];
                w = rowType[i] == 1 ? w - d : (&source[i].r)[c] + d;
            }
        }
        for (int c = 0; c < 4; ++c) {
            const float s0 = (&source[0].r)[c], s1 = (&source[1].r)[c], s2 = (&source[2].r)[c];
            const float w0 = (&want[0].r)[c], w1 = (&want[1].r)[c], w2 = (&want[2].r)[c];
            Curve& k = curve[c];
            k.source0 = s0;
            k.want0 = w0;
            k.srcSpan = s2 - s0;
            k.dstSpan = w2 - w0;
            k.ratio = colors == 1 || c == 3 ? 1.0f : k.dstSpan / k.srcSpan;
            k.gamma = 1.0f;
            if (c < 3 && k.srcSpan != 0.0f && k.dstSpan != 0.0f && Between(w1, w0, w2) &&
                Between(s1, s0, s2))
                k.gamma = std::log((w1 - w0) / k.dstSpan) / std::log((s1 - s0) / k.srcSpan);
            k.useGamma = colors == 3;
        }
        table.reset();
        if (settings.depth != 2) {
            table = std::make_unique<Entry[]>(65536);
            for (uint32_t i = 0; i < 65536; ++i) {
                const float x = static_cast<float>(i) * 1.5258789e-05f;
                for (int c = 0; c < 3; ++c) {
                    const double v = static_cast<double>(curve[c](x)) * 65536.0;
                    table[i].v[c] = v > 0.0 ? static_cast<uint32_t>(std::min(v, 65535.0)) : 0u;
                }
                table[i].v[3] = 0;
            }
        }
        return true;
    }

    void Stop(KImage** output) override
    {
        KEffectImage::Stop(output);
        table.reset();
    }

    void ProcessColor(KPixelF& out, const KPixelF& in) override
    {
        const float r = curve[0](in.r), g = curve[1](in.g);
        if (colors == 3) {
            KStorePixel(out, r, g, curve[2](in.b), 0.0f);
        } else {
            const Curve& k = curve[2];
            KStorePixel(out, r, g, (in.a - k.source0) * k.ratio + k.want0, in.a);
        }
    }

    void ProcessColorInt(KPixel& out, const KPixel& in) override
    {
        if (!table) {
            out = in;
            return;
        }
        KStorePixel(out, table[in.r].v[0], table[in.g].v[1], table[in.b].v[2], in.a);
    }

private:
    struct Curve {
        float source0 = 0.0f, want0 = 0.0f, srcSpan = 1.0f, dstSpan = 1.0f, ratio = 1.0f,
              gamma = 1.0f;
        bool useGamma = false;
        float operator()(float x) const
        {
            const float d = x - source0;
            const float v = useGamma && d > 0.0f ? std::pow(d / srcSpan, gamma) * dstSpan
                                                 : d * ratio;
            return v + want0;
        }
    };
    struct Entry {
        uint32_t v[4];
    };

    static float Average(const KColor& c) { return (c.r + c.g + c.b) * 0.33333334f; }
    // Strictly inside the span from a to b, whichever way it runs.
    static bool Between(float v, float a, float b)
    {
        return (a < v && v < b) || (b < v && v < a);
    }

    int32_t colorCount = 2;
    int32_t rowType[3] = {0, 0, 0};
    KColor source[3], wanted[3];

    int32_t colors = 3;
    Curve curve[4];
    std::unique_ptr<Entry[]> table;
};

ZV_TOOL(KEffectMatchColor, ZV_MatchColor);

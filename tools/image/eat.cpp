// Eat: removes a band along edges of regions. A region is a run of pixels
// whose base value lies in the eat range; walking each line in from a side
// that is switched on, a pixel's depth is the count of region pixels since the
// last pixel outside it. Pixels less than Length deep take the colour, and a
// band of Noise length before that mixes the two at random.
#include <algorithm>
#include <vector>
#include "framework/effect.h"
#include "framework/numeric.h"
#include "framework/registration.h"
#include "raster/image.h"

class KEffectEat : public KEffectPixel {
public:
    KEffectEat()
    {
        KParameterList& in = inputList;
        in.AddPage("Eat");
        in.AddSlider(&length, 0.01f, "Length", "EaLe"_id, kFlagHardMax, 0.0, 0.2);
        in.AddSlider(&noiseLength, 0.5f, "Noise length", "EaNL"_id, 0, 0.0, 1.0);
        in.AddChannelSelect(&channel, 4, "Base channel", "EaCh"_id, 0);
        in.AddRange(&range, 0.0f, 0.01f, "Eat range low", "high", 1164005960u, 1164005964u, 0, 0.0, 1.0);
        in.AddCheckbox(&left, false, "Left", "EaSL"_id, 0, 0);
        in.AddCheckbox(&right, false, "Right", "EaSR"_id, 0, 0);
        in.AddCheckbox(&top, true, "Top", "EaST"_id, 0, 0);
        in.AddCheckbox(&bottom, false, "Bottom", "EaSB"_id, 0, 0);
        in.AddColor(&color, {0.0f, 0.0f, 0.0f, 0.0f}, "Color", "EaCR"_id, 0);
    }

    bool Start(KImage* input, KImage** output, void* extras) override
    {
        if (!KEffectPixel::Start(input, output, extras)) return false;
        // Rows run upward: the picture's top is the last row.
        const bool fromLast = settings.prepared ? top : bottom, fromFirst = settings.prepared ? bottom : top;
        const int32_t w = width, h = height;
        depth.assign(size_t(w) * h, 65535u);
        std::vector<uint8_t> in(size_t(w) * h);
        const uint32_t low = static_cast<uint32_t>(range.low * 65535.0f), high = static_cast<uint32_t>(range.high * 65535.0f);
        input->EachRow([&](int32_t y, const uint16_t* wd, const float* f) {
            for (int32_t x = 0; x < w; ++x) {
                const uint32_t v = KImage::ChannelValue(wd, f, x, channel);
                in[size_t(y) * w + x] = low <= v && v <= high;
            }
        });
        // One walk along a line from one side: `n` pixels `step` apart from `at`.
        auto walk = [&](size_t at, ptrdiff_t step, int32_t n) {
            uint32_t counter = 65535u;
            for (int32_t i = 0; i < n; ++i, at += step) {
                counter = in[at] ? counter + 1 : 0;
                depth[at] = std::min(depth[at], counter);
            }
        };
        for (int32_t y = 0; y < h; ++y) {
            if (left) walk(size_t(y) * w, 1, w);
            if (right) walk(size_t(y) * w + w - 1, -1, w);
        }
        for (int32_t x = 0; x < w; ++x) {
            if (fromFirst) walk(x, w, h);
            if (fromLast) walk(size_t(h - 1) * w + x, -ptrdiff_t(w), h);
        }
        eaten = static_cast<int32_t>(static_cast<float>(w) * length);
        noisy = static_cast<int32_t>(static_cast<float>(eaten) * noiseLength);
        colorInt = {KFloatToInt(color.r), KFloatToInt(color.g), KFloatToInt(color.b), KFloatToInt(color.a)};
        return true;
    }

    void ProcessPixel(KPixel& out, int32_t x, int32_t y, KImage* image) override
    {
        image->GetPixel(x, y, out, kEdgeBlack);
        float k;
        if (Mix(x, y, k)) return;
        for (int c = 0; c < 4; ++c)
            out[c] = static_cast<uint32_t>(static_cast<float>(out[c]) * k + static_cast<float>(colorInt[c]) * (1.0f - k));
    }

    void ProcessPixelFloat(KPixelF& out, int32_t x, int32_t y, KImage* image) override
    {
        image->GetPixel(x, y, out, kEdgeBlack);
        float k;
        if (Mix(x, y, k)) return;
        const KPixelF c{color.r, color.g, color.b, color.a};
        for (int i = 0; i < 4; ++i) out[i] = out[i] * k + c[i] * (1.0f - k);
    }

    void Stop(KImage** output) override
    {
        std::vector<uint32_t>().swap(depth);
        KEffectPixel::Stop(output);
    }

private:
    // True when the pixel stays; otherwise k is how much of it is kept. The
    // noise is seeded afresh on each row, so a render is the same on any
    // number of threads.
    bool Mix(int32_t x, int32_t y, float& k) const
    {
        const int32_t v = static_cast<int32_t>(depth[size_t(y) * width + x]);
        if (x == 0) KRandomSeed(1234 + y);
        if (v >= eaten) return true;
        k = v > eaten - noisy ? KRandom(1.0f) * (static_cast<float>(v - eaten + noisy) / static_cast<float>(noisy)) : 0.0f;
        return false;
    }

    float length = 0.01f, noiseLength = 0.5f;
    int32_t channel = 4;
    KRange2 range{0.0f, 0.01f};
    bool left = false, right = false, top = true, bottom = false;
    KColor color;

    std::vector<uint32_t> depth;  // from Start, one entry a pixel
    int32_t eaten = 0, noisy = 0;
    KPixel colorInt;
};

ZV_TOOL(KEffectEat, ZV_Eat);

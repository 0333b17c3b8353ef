// Pack: redraws the picture as the items of its packing, each a rectangle or
// a disc in its mean colour, apart by a gap, over a transparent background or
// the picture itself.
#include <algorithm>
#include <cmath>
#include "framework/effect.h"
#include "framework/registration.h"
#include "raster/image.h"
#include "tools/image/packing.h"

class KEffectPack : public KEffectPixel {
public:
    KEffectPack()
    {
        inputList.AddPage("Pack");
        settings.Declare(inputList);
        inputList.AddMultiButton(&draw, 0, "Draw", "PDra"_id, 0, {"Rectangles", "Discs", "[end]"});
        inputList.AddSlider(&gap, 1.0f, "Gap", "PGap"_id, 0, 0.0, 20.0);
        inputList.AddMultiButton(&background, 0, "Background", "PBac"_id, 0, {"Transparent", "Picture", "[end]"});
    }

    bool Start(KImage* input, KImage** output, void* extras) override
    {
        if (!KEffectImage::Start(input, output, extras) || !input) return false;
        const float scale = input->ProxyScale();
        items = KPack(*input, settings, scale, &cover);
        halfGap = gap * 0.5f * scale;
        return true;
    }

    void Stop(KImage** output) override
    {
        items.clear();
        cover.clear();
        KEffectImage::Stop(output);
    }

    void ProcessPixelFloat(KPixelF& out, int32_t x, int32_t y, KImage* image) override
    {
        KPixelF under;
        if (background == 1) image->GetPixel(x, y, under, 0);
        const int32_t i = cover[size_t(y) * width + x];
        if (i < 0) {
            out = under;
            return;
        }
        const float k = Coverage(items[size_t(i)], float(x), float(y));
        for (int c = 0; c < 4; ++c) out[c] = items[size_t(i)].color[c] * k + under[c] * (1.0f - k);
    }

private:
    // How much of pixel (x, y) the item's shape covers, the gap taken off every side.
    float Coverage(const KPackItem& item, float x, float y) const
    {
        const float l = float(item.left) + halfGap, r = float(item.right) - halfGap;
        const float b = float(item.bottom) + halfGap, t = float(item.top) - halfGap;
        if (l >= r || b >= t) return 0.0f;
        if (draw == 0) {
            const float cx = std::clamp(std::min(x + 1.0f, r) - std::max(x, l), 0.0f, 1.0f);
            const float cy = std::clamp(std::min(y + 1.0f, t) - std::max(y, b), 0.0f, 1.0f);
            return cx * cy;
        }
        // A disc as large as the shorter side, edged over one pixel.
        const float radius = std::min(r - l, t - b) * 0.5f;
        const float d = std::hypot(x + 0.5f - (l + r) * 0.5f, y + 0.5f - (b + t) * 0.5f);
        return std::clamp(radius - d + 0.5f, 0.0f, 1.0f);
    }

    KPackSettings settings;
    int32_t draw = 0, background = 0;
    float gap = 1.0f, halfGap = 0.5f;
    std::vector<KPackItem> items;
    std::vector<int32_t> cover;
};

ZV_TOOL(KEffectPack, ZV_Pack);

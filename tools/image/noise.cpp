// Noise: random or hashed values per pixel or per grid cell that replace,
// add to or subtract from the source. Every draw seeds the generator itself,
// so a cell keeps its colour whichever thread renders it.
#include <cmath>
#include <string>
#include "framework/effect.h"
#include "framework/numeric.h"
#include "framework/registration.h"
#include "raster/image.h"

namespace {

constexpr int32_t kTableSize = 64;
constexpr uint32_t kTableStep = 256;  // ids of the table: ColR, ComR, ConR, ...

inline KPixelF ReadPixel(const KImage* image, int32_t x, int32_t y)
{
    if (image->IsFloat()) {
        const float* s = image->RowF(y) + 4 * x;
        return {s[0], s[1], s[2], s[3]};
    }
    const uint16_t* s = image->RowW(y) + 4 * x;
    return {KIntToFloat(s[0]), KIntToFloat(s[1]), KIntToFloat(s[2]), KIntToFloat(s[3])};
}

// Table defaults: fully saturated hues a golden section apart, starting at red.
KColor TableDefault(int32_t i)
{
    const float h = std::fmod(static_cast<float>(i) * 0.381966f, 1.0f) * 6.0f;
    const float f = h - std::floor(h);
    switch (static_cast<int32_t>(h)) {
    case 0: return {1.0f, f, 0.0f, 1.0f};
    case 1: return {1.0f - f, 1.0f, 0.0f, 1.0f};
    case 2: return {0.0f, 1.0f, f, 1.0f};
    case 3: return {0.0f, 1.0f - f, 1.0f, 1.0f};
    case 4: return {f, 0.0f, 1.0f, 1.0f};
    default: return {1.0f, 0.0f, 1.0f - f, 1.0f};
    }
}

}  // namespace

class KEffectNoise : public KEffectPixel {
public:
    KEffectNoise()
    {
        KParameterList& in = inputList;
        in.AddSeed(&seed, "Random Seed", "Seed"_id, 0);
        in.AddSeed(&seedOffset, "Random Seed Offset", "SeOf"_id, 0);
        in.AddMultiButton(&base, 0, "Base", "Base"_id, kFlagNotify, {"Position", "Color", "[end]"});
        in.AddMultiButton(&combine, 0, "How to combine", "Comb"_id, 0,
                          {"Replace", "Add", "Substract", "[end]"});
        in.AddMultiButton(&channel, 4, "Channel used", "Chan"_id, kFlagNotify,
                          {"Red", "Green", "Blue", "Alpha", "Lumin.", "Each", "[end]"});
        in.AddMultiButton(&noiseType, 1, "Noise Type", "NoiT"_id, 0, {"Random", "Hash", "[end]"});
        in.AddMultiButton(&sizeMode, 0, "Size", "Size"_id, 0, {"Pixel", "Grid", "[end]"});
        in.AddSlider(&sizeX, 1, "Size X", "SizX"_id, kFlagHardMax, 1, 32);
        in.AddSlider(&sizeY, 1, "Size Y", "SizY"_id, kFlagHardMax, 1, 32);
        in.AddMultiButton(&colors, 0, "Colors", "Type"_id, kFlagNotify,
                          {"Random", "Selected", "[end]"});
        in.AddSlider(&count, 3, "Number of colors", "Coun"_id, kFlagNotify, 1, 63);
        for (int32_t i = 0; i < kTableSize; ++i)
            in.AddColor(&table[i], TableDefault(i), ("Color " + std::to_string(i + 1)).c_str(),
                        TableId(i), 0);
    }

    bool Start(KImage* input, KImage** output, void* extras) override
    {
        if (!KEffectImage::Start(input, output, extras)) return false;
        // Sizes of 0 would divide by zero, and counts beyond the table read past it.
        cellX = sizeX == 0 ? 1 : sizeX;
        cellY = sizeY == 0 ? 1 : sizeY;
        tableCount = count < 1 ? 1 : count > kTableSize ? kTableSize : count;
        return true;
    }

    void ProcessPixelFloat(KPixelF& out, int32_t x, int32_t y, KImage* image) override
    {
        const KPixelF in = ReadPixel(image, x, y);
        float v[4] = {in.r, in.g, in.b, in.a};
        float drawn[4];
        if (base == 0) DrawForCell(drawn, x, y);
        else DrawForColor(drawn, v);
        if (combine == 1) {
            for (int c = 0; c < 4; ++c) v[c] += drawn[c];
        } else if (combine == 2) {
            for (int c = 0; c < 4; ++c) v[c] -= drawn[c];
        } else {
            for (int c = 0; c < 4; ++c) v[c] = drawn[c];
        }
        out = {v[0], v[1], v[2], v[3]};
    }

    KMessageList OnChange(uint32_t id, const KMessageValue& value) override
    {
        KMessageList list;
        if (id == "Base"_id) shownBase = value.intValue;
        else if (id == "Coun"_id) shownCount = value.intValue;
        else if (id == "Type"_id) shownColors = value.intValue;
        else return list;

        const bool byColor = shownBase == 1, byPosition = shownBase == 0;
        const bool selected = byPosition && shownColors == 1;
        auto show = [&list](uint32_t target, bool on) {
            list.Add(kMessageVisible, target, on ? 1.0f : 0.0f);
        };
        show("Chan"_id, byColor);
        show("NoiT"_id, byColor);
        show("Size"_id, byPosition);
        show("SizX"_id, byPosition);
        show("SizY"_id, byPosition);
        show("Type"_id, byPosition);
        show("Coun"_id, selected);
        for (int32_t i = 0; i < kTableSize; ++i) show(TableId(i), selected && i < shownCount);
        return list;
    }

    static uint32_t TableId(int32_t i) { return "ColR"_id + kTableStep * static_cast<uint32_t>(i); }

private:
    void DrawForCell(float drawn[4], int32_t x, int32_t y) const
    {
        int32_t cx, cy;
        if (sizeMode == 1) {
            cx = sizeX * x / width;
            cy = sizeY * y / height;
        } else {
            cx = x / cellX;
            cy = y / cellY;
        }
        KRandomSeed(cx + cy * width + seed);
        if (colors == 1) {
            const KColor& c = table[KRandomInt(tableCount)];
            drawn[0] = c.r;
            drawn[1] = c.g;
            drawn[2] = c.b;
            drawn[3] = c.a;
        } else {
            for (int c = 0; c < 4; ++c) drawn[c] = KRandom(1.0f);
        }
    }

    void DrawForColor(float drawn[4], const float in[4]) const
    {
        float v[4];
        switch (channel) {
        case 0: case 1: case 2: case 3:
            v[0] = v[1] = v[2] = v[3] = in[channel];
            break;
        case 5:
            for (int c = 0; c < 4; ++c) v[c] = in[c];
            break;
        default: {
            const float hi = std::fmax(in[0], std::fmax(in[1], in[2]));
            const float lo = std::fmin(in[0], std::fmin(in[1], in[2]));
            v[0] = v[1] = v[2] = v[3] = (hi + lo) * 0.5f;
        }
        }
        for (int32_t n = 0; n < 4; ++n) {
            const int32_t channelSeed = seed + n * seedOffset;
            if (noiseType == 0) {
                KRandomSeed(channelSeed + static_cast<int32_t>(v[n] * 65535.0f));
                drawn[n] = KRandom(1.0f);
            } else {
                const float h =
                    sinf(19.123f * cosf((static_cast<float>(channelSeed) + v[n]) * 12.13f)) *
                    17.321f;
                drawn[n] = h - floorf(h);
            }
        }
    }

    int32_t seed = 0;
    int32_t seedOffset = 0;
    int32_t base = 0;
    int32_t combine = 0;
    int32_t channel = 4;
    int32_t noiseType = 1;
    int32_t sizeMode = 0;
    int32_t sizeX = 1, sizeY = 1;
    int32_t colors = 0;
    int32_t count = 3;
    KColor table[kTableSize];

    // Built in Start.
    int32_t cellX = 1, cellY = 1;
    int32_t tableCount = 3;

    // What OnChange has been told so far, to lay out the controls.
    int32_t shownBase = 0, shownCount = 3, shownColors = 0;
};

ZV_TOOL(KEffectNoise, ZV_Noise);

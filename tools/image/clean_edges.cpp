// Clean Edges: replaces a border of the picture, by a colour or by repeating
// the nearest pixel of the inner area. Counts are in full-size pixels.
#include <algorithm>
#include "framework/effect.h"
#include "framework/registration.h"
#include "raster/image.h"

class KEffectCleanEdges : public KEffectPixel {
public:
    enum Lock : int32_t { kAll = 0, kPairs, kNone };

    KEffectCleanEdges()
    {
        KParameterList& in = inputList;
        in.AddPage("Edge Cleaner");
        in.AddMultiButton(&lock, 0, "Lock", "Lock"_id, kFlagNotify, {"All Sides", "Vert./Horiz.", "None", "[end]"});
        in.AddSlider(&pixels[0], 10, "Pixels Left", "PixL"_id, kFlagHardMax, 0, 40);
        in.AddSlider(&pixels[1], 10, "Pixels Right", "PixR"_id, kFlagHardMax, 0, 40);
        in.AddSlider(&pixels[2], 10, "Pixels Top", "PixT"_id, kFlagHardMax, 0, 40);
        in.AddSlider(&pixels[3], 10, "Pixels Bottom", "PixB"_id, kFlagHardMax, 0, 40);
        in.AddMultiButton(&type, 1, "Type", "Type"_id, kFlagNotify, {"Solid", "Duplicate", "[end]"});
        in.AddColor(&color, {0.0f, 0.0f, 0.0f, 1.0f}, "Color", "ColR"_id, kFlagHidden);
    }

    KMessageList OnChange(uint32_t id, const KMessageValue& value) override
    {
        KMessageList list;
        if (id != "Lock"_id) return list;
        const int32_t l = value.intValue;
        list.Add(kMessageVisible, "PixT"_id, l > 0 ? 1.0f : 0.0f);
        list.Add(kMessageVisible, "PixR"_id, l > 1 ? 1.0f : 0.0f);
        list.Add(kMessageVisible, "PixB"_id, l > 1 ? 1.0f : 0.0f);
        if (l == kAll) {
            list.Add(kMessageLabel, "PixL"_id, std::string("Pixels"));
        } else if (l == kPairs) {
            list.Add(kMessageLabel, "PixL"_id, std::string("Pixels Left/Right"));
            list.Add(kMessageLabel, "PixT"_id, std::string("Pixels Top/Bottom"));
        } else {
            list.Add(kMessageLabel, "PixL"_id, std::string("Pixels Left"));
            list.Add(kMessageLabel, "PixT"_id, std::string("Pixels Top"));
            list.Add(kMessageLabel, "PixR"_id, std::string("Pixels Right"));
            list.Add(kMessageLabel, "PixB"_id, std::string("Pixels Bottom"));
        }
        return list;
    }

    bool Start(KImage* input, KImage** output, void* extras) override
    {
        if (!KEffectPixel::Start(input, output, extras)) return false;
        const int32_t proxy = std::max(static_cast<int32_t>(input->ProxyScale()), 1);
        int32_t l = pixels[0] / proxy, r = pixels[1] / proxy, t = pixels[2] / proxy, b = pixels[3] / proxy;
        if (lock == kAll) r = t = b = l;
        if (lock == kPairs) r = l, b = t;
        left = std::min(l, width / 2);
        right = std::min(r, width / 2);
        // Rows run upward: the picture's top is the last row.
        const int32_t top = std::min(t, height / 2), bottom = std::min(b, height / 2);
        low = settings.prepared ? bottom : top;
        high = settings.prepared ? top : bottom;
        colorInt = {KFloatToInt(color.r), KFloatToInt(color.g), KFloatToInt(color.b), KFloatToInt(color.a)};
        return true;
    }

    void ProcessPixel(KPixel& out, int32_t x, int32_t y, KImage* image) override
    {
        if (Inside(x, y)) return image->GetPixel(x, y, out, kEdgeBlack);
        if (type == 0) out = colorInt;
        else image->GetPixel(Near(x, y).first, Near(x, y).second, out, kEdgeDuplicate);
    }

    void ProcessPixelFloat(KPixelF& out, int32_t x, int32_t y, KImage* image) override
    {
        if (Inside(x, y)) return image->GetPixel(x, y, out, kEdgeBlack);
        if (type == 0) out = {color.r, color.g, color.b, color.a};
        else image->GetPixel(Near(x, y).first, Near(x, y).second, out, kEdgeDuplicate);
    }

private:
    bool Inside(int32_t x, int32_t y) const { return left <= x && x < width - right && low <= y && y < height - high; }
    // Clamped upper bound last: with no inner area left, the upper bound wins.
    std::pair<int32_t, int32_t> Near(int32_t x, int32_t y) const
    {
        return {std::min(std::max(x, left), width - right - 1), std::min(std::max(y, low), height - high - 1)};
    }

    int32_t lock = 0, type = 1;
    int32_t pixels[4] = {10, 10, 10, 10};  // left, right, top, bottom
    KColor color{0.0f, 0.0f, 0.0f, 1.0f};

    // From Start: the border in pixels, rows from the first row (low) and the last (high).
    int32_t left = 0, right = 0, low = 0, high = 0;
    KPixel colorInt;
};

ZV_TOOL(KEffectCleanEdges, ZV_CleanEdges);

// Color Switcher: eight palettes of eight colours. One palette is chosen, its
// colours are dealt out to eight output sets through a remap table, and the
// first sets can be rotated by a cycle offset so that colours travel round.
#include <algorithm>
#include <string>
#include "framework/effect.h"
#include "framework/registration.h"

namespace {
constexpr int32_t kSets = 8;
constexpr int32_t kColors = 8;
}  // namespace

class KEffectNumberColorSwitchboard : public KEffectNumber {
public:
    KEffectNumberColorSwitchboard()
    {
        inputList.AddSlider(&set, 1, "Set", "SetC"_id, 0, 1, 8);
        // Shares its id with "Set", as the tool always has; each input still
        // reaches its own field.
        inputList.AddSlider(&cycleRange, 8, "Cycle Range", "SetC"_id, 0, 2, 8);
        inputList.AddSlider(&cycleOffset, 0, "Cycle Offset", "Cycl"_id, 0, 0, 8);
        for (int32_t n = 1; n <= kColors; ++n) {
            const std::string label = "Remap " + std::to_string(n);
            inputList.AddSlider(&remap[n - 1], n, label.c_str(), "Rem0"_id + (n - 1), 0, 1, 8);
        }
        for (int32_t s = 1; s <= kSets; ++s) {
            const std::string group = "Set " + std::to_string(s);
            inputList.BeginNest(group.c_str(), "Set0"_id + s, 0);
            for (int32_t n = 1; n <= kColors; ++n) {
                // The base word "Color " ends in a blank, hence two before the numbers.
                const std::string label = "Color  " + std::to_string(s) + " " + std::to_string(n);
                const float grey = static_cast<float>(n - 1) * 0.1f;
                const uint32_t id = ('C' << 24) | ((s - 1) << 16) | ((n - 1) << 8);
                inputList.AddColor(&colors[s - 1][n - 1], {grey, grey, grey, 1.0f}, label.c_str(),
                                   id, 0);
            }
            inputList.EndNest();
        }
        outputList.AddNumberOutput(&number, "Number", 1, 0);
        const char* channels[3] = {"R ", "G ", "B "};
        const uint32_t ids[3] = {"CoR0"_id, "CoG0"_id, "CoB0"_id};
        for (int32_t c = 0; c < 3; ++c)
            for (int32_t n = 1; n <= kSets; ++n) {
                const std::string label = channels[c] + std::to_string(n);
                outputList.AddNumberOutput(&out[c][n - 1], label.c_str(), ids[c] + (n - 1), 0);
            }
    }

    void FinishRender() override
    {
        // Soft limits let any number through: out-of-range choices are clamped.
        const int32_t palette = std::clamp(set, 1, kSets) - 1;
        for (int32_t i = 0; i < kSets; ++i) {
            int32_t j = i;
            if (cycleRange > i) j = (cycleOffset + i) % cycleRange;
            j = std::clamp(j, 0, kColors - 1);
            const KColor& c = colors[palette][std::clamp(remap[j], 1, kColors) - 1];
            out[0][i] = c.r;
            out[1][i] = c.g;
            out[2][i] = c.b;
        }
        number = out[0][0];
    }

private:
    int32_t set = 1;
    int32_t cycleRange = 8;
    int32_t cycleOffset = 0;
    int32_t remap[kColors] = {};
    KColor colors[kSets][kColors];
    float number = 0.0f;
    float out[3][kSets] = {};
};

ZV_TOOL(KEffectNumberColorSwitchboard, ZV_NumberColorSwitchboard);

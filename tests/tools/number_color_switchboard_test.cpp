// Color Switcher: palettes dealt out through the remap table, and cycling of
// the first sets.
#include "support.h"

using namespace zvtest;

namespace {

// Outputs: "Number", then R 1..8, G 1..8, B 1..8; colour n of any palette is a grey.
float Grey(int32_t n) { return static_cast<float>(n - 1) * 0.1f; }

TEST(NumberColorSwitchboard, TheChosenPaletteThroughTheRemap)
{
    Tool<> s("ZV_NumberColorSwitchboard");
    s.Run(0.0f);
    for (int32_t i = 0; i < 8; ++i)
        for (int32_t c : {1, 9, 17}) EXPECT_EQ(s.Number(c + i), Grey(i + 1)) << c + i;  // each set its own
    for (int32_t n = 1; n <= 8; ++n)
        s.SetColor("Color  3 " + std::to_string(n), {n * 0.125f, n * 0.0625f, n * 0.03125f, 1.0f});
    s.Apply({{"Set", 3}, {"Remap 1", 5}, {"Remap 8", 2}});
    s.Run(0.0f);
    EXPECT_EQ(std::vector<float>({s.Number(1), s.Number(9), s.Number(17), s.Number(2), s.Number(8)}),
              std::vector<float>({5 * 0.125f, 5 * 0.0625f, 5 * 0.03125f, 2 * 0.125f, 2 * 0.125f}));  // sets may share
    EXPECT_EQ(s.Number(), s.Number(1));  // the red of the first set
    EXPECT_EQ(s.Param("Cycle Range").id, s.Param("Set").id);  // two controls, one id
}

TEST(NumberColorSwitchboard, RangeAndOffsetTurnTheFirstSets)
{
    // Each set i reads remap want[i]; the remaps reversed where asked.
    const struct { int32_t range, offset; bool reversed; int32_t want[8]; } rows[] = {
        {8, 3, false, {4, 5, 6, 7, 8, 1, 2, 3}},
        {2, 1, true, {2, 1, 3, 4, 5, 6, 7, 8}},
        {2, 2, true, {1, 2, 3, 4, 5, 6, 7, 8}},  // a full turn of two
        {5, 4, false, {5, 1, 2, 3, 4, 6, 7, 8}},
    };
    for (const auto& r : rows) {
        Tool<> s("ZV_NumberColorSwitchboard");
        for (int32_t n = 1; r.reversed && n <= 8; ++n) s.SetInt("Remap " + std::to_string(n), 9 - n);
        s.Apply({{"Cycle Range", r.range}, {"Cycle Offset", r.offset}});
        s.Run(0.0f);
        for (int32_t i = 0; i < 8; ++i)
            EXPECT_EQ(s.Number(17 + i), Grey(r.reversed ? 9 - r.want[i] : r.want[i])) << r.range << "/" << r.offset << " set " << i;
    }
}

}  // namespace

// Color Switcher: palettes dealt out through the remap table, cycling of the
// first sets, and the outputs read through the host.
#include "support.h"

using namespace zvtest;

namespace {

// Outputs: "Number", then R 1..8, G 1..8, B 1..8.
float R(const Tool<>& s, int32_t set) { return s.Number(1 + set); }

// The default grey of colour n of any palette.
float Grey(int32_t n) { return static_cast<float>(n - 1) * 0.1f; }

TEST(NumberColorSwitchboard, DefaultsGiveEachSetItsOwnColour)
{
    Tool<> s("ZV_NumberColorSwitchboard");
    s.Run(0.0f);
    for (int32_t i = 0; i < 8; ++i)
        for (int32_t c : {1, 9, 17}) EXPECT_EQ(s.Number(c + i), Grey(i + 1)) << c + i;
    EXPECT_EQ(s.Number(), 0.0f);
}

TEST(NumberColorSwitchboard, TheChosenPaletteAndTheRemap)
{
    Tool<> s("ZV_NumberColorSwitchboard");
    for (int32_t n = 1; n <= 8; ++n)
        s.SetColor("Color  3 " + std::to_string(n), {n * 0.125f, n * 0.0625f, n * 0.03125f, 1.0f});
    s.SetInt("Set", 3);
    s.SetInt("Remap 1", 5);
    s.SetInt("Remap 8", 2);
    s.Run(0.0f);
    EXPECT_EQ(R(s, 0), 5 * 0.125f);
    EXPECT_EQ(s.Number(9), 5 * 0.0625f);
    EXPECT_EQ(s.Number(17), 5 * 0.03125f);
    EXPECT_EQ(R(s, 1), 2 * 0.125f);
    EXPECT_EQ(R(s, 7), 2 * 0.125f);  // two sets may share a colour
    EXPECT_EQ(s.Number(), R(s, 0));  // the red of the first set
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
        if (r.reversed)
            for (int32_t n = 1; n <= 8; ++n) s.SetInt("Remap " + std::to_string(n), 9 - n);
        s.SetInt("Cycle Range", r.range);
        s.SetInt("Cycle Offset", r.offset);
        s.Run(0.0f);
        for (int32_t i = 0; i < 8; ++i) {
            const int32_t colour = r.reversed ? 9 - r.want[i] : r.want[i];
            EXPECT_EQ(s.Number(17 + i), Grey(colour)) << r.range << "/" << r.offset << " set " << i;
        }
        EXPECT_EQ(s.Number(), s.Number(1));
    }
}

TEST(NumberColorSwitchboard, OutputsThroughTheHostFollowAKeyedSet)
{
    host::Flow flow;
    auto& node = flow.Add("csw", Registered("ZV_NumberColorSwitchboard"));
    for (auto [id, v] : {std::pair{"Color21Red", 0.25}, {"Color21Green", 0.5}, {"Color21Blue", 0.75}})
        flow.SetValue(node, In(node, id), host::MakeNumber(v));
    flow.SetKeys(node, In(node, "Set"), {{1.0, 1.0}, {3.0, 3.0}});  // set 2 at frame 2
    const struct {
        const char* output;
        double frame, want;
    } rows[] = {{"R1", 1, 0.0},     {"R1", 2, 0.25}, {"G1", 2, 0.5},
                {"B1", 2, 0.75},    {"Number", 2, 0.25}, {"R2", 2, double(Grey(2))}};
    for (const auto& r : rows) {
        flow.BeginFrame();
        EXPECT_EQ(NumberOf(flow.Evaluate(node, node.op->FindOutput(r.output), r.frame)), r.want) << r.output;
    }
}

}  // namespace

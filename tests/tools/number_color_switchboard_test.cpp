// Color Switcher: palettes dealt out through the remap table, cycling of the
// first sets, the declarations with their shared id and 25 outputs, and the
// outputs read through the host.
#include <gtest/gtest.h>
#include <string>
#include <vector>
#include "value_driver.h"

using namespace zvvalue;

namespace {

struct Switcher : Tool {
    Switcher() : Tool("ZV_NumberColorSwitchboard") {}
    // Outputs: "Number", then R 1..8, G 1..8, B 1..8.
    float R(int32_t set) const { return Number(1 + set); }
    float G(int32_t set) const { return Number(9 + set); }
    float B(int32_t set) const { return Number(17 + set); }
    static std::string ColorLabel(int32_t s, int32_t n)
    {
        return "Color  " + std::to_string(s) + " " + std::to_string(n);
    }
};

// The default grey of colour n of any palette.
float Grey(int32_t n) { return static_cast<float>(n - 1) * 0.1f; }

TEST(NumberColorSwitchboardDeal, DefaultsGiveEachSetItsOwnColour)
{
    Switcher s;
    s.Run(0.0f);
    for (int32_t i = 0; i < 8; ++i) {
        EXPECT_EQ(s.R(i), Grey(i + 1)) << i;
        EXPECT_EQ(s.G(i), Grey(i + 1)) << i;
        EXPECT_EQ(s.B(i), Grey(i + 1)) << i;
    }
    EXPECT_EQ(s.Number(), 0.0f);
}

TEST(NumberColorSwitchboardDeal, TheChosenPaletteAndTheRemap)
{
    Switcher s;
    for (int32_t n = 1; n <= 8; ++n)
        s.SetColor(Switcher::ColorLabel(3, n), {n * 0.125f, n * 0.0625f, n * 0.03125f, 1.0f});
    s.SetInt("Set", 3);
    s.SetInt("Remap 1", 5);
    s.SetInt("Remap 8", 2);
    s.Run(0.0f);
    EXPECT_EQ(s.R(0), 5 * 0.125f);
    EXPECT_EQ(s.G(0), 5 * 0.0625f);
    EXPECT_EQ(s.B(0), 5 * 0.03125f);
    EXPECT_EQ(s.R(1), 2 * 0.125f);
    EXPECT_EQ(s.R(7), 2 * 0.125f);  // two sets may share a colour
    EXPECT_EQ(s.Number(), s.R(0));  // the red of the first set
}

TEST(NumberColorSwitchboardCycle, OffsetTurnsTheSetsRound)
{
    Switcher s;
    s.SetInt("Cycle Offset", 3);
    s.Run(0.0f);
    for (int32_t i = 0; i < 8; ++i) EXPECT_EQ(s.R(i), Grey((3 + i) % 8 + 1)) << i;
    EXPECT_EQ(s.Number(), Grey(4));
}

TEST(NumberColorSwitchboardCycle, ARangeOfTwoCyclesOnlyTheFirstTwoSets)
{
    Switcher s;
    for (int32_t n = 1; n <= 8; ++n) s.SetInt("Remap " + std::to_string(n), 9 - n);
    s.SetInt("Cycle Range", 2);
    s.SetInt("Cycle Offset", 1);
    s.Run(0.0f);
    EXPECT_EQ(s.R(0), Grey(7));  // reads Remap 2
    EXPECT_EQ(s.R(1), Grey(8));  // reads Remap 1
    for (int32_t i = 2; i < 8; ++i) EXPECT_EQ(s.R(i), Grey(8 - i)) << i;  // Remap i+1, directly
    s.SetInt("Cycle Offset", 2);  // a full turn of two
    s.Run(0.0f);
    EXPECT_EQ(s.R(0), Grey(8));
    EXPECT_EQ(s.R(1), Grey(7));
}

TEST(NumberColorSwitchboardCycle, ARangeOfFiveWithOffsetFour)
{
    Switcher s;
    s.SetInt("Cycle Range", 5);
    s.SetInt("Cycle Offset", 4);
    s.Run(0.0f);
    const int32_t want[8] = {5, 1, 2, 3, 4, 6, 7, 8};
    for (int32_t i = 0; i < 8; ++i) EXPECT_EQ(s.B(i), Grey(want[i])) << i;
}

TEST(NumberColorSwitchboardDeclarations, InputsOutputsAndIds)
{
    Switcher s;
    const auto& op = *s.op;
    ExpectNumberInputs(op, {{"Set", "Set", 1, 1, 8},
                            {"CycleRange", "Cycle Range", 8, 2, 8},
                            {"CycleOffset", "Cycle Offset", 0, 0, 8}});
    for (const char* id : {"Set", "CycleRange", "CycleOffset"}) EXPECT_TRUE(op.FindInput(id)->attrs.integer);
    for (int32_t n = 1; n <= 8; ++n) {
        const std::string id = "Remap" + std::to_string(n);
        const host::Input* in = op.FindInput(id);
        ASSERT_NE(in, nullptr) << id;
        EXPECT_EQ(*in->attrs.defaultNumber, n);
        EXPECT_EQ(s.Param("Remap " + std::to_string(n)).id, "Rem0"_id + (n - 1));
    }
    // "Set" and "Cycle Range" share their four-character id.
    EXPECT_EQ(s.Param("Set").id, "SetC"_id);
    EXPECT_EQ(s.Param("Cycle Range").id, "SetC"_id);
    EXPECT_EQ(s.Param("Cycle Offset").id, "Cycl"_id);

    // Eight nests of eight colours; two blanks behind "Color".
    const host::Input* c34 = op.FindInput("Color34Red");
    ASSERT_NE(c34, nullptr);
    EXPECT_EQ(c34->name, "Color  3 4Red");
    EXPECT_EQ(c34->label, "Color  3 4");
    EXPECT_EQ(*c34->attrs.defaultNumber, double(Grey(4)));
    EXPECT_EQ(*op.FindInput("Color88Blue")->attrs.defaultNumber, double(Grey(8)));
    EXPECT_EQ(*op.FindInput("Color11Alpha")->attrs.defaultNumber, 1.0);
    EXPECT_EQ(op.FindInput("Color11Red")->attrs.group, 11);
    EXPECT_EQ(op.FindInput("Color88Red")->attrs.group, 11 + 63);
    EXPECT_TRUE(op.FindInput("Set5")->attrs.nest);
    const KParameter& color = s.Param("Color  3 4");
    EXPECT_EQ(color.id, uint32_t('C') << 24 | 2u << 16 | 3u << 8);
    EXPECT_EQ(color.id2, color.id - 11);
    EXPECT_EQ(color.id4, color.id - 17);

    std::vector<std::string> outputs;
    for (auto& o : op.Outputs()) {
        outputs.push_back(o->id);
        EXPECT_EQ(o->dataType, host::DataType::Number);
    }
    std::vector<std::string> want = {"Number"};
    for (const char* c : {"R", "G", "B"})
        for (int32_t n = 1; n <= 8; ++n) want.push_back(c + std::to_string(n));
    EXPECT_EQ(outputs, want);
    EXPECT_EQ(op.MainOutput()->id, "Number");
    EXPECT_EQ(s.Output(0).id, 1u);
    EXPECT_EQ(s.Output(0).name, "Number");
    EXPECT_EQ(s.Output(1).id, "CoR0"_id);
    EXPECT_EQ(s.Output(1).name, "R 1");
    EXPECT_EQ(s.Output(16).id, "CoG7"_id);
    EXPECT_EQ(s.Output(24).id, "CoB7"_id);
}

TEST(NumberColorSwitchboardFlow, OutputsThroughTheHostFollowAKeyedSet)
{
    host::Flow flow;
    auto& node = flow.Add("csw", Registered("ZV_NumberColorSwitchboard"));
    flow.SetValue(node, In(node, "Color21Red"), host::MakeNumber(0.25));
    flow.SetValue(node, In(node, "Color21Green"), host::MakeNumber(0.5));
    flow.SetValue(node, In(node, "Color21Blue"), host::MakeNumber(0.75));
    flow.SetKeys(node, In(node, "Set"), {{1.0, 1.0}, {3.0, 3.0}});  // set 2 at frame 2
    auto at = [&](const char* output, double frame) {
        flow.BeginFrame();
        return NumberOf(flow.Evaluate(node, node.op->FindOutput(output), frame));
    };
    EXPECT_EQ(at("R1", 1), 0.0);
    EXPECT_EQ(at("R1", 2), 0.25);
    EXPECT_EQ(at("G1", 2), 0.5);
    EXPECT_EQ(at("B1", 2), 0.75);
    EXPECT_EQ(at("Number", 2), 0.25);
    EXPECT_EQ(at("R2", 2), double(Grey(2)));
}

}  // namespace

// Beat: the envelope over one beat at hand-computed times, its start and end,
// rounding the end to a full beat, the BPM rate, the combine rules, the
// declarations and the rate type's visibility rule, and two Beats in a flow.
#include <gtest/gtest.h>
#include <vector>
#include "value_driver.h"

using namespace zvvalue;

namespace {

struct Beat : Tool {
    Beat() : Tool("ZV_NumberBeat") {}
};

TEST(NumberBeatEnvelope, DefaultsRiseDecaySustainReleaseThenRest)
{
    // Beat length 10; attack, decay, sustain and release 2 each; 1, 0.5 and 0.
    Beat b;
    const std::vector<std::pair<float, float>> want = {
        {0.0f, 0.0f},  {1.0f, 0.5f},   {2.0f, 1.0f},     // attack, its end included
        {3.0f, 0.75f}, {4.0f, 0.5f},   {5.0f, 0.5f},     // decay, then sustain from 4
        {6.0f, 0.5f},  {7.0f, 0.25f},  {8.0f, 0.0f},     // release, then 0
        {9.5f, 0.0f},  {10.0f, 0.0f},  {11.0f, 0.5f},    // the next beat
        {12.5f, 0.875f}, {1003.0f, 0.0f}};               // past the end time
    for (auto [t, v] : want) EXPECT_EQ(b.At(t), v) << "t " << t;
}

TEST(NumberBeatEnvelope, ZeroAttackStartsAtTheMaximum)
{
    Beat b;
    b.SetFloat("Attack time", 0.0f);
    EXPECT_EQ(b.At(0.0f), 1.0f);
    EXPECT_EQ(b.At(1.0f), 0.75f);
    EXPECT_EQ(b.At(10.0f), 1.0f);
    // No decay either: straight to the sustain value.
    b.SetFloat("Decay time", 0.0f);
    EXPECT_EQ(b.At(0.0f), 0.5f);
    // With no decay the attack still ends on the maximum.
    b.SetFloat("Attack time", 2.0f);
    EXPECT_EQ(b.At(2.0f), 1.0f);
    EXPECT_EQ(b.At(2.5f), 0.5f);
    b.SetFloat("Attack time", 0.0f);
    // No release: 0 right behind the sustain.
    b.SetFloat("Release time", 0.0f);
    EXPECT_EQ(b.At(1.0f), 0.5f);
    EXPECT_EQ(b.At(2.0f), 0.0f);
}

TEST(NumberBeatEnvelope, OwnLevelsAndTimes)
{
    Beat b;
    b.SetFloat("Frequency", 8.0f);
    b.SetFloat("Attack time", 1.0f);
    b.SetFloat("Decay time", 1.0f);
    b.SetFloat("Sustain time", 4.0f);
    b.SetFloat("Release time", 2.0f);
    b.SetFloat("Maximum value", 0.75f);
    b.SetFloat("Sustain value", 0.25f);
    b.SetFloat("Minimum value", 0.125f);
    EXPECT_EQ(b.At(0.0f), 0.125f);     // an attack starts at the minimum
    EXPECT_EQ(b.At(0.5f), 0.4375f);    // 0.625 * 0.5 + 0.125
    EXPECT_EQ(b.At(1.5f), 0.5f);       // halfway down to the sustain
    EXPECT_EQ(b.At(6.0f), 0.25f);
    EXPECT_EQ(b.At(7.0f), 0.1875f);    // halfway down to the minimum
    EXPECT_EQ(b.At(8.0f), 0.125f);     // and the next beat
    b.SetFloat("Frequency", 12.0f);
    EXPECT_EQ(b.At(9.0f), 0.0f);       // at rest: 0, not the minimum
}

TEST(NumberBeatTimes, BeforeStartAndAfterEndGiveZeroPlusTheCombine)
{
    Beat b;
    b.SetFloat("Start time", 5.0f);
    b.SetFloat("End time", 20.0f);
    b.SetFloat("Combine value, connect to another Beat or so)", 0.25f);
    EXPECT_EQ(b.At(4.0f), 0.25f);
    EXPECT_EQ(b.At(5.0f), 0.25f);   // the beat starts at the start time
    EXPECT_EQ(b.At(7.0f), 1.25f);
    EXPECT_EQ(b.At(20.0f), 0.75f);  // the end time itself still counts
    EXPECT_EQ(b.At(20.5f), 0.25f);
    b.SetInt("How to combine value below", 1);
    EXPECT_EQ(b.At(4.0f), 0.0f);
}

TEST(NumberBeatTimes, RoundingTheEndCompletesTheLastBeat)
{
    Beat b;
    b.SetFloat("End time", 25.0f);
    EXPECT_EQ(b.At(27.0f), 0.0f);
    b.SetBool("Round end time to full beat cycle", true);
    EXPECT_EQ(b.At(27.0f), 0.25f);  // the end moved to 30
    EXPECT_EQ(b.At(30.0f), 0.0f);
    EXPECT_EQ(b.At(31.0f), 0.0f);
    b.SetFloat("End time", 20.0f);  // a whole number of beats stays
    EXPECT_EQ(b.At(21.0f), 0.0f);
    b.SetFloat("Start time", 3.0f);  // 1.7 beats become 2: the end is 23
    EXPECT_EQ(b.At(20.5f), 0.125f);  // in the release, kept by the later end
    EXPECT_EQ(b.At(23.5f), 0.0f);    // 0.25 were the end not there
}

TEST(NumberBeatRate, BeatsPerMinuteReplaceTheFrequency)
{
    Beat b;
    b.SetInt("Rate type", 1);
    b.SetFloat("Frequency", 3.0f);  // not read with this rate type
    b.SetFloat("Beats per Minute", 100.0f);
    b.SetFloat("Frames per Second", 25.0f);  // 15 frames a beat
    EXPECT_EQ(b.At(14.0f), 0.0f);
    EXPECT_EQ(b.At(16.0f), 0.5f);
    EXPECT_EQ(b.At(18.0f), 0.75f);
    b.SetFloat("Beats per Minute", 150.0f);  // 10 frames a beat
    EXPECT_EQ(b.At(11.0f), 0.5f);
}

TEST(NumberBeatCombine, AddMultiplyMaximumMinimum)
{
    Beat b;
    b.SetFloat("Combine value, connect to another Beat or so)", 0.8f);
    const float v = 0.5f;  // the envelope at 1
    const float want[4] = {v + 0.8f, v * 0.8f, 0.8f, v};
    for (int32_t mode = 0; mode < 4; ++mode) {
        b.SetInt("How to combine value below", mode);
        EXPECT_EQ(b.At(1.0f), want[mode]) << mode;
    }
}

TEST(NumberBeatCombine, InterpolationChangesNothing)
{
    Beat b;
    for (float t : {1.0f, 3.0f, 6.5f}) {
        b.SetInt("Interpolation", 1);
        const float a = b.At(t);
        b.SetInt("Interpolation", 0);
        EXPECT_EQ(b.At(t), a) << t;
    }
}

TEST(NumberBeatDeclarations, InputsAsTheHostShowsThem)
{
    Beat b;
    const std::vector<std::string> ids = {
        "Ratetype", "Frequency", "BeatsperMinute", "FramesperSecond", "Starttime", "Endtime",
        "Roundendtimetofullbeatcycle", "Attacktime", "Decaytime", "Sustaintime", "Releasetime",
        "Interpolation", "Maximumvalue", "Sustainvalue", "Minimumvalue", "Howtocombinevaluebelow",
        "CombinevalueconnecttoanotherBeatorso"};
    EXPECT_EQ(FirstInputIds(*b.op, ids.size()), ids);
    ExpectNumberInputs(*b.op, {
        {"Ratetype", "Rate type", 0, 0, 1},
        {"Frequency", "Frequency", 10, 0, 100},
        {"BeatsperMinute", "Beats per Minute", 120, 0.0001f, 240},
        {"FramesperSecond", "Frames per Second", 25, 0.0001f, 30},
        {"Starttime", "Start time", 0, 0, 100},
        {"Endtime", "End time", 1000, 0, 1000},
        {"Roundendtimetofullbeatcycle", "Round end time to full beat cycle", 0, 0, 1},
        {"Attacktime", "Attack time", 2, 0, 10},
        {"Decaytime", "Decay time", 2, 0, 10},
        {"Sustaintime", "Sustain time", 2, 0, 10},
        {"Releasetime", "Release time", 2, 0, 10},
        {"Interpolation", "Interpolation", 1, 0, 1},
        {"Maximumvalue", "Maximum value", 1, 0, 1},
        {"Sustainvalue", "Sustain value", 0.5, 0, 1},
        {"Minimumvalue", "Minimum value", 0, 0, 1},
        {"Howtocombinevaluebelow", "How to combine value below", 0, 0, 3},
        {"CombinevalueconnecttoanotherBeatorso", "Combine value, connect to another Beat or so)",
         0, 0, 1}});
    const host::Operator& op = *b.op;
    EXPECT_EQ(op.FindInput("Ratetype")->attrs.control, host::Control::MultiButton);
    EXPECT_EQ(op.FindInput("Ratetype")->attrs.items,
              (std::vector<std::string>{"Frames/beat", "Beats/Minute (BPM)"}));
    EXPECT_EQ(op.FindInput("Interpolation")->attrs.items,
              (std::vector<std::string>{"Linear", "Ease-in, Ease-out"}));
    EXPECT_EQ(op.FindInput("Howtocombinevaluebelow")->attrs.items,
              (std::vector<std::string>{"Add", "Multiply", "Maximum", "Minimum"}));
    EXPECT_EQ(op.FindInput("Roundendtimetofullbeatcycle")->attrs.control, host::Control::Checkbox);
    EXPECT_EQ(ValueCodes(*b.effect),
              (std::vector<uint32_t>{"Type"_id, "TiFr"_id, "TBPM"_id, "TFPS"_id, "TiSt"_id,
                                     "TiEn"_id, "TiER"_id, "TiAt"_id, "TiDe"_id, "TiSu"_id,
                                     "TiRe"_id, "RaIn"_id, "VaMa"_id, "VaSu"_id, "VaMi"_id,
                                     "VaCT"_id, "VaCo"_id}));
    ASSERT_EQ(op.Outputs().size(), 1u);
    EXPECT_EQ(op.MainOutput()->id, "Number");
    EXPECT_EQ(op.MainOutput()->dataType, host::DataType::Number);
    EXPECT_EQ(b.Output().id, 1u);
    EXPECT_EQ(op.FindInput("Image"), nullptr);
}

TEST(NumberBeatDeclarations, RateTypeShowsFrequencyOrTheBpmPair)
{
    host::Flow flow;
    auto& node = flow.Add("beat", Registered("ZV_NumberBeat"));
    host::Input* freq = In(node, "Frequency");
    host::Input* bpm = In(node, "BeatsperMinute");
    host::Input* fps = In(node, "FramesperSecond");
    EXPECT_TRUE(freq->attrs.visible);
    EXPECT_FALSE(bpm->attrs.visible);
    EXPECT_FALSE(fps->attrs.visible);
    flow.SetValue(node, In(node, "Ratetype"), host::MakeNumber(1));
    EXPECT_FALSE(freq->attrs.visible);
    EXPECT_TRUE(bpm->attrs.visible);
    EXPECT_TRUE(fps->attrs.visible);
    flow.SetValue(node, In(node, "Ratetype"), host::MakeNumber(0));
    EXPECT_TRUE(freq->attrs.visible);
    EXPECT_FALSE(bpm->attrs.visible);
    EXPECT_FALSE(fps->attrs.visible);
}

TEST(NumberBeatFlow, OneBeatCombinedIntoAnotherOverFrames)
{
    // A slow beat of 8 frames feeds the combine value of a fast one of 4,
    // which keeps the larger of the two.
    host::Flow flow;
    auto& slow = flow.Add("slow", Registered("ZV_NumberBeat"));
    auto& fast = flow.Add("fast", Registered("ZV_NumberBeat"));
    flow.SetValue(slow, In(slow, "Frequency"), host::MakeNumber(8));
    flow.SetValue(slow, In(slow, "Maximumvalue"), host::MakeNumber(0.5));
    flow.SetValue(slow, In(slow, "Sustainvalue"), host::MakeNumber(0.25));
    flow.SetValue(fast, In(fast, "Frequency"), host::MakeNumber(4));
    flow.SetValue(fast, In(fast, "Attacktime"), host::MakeNumber(1));
    flow.SetValue(fast, In(fast, "Decaytime"), host::MakeNumber(1));
    flow.SetValue(fast, In(fast, "Sustaintime"), host::MakeNumber(0));
    flow.SetValue(fast, In(fast, "Releasetime"), host::MakeNumber(1));
    flow.SetValue(fast, In(fast, "Howtocombinevaluebelow"), host::MakeNumber(2));
    flow.Connect(fast, In(fast, "CombinevalueconnecttoanotherBeatorso"), slow,
                 slow.op->MainOutput());
    // slow: 0, .25, .5, .375, .25, .25, .25, .125; fast: 0, 1, .5, 0 repeating.
    const double want[] = {0.0, 1.0, 0.5, 0.375, 0.25, 1.0, 0.5, 0.125, 0.0};
    for (int frame = 0; frame <= 8; ++frame) {
        flow.BeginFrame();
        EXPECT_EQ(NumberOf(flow.Evaluate(fast, fast.op->MainOutput(), frame)), want[frame]) << frame;
    }
}

}  // namespace

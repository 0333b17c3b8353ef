// Random: the time hash against the reference generator, the three ways of
// going from one value to the next, scrubbing, the declarations and the
// visibility rule, and a Random driving Sample Brightness over frames.
#include <cmath>
#include "value_driver.h"

using namespace zvvalue;

namespace {

TEST(NumberRandomHash, ReferenceValuesOfTheGenerator)
{
    // Worked out by hand from the generator's recurrence.
    EXPECT_EQ(Noise(0.0f, 0), 0.0f);  // seed 0: the first value is 12345 >> 16 = 0
    EXPECT_EQ(Noise(0.0f, 1234), 0.9330729246139526f);
    EXPECT_EQ(Noise(5.0f, 7), 0.1192663311958313f);
    EXPECT_EQ(Noise(0.0f, 7), 0.9701834321022034f);
}

TEST(NumberRandomModes, EveryFrameIsTheHashOfTheTime)
{
    Tool r("ZV_NumberRandom");
    r.SetBool("New value for every field/frame", true);
    r.SetFloat("Minimum value", 0.25f);
    r.SetFloat("Maximum value", 0.75f);
    r.SetInt("Seed", 42);
    for (float t : {0.0f, 1.0f, 3.0f, 7.5f, 120.0f})
        EXPECT_EQ(r.At(t), (0.75f - 0.25f) * Noise(t, 42) + 0.25f) << t;
}

TEST(NumberRandomModes, StepLinearAndEaseBetweenPeriods)
{
    Tool r("ZV_NumberRandom");  // seed 1234, a new value every 5 frames
    const float h5 = Noise(5.0f, 1234), h10 = Noise(10.0f, 1234);
    ASSERT_NE(h5, h10);
    const float ease = static_cast<float>(0.5 - std::cos(0.4f * 3.141592653589793) * 0.5);
    const struct { int32_t mode; float t, want; } rows[] = {
        {0, 7.0f, h5}, {0, 9.5f, h5}, {0, 10.0f, h10},
        {1, 7.0f, h10 * 0.4f + h5 * (1.0f - 0.4f)}, {1, 6.25f, h10 * 0.25f + h5 * 0.75f},
        {2, 7.0f, h10 * ease + h5 * (1.0f - ease)},
        {2, 7.5f, h10 * 0.5f + h5 * 0.5f},  // the ease passes the middle at half
    };
    for (const auto& row : rows) {
        r.SetInt("Interpolation", row.mode);
        EXPECT_EQ(r.At(row.t), row.want) << row.mode << " at " << row.t;
    }
    // A period that divides the time gives its hash in every mode.
    r.SetFloat("New value every ... frames", 2.5f);
    for (int32_t mode = 0; mode < 3; ++mode) {
        r.SetInt("Interpolation", mode);
        EXPECT_EQ(r.At(10.0f), Noise(10.0f, 1234)) << mode;
        EXPECT_EQ(r.At(12.5f), Noise(12.5f, 1234)) << mode;
    }
}

TEST(NumberRandomModes, ScrubbingGivesTheSameValues)
{
    Tool r("ZV_NumberRandom");
    const float a = r.At(7.0f), b = r.At(3.0f);
    EXPECT_EQ(r.At(7.0f), a);
    EXPECT_EQ(r.At(3.0f), b);
    EXPECT_NE(a, b);
    r.SetInt("Seed", 1235);
    EXPECT_NE(r.At(7.0f), a);
}

TEST(NumberRandomDeclarations, InputsAsTheHostShowsThem)
{
    Tool r("ZV_NumberRandom");
    EXPECT_EQ(zvtest::FirstInputIds(*r.op, 6),
              (std::vector<std::string>{"Minimumvalue", "Maximumvalue", "Seed", "Newvalueforeveryfieldframe",
                                        "Newvalueeveryframes", "Interpolation"}));
    zvtest::ExpectInputs(*r.op, {
        {"Minimumvalue", "label Minimum value; default 0; soft 0..1"},
        {"Maximumvalue", "default 1; soft 0..1"},
        {"Seed", "integer yes; default 1234; soft 0..10000"},
        {"Newvalueforeveryfieldframe", "label New value for every field/frame; control Checkbox; default 0; soft 0..1"},
        {"Newvalueeveryframes", "label New value every ... frames; default 5; soft 0.00001..25"},
        {"Interpolation", "control Combo; items Step|Linear|Ease-in, Ease-out; default 1; soft 0..2"},
    });
    EXPECT_EQ(ValueCodes(*r.effect),
              (std::vector<uint32_t>{"RaMi"_id, "RaMa"_id, "RaSe"_id, "RaEv"_id, "RaFr"_id, "RaIn"_id}));
    ASSERT_EQ(r.op->Outputs().size(), 1u);
    EXPECT_EQ(r.op->MainOutput()->id, "Number");

    // Every frame hides the period and the interpolation.
    zvtest::ToolFlow f("ZV_NumberRandom");
    zvtest::ExpectShown(f, {"Newvalueeveryframes", "Interpolation"},
                        {{nullptr, 0, "11"}, {"Newvalueforeveryfieldframe", 1, "00"}, {"Newvalueforeveryfieldframe", 0, "11"}});
}

}  // namespace

// Random: the three ways of going from one time hash to the next, every
// frame's own hash, scrubbing, and what a new value every frame hides.
#include "framework/numeric.h"
#include "support.h"

using namespace zvtest;

TEST(NumberRandom, EveryFrameIsTheHashOfTheTime)
{
    Tool<> r("ZV_NumberRandom");
    r.Apply({{"New value for every field/frame", 1}, {"Minimum value", 0.25}, {"Maximum value", 0.75}, {"Seed", 42}});
    for (float t : {0.0f, 1.0f, 3.0f, 7.5f, 120.0f})
        EXPECT_EQ(r.At(t), (0.75f - 0.25f) * KTimeNoise(t, 42) + 0.25f) << t;
}

TEST(NumberRandom, StepLinearAndEaseBetweenPeriods)
{
    Tool<> r("ZV_NumberRandom");  // seed 1234, a new value every 5 frames
    const float h5 = KTimeNoise(5.0f, 1234), h10 = KTimeNoise(10.0f, 1234);
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
        EXPECT_EQ(r.At(10.0f), KTimeNoise(10.0f, 1234)) << mode;
        EXPECT_EQ(r.At(12.5f), KTimeNoise(12.5f, 1234)) << mode;
    }
}

TEST(NumberRandom, ScrubbingGivesTheSameValuesAndEveryFrameHidesThePeriod)
{
    Tool<> r("ZV_NumberRandom");
    const float a = r.At(7.0f), b = r.At(3.0f);
    EXPECT_EQ(r.At(7.0f), a);
    EXPECT_EQ(r.At(3.0f), b);
    EXPECT_NE(a, b);
    r.SetInt("Seed", 1235);
    EXPECT_NE(r.At(7.0f), a);
    ExpectShown("ZV_NumberRandom", {"Newvalueeveryframes", "Interpolation"},
                {{nullptr, 0, "11"}, {"Newvalueforeveryfieldframe", 1, "00"}, {"Newvalueforeveryfieldframe", 0, "11"}});
}

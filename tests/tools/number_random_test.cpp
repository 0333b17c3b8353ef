// Random: the time hash against the reference generator, the three ways of
// going from one value to the next, scrubbing, the declarations and the
// visibility rule, and a Random driving Sample Brightness over frames.
#include <gtest/gtest.h>
#include <cmath>
#include <vector>
#include "host/image.h"
#include "raster/image.h"
#include "value_driver.h"

using namespace zvvalue;

namespace {

struct Random : Tool {
    Random() : Tool("ZV_NumberRandom") {}
};

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
    Random r;
    r.SetBool("New value for every field/frame", true);
    r.SetFloat("Minimum value", 0.25f);
    r.SetFloat("Maximum value", 0.75f);
    r.SetInt("Seed", 42);
    for (float t : {0.0f, 1.0f, 3.0f, 7.5f, 120.0f})
        EXPECT_EQ(r.At(t), (0.75f - 0.25f) * Noise(t, 42) + 0.25f) << t;
}

TEST(NumberRandomModes, StepLinearAndEaseBetweenPeriods)
{
    Random r;  // seed 1234, a new value every 5 frames
    const float h5 = Noise(5.0f, 1234), h10 = Noise(10.0f, 1234);
    ASSERT_NE(h5, h10);
    r.SetInt("Interpolation", 0);
    EXPECT_EQ(r.At(7.0f), h5);
    EXPECT_EQ(r.At(9.5f), h5);
    EXPECT_EQ(r.At(10.0f), h10);
    r.SetInt("Interpolation", 1);
    EXPECT_EQ(r.At(7.0f), h10 * 0.4f + h5 * (1.0f - 0.4f));
    EXPECT_EQ(r.At(6.25f), h10 * 0.25f + h5 * 0.75f);
    r.SetInt("Interpolation", 2);
    const float w = static_cast<float>(0.5 - std::cos(0.4f * 3.141592653589793) * 0.5);
    EXPECT_EQ(r.At(7.0f), h10 * w + h5 * (1.0f - w));
    EXPECT_EQ(r.At(7.5f), h10 * 0.5f + h5 * 0.5f);  // the ease passes the middle at half
}

TEST(NumberRandomModes, APeriodThatDividesTheTimeGivesItsHashInEveryMode)
{
    Random r;
    r.SetFloat("New value every ... frames", 2.5f);
    for (int32_t mode = 0; mode < 3; ++mode) {
        r.SetInt("Interpolation", mode);
        EXPECT_EQ(r.At(10.0f), Noise(10.0f, 1234)) << mode;
        EXPECT_EQ(r.At(12.5f), Noise(12.5f, 1234)) << mode;
    }
}

TEST(NumberRandomModes, ScrubbingGivesTheSameValues)
{
    Random r;
    const float a = r.At(7.0f), b = r.At(3.0f);
    EXPECT_EQ(r.At(7.0f), a);
    EXPECT_EQ(r.At(3.0f), b);
    EXPECT_NE(a, b);
    r.SetInt("Seed", 1235);
    EXPECT_NE(r.At(7.0f), a);
}

TEST(NumberRandomDeclarations, InputsAsTheHostShowsThem)
{
    Random r;
    const std::vector<std::string> ids = {"Minimumvalue", "Maximumvalue", "Seed",
                                          "Newvalueforeveryfieldframe", "Newvalueeveryframes",
                                          "Interpolation"};
    EXPECT_EQ(FirstInputIds(*r.op, ids.size()), ids);
    ExpectNumberInputs(*r.op, {
        {"Minimumvalue", "Minimum value", 0, 0, 1},
        {"Maximumvalue", "Maximum value", 1, 0, 1},
        {"Seed", "Seed", 1234, 0, 10000},
        {"Newvalueforeveryfieldframe", "New value for every field/frame", 0, 0, 1},
        {"Newvalueeveryframes", "New value every ... frames", 5, 0.00001f, 25},
        {"Interpolation", "Interpolation", 1, 0, 2}});
    const host::Operator& op = *r.op;
    EXPECT_TRUE(op.FindInput("Seed")->attrs.integer);
    EXPECT_EQ(op.FindInput("Newvalueforeveryfieldframe")->attrs.control, host::Control::Checkbox);
    EXPECT_EQ(op.FindInput("Interpolation")->attrs.control, host::Control::Combo);
    EXPECT_EQ(op.FindInput("Interpolation")->attrs.items,
              (std::vector<std::string>{"Step", "Linear", "Ease-in, Ease-out"}));
    EXPECT_EQ(ValueCodes(*r.effect), (std::vector<uint32_t>{"RaMi"_id, "RaMa"_id, "RaSe"_id,
                                                            "RaEv"_id, "RaFr"_id, "RaIn"_id}));
    ASSERT_EQ(op.Outputs().size(), 1u);
    EXPECT_EQ(op.MainOutput()->id, "Number");
}

TEST(NumberRandomDeclarations, EveryFrameHidesThePeriodAndInterpolation)
{
    host::Flow flow;
    auto& node = flow.Add("rnd", Registered("ZV_NumberRandom"));
    host::Input* period = In(node, "Newvalueeveryframes");
    host::Input* interpolation = In(node, "Interpolation");
    EXPECT_TRUE(period->attrs.visible);
    EXPECT_TRUE(interpolation->attrs.visible);
    flow.SetValue(node, In(node, "Newvalueforeveryfieldframe"), host::MakeNumber(1));
    EXPECT_FALSE(period->attrs.visible);
    EXPECT_FALSE(interpolation->attrs.visible);
    flow.SetValue(node, In(node, "Newvalueforeveryfieldframe"), host::MakeNumber(0));
    EXPECT_TRUE(period->attrs.visible);
    EXPECT_TRUE(interpolation->attrs.visible);
}

// Random from 0.5 to 1.5, seed 7, a new value every 5 frames, blended.
float Brightness(int frame)
{
    const float phase = std::fmod(static_cast<float>(frame), 5.0f);
    const float base = static_cast<float>(frame) - phase, w = phase / 5.0f;
    const float r = Noise(base + 5.0f, 7) * w + Noise(base, 7) * (1.0f - w);
    return (1.5f - 0.5f) * r + 0.5f;
}

TEST(NumberRandomFlow, DrivesSampleBrightnessOverFrames)
{
    for (bool isFloat : {false, true}) {
        host::Flow flow;
        auto& rnd = flow.Add("rnd", Registered("ZV_NumberRandom"));
        auto& bright = flow.Add("bright", Registered("Sample_Brightness"));
        flow.SetValue(rnd, In(rnd, "Seed"), host::MakeNumber(7));
        flow.SetValue(rnd, In(rnd, "Minimumvalue"), host::MakeNumber(0.5));
        flow.SetValue(rnd, In(rnd, "Maximumvalue"), host::MakeNumber(1.5));
        KImage* plate = KImage::Create(2, 1, isFloat);
        if (isFloat) {
            plate->SetPixel(0, 0, KPixelF{0.5f, 0.25f, 1.0f, 1.0f});
            plate->SetPixel(1, 0, KPixelF{0.0f, 0.75f, 0.125f, 0.5f});
        } else {
            plate->SetPixel(0, 0, KPixel{20000, 40000, 60000, 65535});
            plate->SetPixel(1, 0, KPixel{1, 30000, 65535, 1234});
        }
        flow.SetValue(bright, In(bright, "Image"), host::MakeImage(plate->HostImage()));
        flow.Connect(bright, In(bright, "Brightness"), rnd, rnd.op->MainOutput());
        std::vector<float> seen;
        for (int frame = 1; frame <= 5; ++frame) {
            flow.BeginFrame();
            host::Value v = flow.Evaluate(bright, bright.op->MainOutput(), frame);
            auto* img = static_cast<const host::ImageValue*>(v.get())->image;
            ASSERT_NE(img, nullptr);
            const float b = Brightness(frame);
            seen.push_back(b);
            if (isFloat) {
                const float in[8] = {0.5f, 0.25f, 1.0f, 1.0f, 0.0f, 0.75f, 0.125f, 0.5f};
                for (int i = 0; i < 8; ++i)
                    EXPECT_EQ(img->RowF(0)[i], i % 4 == 3 ? in[i] : in[i] * b) << frame << " " << i;
            } else {
                const uint32_t in[8] = {20000, 40000, 60000, 65535, 1, 30000, 65535, 1234};
                for (int i = 0; i < 8; ++i) {
                    const float scaled = static_cast<float>(in[i]) * b + 0.5f;
                    const uint32_t want = i % 4 == 3 ? in[i]
                                          : scaled >= 65535.0f ? 65535u
                                                               : static_cast<uint32_t>(scaled);
                    EXPECT_EQ(img->RowW(0)[i], want) << frame << " " << i;
                }
            }
        }
        // Frame 5 is a period boundary: the hash of 5 alone.
        EXPECT_EQ(seen[4], Noise(5.0f, 7) + 0.5f);
        EXPECT_NE(seen[0], seen[1]);
        delete plate;
    }
}

}  // namespace

// Average: the times it asks for, and the mean over the frames that came,
// with missing frames black or left out.
#include "support.h"

using namespace zvtest;

namespace {

std::vector<float> Times(Tool<KEffectImage>& t, float time)
{
    std::vector<float> times(t.effect->GetFrameTimes(0, time, nullptr));
    t.effect->GetFrameTimes(0, time, times.data());
    return times;
}

TEST(Average, AsksForFramesAfterThenBeforeByStep)
{
    Tool<KEffectImage> t("ZV_Average");
    t.Apply({{"Main Time", 1}, {"Speed", 0.5}, {"Number of frames", 3}, {"Number of frames before", 2},
             {"Frames step", 2}});
    std::vector<float> want(128, 1e10f);
    std::copy_n(std::vector<float>{5, 7, 9, 3, 1}.begin(), 5, want.begin());
    EXPECT_EQ(Times(t, 10.0f), want);
    t.Set("Main Time", 2);
    t.Set("Source time", 40);
    EXPECT_EQ(Times(t, 10.0f)[1], 42.0f);
}

TEST(Average, ConstantFramesGiveTheFrameAndARampItsMean)
{
    for (bool isFloat : {false, true}) {
        Tool<KEffectImage> t("ZV_Average");
        Img plate = Pattern(7, 5, isFloat);
        LendFrames(t.Image(), {plate.get(), plate.get(), plate.get(), plate.get(), plate.get(), plate.get(),
                               plate.get(), plate.get()});
        Img out = t.Run(plate.get());
        if (isFloat) EXPECT_LT(MaxDiff(*out, *plate, 0, 0, 7, 5), 1e-6f);
        else EXPECT_EQ(Differ(*out, *plate), "");
    }
    // Frames k = 0..7 of codes 1000 k + 7: the mean 3507, cut.
    Tool<KEffectImage> t("ZV_Average");
    std::vector<Img> ramp;
    for (uint32_t k = 0; k < 8; ++k) ramp.push_back(Solid(3, 2, KPixel{1000 * k + 7, 2000 * k, 65535 - 999 * k, 65535}));
    LendFrames(t.Image(), {ramp[0].get(), ramp[1].get(), ramp[2].get(), ramp[3].get(), ramp[4].get(), ramp[5].get(),
                           ramp[6].get(), ramp[7].get()});
    EXPECT_EQ(Channels(At<KPixel>(*t.Run(ramp[0].get()), 2, 1)), Channels(KPixel{3507, 7000, 62038, 65535}));
    Img ramp01 = Solid(3, 2, KPixelF{0.25f, 0.5f, 1.0f, 1.0f}), ramp02 = Solid(3, 2, KPixelF{0.75f, 0.0f, 2.0f, 1.0f});
    t.Set("Number of frames", 2);
    LendFrames(t.Image(), {ramp01.get(), ramp02.get()});
    EXPECT_EQ(Channels(At<KPixelF>(*t.Run(ramp01.get()), 0, 0)), Channels(KPixelF{0.5f, 0.25f, 1.5f, 1.0f}));
}

// Four frames asked, the third missing: black divides by four, ignore by the
// three that came; leaving the current frame out still divides by four.
TEST(Average, MissingFramesCountAsBlackOrAreLeftOut)
{
    Tool<KEffectImage> t("ZV_Average");
    t.Set("Number of frames", 4);
    Img a = Solid(1, 1, KPixel{400, 0, 0, 65535}), b = Solid(1, 1, KPixel{800, 0, 0, 65535}),
        d = Solid(1, 1, KPixel{1200, 0, 0, 65535});
    auto red = [&] {
        LendFrames(t.Image(), {a.get(), b.get(), nullptr, d.get()});
        return At<KPixel>(*t.Run(a.get()), 0, 0).r;
    };
    EXPECT_EQ(red(), 600u);
    t.Set("Non-existing frames", 1);
    EXPECT_EQ(red(), 800u);
    t.Set("Non-existing frames", 0);
    t.Set("Include current frame", 0);
    EXPECT_EQ(red(), 500u);
    // One frame asked and that one left out: nothing to average, the input passes.
    t.Set("Number of frames", 1);
    EXPECT_EQ(red(), 400u);
}

}  // namespace

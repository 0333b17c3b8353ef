// Seamless Loop: the two frames it asks for and its cross-fade weights at the
// loop's ends; a dissolve longer than the loop is cut to it.
#include "support.h"

using namespace zvtest;

namespace {

std::pair<float, float> Times(Tool<KEffectImage>& t, float time)
{
    float times[2];
    EXPECT_EQ(t.effect->GetFrameTimes(0, time, times), 2);
    return {times[0], times[1]};
}

TEST(SeamlessLoop, AsksForTheLoopFrameAndTheOneItFadesInto)
{
    Tool<KEffectImage> t("ZV_SeamlessLoop");
    t.Apply({{"Loop length", 10}, {"Dissolve length", 4}});
    EXPECT_EQ(Times(t, 5.0f), std::make_pair(9.0f, 1e10f));
    EXPECT_EQ(Times(t, 6.0f), std::make_pair(10.0f, 0.0f));
    EXPECT_EQ(Times(t, 9.0f), std::make_pair(13.0f, 3.0f));
    EXPECT_EQ(Times(t, 13.0f), std::make_pair(7.0f, 1e10f));  // the next loop
    t.Set("Dissolve length", 0);
    EXPECT_EQ(Times(t, 9.0f), std::make_pair(9.0f, 1e10f));
}

// Loop 10, dissolve 4: frames 7, 8, 9 of each loop mix in a quarter, a half and
// three quarters of the later frame; up to 6 the first frame passes alone.
TEST(SeamlessLoop, CrossFadeWeightsAtTheLoopsEnds)
{
    Tool<KEffectImage> t("ZV_SeamlessLoop");
    t.Apply({{"Loop length", 10}, {"Dissolve length", 4}});
    Img a = Solid(2, 1, KPixel{40000, 0, 65535, 65535}), b = Solid(2, 1, KPixel{0, 40000, 65535, 65535});
    Img af = Solid(2, 1, KPixelF{1.0f, 0.0f, 0.5f, 1.0f}), bf = Solid(2, 1, KPixelF{0.0f, 1.0f, 0.5f, 1.0f});
    auto run = [&](float time, const Img& x, const Img& y) {
        LendFrames(t.Image(), {x.get(), y.get()});
        return RunEffect(t.Image(), x.get(), {.time = time, .depth = Depth(x->IsFloat())}, false);
    };
    const std::pair<float, uint32_t> rows[] = {{6, 0}, {7, 16384}, {8, 32768}, {9, 49152}, {16, 0}, {19, 49152}};
    for (auto [time, w] : rows) {
        EXPECT_EQ(Channels(At<KPixel>(*run(time, a, b), 1, 0)),
                  Channels(KPixel{(40000 * (65536 - w)) >> 16, (40000 * w) >> 16, 65535, 65535}))
            << time;
        EXPECT_EQ(Channels(At<KPixelF>(*run(time, af, bf), 0, 0)),
                  Channels(KPixelF{1.0f - w / 65536.0f, w / 65536.0f, 0.5f, 1.0f}))
            << time;
    }
    t.Set("Fade type", 1);  // smooth: a quarter becomes 0.5 - cos(pi / 4) / 2
    EXPECT_EQ(At<KPixel>(*run(7, a, b), 0, 0).g,
              (40000u * uint32_t((0.5 - std::cos(3.141592653589793 / 4) * 0.5) * 65536)) >> 16);
    // Half way: cos(pi / 2) in doubles is not quite 0, so the weight is cut to 32767.
    EXPECT_EQ(At<KPixel>(*run(8, a, b), 0, 0).g, (40000u * 32767u) >> 16);
}

TEST(SeamlessLoop, ADissolveLongerThanTheLoopIsCutToIt)
{
    ToolFlow f("ZV_SeamlessLoop");
    f.Set("Looplength", 10);
    f.Set("Dissolvelength", 20);
    EXPECT_EQ(NumberOf(f.In("Dissolvelength")->ValueAt(0)), 10.0);
    f.Set("Dissolvelength", 5);
    EXPECT_EQ(NumberOf(f.In("Dissolvelength")->ValueAt(0)), 5.0);
}

}  // namespace

// Deflicker: the frames each reference asks for, and the current frame matched
// to the reference's mean colour by scale or by shift.
#include "support.h"

using namespace zvtest;

namespace {

std::vector<float> Times(Tool<KEffectImage>& t, float time, size_t n)
{
    std::vector<float> times(t.effect->GetFrameTimes(0, time, nullptr));
    t.effect->GetFrameTimes(0, time, times.data());
    times.resize(n);
    return times;
}

TEST(Deflicker, AsksForItsReferenceFrames)
{
    Tool<KEffectImage> t("ZV_Deflicker");
    t.Set("Reference Time", 3);
    EXPECT_EQ(Times(t, 12.0f, 3), (std::vector<float>{12.0f, 3.0f, 1e10f}));
    t.Apply({{"Reference", 1}, {"Time Step", 5}});  // 3 lowered to -2: steps at -2, 3, 8, 13
    EXPECT_EQ(Times(t, 12.0f, 4), (std::vector<float>{12.0f, 8.0f, 13.0f, 1e10f}));
    EXPECT_EQ(t.Field<float>("ReTi"_id), -2.0f);
    t.Apply({{"Reference", 2}, {"Frames before", 1}, {"Frames After", 2}});
    EXPECT_EQ(Times(t, 12.0f, 5), (std::vector<float>{12.0f, 13.0f, 14.0f, 11.0f, 1e10f}));
}

TEST(Deflicker, TheCurrentFrameTakesTheReferencesMean)
{
    Tool<KEffectImage> t("ZV_Deflicker");
    const Img now = Row<KPixelF>({{0.2f, 0.4f, 0.0f, 1.0f}, {0.6f, 0.4f, 0.5f, 1.0f}});
    const Img ref = Row<KPixelF>({{0.5f, 0.5f, 0.5f, 1.0f}, {0.5f, 0.5f, 0.5f, 1.0f}});
    auto run = [&] {
        LendFrames(t.Image(), {now.get(), ref.get()});
        return Pixels<KPixelF>(*t.Run(now.get()));
    };
    // Multiply: red mean 0.4 to 0.5, green 0.4 to 0.5, blue 0.25 to 0.5.
    std::vector<KPixelF> got = run();
    ExpectNear(got[0], {0.25f, 0.5f, 0.0f, 1.0f}, 1e-6f);
    ExpectNear(got[1], {0.75f, 0.5f, 1.0f, 1.0f}, 1e-6f);
    t.Set("Operation", 0);  // add the difference
    got = run();
    ExpectNear(got[0], {0.3f, 0.5f, 0.25f, 1.0f}, 1e-6f);
    ExpectNear(got[1], {0.7f, 0.5f, 0.75f, 1.0f}, 1e-6f);
    // Without its reference frame the current one passes, zoned or not.
    for (int type : {0, 1}) {
        t.Set("Type", type);
        LendFrames(t.Image(), {now.get(), nullptr});
        EXPECT_EQ(Differ(*t.Run(now.get()), *now), "") << type;
    }
    // Zoned, a reference of one colour everywhere moves every pixel by the same.
    const Img same = Solid(2, 1, KPixelF{0.2f, 0.2f, 0.2f, 1.0f});
    LendFrames(t.Image(), {same.get(), ref.get()});
    ExpectNear(At<KPixelF>(*t.Run(same.get()), 1, 0), {0.5f, 0.5f, 0.5f, 1.0f}, 1e-5f);
}

}  // namespace

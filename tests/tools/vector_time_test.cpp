// Vector Time: a whole time passes its frame; between frames the two mix,
// each moved along its vectors.
#include "support.h"

using namespace zvtest;

namespace {

TEST(VectorTime, WholeTimesPassAndHalfTimesMix)
{
    Tool<KEffectImage> t("ZV_VectorTime");
    t.Set("Adjust", 2);  // Time Stretch: the time is "Source time"
    float times[2];
    t.Set("Source time", 7.5);
    EXPECT_EQ(t.effect->GetFrameTimes(0, 0.0f, times), 2);
    EXPECT_EQ(std::make_pair(times[0], times[1]), std::make_pair(7.5f, 8.5f));
    Img a = Pattern(6, 4, false), b = Solid(6, 4, KPixel{60000, 0, 1000, 65535});
    auto run = [&](float source) {
        t.Set("Source time", source);
        LendFrames(t.Image(), {a.get(), b.get()});
        return t.Run(a.get());
    };
    EXPECT_EQ(Differ(*run(3.0f), *a), "");
    const KPixel p = At<KPixel>(*run(3.5f), 2, 1), pa = At<KPixel>(*a, 2, 1);
    // wA = trunc(0.5 * 65535) = 32767, wB = 32768.
    EXPECT_EQ(Channels(p), Channels(KPixel{KScaleInt(32767, pa.r) + KScaleInt(32768, 60000), KScaleInt(32767, pa.g),
                                           KScaleInt(32767, pa.b) + KScaleInt(32768, 1000),
                                           KScaleInt(32767, pa.a) + KScaleInt(32768, 65535)}));
    t.Set("Adjust", 0);  // "Not" retimes nothing
    EXPECT_EQ(Differ(*run(3.5f), *a), "");
}

// A dot moving 4 pixels right between frames stands half way at half time.
TEST(VectorTime, FramesMoveAlongTheirVectors)
{
    auto dot = [](int32_t at) {
        Img plain = Made(12, 1, true, [&](int32_t x, int32_t) { return KPixelF{x == at ? 1.0f : 0.0f, 0, 0, 1}; });
        Img out(plain->CreateVectorLike());
        out->CopyFrom(*plain);
        std::fill_n(out->AuxPlane(host::ChanVectorX), 12, 4.0f);
        return out;
    };
    Img a = dot(3), b = dot(7);
    Tool<KEffectImage> t("ZV_VectorTime");
    t.Apply({{"Adjust", 2}, {"Source time", 0.5}});
    LendFrames(t.Image(), {a.get(), b.get()});
    Img out = RunEffect(t.Image(), a.get(), Settings(true), false, Img(a->CreateLike()));
    EXPECT_NEAR(At<KPixelF>(*out, 5, 0).r, 1.0f, 1e-4f);
    EXPECT_NEAR(At<KPixelF>(*out, 3, 0).r, 0.0f, 1e-4f);
    EXPECT_EQ(out->AuxPlane(host::ChanVectorX)[0], 4.0f);
}

}  // namespace

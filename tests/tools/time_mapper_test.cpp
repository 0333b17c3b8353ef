// Time Mapper: the frames it asks for, rounded to halves, and each pixel's
// frame by the map's brightness.
#include "support.h"

using namespace zvtest;

namespace {

TEST(TimeMapper, AsksForTheFramesBetweenItsOffsets)
{
    Tool<KEffectImage> t("ZV_TimeMapper");
    t.Apply({{"Time offset black", 2}, {"Time offset white", -1}});
    std::vector<float> times(t.effect->GetFrameTimes(0, 10.25f, nullptr));
    ASSERT_EQ(times.size(), 2048u);
    t.effect->GetFrameTimes(0, 10.25f, times.data());
    // Four frames counting down from 12.25, each rounded to the nearest half.
    EXPECT_EQ(std::vector<float>(times.begin(), times.begin() + 5), (std::vector<float>{12.5f, 11.5f, 10.5f, 9.5f, 1e10f}));
}

TEST(TimeMapper, TheMapPicksEachPixelsFrame)
{
    std::vector<Img> frames;
    for (uint32_t k = 0; k < 9; ++k) frames.push_back(Solid(3, 1, KPixel{1000 * k, 0, 0, 65535}));
    // Black, mid grey and white: offsets 0, 4 and 8.
    Img map = Row<KPixel>({{0, 0, 0, 65535}, {32768, 32768, 32768, 65535}, {65535, 65535, 65535, 65535}});
    Tool<KEffectImage> t("ZV_TimeMapper");
    auto run = [&] {
        LendFrames(t.Image(), {frames[0].get(), frames[1].get(), frames[2].get(), frames[3].get(), frames[4].get(),
                               frames[5].get(), frames[6].get(), frames[7].get(), frames[8].get()});
        t.Field<KImage*>(2) = map.get();
        Img out = t.Run(frames[0].get());
        t.Field<KImage*>(2) = nullptr;
        return std::vector<uint32_t>{At<KPixel>(*out, 0, 0).r, At<KPixel>(*out, 1, 0).r, At<KPixel>(*out, 2, 0).r};
    };
    // v = (min + max) * 8 * 7.629511e-06: 0, 4.00002 and 8; mixed with the
    // next frame by the fraction (cut), the last one held.
    EXPECT_EQ(run(), (std::vector<uint32_t>{0, 4000, 8000}));
    t.Set("Time offset white", 4);  // v halves: 2.00001 and 4
    EXPECT_EQ(run(), (std::vector<uint32_t>{0, 2000, 4000}));
    Img quarter = Row<KPixel>({{8192, 8192, 8192, 65535}, {8192, 8192, 8192, 65535}, {0, 0, 0, 0}});
    map.swap(quarter);  // v = 0.50001: half of frame 1
    EXPECT_EQ(run(), (std::vector<uint32_t>{500, 500, 0}));
    t.Set("Interpolate between frames", 0);
    EXPECT_EQ(run(), (std::vector<uint32_t>{0, 0, 0}));
    // Equal offsets: one frame, and the map does nothing.
    t.Set("Time offset white", 0);
    EXPECT_EQ(run(), (std::vector<uint32_t>{0, 0, 0}));
}

}  // namespace

// Contour: lines where a channel crosses its threshold and the levels around
// it, and the locks with the rows they show.
#include "support.h"

using namespace zvtest;

namespace {

using Positions = std::vector<int32_t>;

// A ramp from 0 to 1 along x, or down y, in red and green; blue 0, alpha full.
Img Ramp(int32_t n, bool isFloat, bool down = false)
{
    const int32_t w = down ? 16 : n, h = down ? n : 3;
    Img img(KImage::Create(w, h, isFloat));
    for (int32_t y = 0; y < h; ++y)
        for (int32_t x = 0; x < w; ++x) {
            const int32_t i = down ? y : x;
            const uint32_t v = static_cast<uint32_t>(i) * 65535u / static_cast<uint32_t>(n - 1);
            if (isFloat) img->SetPixel(x, y, KPixelF{i / float(n - 1), i / float(n - 1), 0, 1});
            else img->SetPixel(x, y, KPixel{v, v, 0, 65535});
        }
    return img;
}

struct Contour : Tool<KEffectPosition> {
    Contour() : Tool("ZV_Contour") {}
    // Samples half a pixel each way on an n pixel wide picture.
    void HalfPixel(int32_t n) { SetFloat("Width", 1.0f / static_cast<float>(n)); }
    // The places along the ramp where channel c is full; all others must be 0.
    Positions Lines(const Img& img, int32_t c = 0, bool down = false)
    {
        Img out = Run(img.get());
        Positions at;
        for (int32_t i = 0; i < (down ? img->height : img->width); ++i) {
            const float v = zvtest::At<KPixelF>(*out, down ? 1 : i, down ? i : 1)[c];
            if (v == 1.0f) at.push_back(i);
            else EXPECT_EQ(v, 0.0f);
        }
        return at;
    }
};

TEST(Contour, ThresholdAndTwoStepsEitherSideAtBothDepthsAndTheWaveFromTheFifthStep)
{
    Contour t;
    t.HalfPixel(16);
    // 4369 a pixel, threshold 32767, steps of 13107: the threshold and 2 steps off it.
    Img ints = Ramp(16, false);
    EXPECT_EQ(t.Lines(ints), (Positions{1, 7, 13}));
    EXPECT_EQ(t.Lines(ints, 2), Positions{});  // flat channels never cross
    EXPECT_EQ(t.Lines(ints, 3), Positions{});
    t.HalfPixel(17);  // 1/16 a pixel, threshold 0.5, steps of 0.2
    EXPECT_EQ(t.Lines(Ramp(17, true)), (Positions{2, 8, 14}));
    // From the fifth step on the wave keeps its first offsets.
    t.HalfPixel(201);
    t.SetFloat("Levels", 20.0f);  // steps of 0.05, ten pixels
    Img ramp = Ramp(201, true);
    // Crossings 0, 2, 4, 5, 8 and 9 steps from the threshold.
    EXPECT_EQ(t.Lines(ramp), (Positions{10, 20, 50, 60, 80, 100, 120, 140, 150, 180, 190}));
    t.SetFloat("Levels", 0.0f);  // no step: nothing crosses
    EXPECT_EQ(t.Lines(ramp), Positions{});
}

TEST(Contour, LocksCopyTheFirstChannelAndWidthAndShowTheirRows)
{
    Contour t;
    t.HalfPixel(16);
    Img ramp = Ramp(16, false), down = Ramp(16, false, true);
    t.Apply({{"Threshold", 0.25}, {"Levels", 20.0}, {"Lock threshold for all channels", 1},
             {"Lock levels for all channels", 1}});
    EXPECT_EQ(t.Lines(ramp, 1), t.Lines(ramp, 0));
    EXPECT_NE(t.Lines(ramp, 1), (Positions{1, 7, 13}));
    t.Apply({{"Lock threshold for all channels", 0}, {"Lock levels for all channels", 0}, {"Width Vertical", 0}});
    EXPECT_EQ(t.Lines(down, 1, true), Positions{});
    t.Apply({{"Lock horizontal and vertical width", 1}});
    EXPECT_EQ(t.Lines(down, 1, true), (Positions{1, 7, 13}));
    ExpectShown("ZV_Contour", {"WidthVertical", "Threshold", "ThresholdGreen", "ThresholdBlue", "ThresholdAlpha",
                               "LevelsGreen", "LevelsBlue", "LevelsAlpha"},
                {{"Lockhorizontalandverticalwidth", 1, "01111111"}, {"Lockthresholdforallchannels", 1, "01000111"},
                 {"Locklevelsforallchannels", 1, "01000000"}, {"Lockthresholdforallchannels", 0, "01111000"}});
}

}  // namespace

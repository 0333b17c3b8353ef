// The grow and fill tools: holes filled and opaque pixels kept, bands eaten to
// their depth, colour spread a pixel a turn, held pixels carried along lines,
// borders replaced, and the picture revealed by distance around walls.
#include "support.h"

using namespace zvtest;

namespace {

const KPixel kClear{0, 0, 0, 0};

// An opaque pattern with a transparent w x h hole at (x0, y0).
Img Holed(int32_t x0, int32_t y0, int32_t w, int32_t h)
{
    return Made(40, 30, false, [&](int32_t x, int32_t y) {
        const bool hole = x >= x0 && x < x0 + w && y >= y0 && y < y0 + h;
        KPixel p = PatternPixel(x, y);
        p.a = 65535;
        return hole ? kClear : p;
    });
}

}  // namespace

TEST(GrowColor, FillsAHoleAndKeepsOpaquePixels)
{
    Tool<KEffectThreads> t("ZV_GrowColor");
    Img plate = Holed(12, 9, 14, 10);
    Img out = t.Run(plate.get(), true);
    for (int32_t y = 0; y < 30; ++y)
        for (int32_t x = 0; x < 40; ++x) {
            if (At<KPixel>(*plate, x, y).a == 65535) {
                ASSERT_EQ(Raw(*out, x, y), Raw(*plate, x, y)) << x << "," << y;
                continue;
            }
            // No pixel left clear beside an opaque one; this hole fills whole.
            ASSERT_EQ(At<KPixel>(*out, x, y).a, 65535u) << x << "," << y;
        }
    // Fully opaque: the first round finds nothing to fill.
    Img opaque = Holed(0, 0, 0, 0);
    EXPECT_EQ(Differ(*t.Run(opaque.get(), true), *opaque), "");
    // Fewer rounds than the hole needs leave its middle clear, never beside the edge.
    t.Apply({{"Iterations", 1}});
    Img part = t.Run(Holed(5, 5, 30, 20).get(), true);
    EXPECT_EQ(At<KPixel>(*part, 20, 15).a, 0u);
    EXPECT_EQ(At<KPixel>(*part, 5, 15).a, 65535u);
}

TEST(Spread, GrowsOnePixelATurnToTheAlphaWeightedMean)
{
    Tool<KEffectThreads> t("ZV_Spread");
    const KPixelF dot{0.2f, 0.4f, 0.6f, 1.0f};
    Img plate = Made(9, 9, true, [&](int32_t x, int32_t y) { return x == 4 && y == 4 ? dot : KPixelF{}; });
    t.Apply({{"Iterations", 0}});
    EXPECT_EQ(Differ(*t.Run(plate.get()), *plate), "");
    t.Apply({{"Iterations", 2}});
    Img two = t.Run(plate.get());
    for (int32_t y = 0; y < 9; ++y)
        for (int32_t x = 0; x < 9; ++x) {
            const bool reached = std::abs(x - 4) <= 2 && std::abs(y - 4) <= 2;
            ExpectNear(At<KPixelF>(*two, x, y), reached ? dot : KPixelF{}, 1e-6f, std::to_string(x) + "," + std::to_string(y));
        }
    t.Apply({{"Iterations", 1024}});  // stops once a turn changes nothing
    ExpectNear(At<KPixelF>(*t.Run(plate.get()), 0, 8), dot, 1e-6f);
    // Two neighbours of different alpha: colours summed, then divided by the alpha sum.
    const std::vector<KPixelF> row = t.Run(std::vector<KPixelF>{{0.5f, 0, 0, 0.5f}, {}, {0.25f, 0.25f, 0, 0.25f}});
    ExpectNear(row[1], {0.75f / 0.75f, 0.25f / 0.75f, 0.0f, 1.0f}, 1e-6f);
}

TEST(Extend, CarriesTheHeldPixelOutFromTheStart)
{
    Tool<KEffectThreads> t("ZV_Extend");
    auto reds = [](const std::vector<KPixelF>& row) {
        std::vector<float> r;
        for (const KPixelF& p : row) r.push_back(p.r);
        return r;
    };
    auto pixels = [](std::vector<float> r) {
        std::vector<KPixelF> row;
        for (float v : r) row.push_back({v, 0.0f, 0.0f, 1.0f});
        return row;
    };
    t.Apply({{"Channel", 0}, {"Hold", 0}});
    t.Field<KRange2>("Range low", kValueRange) = {0.0f, 0.5f};
    t.SetPoint("Start", 2.0f, 0.0f);  // in pixels
    // Outward from pixel 2 both ways; out of range takes what was held last, black before anything.
    EXPECT_EQ(reds(t.Run(pixels({0.9f, 0.1f, 0.3f, 0.8f, 0.2f, 0.7f}))),
              (std::vector<float>{0.1f, 0.1f, 0.3f, 0.3f, 0.2f, 0.2f}));
    EXPECT_EQ(reds(t.Run(pixels({0.1f, 0.6f, 0.9f, 0.6f}))), (std::vector<float>{0.1f, 0.0f, 0.0f, 0.0f}));
    // "Minumum": each pixel taken lowers the top of the range.
    t.Apply({{"Hold", 1}});
    t.Field<KRange2>("Range low", kValueRange) = {0.0f, 1.0f};
    t.SetPoint("Start", 0.0f, 0.0f);
    EXPECT_EQ(reds(t.Run(pixels({0.4f, 0.3f, 0.35f, 0.2f}))), (std::vector<float>{0.4f, 0.3f, 0.3f, 0.2f}));
    t.SetPoint("Start", 99.0f, 0.0f);  // beyond the line: its last pixel
    t.Apply({{"Hold", 2}});
    EXPECT_EQ(reds(t.Run(pixels({0.4f, 0.3f, 0.35f, 0.5f}))), (std::vector<float>{0.5f, 0.5f, 0.5f, 0.5f}));
}

TEST(Eat, ShrinksAnOpaqueSquareOnEverySide)
{
    Tool<KEffectPixel> t("ZV_Eat");
    Img plate = Made(60, 60, false, [](int32_t x, int32_t y) {
        return x >= 20 && x < 40 && y >= 20 && y < 40 ? KPixel{30000, 20000, 10000, 65535} : kClear;
    });
    // The square is the region (alpha from one half up); L = trunc(60 * 0.07) = 4.
    // Depth counts from 1 at the first pixel inside, so depths 1 to 3 go.
    t.Apply({{"Base channel", 3}, {"Length", 0.07}, {"Noise length", 0}, {"Left", 1}, {"Right", 1}, {"Top", 1}, {"Bottom", 1}});
    t.Field<KRange2>("Eat range low", kValueRange) = {0.5f, 1.0f};
    Img out = t.Run(plate.get(), true);
    for (int32_t y = 0; y < 60; ++y)
        for (int32_t x = 0; x < 60; ++x) {
            const bool kept = x >= 23 && x < 37 && y >= 23 && y < 37;
            const std::array<float, 4> want = kept ? Raw(*plate, x, y) : std::array<float, 4>{};
            ASSERT_EQ(Raw(*out, x, y), want) << x << "," << y;
        }
    // One side only: the square loses its left band alone.
    t.Apply({{"Right", 0}, {"Top", 0}, {"Bottom", 0}});
    out = t.Run(plate.get(), true);
    EXPECT_EQ(At<KPixel>(*out, 22, 30).a, 0u);
    EXPECT_EQ(At<KPixel>(*out, 23, 30).a, 65535u);
    EXPECT_EQ(At<KPixel>(*out, 39, 30).a, 65535u);
    EXPECT_EQ(At<KPixel>(*out, 30, 20).a, 65535u);
}

TEST(CleanEdges, SolidAndDuplicateBorders)
{
    Tool<KEffectPixel> t("ZV_CleanEdges");
    Img plate = Pattern(20, 12, false);
    t.Apply({{"Lock", 2}, {"Pixels Left", 2}, {"Pixels Right", 3}, {"Pixels Top", 1}, {"Pixels Bottom", 4}});
    Img dup = t.Run(plate.get());
    // Rows from the first: Top's one row, then the inner area up to Bottom's four.
    EXPECT_EQ(Raw(*dup, 0, 0), Raw(*plate, 2, 1));
    EXPECT_EQ(Raw(*dup, 19, 11), Raw(*plate, 16, 7));
    EXPECT_EQ(Raw(*dup, 5, 5), Raw(*plate, 5, 5));
    t.Apply({{"Type", 0}});
    t.SetColor("Color", {1.0f, 0.0f, 0.5f, 1.0f});
    Img solid = t.Run(plate.get());
    EXPECT_EQ(Channels(At<KPixel>(*solid, 17, 5)), Channels(KPixel{65535, 0, 32767, 65535}));
    EXPECT_EQ(Raw(*solid, 16, 7), Raw(*plate, 16, 7));
    // All sides take Left; counts beyond half the picture leave nothing inside.
    t.Apply({{"Lock", 0}, {"Pixels Left", 40}});
    EXPECT_EQ(Channels(At<KPixel>(*t.Run(plate.get()), 10, 6)), Channels(KPixel{65535, 0, 32767, 65535}));
    ExpectShown("ZV_CleanEdges", {"PixelsRight", "PixelsTop", "PixelsBottom"},
                {{nullptr, 0, "000"}, {"Lock", 1, "010"}, {"Lock", 2, "111"}});
}

TEST(Grow, RevealsByDistanceAroundWalls)
{
    Tool<KEffectThreads> t("ZV_Grow");
    // Bright everywhere but a dark wall at column 10 with a gap in row 0.
    Img plate = Made(30, 12, true, [](int32_t x, int32_t y) {
        return x == 10 && y > 0 ? KPixelF{0, 0, 0, 1} : KPixelF{0.8f, 0.6f, 0.4f, 1.0f};
    });
    t.Apply({{"Grow End", 0.5}, {"Softness Start", 0}, {"Softness End", 0.1}});
    t.SetPoint("Seed 1", 0.0f, 0.5f);  // pixel (0, 6)
    Img out = t.Run(plate.get(), true);
    // To End = 15 pixels, the last 3 fading; diagonal steps count the root of two.
    EXPECT_EQ(At<KPixelF>(*out, 9, 6).r, 0.8f);
    EXPECT_EQ(At<KPixelF>(*out, 10, 6).r, 0.0f);  // the wall
    // Past the wall only through the gap: (11, 0) fades, (11, 6) lies beyond End.
    EXPECT_NEAR(At<KPixelF>(*out, 11, 0).r, 0.8f * (15.0f - (5.0f + 6.0f * 1.41421356f)) / 3.0f, 1e-5f);
    EXPECT_EQ(At<KPixelF>(*out, 11, 6).a, 0.0f);
}

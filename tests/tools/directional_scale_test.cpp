// Directional Scale: declarations, the half-plane it leaves alone, its map on
// hand-computed points, and the warp family's standard inputs reaching the
// process through the host.
#include "warp_support.h"

using namespace zvtest;

TEST(DirectionalScale, ScalesOnlyAheadOfTheAxis)
{
    Warp w("ZV_DirectionalScale");
    w.Start();  // the axis along x through the middle, 5 along and 1 across
    ExpectMaps(w, {{0.4f, 0.3f, 0.4f, 0.3f}}, 0.0f);  // behind: exactly unchanged
    ExpectMaps(w, {{0.6f, 0.3f, 0.52f, 0.3f}}, 2e-6f);
    w.SetBool("Scale all", true);
    w.Start();
    ExpectMaps(w, {{0.4f, 0.3f, 0.48f, 0.3f}}, 2e-6f);

    // At 45 degrees the axis is n = (s, s) and m = (-s, s) lies across it.
    w.SetBool("Scale all", false);
    w.SetDegrees("Axis angle", 45.0f);
    w.Set("Size"_id, 2.0f);
    w.Set("SizY"_id, 4.0f);
    w.Start();
    const float s = 0.70710678f, c = 0.5f - 0.1f * s;
    ExpectMaps(w, {{c, c, c, c},
                   {0.5f, 0.5f + 0.4f * s, 0.5f + 0.05f * s, 0.5f + 0.15f * s}},  // 0.2 n + 0.2 m
               2e-6f);
}

TEST(DirectionalScale, StandardInputsAreaFilteringTurnsAMinifiedCheckerboardGrey)
{
    for (bool isFloat : {false, true}) {
        std::unique_ptr<KImage> board(KImage::Create(64, 64, isFloat));
        for (int32_t y = 0; y < 64; ++y)
            for (int32_t x = 0; x < 64; ++x) {
                const float v = static_cast<float>((x + y) & 1);
                board->SetPixel(x, y, KPixelF{v, v, v, 1.0f});
            }
        ToolFlow t("ZV_DirectionalScale", board.get());
        t.Set("Scaleall", 1);  // ten source pixels to one each way, wrapped at the edges
        t.Set("Sizealongaxis", 0.1);
        t.Set("Sizeinotherdirection", 0.1);
        t.Set("KEdg", 1);
        t.Set("KFil", 2);
        auto area = t.Render();
        t.Set("KFil", 0);
        auto point = t.Render();
        for (int32_t y = 0; y < 64; ++y)
            for (int32_t x = 0; x < 64; ++x) {
                KPixelF a, p;
                area->GetPixel(x, y, a, 0);
                point->GetPixel(x, y, p, 0);
                ASSERT_NEAR(a.r, 0.5f, 0.05f) << x << "," << y << " float " << isFloat;
                ASSERT_TRUE(p.r < 0.001f || p.r > 0.999f);  // single source pixels
            }
    }
}

TEST(DirectionalScale, StandardInputsWarpMaskAndEdgesReachTheProcess)
{
    for (bool isFloat : {false, true}) {
        std::unique_ptr<KImage> plate(Pattern(20, 10, isFloat)), mask(KImage::Create(20, 10, isFloat));
        for (int32_t x = 0; x < 20; ++x) mask->SetPixel(x, 0, KPixelF{0.0f, 0.0f, 0.0f, 1.0f});
        ToolFlow t("ZV_DirectionalScale", plate.get());
        t.SetImage("KMaW", mask.get());
        t.Set("Scaleall", 1);
        t.Set("Sizealongaxis", 0.5);  // column 19 reads column 28
        t.Set("KFil", 0);
        auto out = t.Render();
        EXPECT_EQ(MaxDiff(*out, *plate, 0, 1, 20, 10), 0.0f);  // masked out: their own pixels
        EXPECT_EQ(Raw(*out, 19, 0)[3], 0.0f);                  // black outside
        t.Set("KEdg", 1);
        EXPECT_EQ(Raw(*t.Render(), 19, 0)[0], Raw(*plate, 8, 0)[0]);  // wrapped
    }
}

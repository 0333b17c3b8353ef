// Transform: its declarations as the host shows them, the inverse map on
// hand-computed points, and renders through a flow: identity at neutral
// settings, an exact move by Center under each edge mode and with wide pixels,
// a quarter turn, and filtering and under-sampling from the host.
#include "warp_support.h"

using namespace zvtest;

namespace {

TEST(Transform, HandComputedPoints)
{
    Warp w("ZV_Transform");
    w.SetPoint("Center", 0.0f, 0.0f);  // neutral, as the bridge makes it
    w.SetPoint("Axis", 0.5f, 0.5f);
    w.Start();
    ExpectMaps(w, {{0.3f, 0.7f, 0.3f, 0.7f}}, 1e-5f);

    // A quarter turn counter-clockwise (rows run upward), twice as wide, moved
    // right by 0.1: the axis lands at (0.6, 0.5).
    w.SetPoint("Center", 0.1f, 0.0f);
    w.SetDegrees("Axis angle", 90.0f);
    w.SetFloat("Size X", 2.0f);
    w.Start();
    ExpectMaps(w, {{0.6f, 0.5f, 0.5f, 0.5f},
                   {0.6f, 0.75f, 0.625f, 0.5f},   // above the axis: from its right
                   {0.35f, 0.5f, 0.5f, 0.75f}},   // left of it: from above
               1e-5f);

    // "Size and Aspect": Size Y is an aspect of Size X.
    w.SetDegrees("Axis angle", 0.0f);
    w.SetPoint("Center", 0.0f, 0.0f);
    w.SetInt("Size Type", 1);
    w.SetFloat("Size Y", 0.5f);  // height 2 * 0.5 = 1
    w.Start();
    ExpectMaps(w, {{0.9f, 0.9f, 0.7f, 0.9f}}, 1e-5f);
    // A zero size is clamped, not divided by.
    w.SetFloat("Size X", 0.0f);
    w.Start();
    KPosition out;
    ASSERT_TRUE(w.Map(0.6f, 0.5f, out));
    EXPECT_TRUE(std::isfinite(out.x));
    EXPECT_NEAR(out.x, 0.5f + 0.1f / 1e-7f, 1e3f);
}

TEST(Transform, CenterMovesWholePixelsUnderEachEdgeMode)
{
    // 17 pixels span 16 steps: Center 0.625 moves the picture right by 2.
    for (bool isFloat : {false, true})
        for (int edges : {0, 1, 2}) {
            std::unique_ptr<KImage> plate(Pattern(17, 9, isFloat));
            ToolFlow r("ZV_Transform", plate.get());
            r.SetPoint("Center", 0.625, 0.5);
            r.Set("KEdg", edges);
            r.Set("KFil", 0);
            auto out = r.Render();
            for (int32_t y = 0; y < 9; ++y)
                for (int32_t x = 0; x < 17; ++x) {
                    int32_t sx = x - 2;
                    if (sx < 0) sx = edges == 1 ? sx + 17 : (edges == 2 ? 0 : -1);
                    EXPECT_EQ(Raw(*out, x, y), Raw(*plate, sx, y))
                        << x << "," << y << " edges " << edges << " float " << isFloat;
                }
        }
}

TEST(Transform, WidePixelsMoveByTheirOwnRows)
{
    // Pixel aspect 2: rows are normalised to 0..0.5. Center a quarter up is 2 of 8 rows.
    std::unique_ptr<KImage> plate(KImage::Create(9, 9, false, 2.0f, 1.0f));
    for (int32_t y = 0; y < 9; ++y)
        for (int32_t x = 0; x < 9; ++x) plate->SetPixel(x, y, zvtest::PatternPixel(x, y));
    ToolFlow r("ZV_Transform", plate.get());
    r.SetPoint("Center", 0.5, 0.75);
    r.Set("KFil", 0);
    auto out = r.Render();
    for (int32_t y = 0; y < 9; ++y)
        for (int32_t x = 0; x < 9; ++x) EXPECT_EQ(Raw(*out, x, y), Raw(*plate, x, y - 2)) << x << "," << y;
}

TEST(Transform, FilteringAndUnderSamplingFromTheHost)
{
    std::unique_ptr<KImage> plate(Pattern(17, 17, false));
    ToolFlow r("ZV_Transform", plate.get());
    // Half a pixel to the right: "None" takes the pixel left of the sample
    // point, "Pixel" blends the two.
    r.SetPoint("Center", 0.5 + 0.5 / 16.0, 0.5);
    r.Set("KFil", 0);
    EXPECT_EQ(Raw(*r.Render(), 5, 3), Raw(*plate, 4, 3));
    r.Set("KFil", 1);
    auto exact = r.Render();
    for (int c = 0; c < 4; ++c)
        EXPECT_NEAR(Raw(*exact, 5, 3)[c], (Raw(*plate, 4, 3)[c] + Raw(*plate, 5, 3)[c]) / 2.0f, 0.5f) << c;
    // An affine map interpolates exactly over an under-sampled grid: within a code.
    r.Set("KUnd", 4);
    EXPECT_LE(MaxDiff(*r.Render(), *exact, 0, 0, 17, 17), 1.01f / 65535.0f);
}

}  // namespace

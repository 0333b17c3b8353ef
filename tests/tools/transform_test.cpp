// Transform: the inverse map on hand-computed points, and renders through a
// flow: an exact move by Center under each edge mode and with wide pixels,
// filtering and under-sampling from the host.
#include "warp_support.h"

using namespace zvtest;

TEST(Transform, HandComputedPoints)
{
    Warp w("ZV_Transform");
    ExpectSteps(w, 1e-5f, {
        {{{"Center", 0, 0}, {"Axis", 0.5, 0.5}}, {{0.3f, 0.7f, 0.3f, 0.7f}}},  // neutral, as the bridge makes it
        // A quarter turn counter-clockwise (rows run upward), twice as wide, moved
        // right by 0.1: the axis lands at (0.6, 0.5); above it reads its right, left of it above.
        {{{"Center", 0.1, 0}, {"Axis angle", 90}, {"Size X", 2}},
         {{0.6f, 0.5f, 0.5f, 0.5f}, {0.6f, 0.75f, 0.625f, 0.5f}, {0.35f, 0.5f, 0.5f, 0.75f}}},
        // "Size and Aspect": Size Y is an aspect of Size X, so the height is 2 * 0.5.
        {{{"Axis angle", 0}, {"Center", 0, 0}, {"Size Type", 1}, {"Size Y", 0.5}}, {{0.9f, 0.9f, 0.7f, 0.9f}}},
    });
    w.SetFloat("Size X", 0.0f);  // a zero size is clamped, not divided by
    w.Start();
    KPosition out;
    ASSERT_TRUE(w.Map(0.6f, 0.5f, out));
    EXPECT_NEAR(out.x, 0.5f + 0.1f / 1e-7f, 1e3f);
}

TEST(Transform, CenterMovesWholePixelsUnderEachEdgeModeFilterAndUnderSampling)
{
    // 17 pixels span 16 steps: Center 0.625 moves the picture right by 2.
    for (bool isFloat : {false, true})
        for (int edges : {0, 1, 2}) {
            Img plate = Pattern(17, 9, isFloat);
            ToolFlow r("ZV_Transform", plate.get());
            r.Apply({{"Center", 0.625, 0.5}, {"KEdg", edges}, {"KFil", 0}});
            Img out = r.Render();
            for (int32_t y = 0; y < 9; ++y)
                for (int32_t x = 0; x < 17; ++x) {
                    const int32_t sx = x >= 2 ? x - 2 : edges == 1 ? x + 15 : edges == 2 ? 0 : -1;
                    EXPECT_EQ(Raw(*out, x, y), Raw(*plate, sx, y)) << x << "," << y << " edges " << edges;
                }
        }
    // Pixel aspect 2: rows are normalised to 0..0.5. Center a quarter up is 2 of 8 rows.
    Img wide = Pattern(9, 9, false, 2.0f);
    ToolFlow r("ZV_Transform", wide.get());
    r.Apply({{"Center", 0.5, 0.75}, {"KFil", 0}});
    EXPECT_EQ(MaxDiff(*r.Render(), *wide, 0, 0, 9, 9, 0, 2), 0.0f);
    // Half a pixel to the right: "None" takes the pixel left of the sample point, "Pixel" blends the two.
    Img plate = Pattern(17, 17, false);
    ToolFlow h("ZV_Transform", plate.get());
    h.Apply({{"Center", 0.5 + 0.5 / 16.0, 0.5}, {"KFil", 0}});
    EXPECT_EQ(Raw(*h.Render(), 5, 3), Raw(*plate, 4, 3));
    h.Set("KFil", 1);
    Img exact = h.Render();
    for (int c = 0; c < 4; ++c)
        EXPECT_NEAR(Raw(*exact, 5, 3)[c], (Raw(*plate, 4, 3)[c] + Raw(*plate, 5, 3)[c]) / 2.0f, 0.5f) << c;
    h.Set("KUnd", 4);  // an affine map interpolates exactly over an under-sampled grid: within a code
    EXPECT_LE(MaxDiff(*h.Render(), *exact, 0, 0, 17, 17), 1.01f / 65535.0f);
}

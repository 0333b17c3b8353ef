// Relative Transform: declarations, the pivot from a bounding box or a weighted
// centre, the transform about it, and a picture with nothing in range.
#include "warp_support.h"

using namespace zvtest;

TEST(RelativeTransform, SizesAndTurnsAboutThePivotInTheBox)
{
    Warp w("ZV_RelativeTransform");
    // White in columns 2..4 and rows 6..8: a box from 2 to 5 across and 6 to 9 down.
    for (int32_t y = 6; y <= 8; ++y)
        for (int32_t x = 2; x <= 4; ++x) w.image->SetPixel(x, y, KPixel{65535, 65535, 65535, 65535});
    w.SetPoint("Cent"_id, 0.0f, 0.0f);  // as the bridge leaves the middle
    w.Set("SizX"_id, 2.0f);
    w.Set("SizY"_id, 2.0f);
    ASSERT_TRUE(w.Start());
    float cx = 3.5f / 11.0f, cy = 7.5f / 11.0f;
    ExpectMaps(w, {{cx + 0.2f, cy - 0.4f, cx + 0.1f, cy - 0.2f}}, 2e-6f);
    w.Set("PivX"_id, 1.0f);   // the right edge of the box
    w.Set("PivY"_id, -1.0f);  // its top
    w.SetInt("Size Type", 1);  // Size Y is 1.5 times Size X
    w.Set("SizY"_id, 1.5f);
    w.Start();
    cx = 5.0f / 11.0f;
    cy = 6.0f / 11.0f;
    ExpectMaps(w, {{cx, cy, cx, cy}, {cx + 0.2f, cy + 0.3f, cx + 0.1f, cy + 0.1f}}, 2e-6f);
    w.SetInt("Size Type", 0);
    w.Set("SizX"_id, 1.0f);
    w.Set("SizY"_id, 1.0f);
    w.SetDegrees("Axis angle", 90.0f);
    w.SetPoint("Cent"_id, 0.1f, 0.0f);
    w.Start();
    ExpectMaps(w, {{cx + 0.1f, cy, cx, cy}, {cx + 0.2f, cy, cx, cy - 0.1f}}, 2e-6f);
}

TEST(RelativeTransform, WeightedPixelsPivotOnTheirCentre)
{
    Warp w("ZV_RelativeTransform");
    w.image->SetPixel(1, 1, KPixel{65535, 0, 0, 65535});
    w.image->SetPixel(7, 3, KPixel{32768, 0, 0, 65535});
    w.SetInt("Center Type", 1);
    w.SetInt("Center Channel", 0);
    w.SetPoint("Cent"_id, 0.0f, 0.0f);
    w.Set("SizX"_id, 2.0f);
    w.Set("SizY"_id, 2.0f);
    w.Set("PivX"_id, 1.0f);  // a single point: the pivot has no room to move
    ASSERT_TRUE(w.Start());
    // Pixel centres weighted by their values, 1 and 32768 / 65535.
    const float t = 32768.0f * 1.5259022e-05f;
    const float cx = (1.5f + 7.5f * t) / (1.0f + t) / 11.0f;
    const float cy = (1.5f + 3.5f * t) / (1.0f + t) / 11.0f;
    ExpectMaps(w, {{cx, cy, cx, cy}, {cx - 0.2f, cy + 0.2f, cx - 0.1f, cy + 0.1f}}, 2e-6f);
}

TEST(RelativeTransform, NothingInRangeHasNothingToDo)
{
    Warp w("ZV_RelativeTransform");
    w.image = Pattern(12, 7, false);
    w.Set("SizX"_id, 3.0f);
    w.Field<KRange2>("GrwS"_id) = {1.0f, 1.0f};
    EXPECT_FALSE(w.Start());
    w.Field<KRange2>("GrwS"_id) = {0.0f, 1.0f};  // everything in range
    EXPECT_TRUE(w.Start());
}

// Relative Transform: the pivot from a bounding box or a weighted centre, the
// transform about it, and a picture with nothing in range.
#include "warp_support.h"

using namespace zvtest;

TEST(RelativeTransform, SizesAndTurnsAboutThePivotInTheBoxOrTheWeightedCentre)
{
    Warp w("ZV_RelativeTransform");
    // White in columns 2..4 and rows 6..8: a box from 2 to 5 across and 6 to 9 down.
    for (int32_t y = 6; y <= 8; ++y)
        for (int32_t x = 2; x <= 4; ++x) w.image->SetPixel(x, y, KPixel{65535, 65535, 65535, 65535});
    const float cx = 3.5f / 11.0f, cy = 7.5f / 11.0f, rx = 5.0f / 11.0f, ty = 6.0f / 11.0f;
    ExpectSteps(w, 2e-6f, {
        {{{"Center", 0, 0}, {"Size X", 2}, {"Size Y", 2}}, {{cx + 0.2f, cy - 0.4f, cx + 0.1f, cy - 0.2f}}},
        // The box's right edge and top; Size Y 1.5 times Size X.
        {{{"Pivot X", 1}, {"Pivot Y", -1}, {"Size Type", 1}, {"Size Y", 1.5}},
         {{rx, ty, rx, ty}, {rx + 0.2f, ty + 0.3f, rx + 0.1f, ty + 0.1f}}},
        {{{"Size Type", 0}, {"Size X", 1}, {"Size Y", 1}, {"Axis angle", 90}, {"Center", 0.1, 0}},
         {{rx + 0.1f, ty, rx, ty}, {rx + 0.2f, ty, rx, ty - 0.1f}}},
    });
    // Pixel centres weighted by their values, 1 and 32768 / 65535; a single
    // point leaves the pivot no room to move.
    Warp p("ZV_RelativeTransform");
    p.image->SetPixel(1, 1, KPixel{65535, 0, 0, 65535});
    p.image->SetPixel(7, 3, KPixel{32768, 0, 0, 65535});
    const float t = 32768.0f * 1.5259022e-05f, px = (1.5f + 7.5f * t) / (1.0f + t) / 11.0f, py = (1.5f + 3.5f * t) / (1.0f + t) / 11.0f;
    ExpectSteps(p, 2e-6f, {{{{"Center Type", 1}, {"Center Channel", 0}, {"Center", 0, 0}, {"Size X", 2}, {"Size Y", 2}, {"Pivot X", 1}},
                            {{px, py, px, py}, {px - 0.2f, py + 0.2f, px - 0.1f, py + 0.1f}}}});
    // Nothing in range: nothing to do; everything in range: something.
    Warp n("ZV_RelativeTransform");
    n.image = Pattern(12, 7, false);
    n.SetFloat("Size X", 3.0f);
    n.Field<KRange2>("GrwS"_id) = {1.0f, 1.0f};
    EXPECT_FALSE(n.Start());
    n.Field<KRange2>("GrwS"_id) = {0.0f, 1.0f};
    EXPECT_TRUE(n.Start());
}

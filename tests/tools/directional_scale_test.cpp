// Directional Scale: the half-plane it leaves alone, its map on hand-computed
// points, and the warp mask and edges of its family reaching the process.
#include "warp_support.h"

using namespace zvtest;

TEST(DirectionalScale, ScalesOnlyAheadOfTheAxisAndMaskAndEdgesReachTheProcess)
{
    Warp w("ZV_DirectionalScale");
    const float s = 0.70710678f, c = 0.5f - 0.1f * s;
    ExpectSteps(w, 2e-6f, {
        // The axis along x through the middle, 5 along and 1 across; behind it unchanged.
        {{}, {{0.4f, 0.3f, 0.4f, 0.3f}, {0.6f, 0.3f, 0.52f, 0.3f}}},
        {{{"Scale all", 1}}, {{0.4f, 0.3f, 0.48f, 0.3f}}},
        // At 45 degrees the axis is n = (s, s) and m = (-s, s) lies across it: 0.2 n + 0.2 m.
        {{{"Scale all", 0}, {"Axis angle", 45}, {"Size along axis", 2}, {"Size in other direction", 4}},
         {{c, c, c, c}, {0.5f, 0.5f + 0.4f * s, 0.5f + 0.05f * s, 0.5f + 0.15f * s}}},
    });
    for (bool isFloat : {false, true}) {
        Img plate = Pattern(20, 10, isFloat);
        Img mask = Made(20, 10, isFloat, [](int32_t, int32_t y) { return KPixelF{0, 0, 0, y == 0 ? 1.0f : 0.0f}; });
        ToolFlow t("ZV_DirectionalScale", plate.get());
        t.SetImage("KMaW", mask.get());
        t.Apply({{"Scaleall", 1}, {"Sizealongaxis", 0.5}, {"KFil", 0}});  // column 19 reads column 28
        Img out = t.Render();
        EXPECT_EQ(MaxDiff(*out, *plate, 0, 1, 20, 10), 0.0f);  // masked out: their own pixels
        EXPECT_EQ(Raw(*out, 19, 0)[3], 0.0f);                  // black outside
        t.Set("KEdg", 1);
        EXPECT_EQ(Raw(*t.Render(), 19, 0)[0], Raw(*plate, 8, 0)[0]);  // wrapped
    }
}

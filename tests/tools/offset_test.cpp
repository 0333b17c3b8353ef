// Offset: the channel rules on hand-computed points, and the picture moved by
// its deformation map or, without one, left as it is.
#include "warp_support.h"

using namespace zvtest;

TEST(Offset, ChannelsScaleBetweenTheBlackAndWhiteOffsets)
{
    Warp w("ZV_Offset");
    Img map = Solid(3, 3, KPixel{32768, 0, 65535, 16384});
    w.Field<KImage*>(2) = map.get();
    // Each result is in - (black + (white - black) * value) * scale; "Lumin." the mean of 65535 and 0.
    ExpectSteps(w, 1e-5f, {
        {{{"Scale", 0.5}, {"Horizontal source", 0}, {"Horizontal Offset Black", 0.2}, {"Horizontal Offset White", -0.3},
          {"Vertical Offset White", 0.4}},
         {{0.3f, 0.6f, 0.3f - 0.5f * (0.2f - 0.5f * 32768 / 65535.0f), 0.5f}}},
        // Alpha, a quarter; blue, full: the white offset.
        {{{"Horizontal source", 3}, {"Vertical source", 2}}, {{0.3f, 0.6f, 0.3f - 0.5f * (0.2f - 0.5f * 16384 / 65535.0f), 0.4f}}},
    });
    w.Field<KImage*>(2) = nullptr;
    EXPECT_FALSE(w.Start());  // no map: nothing to do
}

TEST(Offset, MovesThePictureByTheMap)
{
    for (bool isFloat : {false, true}) {
        Img plate = Pattern(9, 5, isFloat), white = Solid(3, 3, KPixel{65535, 65535, 65535, 65535});
        if (isFloat) white = Solid(3, 3, KPixelF{1.0f, 1.0f, 1.0f, 1.0f});
        ToolFlow t("ZV_Offset", plate.get());
        t.Set("HorizontalOffsetWhite", 0.25);
        t.SetImage("Deformationmap", white.get());
        // A quarter of the width: two pixels to the right.
        EXPECT_LT(MaxDiff(*t.Render(), *plate, 2, 0, 9, 5, 2, 0), 2e-5f) << isFloat;
    }
}

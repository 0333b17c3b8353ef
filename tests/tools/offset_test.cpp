// Offset: declarations, the channel rules on hand-computed points, and the tool
// with and without its deformation map in a flow.
#include "warp_support.h"

using namespace zvtest;

namespace {

KImage* Constant(bool isFloat, KPixel p)
{
    KImage* img = KImage::Create(3, 3, isFloat);
    for (int32_t y = 0; y < 3; ++y)
        for (int32_t x = 0; x < 3; ++x) img->SetPixel(x, y, p);
    return img;
}

}  // namespace

TEST(Offset, ChannelsScaleBetweenTheBlackAndWhiteOffsets)
{
    Warp w("ZV_Offset");
    std::unique_ptr<KImage> map(Constant(false, {32768, 0, 65535, 16384}));
    w.Field<KImage*>(2) = map.get();
    w.Set("sGlo"_id, 0.5f);
    w.SetInt("Horizontal source", 0);  // red
    w.Set("sOXB"_id, 0.2f);
    w.Set("sOXW"_id, -0.3f);
    w.Set("sOYW"_id, 0.4f);  // "Lumin.": the mean of 65535 and 0
    ASSERT_TRUE(w.Start());
    // Each result is in - (black + (white - black) * value) * scale.
    ExpectMaps(w, {{0.3f, 0.6f, 0.3f - 0.5f * (0.2f - 0.5f * 32768 / 65535.0f), 0.5f}}, 1e-5f);
    w.SetInt("Horizontal source", 3);  // alpha, a quarter
    w.SetInt("Vertical source", 2);    // blue, full: the white offset
    w.Start();
    ExpectMaps(w, {{0.3f, 0.6f, 0.3f - 0.5f * (0.2f - 0.5f * 16384 / 65535.0f), 0.4f}}, 1e-5f);
    w.Field<KImage*>(2) = nullptr;
    EXPECT_FALSE(w.Start());  // no map: nothing to do
}

TEST(Offset, MovesThePictureByTheMapOrLeavesIt)
{
    for (bool isFloat : {false, true}) {
        std::unique_ptr<KImage> plate(Pattern(9, 5, isFloat));
        std::unique_ptr<KImage> white(Constant(isFloat, {65535, 65535, 65535, 65535}));
        ToolFlow t("ZV_Offset", plate.get());
        t.Set("HorizontalOffsetWhite", 0.25);
        EXPECT_EQ(zvtest::Differ(*t.Render(), *plate), "");  // no map: copied
        t.SetImage("Deformationmap", white.get());
        // A quarter of the width: two pixels to the right.
        EXPECT_LT(MaxDiff(*t.Render(), *plate, 2, 0, 9, 5, 2, 0), 2e-5f) << isFloat;
    }
}

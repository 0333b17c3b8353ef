// Offset: declarations, the channel rules on hand-computed points, and the tool
// with and without its deformation map in a flow.
#include "warp_support.h"

using namespace warptest;
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

TEST(OffsetDeclarations, HostShowsTheControlsAndTheMapInput)
{
    ToolFlow t("ZV_Offset");
    EXPECT_EQ(t.In("Horizontalsource")->attrs.items,
              (std::vector<std::string>{"Red", "Green", "Blue", "Alpha", "Lumin."}));
    EXPECT_EQ(*t.In("Verticalsource")->attrs.defaultNumber, 4.0);
    EXPECT_EQ(*t.In("VerticalOffsetWhite")->attrs.softMin, -1.0);
    EXPECT_EQ(t.In("Deformationmap")->attrs.dataType, host::DataType::Image);
    EXPECT_EQ(t.In("Deformationmap")->attrs.linkNumber, 2);
}

TEST(OffsetMap, ChannelsScaleBetweenTheBlackAndWhiteOffsets)
{
    Warp w("ZV_Offset");
    KImage* map = Constant(false, {32768, 0, 65535, 16384});
    w.Field<KImage*>(2) = map;
    w.Set("sGlo"_id, 0.5f);
    w.SetInt("cSoX"_id, 0);  // red
    w.Set("sOXB"_id, 0.2f);
    w.Set("sOXW"_id, -0.3f);
    w.Set("sOYW"_id, 0.4f);  // "Lumin.": the mean of 65535 and 0
    ASSERT_TRUE(w.Start());
    // Each result is in - (black + (white - black) * value) * scale.
    EXPECT_MAPS_NEAR(w, 0.3f, 0.6f, 0.3f - 0.5f * (0.2f - 0.5f * 32768 / 65535.0f), 0.5f);
    w.SetInt("cSoX"_id, 3);  // alpha, a quarter
    w.SetInt("cCoY"_id, 2);  // blue, full: the white offset
    w.Start();
    EXPECT_MAPS_NEAR(w, 0.3f, 0.6f, 0.3f - 0.5f * (0.2f - 0.5f * 16384 / 65535.0f), 0.4f);
    w.Field<KImage*>(2) = nullptr;
    EXPECT_FALSE(w.Start());  // no map: nothing to do
    delete map;
}

TEST(OffsetRender, MovesThePictureByTheMapOrLeavesIt)
{
    for (bool isFloat : {false, true}) {
        KImage* plate = Pattern(9, 5, isFloat);
        ToolFlow t("ZV_Offset");
        t.SetImage("Image", plate);
        t.Set("HorizontalOffsetWhite", 0.25);
        KImage* out = t.Render();
        EXPECT_EQ(Differ(*out, *plate), "");  // no map: copied
        delete out;
        KImage* white = Constant(isFloat, {65535, 65535, 65535, 65535});
        t.SetImage("Deformationmap", white);
        out = t.Render();  // a quarter of the width: two pixels to the right
        EXPECT_LT(MaxDiff(*out, *plate, 2, 0, 9, 5, 2, 0), 2e-5f) << isFloat;
        delete out;
        delete white;
        delete plate;
    }
}

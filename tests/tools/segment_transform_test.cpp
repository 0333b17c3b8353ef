// Segment Transform: declarations, neutral cells as identity, scale and turn
// about each grid cell's middle, the locks, the radial layout, and a render in
// which every cell is turned half round.
#include <gtest/gtest.h>
#include <cmath>
#include "inverse_map_driver.h"
#include "support.h"

using namespace zvwarp;

namespace {

TEST(SegmentTransformDeclarations, InputsAsTheHostShowsThem)
{
    host::Flow flow;
    auto* op = flow.Add("s", Registered("ZV_SegmentTransform")).op.get();
    const char* ids[] = {"Type",   "Center",     "LockSegmentSizeXY", "SegmentSizeX", "SegmentSizeY",
                         "Angle",  "LockScaleXY", "ScaleX",           "ScaleY"};
    for (size_t i = 0; i < 9; ++i) {
        ASSERT_EQ(op->Inputs()[i]->id, ids[i]);
        EXPECT_EQ(op->Inputs()[i]->page, "Segment Transform");
    }
    EXPECT_EQ(op->FindInput("Type")->attrs.items, (std::vector<std::string>{"Grid", "Radial"}));
    EXPECT_EQ(op->FindInput("LockSegmentSizeXY")->label, "Lock Segment Size X/Y");
    EXPECT_EQ(op->FindInput("LockSegmentSizeXY")->attrs.control, host::Control::Checkbox);
    EXPECT_FLOAT_EQ(*op->FindInput("SegmentSizeY")->attrs.defaultNumber, 0.1f);
    EXPECT_FLOAT_EQ(*op->FindInput("SegmentSizeX")->attrs.softMin, 0.0001f);
    EXPECT_EQ(*op->FindInput("SegmentSizeX")->attrs.softMax, 0.5);
    EXPECT_FLOAT_EQ(*op->FindInput("ScaleX")->attrs.softMin, 0.0001f);
    EXPECT_EQ(*op->FindInput("ScaleY")->attrs.softMax, 5.0);
    Warp w("ZV_SegmentTransform");
    EXPECT_EQ(w.Param("Center").pointUnit, 0);
    EXPECT_EQ(w.Param("Angle").angleUnit, 1);
}

TEST(SegmentTransformGrid, CellsScaleAndTurnAboutTheirMiddles)
{
    Warp w("ZV_SegmentTransform");
    w.Start();
    ExpectMap(w, 0.63f, 0.27f, 0.63f, 0.27f);  // neutral cells change nothing

    w.SetFloat("Segment Size X", 0.25f);
    w.SetFloat("Segment Size Y", 0.25f);
    w.SetFloat("Scale X", 2.0f);
    w.Start();
    ExpectMap(w, 0.6f, 0.5f, 0.55f, 0.5f);     // the middle cell, twice as wide
    ExpectMap(w, 0.8f, 0.5f, 0.775f, 0.5f);    // the next cell, about its middle 0.75
    ExpectMap(w, 0.8f, 0.55f, 0.775f, 0.55f);  // Scale Y stays 1

    // Each cell turns by 90 degrees, clockwise as viewed.
    w.SetFloat("Scale X", 1.0f);
    w.SetDegrees("Angle", 90.0f);
    w.Start();
    ExpectMap(w, 0.8f, 0.55f, 0.7f, 0.55f);
    ExpectMap(w, 0.75f, 0.6f, 0.65f, 0.5f);  // above the middle: from its left

    // The locks copy X to Y.
    w.SetDegrees("Angle", 0.0f);
    w.SetFloat("Scale X", 2.0f);
    w.SetBool("Lock Scale X/Y", true);
    w.Start();
    ExpectMap(w, 0.8f, 0.55f, 0.775f, 0.525f);
    w.SetFloat("Segment Size Y", 0.5f);
    w.SetBool("Lock Segment Size X/Y", true);
    w.Start();
    ExpectMap(w, 0.8f, 0.8f, 0.775f, 0.775f);  // cells stay 0.25 high
}

TEST(SegmentTransformRadial, CellsOnAngleAndRadius)
{
    Warp w("ZV_SegmentTransform");
    w.SetInt("Type", 1);
    w.Start();
    ExpectMap(w, 0.63f, 0.27f, 0.63f, 0.27f);

    // Wedges a quarter turn wide, rings 0.1 deep; each ring doubled in depth.
    w.SetFloat("Segment Size X", 1.5707964f);
    w.SetFloat("Segment Size Y", 0.1f);
    w.SetFloat("Scale Y", 2.0f);
    w.Start();
    const float r = 0.215f;  // ring middle 0.2, 0.03 out, halved
    ExpectMap(w, 0.5f + 0.23f * std::cos(0.1f), 0.5f + 0.23f * std::sin(0.1f),
              0.5f + r * std::cos(0.1f), 0.5f + r * std::sin(0.1f));
    // A wedge of angle: 1.2 rad lies 0.37 before the wedge middle at pi/2; the
    // scale on angle halves that.
    w.SetFloat("Scale Y", 1.0f);
    w.SetFloat("Scale X", 2.0f);
    w.Start();
    const float a = 1.5707964f - 0.18539816f;
    ExpectMap(w, 0.5f + 0.2f * std::cos(1.2f), 0.5f + 0.2f * std::sin(1.2f),
              0.5f + 0.2f * std::cos(a), 0.5f + 0.2f * std::sin(a));
}

TEST(SegmentTransformRender, HalfTurnOfEveryCell)
{
    // Cells 0.25 wide on 17 pixels: middles on pixels 0, 4, 8, 12, 16, so each
    // pixel reads its mirror through the nearest middle.
    auto mirror = [](int32_t v) {
        const int32_t c = static_cast<int32_t>(std::floor((v - 8) / 4.0 + 0.5)) * 4 + 8;
        return 2 * c - v;
    };
    for (bool isFloat : {false, true}) {
        KImage* plate = zvtest::Pattern(17, 17, isFloat);
        Render r("ZV_SegmentTransform", plate);
        r.Set("SegmentSizeX", 0.25);
        r.Set("SegmentSizeY", 0.25);
        r.Set("Angle", 180.0);
        KImage* out = r.Run();
        ASSERT_NE(out, nullptr);
        for (int32_t y = 0; y < 17; ++y)
            for (int32_t x = 0; x < 17; ++x)
                for (int c = 0; c < 4; ++c)
                    EXPECT_NEAR(Raw(*out, x, y)[c], Raw(*plate, mirror(x), mirror(y))[c],
                                isFloat ? 2e-5f : 1.0f)
                        << x << "," << y;
        delete plate;
    }
}

}  // namespace

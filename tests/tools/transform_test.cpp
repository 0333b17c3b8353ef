// Transform: its declarations as the host shows them, the inverse map on
// hand-computed points, and renders through a flow: identity at neutral
// settings, an exact move by Center under each edge mode, a quarter turn, and
// the warp family's standard inputs (filtering, under-sampling, warp mask).
#include <gtest/gtest.h>
#include <cmath>
#include "inverse_map_driver.h"
#include "support.h"

using namespace zvwarp;

namespace {

TEST(TransformDeclarations, InputsAsTheHostShowsThem)
{
    Warp w("ZV_Transform");
    EXPECT_EQ(w.Param("Center").id, "Cent"_id);
    EXPECT_EQ(w.Param("Center").pointUnit, 3);  // an offset from the middle
    EXPECT_EQ(w.Param("Axis").pointUnit, 0);
    EXPECT_EQ(w.Param("Axis angle").angleUnit, 1);

    host::Flow flow;
    auto* op = flow.Add("t", Registered("ZV_Transform")).op.get();
    const char* ids[] = {"Center", "Axisangle", "Axis", "SizeType", "SizeX", "SizeY"};
    for (size_t i = 0; i < 6; ++i) {
        ASSERT_EQ(op->Inputs()[i]->id, ids[i]);
        EXPECT_EQ(op->Inputs()[i]->page, "Transform");
    }
    EXPECT_EQ(*op->FindInput("Center")->attrs.defaultPoint, std::make_pair(0.5, 0.5));
    EXPECT_EQ(*op->FindInput("Axisangle")->attrs.defaultNumber, 0.0);
    EXPECT_EQ(op->FindInput("SizeType")->attrs.items,
              (std::vector<std::string>{"Size X and Size Y", "Size and Aspect"}));
    EXPECT_EQ(*op->FindInput("SizeY")->attrs.defaultNumber, 1.0);
    EXPECT_EQ(*op->FindInput("SizeY")->attrs.softMax, 5.0);
    for (const char* id : {"KUnd", "KFil", "KEdg", "KMaW", "Image"})
        EXPECT_NE(op->FindInput(id), nullptr) << id;
    EXPECT_EQ(op->FindInput("KSup"), nullptr);
}

TEST(TransformInverseMap, HandComputedPoints)
{
    Warp w("ZV_Transform");
    w.SetPoint("Center", 0.0f, 0.0f);  // neutral, as the bridge makes it
    w.SetPoint("Axis", 0.5f, 0.5f);
    w.Start();
    ExpectMap(w, 0.3f, 0.7f, 0.3f, 0.7f);

    // A quarter turn counter-clockwise (rows run upward), twice as wide, moved
    // right by 0.1: the axis lands at (0.6, 0.5).
    w.SetPoint("Center", 0.1f, 0.0f);
    w.SetDegrees("Axis angle", 90.0f);
    w.SetFloat("Size X", 2.0f);
    w.Start();
    ExpectMap(w, 0.6f, 0.5f, 0.5f, 0.5f);
    ExpectMap(w, 0.6f, 0.75f, 0.625f, 0.5f);  // above the axis: from its right
    ExpectMap(w, 0.35f, 0.5f, 0.5f, 0.75f);   // left of it: from above

    // "Size and Aspect": Size Y is an aspect of Size X.
    w.SetDegrees("Axis angle", 0.0f);
    w.SetPoint("Center", 0.0f, 0.0f);
    w.SetInt("Size Type", 1);
    w.SetFloat("Size Y", 0.5f);  // height 2 * 0.5 = 1
    w.Start();
    ExpectMap(w, 0.9f, 0.9f, 0.7f, 0.9f);
    // A zero size is clamped, not divided by.
    w.SetFloat("Size X", 0.0f);
    w.Start();
    KPosition out;
    ASSERT_TRUE(w.Map(0.6f, 0.5f, out));
    EXPECT_TRUE(std::isfinite(out.x));
    EXPECT_NEAR(out.x, 0.5f + 0.1f / 1e-7f, 1e3f);
}

TEST(TransformRender, NeutralSettingsKeepThePicture)
{
    for (bool isFloat : {false, true})
        for (int filter : {0, 1, 2}) {
            KImage* plate = zvtest::Pattern(17, 17, isFloat);
            Render r("ZV_Transform", plate);
            r.Set("KFil", filter);
            KImage* out = r.Run();
            ASSERT_NE(out, nullptr);
            if (filter < 2) {
                EXPECT_EQ(zvtest::Differ(*out, *plate), "") << isFloat << " filter " << filter;
            } else {
                // The area read averages a pixel's own box: equal up to its sums.
                for (int32_t y = 0; y < 17; ++y)
                    for (int32_t x = 0; x < 17; ++x)
                        for (int c = 0; c < 4; ++c)
                            EXPECT_NEAR(Raw(*out, x, y)[c], Raw(*plate, x, y)[c],
                                        isFloat ? 1e-5f : 0.0f);
            }
            delete plate;
        }
}

TEST(TransformRender, CenterMovesWholePixelsUnderEachEdgeMode)
{
    // 17 pixels span 16 steps: Center 0.625 moves the picture right by 2.
    for (bool isFloat : {false, true})
        for (int edges : {0, 1, 2}) {
            KImage* plate = zvtest::Pattern(17, 9, isFloat);
            Render r("ZV_Transform", plate);
            r.SetPoint("Center", 0.625, 0.5);
            r.Set("KEdg", edges);
            r.Set("KFil", 0);
            KImage* out = r.Run();
            ASSERT_NE(out, nullptr);
            for (int32_t y = 0; y < 9; ++y)
                for (int32_t x = 0; x < 17; ++x) {
                    int32_t sx = x - 2;
                    if (sx < 0) sx = edges == 1 ? sx + 17 : (edges == 2 ? 0 : -1);
                    EXPECT_EQ(Raw(*out, x, y), Raw(*plate, sx, y))
                        << x << "," << y << " edges " << edges << " float " << isFloat;
                }
            delete plate;
        }
}

TEST(TransformRender, WidePixelsMoveByTheirOwnRows)
{
    // Pixel aspect 2: rows are normalised to 0..0.5. Center a quarter up is 2 of 8 rows.
    KImage* plate = KImage::Create(9, 9, false, 2.0f, 1.0f);
    for (int32_t y = 0; y < 9; ++y)
        for (int32_t x = 0; x < 9; ++x) plate->SetPixel(x, y, zvtest::PatternPixel(x, y));
    Render r("ZV_Transform", plate);
    r.SetPoint("Center", 0.5, 0.75);
    r.Set("KFil", 0);
    KImage* out = r.Run();
    ASSERT_NE(out, nullptr);
    for (int32_t y = 0; y < 9; ++y)
        for (int32_t x = 0; x < 9; ++x)
            EXPECT_EQ(Raw(*out, x, y), Raw(*plate, x, y - 2)) << x << "," << y;
    delete plate;
}

TEST(TransformRender, QuarterTurnThroughTheHost)
{
    // 90 degrees about the middle of a 9 x 9 picture: out(x, y) = in(y, 8 - x),
    // give or take the last bit of the 16.16 sample position.
    for (bool isFloat : {false, true}) {
        KImage* plate = zvtest::Pattern(9, 9, isFloat);
        Render r("ZV_Transform", plate);
        r.Set("Axisangle", 90.0);
        KImage* out = r.Run();
        ASSERT_NE(out, nullptr);
        for (int32_t y = 0; y < 9; ++y)
            for (int32_t x = 0; x < 9; ++x)
                for (int c = 0; c < 4; ++c)
                    EXPECT_NEAR(Raw(*out, x, y)[c], Raw(*plate, y, 8 - x)[c], isFloat ? 2e-5f : 1.0f)
                        << x << "," << y;
        delete plate;
    }
}

TEST(TransformRender, FilteringUnderSamplingAndWarpMask)
{
    KImage* plate = zvtest::Pattern(17, 17, false);
    Render r("ZV_Transform", plate);
    // Half a pixel to the right: "None" takes the pixel left of the sample
    // point, "Pixel" blends the two.
    r.SetPoint("Center", 0.5 + 0.5 / 16.0, 0.5);
    r.Set("KFil", 0);
    KImage* none = r.Run();
    EXPECT_EQ(Raw(*none, 5, 3), Raw(*plate, 4, 3));
    r.Set("KFil", 1);
    KImage* pixel = r.Run();
    for (int c = 0; c < 4; ++c) {
        const float a = Raw(*plate, 4, 3)[c], b = Raw(*plate, 5, 3)[c];
        EXPECT_NEAR(Raw(*pixel, 5, 3)[c], (a + b) / 2.0f, 0.5f) << c;
    }
    KImage* exact = pixel->Clone();

    // An affine map interpolates exactly over an under-sampled grid.
    r.Set("KUnd", 4);
    KImage* grid = r.Run();
    for (int32_t y = 0; y < 17; ++y)
        for (int32_t x = 0; x < 17; ++x)
            for (int c = 0; c < 4; ++c)
                EXPECT_NEAR(Raw(*grid, x, y)[c], Raw(*exact, x, y)[c], 1.0f) << x << "," << y;
    r.Set("KUnd", 1);

    // Where the mask's alpha is 0 a pixel is read at its own place.
    KImage* mask = KImage::Create(17, 17, false);
    for (int32_t y = 0; y < 17; ++y)
        for (int32_t x = 9; x < 17; ++x) mask->SetPixel(x, y, KPixel{0, 0, 0, 65535});
    r.flow.SetValue(r.node, r.In("KMaW"), host::MakeImage(mask->HostImage()));
    KImage* masked = r.Run();
    for (int32_t y = 0; y < 17; ++y)
        for (int32_t x = 0; x < 17; ++x)
            EXPECT_EQ(Raw(*masked, x, y), x < 9 ? Raw(*plate, x, y) : Raw(*exact, x, y))
                << x << "," << y;
    delete mask;
    delete exact;
    delete plate;
}

}  // namespace

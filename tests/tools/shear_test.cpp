// Shear: declarations, the half-plane ahead of the pivot slanted across the
// axis (by value and by angle), along it and stretched, the half behind only
// moved by Center, "Shear all", and a render that keeps the lower half.
#include <gtest/gtest.h>
#include <cmath>
#include "inverse_map_driver.h"
#include "support.h"

using namespace zvwarp;

namespace {

TEST(ShearDeclarations, InputsAsTheHostShowsThem)
{
    host::Flow flow;
    auto* op = flow.Add("s", Registered("ZV_Shear")).op.get();
    const char* ids[] = {"Shearall",   "InputType",          "Shear",  "ShearAlongAxis",
                         "ShearAngle", "ShearAngleAlongAxis", "Center", "AxisPivot",
                         "AxisAngle",  "SizeAlongAxis"};
    for (size_t i = 0; i < 10; ++i) {
        ASSERT_EQ(op->Inputs()[i]->id, ids[i]);
        EXPECT_EQ(op->Inputs()[i]->page, "Shear");
    }
    EXPECT_EQ(op->FindInput("InputType")->attrs.items,
              (std::vector<std::string>{"By value", "By angle"}));
    EXPECT_EQ(*op->FindInput("Shear")->attrs.defaultNumber, 1.0);
    EXPECT_EQ(*op->FindInput("ShearAlongAxis")->attrs.softMin, -2.0);
    EXPECT_EQ(*op->FindInput("ShearAngle")->attrs.defaultNumber, 45.0);
    EXPECT_EQ(*op->FindInput("AxisAngle")->attrs.defaultNumber, 90.0);
    EXPECT_EQ(*op->FindInput("SizeAlongAxis")->attrs.softMax, 10.0);
    Warp w("ZV_Shear");
    EXPECT_EQ(w.Param("Shear").id, "SVaX"_id);
    EXPECT_EQ(w.Param("Shear Angle Along Axis").id, "SAnY"_id);
    EXPECT_EQ(w.Param("Center").pointUnit, 3);
    EXPECT_EQ(w.Param("Axis Pivot").pointUnit, 0);
}

// The bridge's neutral values: Center an offset of 0, the axis pointing up.
void Neutral(Warp& w)
{
    w.SetPoint("Center", 0.0f, 0.0f);
    w.SetPoint("Axis Pivot", 0.5f, 0.5f);
    w.SetDegrees("Axis Angle", 90.0f);
    w.SetDegrees("Shear Angle", 45.0f);
}

TEST(ShearInverseMap, AheadOfThePivotSlantsBehindStays)
{
    Warp w("ZV_Shear");
    Neutral(w);
    w.Start();
    // 0.2 above the pivot reads 0.2 to the left: the top leans right.
    ExpectMap(w, 0.7f, 0.7f, 0.5f, 0.7f);
    ExpectMap(w, 0.7f, 0.3f, 0.7f, 0.3f);
    ExpectMap(w, 0.7f, 0.5f, 0.7f, 0.5f);  // on the line: behind

    w.SetBool("Shear all", true);
    w.Start();
    ExpectMap(w, 0.7f, 0.3f, 0.9f, 0.3f);

    // By angle: the slope is the tangent of the angle.
    w.SetInt("Input Type", 1);
    w.SetDegrees("Shear Angle", 63.434949f);
    w.Start();
    ExpectMap(w, 0.7f, 0.7f, 0.3f, 0.7f);
    w.SetFloat("Shear", 0.0f);  // no say by angle
    w.Start();
    ExpectMap(w, 0.7f, 0.7f, 0.3f, 0.7f);
}

TEST(ShearInverseMap, AlongTheAxisStretchAndTurnedAxis)
{
    Warp w("ZV_Shear");
    Neutral(w);
    w.SetFloat("Shear", 0.0f);
    w.SetFloat("Shear Along Axis", 1.0f);
    w.Start();
    ExpectMap(w, 0.7f, 0.7f, 0.7f, 0.5f);  // 0.2 right of the axis reads 0.2 lower

    w.SetFloat("Shear Along Axis", 0.0f);
    w.SetFloat("Size Along Axis", 2.0f);
    w.Start();
    ExpectMap(w, 0.7f, 0.7f, 0.7f, 0.6f);  // twice as tall above the pivot

    // Axis at 0 degrees points right: the right half slides.
    w.SetFloat("Size Along Axis", 1.0f);
    w.SetFloat("Shear", 1.0f);
    w.SetDegrees("Axis Angle", 0.0f);
    w.Start();
    ExpectMap(w, 0.7f, 0.7f, 0.7f, 0.9f);
    ExpectMap(w, 0.3f, 0.7f, 0.3f, 0.7f);

    // Center moves both halves, and the line with them.
    w.SetPoint("Center", 0.1f, 0.0f);
    w.Start();
    ExpectMap(w, 0.55f, 0.7f, 0.45f, 0.7f);   // behind the moved line
    ExpectMap(w, 0.7f, 0.7f, 0.6f, 0.8f);
}

TEST(ShearRender, LowerHalfKeptUpperHalfLeans)
{
    for (bool isFloat : {false, true}) {
        KImage* plate = zvtest::Pattern(17, 17, isFloat);
        Render r("ZV_Shear", plate);
        r.Set("KEdg", 2);
        KImage* out = r.Run();
        ASSERT_NE(out, nullptr);
        for (int32_t y = 0; y < 17; ++y)
            for (int32_t x = 0; x < 17; ++x) {
                // Row y lies (y - 8) / 16 above the pivot: it reads that much to the left.
                const int32_t sx = y <= 8 ? x : std::max(x - (y - 8), 0);
                for (int c = 0; c < 4; ++c)
                    EXPECT_NEAR(Raw(*out, x, y)[c], Raw(*plate, sx, y)[c], isFloat ? 2e-5f : 1.0f)
                        << x << "," << y;
            }
        delete plate;
    }
}

}  // namespace

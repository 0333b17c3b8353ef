// Spherize: declarations, no deformation as identity, each profile on a
// hand-computed point, the four shapes' insides, the lock, a zero size, and a
// render whose middle and outside stay put.
#include <gtest/gtest.h>
#include <cmath>
#include "inverse_map_driver.h"
#include "support.h"

using namespace zvwarp;

namespace {

TEST(SpherizeDeclarations, InputsAsTheHostShowsThem)
{
    host::Flow flow;
    auto* op = flow.Add("s", Registered("ZV_Spherize")).op.get();
    const char* ids[] = {"Type", "Algorithm", "Iterations", "Center", "Size", "Lockhorizontalvertical",
                         "Deformation", "Deformationvertical"};
    for (size_t i = 0; i < 8; ++i) {
        ASSERT_EQ(op->Inputs()[i]->id, ids[i]);
        EXPECT_EQ(op->Inputs()[i]->page, "Spherize");
    }
    EXPECT_EQ(op->FindInput("Type")->attrs.items,
              (std::vector<std::string>{"Horizontal", "Vertical", "Sphere", "Rectangle"}));
    EXPECT_EQ(*op->FindInput("Type")->attrs.defaultNumber, 2.0);
    EXPECT_EQ(op->FindInput("Algorithm")->attrs.items,
              (std::vector<std::string>{"Spherize", "Soft in/out", "Smooth", "Sinusoid"}));
    EXPECT_TRUE(op->FindInput("Iterations")->attrs.integer);
    EXPECT_EQ(*op->FindInput("Iterations")->attrs.defaultNumber, 2.0);
    EXPECT_EQ(*op->FindInput("Iterations")->attrs.softMax, 5.0);
    EXPECT_EQ(*op->FindInput("Size")->attrs.softMax, 1.0);
    EXPECT_EQ(*op->FindInput("Deformationvertical")->attrs.softMin, -1.0);
    Warp w("ZV_Spherize");
    EXPECT_EQ(w.Param("Type").id, "BeTy"_id);
    EXPECT_EQ(w.Param("Size").id, "SpRa"_id);
    EXPECT_EQ(w.Param("Center").pointUnit, 0);
}

TEST(SpherizeInverseMap, ProfilesOnAPointHalfwayOut)
{
    // 0.25 right of the middle of a sphere of size 1: u = 0.5, twice through
    // the profile, half deformed.
    const float want[4] = {0.62612690f, 0.640625f, 0.73700237f, 0.65204336f};
    for (int algorithm = 0; algorithm < 4; ++algorithm) {
        Warp w("ZV_Spherize");
        w.SetInt("Algorithm", algorithm);
        ASSERT_TRUE(w.Start());
        ExpectMap(w, 0.75f, 0.5f, want[algorithm], 0.5f);
        ExpectMap(w, 0.5f, 0.5f, 0.5f, 0.5f);
        ExpectMap(w, 0.9f, 0.9f, 0.9f, 0.9f);  // outside the circle
    }
    Warp w("ZV_Spherize");
    w.SetInt("Algorithm", 1);  // soft: u0 to the power 1 + iterations
    w.SetInt("Iterations", 3);
    ASSERT_TRUE(w.Start());
    ExpectMap(w, 0.75f, 0.5f, 0.5f + 0.25f * (0.5f * 0.0625f + 0.5f), 0.5f);
}

TEST(SpherizeInverseMap, ShapesDecideTheInside)
{
    Warp w("ZV_Spherize");
    w.SetInt("Type", 0);  // a vertical band: x alone decides, both axes move
    ASSERT_TRUE(w.Start());
    ExpectMap(w, 0.6f, 0.95f, 0.55001021f, 0.72504593f);
    ExpectMap(w, 0.0f, 0.5f, 0.0f, 0.5f);  // the band's edge is outside
    w.SetInt("Type", 1);
    ASSERT_TRUE(w.Start());
    ExpectMap(w, 0.95f, 0.6f, 0.72504593f, 0.55001021f);

    w.SetInt("Type", 3);  // a rectangle: each axis by its own distance
    w.SetFloat("Deformation", 1.0f);
    ASSERT_TRUE(w.Start());
    ExpectMap(w, 0.7f, 0.6f, 0.50069819f, 0.55001021f);
    ExpectMap(w, 0.7f, 1.0f, 0.7f, 1.0f);

    // The lock takes the horizontal deformation for both.
    w.SetFloat("Deformation vertical", 0.0f);
    w.SetBool("Lock horizontal/vertical", true);
    w.SetInt("Type", 2);
    ASSERT_TRUE(w.Start());
    KPosition out;
    ASSERT_TRUE(w.Map(0.5f, 0.75f, out));
    EXPECT_NEAR(out.y, 0.5f + 0.25f * 0.00901523f, 1e-5f);

    // A size of 0 has no inside.
    w.SetFloat("Size", 0.0f);
    ASSERT_TRUE(w.Start());
    ExpectMap(w, 0.5f, 0.5f, 0.5f, 0.5f);
    ExpectMap(w, 0.51f, 0.5f, 0.51f, 0.5f);

    // Nothing to deform: nothing to do.
    w.SetFloat("Deformation", 0.0f);
    EXPECT_FALSE(w.Start());
    w.SetBool("Lock horizontal/vertical", false);
    w.SetFloat("Deformation vertical", -0.5f);
    EXPECT_TRUE(w.Start());
}

TEST(SpherizeRender, MiddleAndOutsideStayPut)
{
    for (bool isFloat : {false, true}) {
        KImage* plate = zvtest::Pattern(17, 17, isFloat);
        Render r("ZV_Spherize", plate);
        KImage* out = r.Run();
        ASSERT_NE(out, nullptr);
        EXPECT_EQ(Raw(*out, 8, 8), Raw(*plate, 8, 8));
        for (int32_t y = 0; y < 17; ++y)
            for (int32_t x = 0; x < 17; ++x)
                if ((x - 8) * (x - 8) + (y - 8) * (y - 8) >= 64) {
                    EXPECT_EQ(Raw(*out, x, y), Raw(*plate, x, y)) << x << "," << y;
                }
        // Inside, a pixel reads nearer the middle.
        EXPECT_NE(Raw(*out, 12, 8), Raw(*plate, 12, 8));

        r.Set("Deformation", 0.0);
        r.Set("Deformationvertical", 0.0);
        EXPECT_EQ(zvtest::Differ(*r.Run(), *plate), "");
        delete plate;
    }
}

}  // namespace

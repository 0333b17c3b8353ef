// Remap: declarations, the probe and spherical maps on hand-computed points,
// the turn of a spherical input in each order, the two maps undoing each
// other, the outside of the ball left empty, and equal types as identity.
#include <gtest/gtest.h>
#include <cmath>
#include "inverse_map_driver.h"
#include "support.h"

using namespace zvwarp;

namespace {

constexpr float kBall45 = 0.85355339f;  // 0.5 + sin(45 degrees) / 2

TEST(RemapDeclarations, InputsAsTheHostShowsThem)
{
    host::Flow flow;
    auto* op = flow.Add("r", Registered("ZV_Remap")).op.get();
    const char* ids[] = {"TypeInput", "TypeOutput", "RotationOrder", "AngleX", "AngleY", "AngleZ"};
    for (size_t i = 0; i < 6; ++i) {
        ASSERT_EQ(op->Inputs()[i]->id, ids[i]);
        EXPECT_EQ(op->Inputs()[i]->page, "Shuffle");  // the page keeps its odd name
    }
    EXPECT_EQ(*op->FindInput("TypeInput")->attrs.defaultNumber, 0.0);
    EXPECT_EQ(*op->FindInput("TypeOutput")->attrs.defaultNumber, 1.0);
    EXPECT_EQ(op->FindInput("TypeOutput")->attrs.items,
              (std::vector<std::string>{"Probe", "Spherical"}));
    EXPECT_EQ(op->FindInput("RotationOrder")->attrs.items,
              (std::vector<std::string>{"XYZ", "XZY", "YXZ", "YZX", "ZXY", "ZYX"}));
    EXPECT_EQ(op->FindInput("AngleZ")->attrs.control, host::Control::Screw);
    Warp w("ZV_Remap");
    EXPECT_EQ(w.Param("Angle Y").id, "AngY"_id);
    EXPECT_EQ(w.Param("Angle Y").angleUnit, 1);
}

TEST(RemapProbeInput, LatitudeLongitudeToBallPositions)
{
    Warp w("ZV_Remap");  // probe in, spherical out
    ASSERT_TRUE(w.Start());
    ExpectMap(w, 0.5f, 0.5f, 0.5f, 0.5f);        // straight ahead: the middle of the ball
    ExpectMap(w, 0.75f, 0.5f, kBall45, 0.5f);    // a quarter turn right: 90 degrees off
    ExpectMap(w, 0.25f, 0.5f, 1.0f - kBall45, 0.5f);
    ExpectMap(w, 0.5f, 1.0f, 0.5f, kBall45);     // the top pole
    ExpectMap(w, 0.5f, 0.0f, 0.5f, 1.0f - kBall45);

    // y runs to 1 / aspect with wide pixels.
    ASSERT_TRUE(w.Start(9, 9, 2.0f));
    const float aspect = 2.0f;
    ExpectMap(w, 0.75f, 0.5f / aspect, kBall45, 0.5f / aspect);
    ExpectMap(w, 0.5f, 1.0f / aspect, 0.5f, kBall45 / aspect);
}

TEST(RemapSphericalInput, BallPositionsToLatitudeLongitude)
{
    Warp w("ZV_Remap");
    w.SetInt("Type Input", 1);
    w.SetInt("Type Output", 0);
    ASSERT_TRUE(w.Start());
    ExpectMap(w, 0.5f, 0.5f, 0.5f, 0.5f);
    ExpectMap(w, kBall45, 0.5f, 0.75f, 0.5f);
    KPosition pole;  // straight up: the top row, at whatever longitude
    ASSERT_TRUE(w.Map(0.5f, kBall45, pole));
    EXPECT_NEAR(pole.y, 1.0f, 2e-4f);
    // Outside the ball there is nothing to read.
    KPosition out;
    EXPECT_FALSE(w.Map(0.95f, 0.95f, out));
    EXPECT_FALSE(w.Map(0.0f, 0.5f - 0.01f, out));
    EXPECT_TRUE(w.Map(0.0f, 0.5f, out));  // the rim itself is inside
}

TEST(RemapSphericalInput, TurnsByTheAnglesInTheirOrder)
{
    Warp w("ZV_Remap");
    w.SetInt("Type Input", 1);
    w.SetInt("Type Output", 0);
    w.SetDegrees("Angle Y", 90.0f);
    ASSERT_TRUE(w.Start());
    ExpectMap(w, 0.5f, 0.5f, 0.25f, 0.5f);  // straight ahead turns a quarter left

    // From the ball's right (direction +x): X then Y ends straight ahead; Y
    // then X ends at the top pole.
    w.SetDegrees("Angle X", 90.0f);
    w.SetInt("Rotation Order", 0);  // XYZ
    ASSERT_TRUE(w.Start());
    ExpectMap(w, kBall45, 0.5f, 0.5f, 0.5f);
    w.SetInt("Rotation Order", 2);  // YXZ
    ASSERT_TRUE(w.Start());
    KPosition out;
    ASSERT_TRUE(w.Map(kBall45, 0.5f, out));
    EXPECT_NEAR(out.y, 1.0f, 1e-3f);
}

TEST(RemapRoundTrip, TheTwoMapsUndoEachOther)
{
    Warp toBall("ZV_Remap"), toSphere("ZV_Remap");
    toSphere.SetInt("Type Input", 1);
    toSphere.SetInt("Type Output", 0);
    ASSERT_TRUE(toBall.Start(9, 9, 2.0f));
    ASSERT_TRUE(toSphere.Start(9, 9, 2.0f));
    const float aspect = 2.0f;
    for (float bx = 0.05f; bx < 1.0f; bx += 0.1f)
        for (float by = 0.05f; by < 1.0f / aspect; by += 0.05f) {
            const float rx = 2.0f * bx - 1.0f, ry = 2.0f * by * aspect - 1.0f;
            if (rx * rx + ry * ry > 0.98f) continue;  // near the rim one point holds a whole circle
            KPosition sphere;
            ASSERT_TRUE(toSphere.Map(bx, by, sphere));
            ExpectMap(toBall, sphere.x, sphere.y, bx, by, 2e-4f);
        }
}

TEST(RemapRender, EqualTypesKeepThePictureAndTheBallOutsideIsEmpty)
{
    for (bool isFloat : {false, true}) {
        KImage* plate = zvtest::Pattern(17, 17, isFloat);
        Render r("ZV_Remap", plate);
        r.Set("TypeOutput", 0);
        KImage* same = r.Run();
        ASSERT_NE(same, nullptr);
        EXPECT_EQ(zvtest::Differ(*same, *plate), "");

        r.Set("TypeInput", 1);
        r.Set("TypeOutput", 0);
        KImage* out = r.Run();
        ASSERT_NE(out, nullptr);
        const std::array<float, 4> zero{0.0f, 0.0f, 0.0f, 0.0f};
        EXPECT_EQ(Raw(*out, 0, 0), zero);
        EXPECT_EQ(Raw(*out, 16, 16), zero);
        EXPECT_EQ(Raw(*out, 2, 2), zero);
        // The middle of the ball looks straight ahead: the middle of the plate.
        EXPECT_EQ(Raw(*out, 8, 8), Raw(*plate, 8, 8));
        delete plate;
    }
}

}  // namespace

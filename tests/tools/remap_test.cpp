// Remap: the probe and spherical maps on hand-computed points, the turn of a
// spherical input in each order, the two maps undoing each other, the outside
// of the ball left empty, and equal types as nothing to do.
#include "warp_support.h"

using namespace zvtest;

constexpr float kBall45 = 0.85355339f;  // 0.5 + sin(45 degrees) / 2

TEST(Remap, ProbeAndBallPositionsBothWays)
{
    Warp w("ZV_Remap");  // probe in, spherical out
    ExpectSteps(w, 1e-5f, {{{}, {{0.5f, 0.5f, 0.5f, 0.5f},               // straight ahead: the middle of the ball
                                 {0.75f, 0.5f, kBall45, 0.5f},           // a quarter turn right: 90 degrees off
                                 {0.25f, 0.5f, 1.0f - kBall45, 0.5f},
                                 {0.5f, 1.0f, 0.5f, kBall45},            // the top pole
                                 {0.5f, 0.0f, 0.5f, 1.0f - kBall45}}}});
    ASSERT_TRUE(w.Start(9, 9, 2.0f));  // y runs to 1 / aspect with wide pixels
    ExpectMaps(w, {{0.75f, 0.25f, kBall45, 0.25f}, {0.5f, 0.5f, 0.5f, kBall45 / 2.0f}}, 1e-5f);

    Warp s("ZV_Remap");
    ExpectSteps(s, 1e-5f, {
        {{{"Type Input", 1}, {"Type Output", 0}}, {{0.5f, 0.5f, 0.5f, 0.5f}, {kBall45, 0.5f, 0.75f, 0.5f}}},
        {{{"Angle Y", 90}}, {{0.5f, 0.5f, 0.25f, 0.5f}}},  // straight ahead turns a quarter left
        // From the ball's right (direction +x): X then Y ends straight ahead.
        {{{"Angle X", 90}, {"Rotation Order", 0}}, {{kBall45, 0.5f, 0.5f, 0.5f}}},
    });
    KPosition out;
    s.SetInt("Rotation Order", 2);  // Y then X ends at the top pole, at whatever longitude
    s.Start();
    ASSERT_TRUE(s.Map(kBall45, 0.5f, out));
    EXPECT_NEAR(out.y, 1.0f, 1e-3f);
    // Outside the ball there is nothing to read; the rim itself is inside.
    EXPECT_FALSE(s.Map(0.95f, 0.95f, out) || s.Map(0.0f, 0.5f - 0.01f, out));
    EXPECT_TRUE(s.Map(0.0f, 0.5f, out));
    for (int32_t type : {0, 1}) {  // equal types: nothing to do
        s.Apply({{"Type Input", type}, {"Type Output", type}});
        EXPECT_FALSE(s.Start()) << type;
    }
}

TEST(Remap, TheTwoMapsUndoEachOther)
{
    Warp toBall("ZV_Remap"), toSphere("ZV_Remap");
    toSphere.Apply({{"Type Input", 1}, {"Type Output", 0}});
    ASSERT_TRUE(toBall.Start(9, 9, 2.0f) && toSphere.Start(9, 9, 2.0f));
    for (float bx = 0.05f; bx < 1.0f; bx += 0.1f)
        for (float by = 0.05f; by < 0.5f; by += 0.05f) {
            const float rx = 2.0f * bx - 1.0f, ry = 4.0f * by - 1.0f;
            if (rx * rx + ry * ry > 0.98f) continue;  // near the rim one point holds a whole circle
            KPosition sphere;
            ASSERT_TRUE(toSphere.Map(bx, by, sphere));
            ExpectMaps(toBall, {{sphere.x, sphere.y, bx, by}}, 2e-4f);
        }
}

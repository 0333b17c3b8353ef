// Spherize: declarations, no deformation as identity, each profile on a
// hand-computed point, the four shapes' insides, the lock, a zero size, and a
// render whose middle and outside stay put.
#include "warp_support.h"

using namespace zvtest;

namespace {

TEST(Spherize, ProfilesOnAPointHalfwayOut)
{
    // 0.25 right of the middle of a sphere of size 1: u = 0.5, twice through
    // the profile, half deformed.
    const float want[4] = {0.62612690f, 0.640625f, 0.73700237f, 0.65204336f};
    for (int algorithm = 0; algorithm < 4; ++algorithm) {
        Warp w("ZV_Spherize");
        w.SetInt("Algorithm", algorithm);
        ASSERT_TRUE(w.Start());
        ExpectMaps(w, {{0.75f, 0.5f, want[algorithm], 0.5f},
                       {0.5f, 0.5f, 0.5f, 0.5f},
                       {0.9f, 0.9f, 0.9f, 0.9f}},  // outside the circle
                   1e-5f);
    }
    Warp w("ZV_Spherize");
    w.SetInt("Algorithm", 1);  // soft: u0 to the power 1 + iterations
    w.SetInt("Iterations", 3);
    ASSERT_TRUE(w.Start());
    ExpectMaps(w, {{0.75f, 0.5f, 0.5f + 0.25f * (0.5f * 0.0625f + 0.5f), 0.5f}}, 1e-5f);
}

TEST(Spherize, ShapesDecideTheInside)
{
    Warp w("ZV_Spherize");
    w.SetInt("Type", 0);  // a vertical band: x alone decides, both axes move
    ASSERT_TRUE(w.Start());
    ExpectMaps(w, {{0.6f, 0.95f, 0.55001021f, 0.72504593f}, {0.0f, 0.5f, 0.0f, 0.5f}},  // edge: outside
               1e-5f);
    w.SetInt("Type", 1);
    ASSERT_TRUE(w.Start());
    ExpectMaps(w, {{0.95f, 0.6f, 0.72504593f, 0.55001021f}}, 1e-5f);

    w.SetInt("Type", 3);  // a rectangle: each axis by its own distance
    w.SetFloat("Deformation", 1.0f);
    ASSERT_TRUE(w.Start());
    ExpectMaps(w, {{0.7f, 0.6f, 0.50069819f, 0.55001021f}, {0.7f, 1.0f, 0.7f, 1.0f}}, 1e-5f);

    // The lock takes the horizontal deformation for both.
    w.SetFloat("Deformation vertical", 0.0f);
    w.SetBool("Lock horizontal/vertical", true);
    w.SetInt("Type", 2);
    ASSERT_TRUE(w.Start());
    ExpectMaps(w, {{0.5f, 0.75f, 0.5f, 0.5f + 0.25f * 0.00901523f}}, 1e-5f);

    // A size of 0 has no inside.
    w.SetFloat("Size", 0.0f);
    ASSERT_TRUE(w.Start());
    ExpectMaps(w, {{0.5f, 0.5f, 0.5f, 0.5f}, {0.51f, 0.5f, 0.51f, 0.5f}}, 1e-5f);

    // Nothing to deform: nothing to do.
    w.SetFloat("Deformation", 0.0f);
    EXPECT_FALSE(w.Start());
    w.SetBool("Lock horizontal/vertical", false);
    w.SetFloat("Deformation vertical", -0.5f);
    EXPECT_TRUE(w.Start());
}

}  // namespace

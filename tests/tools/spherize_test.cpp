// Spherize: each profile on a hand-computed point, the four shapes' insides,
// the lock, a zero size, and no deformation as nothing to do.
#include "warp_support.h"

using namespace zvtest;

TEST(Spherize, ProfilesOnAPointHalfwayOutAndTheShapesInsides)
{
    // 0.25 right of the middle of a sphere of size 1: u = 0.5, twice through
    // the profile, half deformed; the middle stays, outside the circle too.
    const float want[4] = {0.62612690f, 0.640625f, 0.73700237f, 0.65204336f};
    for (int algorithm = 0; algorithm < 4; ++algorithm) {
        Warp w("ZV_Spherize");
        ExpectSteps(w, 1e-5f, {{{{"Algorithm", double(algorithm)}},
                                {{0.75f, 0.5f, want[algorithm], 0.5f}, {0.5f, 0.5f, 0.5f, 0.5f}, {0.9f, 0.9f, 0.9f, 0.9f}}}});
    }
    Warp w("ZV_Spherize");
    ExpectSteps(w, 1e-5f, {
        // Soft: u0 to the power 1 + iterations.
        {{{"Algorithm", 1}, {"Iterations", 3}}, {{0.75f, 0.5f, 0.5f + 0.25f * (0.5f * 0.0625f + 0.5f), 0.5f}}},
        // A vertical band: x alone decides, both axes move; its edge is outside.
        {{{"Algorithm", 0}, {"Iterations", 2}, {"Type", 0}}, {{0.6f, 0.95f, 0.55001021f, 0.72504593f}, {0.0f, 0.5f, 0.0f, 0.5f}}},
        {{{"Type", 1}}, {{0.95f, 0.6f, 0.72504593f, 0.55001021f}}},
        // A rectangle: each axis by its own distance.
        {{{"Type", 3}, {"Deformation", 1}}, {{0.7f, 0.6f, 0.50069819f, 0.55001021f}, {0.7f, 1.0f, 0.7f, 1.0f}}},
        // The lock takes the horizontal deformation for both.
        {{{"Deformation vertical", 0}, {"Lock horizontal/vertical", 1}, {"Type", 2}}, {{0.5f, 0.75f, 0.5f, 0.5f + 0.25f * 0.00901523f}}},
        {{{"Size", 0}}, {{0.5f, 0.5f, 0.5f, 0.5f}, {0.51f, 0.5f, 0.51f, 0.5f}}},  // a size of 0 has no inside
    });
    w.SetFloat("Deformation", 0.0f);  // nothing to deform: nothing to do
    EXPECT_FALSE(w.Start());
    w.Apply({{"Lock horizontal/vertical", 0}, {"Deformation vertical", -0.5}});
    EXPECT_TRUE(w.Start());
}

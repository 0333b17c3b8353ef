// The noise functions of the generators: what the patterns' pixels in the
// Generate tests do not pin down on their own. Lattice values and hashes are
// exact, periods repeat bit for bit, and the drift modes move the point.
#include <gtest/gtest.h>
#include <cmath>
#include "tools/image/noise_functions.h"

TEST(NoiseFunctions, EdgesOfTheBasicsAndTheRangesOfSimplexAndVoronoi)
{
    EXPECT_EQ(KNoiseFract(-0.25f), 0.75f);  // floor goes toward minus infinity
    EXPECT_EQ(KNoiseSmooth(7.0f), 1.0f);
    EXPECT_EQ(KNoiseSmooth(NAN), 0.0f);  // a non-number is taken as 0
    // sin 0 is 0: the origin hashes to 0, so the signed noise gives -1 there;
    // a lattice point is its hash, and the cell's own corner sums its constant whole.
    EXPECT_EQ(KSignedValueNoise2({0.0f, 0.0f}), -1.0f);
    EXPECT_EQ(KValueNoise2({1.0f, 0.0f}), 0.939453125f);
    EXPECT_EQ(KVectorNoise2({3.0f, 4.0f}).y, -0.033203125f);
    EXPECT_EQ(KSimplexFlowHash({1.0f, -2.0f, 3.0f}, 0.4f).z, 0.0f);  // 2^21 times the sine keeps three bits
    EXPECT_EQ(KSimplex3({1.0f, 2.0f, 3.0f}), 0.0f);  // a lattice point of the skewed grid
    const KNoise2 g = KSimplexHash2({3.0f, -2.0f}, 0.8f), still = KSimplexHash2({3.0f, -2.0f}, 0.0f);
    EXPECT_NEAR(std::hypot(g.x, g.y), std::hypot(still.x, still.y), 1e-6f);  // time only turns
    for (float x = -6.0f; x < 6.0f; x += 0.113f) {
        ASSERT_LT(std::fabs(KSimplex3({x, 0.7f * x + 0.2f, 1.3f - x})), 1.2f) << x;
        const KNoise4 v = KSmoothVoronoi({x / 2, 0.3f * x}, 1.1f, 0.0f);
        for (int c = 1; c < 4; ++c) ASSERT_TRUE(v.v[c] >= 0.0f && v.v[c] <= 1.0f) << x;
    }
}

TEST(NoiseFunctions, TurbulenceOctavesPeriodAndDrift)
{
    EXPECT_EQ(KPeriodicTurbulence({5.0f, 5.0f}, 0.0f, 8.0f, 0, 0, {16, 16}), 0.0f);  // no octaves
    EXPECT_EQ(KPeriodicTurbulence({10.0f, 20.0f}, 0.0f, 8.0f, 0, 1, {16, 16}), 0.26220703125f);
    // The lattice repeats every period: 16 cells of size 8.
    EXPECT_EQ(KPeriodicTurbulence({154.0f, -84.0f}, 0.0f, 8.0f, 0, 3, {16, 16}),
              KPeriodicTurbulence({26.0f, 44.0f}, 0.0f, 8.0f, 0, 3, {16, 16}));
    // Modes 1 and 4 drift by mode * 50 * t over the octave number; others stand.
    EXPECT_EQ(KPeriodicTurbulence({3.0f, 9.0f}, 0.25f, 8.0f, 4, 1, {16, 16}),
              KPeriodicTurbulence({53.0f, 59.0f}, 0.0f, 8.0f, 0, 1, {16, 16}));
    EXPECT_EQ(KPeriodicTurbulence({3.0f, 9.0f}, 0.25f, 8.0f, 1, 1, {16, 16}),
              KPeriodicTurbulence({15.5f, 21.5f}, 0.0f, 8.0f, 0, 1, {16, 16}));
    EXPECT_EQ(KPeriodicTurbulence({3.0f, 9.0f}, 0.25f, 8.0f, 2, 3, {16, 16}),
              KPeriodicTurbulence({3.0f, 9.0f}, 0.0f, 8.0f, 2, 3, {16, 16}));
}

// The noise functions of the generators. Expected values were computed apart
// from this code, operation by operation in single precision with the C
// library's sinf, cosf and expf; they agree to the last bit here, and any
// change of order or precision moves the hashes far beyond the tolerance.
#include <gtest/gtest.h>
#include <cmath>
#include "tools/image/noise_functions.h"

namespace {

void ExpectClose(float expected, float actual)
{
    EXPECT_NEAR(actual, expected, 4e-7f * std::fmax(1.0f, std::fabs(expected)));
}

TEST(NoiseFunctionsBasics, FractSmoothAndValueNoise)
{
    EXPECT_EQ(KNoiseFract(-0.25f), 0.75f);  // floor goes toward minus infinity
    EXPECT_EQ(KNoiseSmooth(0.25f), 0.15625f);
    EXPECT_EQ(KNoiseSmooth(7.0f), 1.0f);
    EXPECT_EQ(KNoiseSmooth(NAN), 0.0f);  // a non-number is taken as 0

    // sin 0 is 0: the origin hashes to 0, so the signed noise gives -1 there.
    EXPECT_EQ(KValueNoise2({0.0f, 0.0f}), 0.0f);
    EXPECT_EQ(KSignedValueNoise2({0.0f, 0.0f}), -1.0f);
    EXPECT_EQ(KValueNoise2({1.0f, 0.0f}), 0.939453125f);  // a lattice point is its hash
    ExpectClose(0.4831526577f, KValueNoise2({2.3f, -4.6f}));
    ExpectClose(0.5137362480f, KSignedValueNoise2({-1.7f, 5.2f}));
    // Mid-cell both smooth weights are one half.
    const float mean = ((KValueNoise2({3, 1}) + KValueNoise2({4, 1})) * 0.5f +
                        (KValueNoise2({3, 2}) + KValueNoise2({4, 2})) * 0.5f) * 0.5f;
    ExpectClose(mean, KValueNoise2({3.5f, 1.5f}));

    // The cell's own corner sums its constant whole, the others split it.
    const KNoise2 lattice = KVectorNoise2({3.0f, 4.0f});
    EXPECT_EQ(lattice.x, -0.390625f);
    EXPECT_EQ(lattice.y, -0.033203125f);
    const KNoise2 v = KVectorNoise2({-0.75f, 0.125f});
    ExpectClose(0.2046741247f, v.x);
    ExpectClose(0.3038983345f, v.y);
}

TEST(NoiseFunctionsSimplex, TwoAndThreeDimensions)
{
    const KNoise2 g = KSimplexHash2({3.0f, -2.0f}, 0.8f), still = KSimplexHash2({3.0f, -2.0f}, 0.0f);
    ExpectClose(-0.6408330798f, g.x);
    ExpectClose(-0.6876195669f, g.y);
    EXPECT_NEAR(std::hypot(g.x, g.y), std::hypot(still.x, still.y), 1e-6f);  // time only turns

    // At the origin the own corner's offset is 0 and the others lie out of
    // reach, yet the common weight lets them count.
    ExpectClose(0.7333346009f, KSimplex2({0.0f, 0.0f}, 0.0f));
    ExpectClose(-0.1012960523f, KSimplex2({1.3f, -0.45f}, 0.6f));

    EXPECT_EQ(KSimplex3({0.0f, 0.0f, 0.0f}), 0.0f);  // lattice points of the skewed grid
    EXPECT_EQ(KSimplex3({1.0f, 2.0f, 3.0f}), 0.0f);
    ExpectClose(0.2379292846f, KSimplex3({0.3f, 1.7f, -2.2f}));
    for (float x = -6.0f; x < 6.0f; x += 0.113f)
        ASSERT_LT(std::fabs(KSimplex3({x, 0.7f * x + 0.2f, 1.3f - x})), 1.2f) << x;
}

TEST(NoiseFunctionsFlow, HashSimplexAndField)
{
    const KNoise3 h = KSimplexFlowHash({1.0f, -2.0f, 3.0f}, 0.4f);
    ExpectClose(-0.09695255756f, h.x);
    ExpectClose(0.1636888831f, h.y);
    EXPECT_EQ(h.z, 0.0f);  // 2^21 times the sine keeps three bits of fraction
    ExpectClose(0.1148460284f, KSimplexFlow3({0.3f, 1.7f, 1.0f}, 0.5f));
    ExpectClose(0.09186794609f, KSimplexFlow3({-2.6f, 0.35f, 2.13f}, -1.2f));
    ExpectClose(-3.134482145f, KFluidField(3.4f, -1.1f, 0.9f));
}

TEST(NoiseFunctionsTurbulence, OctavesPeriodAndDrift)
{
    EXPECT_EQ(KPeriodicTurbulence({5.0f, 5.0f}, 0.0f, 8.0f, 0, 0, {16, 16}), 0.0f);
    EXPECT_EQ(KPeriodicTurbulence({10.0f, 20.0f}, 0.0f, 8.0f, 0, 1, {16, 16}), 0.26220703125f);
    ExpectClose(1.117845535f, KPeriodicTurbulence({37.5f, 81.25f}, 0.3f, 32.0f, 4, 5, {64, 64}));
    // The lattice repeats every period: 16 cells of size 8.
    const float here = KPeriodicTurbulence({26.0f, 44.0f}, 0.0f, 8.0f, 0, 3, {16, 16});
    EXPECT_EQ(KPeriodicTurbulence({154.0f, -84.0f}, 0.0f, 8.0f, 0, 3, {16, 16}), here);
    // Modes 1 and 4 drift by mode * 50 * t over the octave number; others stand.
    EXPECT_EQ(KPeriodicTurbulence({3.0f, 9.0f}, 0.25f, 8.0f, 4, 1, {16, 16}),
              KPeriodicTurbulence({53.0f, 59.0f}, 0.0f, 8.0f, 0, 1, {16, 16}));
    EXPECT_EQ(KPeriodicTurbulence({3.0f, 9.0f}, 0.25f, 8.0f, 1, 1, {16, 16}),
              KPeriodicTurbulence({15.5f, 21.5f}, 0.0f, 8.0f, 0, 1, {16, 16}));
    EXPECT_EQ(KPeriodicTurbulence({3.0f, 9.0f}, 0.25f, 8.0f, 2, 3, {16, 16}),
              KPeriodicTurbulence({3.0f, 9.0f}, 0.0f, 8.0f, 2, 3, {16, 16}));
}

TEST(NoiseFunctionsWaterAndVoronoi, Values)
{
    ExpectClose(0.9041215181f, KWaterField(1.3f, -0.7f, 0.9f, 1.0f, 4.0f));
    ExpectClose(1.764893889f, KWaterField(-3.1f, 2.2f, 0.0f, -0.4f, 0.5f));

    const KNoise4 soft = KSmoothVoronoi({2.6f, -1.3f}, 0.7f, 0.679f);
    ExpectClose(0.6443259120f, soft.v[0]);
    ExpectClose(0.6758282781f, soft.v[1]);
    ExpectClose(0.9810213447f, soft.v[2]);
    ExpectClose(-0.005036738701f, soft.v[3]);
    // No smoothness: each step is a hard choice, the distance the nearest one
    // and the colours one cell's own.
    const KNoise4 hard = KSmoothVoronoi({2.6f, -1.3f}, 0.7f, 0.0f);
    ExpectClose(0.6326827407f, hard.v[0]);
    ExpectClose(0.0003311336040f, hard.v[3]);
    for (float x = -3.0f; x < 3.0f; x += 0.173f) {
        const KNoise4 v = KSmoothVoronoi({x, 0.3f * x}, 1.1f, 0.0f);
        for (int c = 1; c < 4; ++c) ASSERT_TRUE(v.v[c] >= 0.0f && v.v[c] <= 1.0f) << x;
    }
}

}  // namespace

// Lens Distortion: the polynomial both ways on hand-computed points, the
// identity, and pinned corners.
#include "warp_support.h"

using namespace zvtest;

TEST(LensDistortion, DistortsAndRestoresByThePolynomialWithCornersPinnedOnRequest)
{
    Warp w("ZV_LensDistortion");
    // Kappas 0.5 and 0.5 about the middle; r^2 = 0.04: f = (0.5 * 0.04 + 0.5) * 0.04 + 1 = 1.0208.
    ExpectSteps(w, 2e-6f, {
        {{}, {{0.5f, 0.3f, 0.5f, 0.5f - 0.2f * 1.0208f}}},
        {{{"Type", 1}}, {{0.7f, 0.5f, 0.5f + 0.2f / 1.0208f, 0.5f}}},
        {{{"Type", 0}, {"Scale", 2}}, {{0.7f, 0.5f, 0.5f + 0.2f * 0.5208f, 0.5f}}},  // halves the constant term
        // No kappas and scale 1: exactly the identity about any centre.
        {{{"Scale", 1}, {"Kappa 1", 0}, {"Kappa 2", 0}, {"Center", 0.3, 0.6}}, {{0.9f, 0.1f, 0.9f, 0.1f}, {0.0f, 1.0f, 0.0f, 1.0f}}},
    });
    // Pinned, the scale is replaced; midway to an edge r^2 = 0.0625 against 0.5 at the corners.
    const float f = (0.8f * 0.0625f - 0.3f) * 0.0625f + (1.0f - (0.8f * 0.5f - 0.3f) * 0.5f);
    Warp p("ZV_LensDistortion");
    ExpectSteps(p, 2e-6f, {{{{"Pin corners (only if center is centered)", 1}, {"Kappa 1", -0.3}, {"Kappa 2", 0.8}, {"Scale", 1.7}},
                            {{0, 0, 0, 0}, {1, 0, 1, 0}, {0, 1, 0, 1}, {1, 1, 1, 1}, {0.75f, 0.5f, 0.5f + 0.25f * f, 0.5f}}}});
}

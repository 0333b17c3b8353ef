// Lens Distortion: declarations, the identity, the polynomial both ways on
// hand-computed points, and pinned corners.
#include "warp_support.h"

using namespace zvtest;

TEST(LensDistortion, DistortsAndRestoresByThePolynomial)
{
    Warp w("ZV_LensDistortion");
    w.Start();  // kappas 0.5 and 0.5 about the middle
    // r^2 = 0.04: f = (0.5 * 0.04 + 0.5) * 0.04 + 1 = 1.0208.
    ExpectMaps(w, {{0.5f, 0.3f, 0.5f, 0.5f - 0.2f * 1.0208f}}, 2e-6f);
    w.SetInt("Type", 1);
    w.Start();
    ExpectMaps(w, {{0.7f, 0.5f, 0.5f + 0.2f / 1.0208f, 0.5f}}, 2e-6f);
    w.SetInt("Type", 0);
    w.Set("Scal"_id, 2.0f);  // halves the constant term
    w.Start();
    ExpectMaps(w, {{0.7f, 0.5f, 0.5f + 0.2f * 0.5208f, 0.5f}}, 2e-6f);
    w.Set("Scal"_id, 1.0f);  // no kappas and scale 1: the identity about any centre
    w.Set("Kap1"_id, 0.0f);
    w.Set("Kap2"_id, 0.0f);
    w.SetPoint("Cent"_id, 0.3f, 0.6f);
    w.Start();
    ExpectMaps(w, {{0.9f, 0.1f, 0.9f, 0.1f}, {0.0f, 1.0f, 0.0f, 1.0f}}, 0.0f);
}

TEST(LensDistortion, PinnedCornersStayInPlace)
{
    Warp w("ZV_LensDistortion");
    w.SetBool("Pin corners (only if center is centered)", true);
    w.Set("Kap1"_id, -0.3f);
    w.Set("Kap2"_id, 0.8f);
    w.Set("Scal"_id, 1.7f);  // replaced by the pinned scale
    w.Start();
    // Midway to an edge, r^2 = 0.0625 against 0.5 at the corners.
    const float f = (0.8f * 0.0625f - 0.3f) * 0.0625f + (1.0f - (0.8f * 0.5f - 0.3f) * 0.5f);
    ExpectMaps(w, {{0, 0, 0, 0}, {1, 0, 1, 0}, {0, 1, 0, 1}, {1, 1, 1, 1},
                   {0.75f, 0.5f, 0.5f + 0.25f * f, 0.5f}},
               2e-6f);
}


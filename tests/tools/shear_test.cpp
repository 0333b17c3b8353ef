// Shear: declarations, the half-plane ahead of the pivot slanted across the
// axis (by value and by angle), along it and stretched, the half behind only
// moved by Center, "Shear all", and a render that keeps the lower half.
#include "warp_support.h"

using namespace zvtest;

namespace {

// The bridge's neutral values: Center an offset of 0, the axis pointing up.
void Neutral(Warp& w)
{
    w.SetPoint("Center", 0.0f, 0.0f);
    w.SetPoint("Axis Pivot", 0.5f, 0.5f);
    w.SetDegrees("Axis Angle", 90.0f);
    w.SetDegrees("Shear Angle", 45.0f);
}

TEST(Shear, AheadOfThePivotSlantsBehindStays)
{
    Warp w("ZV_Shear");
    Neutral(w);
    w.Start();
    // 0.2 above the pivot reads 0.2 to the left: the top leans right; on the line is behind.
    ExpectMaps(w, {{0.7f, 0.7f, 0.5f, 0.7f}, {0.7f, 0.3f, 0.7f, 0.3f}, {0.7f, 0.5f, 0.7f, 0.5f}},
               1e-5f);
    w.SetBool("Shear all", true);
    w.Start();
    ExpectMaps(w, {{0.7f, 0.3f, 0.9f, 0.3f}}, 1e-5f);

    // By angle: the slope is the tangent of the angle, and Shear has no say.
    w.SetInt("Input Type", 1);
    w.SetDegrees("Shear Angle", 63.434949f);
    for (float shear : {1.0f, 0.0f}) {
        w.SetFloat("Shear", shear);
        w.Start();
        ExpectMaps(w, {{0.7f, 0.7f, 0.3f, 0.7f}}, 1e-5f);
    }
}

TEST(Shear, AlongTheAxisStretchAndTurnedAxis)
{
    Warp w("ZV_Shear");
    Neutral(w);
    w.SetFloat("Shear", 0.0f);
    w.SetFloat("Shear Along Axis", 1.0f);
    w.Start();
    ExpectMaps(w, {{0.7f, 0.7f, 0.7f, 0.5f}}, 1e-5f);  // 0.2 right of the axis reads 0.2 lower

    w.SetFloat("Shear Along Axis", 0.0f);
    w.SetFloat("Size Along Axis", 2.0f);
    w.Start();
    ExpectMaps(w, {{0.7f, 0.7f, 0.7f, 0.6f}}, 1e-5f);  // twice as tall above the pivot

    // Axis at 0 degrees points right: the right half slides.
    w.SetFloat("Size Along Axis", 1.0f);
    w.SetFloat("Shear", 1.0f);
    w.SetDegrees("Axis Angle", 0.0f);
    w.Start();
    ExpectMaps(w, {{0.7f, 0.7f, 0.7f, 0.9f}, {0.3f, 0.7f, 0.3f, 0.7f}}, 1e-5f);

    // Center moves both halves, and the line with them.
    w.SetPoint("Center", 0.1f, 0.0f);
    w.Start();
    ExpectMaps(w, {{0.55f, 0.7f, 0.45f, 0.7f}, {0.7f, 0.7f, 0.6f, 0.8f}}, 1e-5f);
}

}  // namespace

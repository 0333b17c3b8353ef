// Shear: the half-plane ahead of the pivot slanted across the axis (by value
// and by angle), along it and stretched, the half behind only moved by
// Center, and "Shear all".
#include "warp_support.h"

using namespace zvtest;

TEST(Shear, AheadOfThePivotSlantsBehindStays)
{
    Warp w("ZV_Shear");
    ExpectSteps(w, 1e-5f, {
        // Neutral as the bridge leaves it, the axis pointing up: 0.2 above the pivot
        // reads 0.2 to the left; below it, and on the line, is behind.
        {{{"Center", 0, 0}, {"Axis Angle", 90}, {"Shear Angle", 45}},
         {{0.7f, 0.7f, 0.5f, 0.7f}, {0.7f, 0.3f, 0.7f, 0.3f}, {0.7f, 0.5f, 0.7f, 0.5f}}},
        {{{"Shear all", 1}}, {{0.7f, 0.3f, 0.9f, 0.3f}}},
        // By angle: the slope is the tangent of the angle, and Shear has no say.
        {{{"Shear all", 0}, {"Input Type", 1}, {"Shear Angle", 63.434949}, {"Shear", 0}}, {{0.7f, 0.7f, 0.3f, 0.7f}}},
        {{{"Input Type", 0}, {"Shear Along Axis", 1}}, {{0.7f, 0.7f, 0.7f, 0.5f}}},  // 0.2 right of the axis reads 0.2 lower
        {{{"Shear Along Axis", 0}, {"Size Along Axis", 2}}, {{0.7f, 0.7f, 0.7f, 0.6f}}},  // twice as tall above the pivot
        // Axis at 0 degrees points right: the right half slides.
        {{{"Size Along Axis", 1}, {"Shear", 1}, {"Axis Angle", 0}}, {{0.7f, 0.7f, 0.7f, 0.9f}, {0.3f, 0.7f, 0.3f, 0.7f}}},
        {{{"Center", 0.1, 0}}, {{0.55f, 0.7f, 0.45f, 0.7f}, {0.7f, 0.7f, 0.6f, 0.8f}}},  // both halves move, and the line
    });
}

// Bend: the straight band, the arc through three points, the source segment,
// and the arc by centre and radius with its flip.
#include "warp_support.h"

using namespace zvtest;

namespace {

// Start, Midpoint and End along the middle row, and the source segment there
// too, so that band coordinates come out unchanged.
struct Bend : Warp {
    Bend() : Warp("ZV_Bend")
    {
        for (auto [label, x] : {std::pair{"Start", 0.0f}, {"Midpoint", 0.5f}, {"End", 1.0f}, {"Source Start", 0.0f},
                                {"Source End", 1.0f}})
            SetPoint(label, x, 0.5f);
    }
};

TEST(Bend, StraightBandThreePointCircleAndSourceSegment)
{
    Bend w;
    ExpectSteps(w, 2e-6f, {
        {{}, {{0.3f, 0.2f, 0.3f, 0.2f}}},
        // Half the length and half the height, about the middle.
        {{{"Scale Horizontal", 0.5}, {"Scale Vertical", 0.5}}, {{0.25f, 0.25f, 0.0f, 0.0f}, {0.75f, 0.5f, 1.0f, 0.5f}}},
    });
    Bend c;  // centre 0.5, 0.5 and radius 0.25; the band is 1 thick about the circle
    ExpectSteps(c, 1e-5f, {{{{"Start", 0.25, 0.5}, {"Midpoint", 0.5, 0.25}, {"End", 0.75, 0.5}},
                            {{0.25f, 0.5f, 0.0f, 0.5f}, {0.75f, 0.5f, 1.0f, 0.5f}, {0.5f, 0.1f, 0.5f, 0.65f}}}});
    Bend s;  // u runs down the source segment, v across to lower x
    ExpectSteps(s, 1e-5f, {{{{"Source Start", 0.5, 0.25}, {"Source End", 0.5, 0.75}},
                            {{0.0f, 0.5f, 0.5f, 0.25f}, {1.0f, 0.5f, 0.5f, 0.75f}, {0.5f, 0.0f, 0.75f, 0.5f}}}});
}

TEST(Bend, CentreAndRadiusLayTheBandOnAnArc)
{
    Bend w;
    const float a = 3.14159265f * 0.625f;
    ExpectSteps(w, 1e-5f, {
        // A ring from 0.15 to 0.35, from angle pi down to 0 through pi / 2, where the middle of the band lies.
        {{{"Type", 1}, {"Start", 0.5, 0.5}, {"Radius", 0.25}, {"Scale Vertical", 0.2}, {"Start Angle", 180}, {"End Angle", 0}},
         {{0.5f, 0.75f, 0.5f, 0.5f}, {0.7f, 0.5f, 1.0f, 0.25f}, {0.35f, 0.5f, 0.0f, 0.0f}}},
        {{{"Start Angle", 0}, {"End Angle", 180}}, {{0.7f, 0.5f, 0.0f, 0.75f}}},  // rising angles flip the band across
        {{{"Scale Horizontal", 0.5}}, {{0.5f + 0.25f * std::cos(a), 0.5f + 0.25f * std::sin(a), 0.75f, 0.5f}}},  // u twice as fast
    });
}

}  // namespace

// Segment Transform: neutral cells as identity, scale and turn about each grid
// cell's middle, the locks, and the radial layout.
#include "warp_support.h"

using namespace zvtest;

TEST(SegmentTransform, CellsScaleAndTurnAboutTheirMiddlesOnAGridOrRadially)
{
    Warp w("ZV_SegmentTransform");
    ExpectSteps(w, 1e-5f, {
        {{}, {{0.63f, 0.27f, 0.63f, 0.27f}}},  // neutral cells change nothing
        // The middle cell twice as wide, the next about its middle 0.75; Scale Y stays 1.
        {{{"Segment Size X", 0.25}, {"Segment Size Y", 0.25}, {"Scale X", 2}},
         {{0.6f, 0.5f, 0.55f, 0.5f}, {0.8f, 0.5f, 0.775f, 0.5f}, {0.8f, 0.55f, 0.775f, 0.55f}}},
        // Each cell turns by 90 degrees, clockwise as viewed: above, from the left.
        {{{"Scale X", 1}, {"Angle", 90}}, {{0.8f, 0.55f, 0.7f, 0.55f}, {0.75f, 0.6f, 0.65f, 0.5f}}},
        // The locks copy X to Y; cells stay 0.25 high.
        {{{"Angle", 0}, {"Scale X", 2}, {"Lock Scale X/Y", 1}}, {{0.8f, 0.55f, 0.775f, 0.525f}}},
        {{{"Segment Size Y", 0.5}, {"Lock Segment Size X/Y", 1}}, {{0.8f, 0.8f, 0.775f, 0.775f}}},
    });
    Warp r("ZV_SegmentTransform");
    const float a = 1.5707964f - 0.18539816f, d = 0.215f;  // ring middle 0.2, 0.03 out, halved
    ExpectSteps(r, 1e-5f, {
        {{{"Type", 1}}, {{0.63f, 0.27f, 0.63f, 0.27f}}},
        // Wedges a quarter turn wide, rings 0.1 deep; each ring doubled in depth.
        {{{"Segment Size X", 1.5707964}, {"Segment Size Y", 0.1}, {"Scale Y", 2}},
         {{0.5f + 0.23f * std::cos(0.1f), 0.5f + 0.23f * std::sin(0.1f), 0.5f + d * std::cos(0.1f), 0.5f + d * std::sin(0.1f)}}},
        // 1.2 rad lies 0.37 before the wedge middle at pi/2; the scale on angle halves that.
        {{{"Scale Y", 1}, {"Scale X", 2}},
         {{0.5f + 0.2f * std::cos(1.2f), 0.5f + 0.2f * std::sin(1.2f), 0.5f + 0.2f * std::cos(a), 0.5f + 0.2f * std::sin(a)}}},
    });
}

// Segment Transform: declarations, neutral cells as identity, scale and turn
// about each grid cell's middle, the locks, the radial layout, and a render in
// which every cell is turned half round.
#include "warp_support.h"

using namespace zvtest;

namespace {

TEST(SegmentTransform, CellsScaleAndTurnAboutTheirMiddles)
{
    Warp w("ZV_SegmentTransform");
    w.Start();
    ExpectMaps(w, {{0.63f, 0.27f, 0.63f, 0.27f}}, 1e-5f);  // neutral cells change nothing

    w.SetFloat("Segment Size X", 0.25f);
    w.SetFloat("Segment Size Y", 0.25f);
    w.SetFloat("Scale X", 2.0f);
    w.Start();
    ExpectMaps(w, {{0.6f, 0.5f, 0.55f, 0.5f},       // the middle cell, twice as wide
                   {0.8f, 0.5f, 0.775f, 0.5f},      // the next cell, about its middle 0.75
                   {0.8f, 0.55f, 0.775f, 0.55f}},   // Scale Y stays 1
               1e-5f);

    // Each cell turns by 90 degrees, clockwise as viewed.
    w.SetFloat("Scale X", 1.0f);
    w.SetDegrees("Angle", 90.0f);
    w.Start();
    ExpectMaps(w, {{0.8f, 0.55f, 0.7f, 0.55f}, {0.75f, 0.6f, 0.65f, 0.5f}}, 1e-5f);  // above: from the left

    // The locks copy X to Y.
    w.SetDegrees("Angle", 0.0f);
    w.SetFloat("Scale X", 2.0f);
    w.SetBool("Lock Scale X/Y", true);
    w.Start();
    ExpectMaps(w, {{0.8f, 0.55f, 0.775f, 0.525f}}, 1e-5f);
    w.SetFloat("Segment Size Y", 0.5f);
    w.SetBool("Lock Segment Size X/Y", true);
    w.Start();
    ExpectMaps(w, {{0.8f, 0.8f, 0.775f, 0.775f}}, 1e-5f);  // cells stay 0.25 high
}

TEST(SegmentTransform, CellsOnAngleAndRadius)
{
    Warp w("ZV_SegmentTransform");
    w.SetInt("Type", 1);
    w.Start();
    ExpectMaps(w, {{0.63f, 0.27f, 0.63f, 0.27f}}, 1e-5f);

    // Wedges a quarter turn wide, rings 0.1 deep; each ring doubled in depth.
    w.SetFloat("Segment Size X", 1.5707964f);
    w.SetFloat("Segment Size Y", 0.1f);
    w.SetFloat("Scale Y", 2.0f);
    w.Start();
    const float r = 0.215f;  // ring middle 0.2, 0.03 out, halved
    ExpectMaps(w, {{0.5f + 0.23f * std::cos(0.1f), 0.5f + 0.23f * std::sin(0.1f),
                    0.5f + r * std::cos(0.1f), 0.5f + r * std::sin(0.1f)}},
               1e-5f);
    // A wedge of angle: 1.2 rad lies 0.37 before the wedge middle at pi/2; the
    // scale on angle halves that.
    w.SetFloat("Scale Y", 1.0f);
    w.SetFloat("Scale X", 2.0f);
    w.Start();
    const float a = 1.5707964f - 0.18539816f;
    ExpectMaps(w, {{0.5f + 0.2f * std::cos(1.2f), 0.5f + 0.2f * std::sin(1.2f),
                    0.5f + 0.2f * std::cos(a), 0.5f + 0.2f * std::sin(a)}},
               1e-5f);
}

}  // namespace

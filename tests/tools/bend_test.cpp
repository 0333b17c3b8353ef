// Bend: declarations, the straight band, the arc by centre and radius with its
// flip, the arc through three points, and the source segment.
#include "warp_support.h"

using namespace zvtest;

namespace {

// Start, Midpoint and End along the middle row; with `plain` the source segment
// lies there too, so that band coordinates come out unchanged.
void Line(Warp& w, bool plain)
{
    w.SetPoint("BeSt"_id, 0.0f, 0.5f);
    w.SetPoint("BeMi"_id, 0.5f, 0.5f);
    w.SetPoint("BeEn"_id, 1.0f, 0.5f);
    if (plain) {
        w.SetPoint("SoSt"_id, 0.0f, 0.5f);
        w.SetPoint("SoEn"_id, 1.0f, 0.5f);
    }
}

}  // namespace

TEST(Bend, PointsInALineMakeAStraightBand)
{
    Warp w("ZV_Bend");
    Line(w, true);
    w.Start();
    ExpectMaps(w, {{0.3f, 0.2f, 0.3f, 0.2f}}, 2e-6f);
    w.Set("BeSH"_id, 0.5f);  // half the length and half the height, about the middle
    w.Set("BeSV"_id, 0.5f);
    w.Start();
    ExpectMaps(w, {{0.25f, 0.25f, 0.0f, 0.0f}, {0.75f, 0.5f, 1.0f, 0.5f}}, 2e-6f);
}

TEST(Bend, CentreAndRadiusLayTheBandOnAnArc)
{
    Warp w("ZV_Bend");
    Line(w, true);
    w.SetInt("Type", 1);
    w.SetPoint("BeSt"_id, 0.5f, 0.5f);
    w.Set("BeRa"_id, 0.25f);
    w.Set("BeSV"_id, 0.2f);  // a ring from 0.15 to 0.35
    w.SetDegrees("Start Angle", 180.0f);
    w.SetDegrees("End Angle", 0.0f);
    w.Start();
    // From angle pi down to 0 through pi / 2, where the middle of the band lies.
    ExpectMaps(w, {{0.5f, 0.75f, 0.5f, 0.5f}, {0.7f, 0.5f, 1.0f, 0.25f}, {0.35f, 0.5f, 0.0f, 0.0f}},
               1e-5f);
    w.SetDegrees("Start Angle", 0.0f);  // rising angles flip the band across
    w.SetDegrees("End Angle", 180.0f);
    w.Start();
    ExpectMaps(w, {{0.7f, 0.5f, 0.0f, 0.75f}}, 1e-5f);
    w.Set("BeSH"_id, 0.5f);  // half the spread: u moves twice as fast
    w.Start();
    const float a = 3.14159265f * 0.625f;
    ExpectMaps(w, {{0.5f + 0.25f * std::cos(a), 0.5f + 0.25f * std::sin(a), 0.75f, 0.5f}}, 1e-5f);
}

TEST(Bend, ThreePointsMakeTheirCircle)
{
    Warp w("ZV_Bend");
    Line(w, true);
    w.SetPoint("BeSt"_id, 0.25f, 0.5f);
    w.SetPoint("BeMi"_id, 0.5f, 0.25f);
    w.SetPoint("BeEn"_id, 0.75f, 0.5f);
    w.Start();
    // Centre 0.5, 0.5 and radius 0.25; the band is 1 thick about the circle.
    ExpectMaps(w, {{0.25f, 0.5f, 0.0f, 0.5f}, {0.75f, 0.5f, 1.0f, 0.5f}, {0.5f, 0.1f, 0.5f, 0.65f}},
               1e-5f);
}

TEST(Bend, SourceSegmentPlacesTheBand)
{
    Warp w("ZV_Bend");
    Line(w, false);
    w.SetPoint("SoSt"_id, 0.5f, 0.25f);  // u runs down it, v across to lower x
    w.SetPoint("SoEn"_id, 0.5f, 0.75f);
    w.Start();
    ExpectMaps(w, {{0.0f, 0.5f, 0.5f, 0.25f}, {1.0f, 0.5f, 0.5f, 0.75f}, {0.5f, 0.0f, 0.75f, 0.5f}},
               1e-5f);
}

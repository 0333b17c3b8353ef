// Bend: declarations, the straight band, the arc by centre and radius with its
// flip, the arc through three points, and the source segment.
#include "warp_support.h"

using namespace warptest;
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

TEST(BendDeclarations, HostShowsTheControls)
{
    ToolFlow t("ZV_Bend");
    EXPECT_EQ(t.In("Type")->attrs.items,
              (std::vector<std::string>{"Three points", "Center and radius"}));
    EXPECT_EQ(*t.In("StartAngle")->attrs.defaultNumber, 180.0);
    EXPECT_EQ(*t.In("Radius")->attrs.defaultNumber, 0.5);
    EXPECT_EQ(*t.In("ScaleVertical")->attrs.softMax, 1.0);
    EXPECT_EQ(*t.In("SourceEnd")->attrs.defaultPoint, std::make_pair(0.5, 0.5));
}

TEST(BendMap, PointsInALineMakeAStraightBand)
{
    Warp w("ZV_Bend");
    Line(w, true);
    w.Start();
    EXPECT_MAPS(w, 0.3f, 0.2f, 0.3f, 0.2f);
    w.Set("BeSH"_id, 0.5f);  // half the length and half the height, about the middle
    w.Set("BeSV"_id, 0.5f);
    w.Start();
    EXPECT_MAPS(w, 0.25f, 0.25f, 0.0f, 0.0f);
    EXPECT_MAPS(w, 0.75f, 0.5f, 1.0f, 0.5f);
}

TEST(BendMap, CentreAndRadiusLayTheBandOnAnArc)
{
    Warp w("ZV_Bend");
    Line(w, true);
    w.SetInt("BeTy"_id, 1);
    w.SetPoint("BeSt"_id, 0.5f, 0.5f);
    w.Set("BeRa"_id, 0.25f);
    w.Set("BeSV"_id, 0.2f);  // a ring from 0.15 to 0.35
    w.SetDegrees("BeAS"_id, 180.0f);
    w.SetDegrees("BeAE"_id, 0.0f);
    w.Start();
    // From angle pi down to 0 through pi / 2, where the middle of the band lies.
    EXPECT_MAPS_NEAR(w, 0.5f, 0.75f, 0.5f, 0.5f);
    EXPECT_MAPS_NEAR(w, 0.7f, 0.5f, 1.0f, 0.25f);
    EXPECT_MAPS_NEAR(w, 0.35f, 0.5f, 0.0f, 0.0f);
    w.SetDegrees("BeAS"_id, 0.0f);  // rising angles flip the band across
    w.SetDegrees("BeAE"_id, 180.0f);
    w.Start();
    EXPECT_MAPS_NEAR(w, 0.7f, 0.5f, 0.0f, 0.75f);
    w.Set("BeSH"_id, 0.5f);  // half the spread: u moves twice as fast
    w.Start();
    const float a = 3.14159265f * 0.625f;
    EXPECT_MAPS_NEAR(w, 0.5f + 0.25f * std::cos(a), 0.5f + 0.25f * std::sin(a), 0.75f, 0.5f);
}

TEST(BendMap, ThreePointsMakeTheirCircle)
{
    Warp w("ZV_Bend");
    Line(w, true);
    w.SetPoint("BeSt"_id, 0.25f, 0.5f);
    w.SetPoint("BeMi"_id, 0.5f, 0.25f);
    w.SetPoint("BeEn"_id, 0.75f, 0.5f);
    w.Start();
    // Centre 0.5, 0.5 and radius 0.25; the band is 1 thick about the circle.
    EXPECT_MAPS_NEAR(w, 0.25f, 0.5f, 0.0f, 0.5f);
    EXPECT_MAPS_NEAR(w, 0.75f, 0.5f, 1.0f, 0.5f);
    EXPECT_MAPS_NEAR(w, 0.5f, 0.1f, 0.5f, 0.65f);
}

TEST(BendMap, SourceSegmentPlacesTheBand)
{
    Warp w("ZV_Bend");
    Line(w, false);
    w.SetPoint("SoSt"_id, 0.5f, 0.25f);  // u runs down it, v across to lower x
    w.SetPoint("SoEn"_id, 0.5f, 0.75f);
    w.Start();
    EXPECT_MAPS_NEAR(w, 0.0f, 0.5f, 0.5f, 0.25f);
    EXPECT_MAPS_NEAR(w, 1.0f, 0.5f, 0.5f, 0.75f);
    EXPECT_MAPS_NEAR(w, 0.5f, 0.0f, 0.75f, 0.5f);
}

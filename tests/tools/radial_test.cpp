// Radial: declarations and the constant push away from Center.
#include "warp_support.h"

using namespace warptest;
using namespace zvtest;

TEST(RadialDeclarations, HostShowsTheControls)
{
    ToolFlow t("ZV_Radial");
    const host::Input* offset = t.In("RadialOffset");
    EXPECT_EQ(offset->attrs.control, host::Control::Screw);
    EXPECT_EQ(*offset->attrs.defaultNumber, 0.0);
    EXPECT_EQ(*offset->attrs.softMin, -1.0);
    EXPECT_EQ(*offset->attrs.softMax, 1.0);
    EXPECT_EQ(*t.In("Center")->attrs.defaultPoint, std::make_pair(0.5, 0.5));
    EXPECT_EQ(t.In("Center")->page, "Radial");
}

TEST(RadialMap, MovesEveryPointByTheOffsetAlongItsRadius)
{
    Warp w("ZV_Radial");
    w.SetPoint("Cent"_id, 0.4f, 0.5f);
    w.Start();
    const KPosition same = w.Map(0.9f, 0.2f);
    EXPECT_EQ(same.x, 0.9f);  // a zero offset is exactly the identity
    EXPECT_EQ(same.y, 0.2f);
    w.Set("RaOX"_id, 0.1f);
    w.Start();
    EXPECT_MAPS(w, 0.7f, 0.5f, 0.6f, 0.5f);
    EXPECT_MAPS(w, 0.4f, 0.9f, 0.4f, 0.8f);
    EXPECT_MAPS(w, 0.7f, 0.9f, 0.64f, 0.82f);  // a 3-4-5 radius of 0.5
    EXPECT_MAPS(w, 0.4f, 0.55f, 0.4f, 0.45f);  // inside the offset: through the middle
    EXPECT_MAPS(w, 0.4f, 0.5f, 0.4f, 0.5f);    // the centre itself stays
    w.Set("RaOX"_id, -0.2f);
    w.Start();
    EXPECT_MAPS(w, 0.4f, 0.3f, 0.4f, 0.1f);  // a negative offset gathers the picture in
}

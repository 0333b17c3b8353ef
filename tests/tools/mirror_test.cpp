// Mirror: declarations, the kept side, and reflection across a slanted line.
#include "warp_support.h"

using namespace warptest;
using namespace zvtest;

TEST(MirrorDeclarations, HostShowsTheControls)
{
    ToolFlow t("ZV_Mirror");
    EXPECT_EQ(t.In("Mirrorall")->page, "Mirror");
    EXPECT_EQ(*t.In("MirrorLeft")->attrs.defaultPoint, std::make_pair(0.25, 0.5));
    EXPECT_EQ(*t.In("MirrorRight")->attrs.defaultPoint, std::make_pair(0.75, 0.5));
}

TEST(MirrorMap, ReflectsAcrossTheLineThroughBothPoints)
{
    Warp w("ZV_Mirror");
    w.SetPoint("MirL"_id, 0.25f, 0.25f);
    w.SetPoint("MirR"_id, 0.75f, 0.75f);
    w.Start();
    const KPosition kept = w.Map(0.5f, 0.25f);  // the normal (-dy, dx) points away
    EXPECT_EQ(kept.x, 0.5f);
    EXPECT_EQ(kept.y, 0.25f);
    EXPECT_MAPS(w, 0.1f, 0.9f, 0.9f, 0.1f);
    EXPECT_MAPS(w, 0.6f, 0.6f, 0.6f, 0.6f);  // on the line
    w.SetBool("MAll"_id, true);
    w.Start();
    EXPECT_MAPS(w, 0.5f, 0.25f, 0.25f, 0.5f);
    // From right to left the kept side changes.
    w.SetBool("MAll"_id, false);
    w.SetPoint("MirL"_id, 0.75f, 0.4f);
    w.SetPoint("MirR"_id, 0.25f, 0.4f);
    w.Start();
    EXPECT_MAPS(w, 0.3f, 0.5f, 0.3f, 0.5f);
    EXPECT_MAPS(w, 0.3f, 0.1f, 0.3f, 0.7f);
}

TEST(MirrorRender, KeepsOneHalfAndReflectsItOntoTheOther)
{
    for (bool isFloat : {false, true}) {
        KImage* plate = Pattern(9, 7, isFloat);
        ToolFlow t("ZV_Mirror");
        t.SetImage("Image", plate);
        KImage* out = t.Render();  // the line runs along the middle row, 3
        EXPECT_LT(MaxDiff(*out, *plate, 0, 0, 9, 4), 2e-5f) << isFloat;
        for (int32_t k = 1; k <= 3; ++k)
            EXPECT_LT(MaxDiff(*out, *plate, 0, 3 + k, 9, 4 + k, 0, 2 * k), 2e-5f) << k;
        delete out;
        delete plate;
    }
}

// Lens Distortion: declarations, the identity, the polynomial both ways on
// hand-computed points, and pinned corners.
#include "warp_support.h"

using namespace warptest;
using namespace zvtest;

TEST(LensDistortionDeclarations, HostShowsTheControls)
{
    ToolFlow t("ZV_LensDistortion");
    EXPECT_EQ(t.In("Type")->attrs.items, (std::vector<std::string>{"Distort", "Restore"}));
    EXPECT_EQ(t.In("Pincorners")->name, "Pin corners (only if center is centered)");
    EXPECT_EQ(*t.In("Scale")->attrs.softMax, 2.0);
    EXPECT_EQ(*t.In("Kappa1")->attrs.defaultNumber, 0.5);
    EXPECT_EQ(*t.In("Kappa2")->attrs.softMin, -1.0);
}

TEST(LensDistortionMap, DistortsAndRestoresByThePolynomial)
{
    Warp w("ZV_LensDistortion");
    w.Start();  // kappas 0.5 and 0.5 about the middle
    // r^2 = 0.04: f = (0.5 * 0.04 + 0.5) * 0.04 + 1 = 1.0208.
    EXPECT_MAPS(w, 0.5f, 0.3f, 0.5f, 0.5f - 0.2f * 1.0208f);
    w.SetInt("Type"_id, 1);
    w.Start();
    EXPECT_MAPS(w, 0.7f, 0.5f, 0.5f + 0.2f / 1.0208f, 0.5f);
    w.SetInt("Type"_id, 0);
    w.Set("Scal"_id, 2.0f);  // halves the constant term
    w.Start();
    EXPECT_MAPS(w, 0.7f, 0.5f, 0.5f + 0.2f * 0.5208f, 0.5f);
}

TEST(LensDistortionMap, PinnedCornersStayInPlace)
{
    Warp w("ZV_LensDistortion");
    w.SetBool("PinC"_id, true);
    w.Set("Kap1"_id, -0.3f);
    w.Set("Kap2"_id, 0.8f);
    w.Set("Scal"_id, 1.7f);  // replaced by the pinned scale
    w.Start();
    for (auto [x, y] : {std::pair{0.0f, 0.0f}, {1.0f, 0.0f}, {0.0f, 1.0f}, {1.0f, 1.0f}})
        EXPECT_MAPS(w, x, y, x, y);
    // Midway to an edge, r^2 = 0.0625 against 0.5 at the corners.
    const float f = (0.8f * 0.0625f - 0.3f) * 0.0625f + (1.0f - (0.8f * 0.5f - 0.3f) * 0.5f);
    EXPECT_MAPS(w, 0.75f, 0.5f, 0.5f + 0.25f * f, 0.5f);
}

TEST(LensDistortionRender, NoKappasAndScaleOneLeaveThePicture)
{
    for (bool isFloat : {false, true})
        for (double filter : {0.0, 1.0, 2.0}) {
            // Pixel steps of 1/32 and 1/16 are exact, so even "None" lands on whole pixels.
            KImage* plate = Pattern(33, 17, isFloat);
            ToolFlow t("ZV_LensDistortion");
            t.SetImage("Image", plate);
            t.flow.SetValue(t.node, t.In("Center"), host::MakePoint(0.3, 0.6));
            t.Set("Kappa1", 0.0);
            t.Set("Kappa2", 0.0);
            t.Set("KFil", filter);
            t.Set("KEdg", 2);
            KImage* out = t.Render();
            EXPECT_LT(MaxDiff(*out, *plate, 0, 0, 33, 17), 2e-5f) << isFloat << " " << filter;
            delete out;
            delete plate;
        }
}

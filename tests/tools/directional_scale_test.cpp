// Directional Scale: declarations, the half-plane it leaves alone, its map on
// hand-computed points, and the warp family's standard inputs at work.
#include "warp_support.h"

using namespace warptest;
using namespace zvtest;

TEST(DirectionalScaleDeclarations, HostShowsTheControls)
{
    ToolFlow t("ZV_DirectionalScale");
    EXPECT_EQ(t.In("Scaleall")->page, "Directional Scale");
    EXPECT_EQ(*t.In("Sizealongaxis")->attrs.defaultNumber, 5.0);
    EXPECT_EQ(*t.In("Sizealongaxis")->attrs.softMax, 10.0);
    EXPECT_EQ(*t.In("Sizeinotherdirection")->attrs.defaultNumber, 1.0);
}

TEST(DirectionalScaleMap, ScalesOnlyAheadOfTheAxis)
{
    Warp w("ZV_DirectionalScale");
    w.Start();  // the axis along x through the middle, 5 along and 1 across
    const KPosition behind = w.Map(0.4f, 0.3f);
    EXPECT_EQ(behind.x, 0.4f);  // exactly unchanged
    EXPECT_EQ(behind.y, 0.3f);
    EXPECT_MAPS(w, 0.6f, 0.3f, 0.52f, 0.3f);
    w.SetBool("SAll"_id, true);
    w.Start();
    EXPECT_MAPS(w, 0.4f, 0.3f, 0.48f, 0.3f);

    // At 45 degrees the axis is n = (s, s) and m = (-s, s) lies across it.
    w.SetBool("SAll"_id, false);
    w.SetDegrees("Angl"_id, 45.0f);
    w.Set("Size"_id, 2.0f);
    w.Set("SizY"_id, 4.0f);
    w.Start();
    const float s = 0.70710678f, c = 0.5f - 0.1f * s;
    EXPECT_MAPS(w, c, c, c, c);
    EXPECT_MAPS(w, 0.5f, 0.5f + 0.4f * s, 0.5f + 0.05f * s, 0.5f + 0.15f * s);  // 0.2 n + 0.2 m
}

TEST(DirectionalScaleStandardInputs, AreaFilteringTurnsAMinifiedCheckerboardGrey)
{
    for (bool isFloat : {false, true}) {
        KImage* board = KImage::Create(64, 64, isFloat);
        for (int32_t y = 0; y < 64; ++y)
            for (int32_t x = 0; x < 64; ++x) {
                const float v = static_cast<float>((x + y) & 1);
                board->SetPixel(x, y, KPixelF{v, v, v, 1.0f});
            }
        ToolFlow t("ZV_DirectionalScale");
        t.SetImage("Image", board);
        t.Set("Scaleall", 1);  // ten source pixels to one each way, wrapped at the edges
        t.Set("Sizealongaxis", 0.1);
        t.Set("Sizeinotherdirection", 0.1);
        t.Set("KEdg", 1);
        t.Set("KFil", 2);
        KImage* area = t.Render();
        t.Set("KFil", 0);
        KImage* point = t.Render();
        for (int32_t y = 0; y < 64; ++y)
            for (int32_t x = 0; x < 64; ++x) {
                KPixelF a, p;
                area->GetPixel(x, y, a, 0);
                point->GetPixel(x, y, p, 0);
                ASSERT_NEAR(a.r, 0.5f, 0.05f) << x << "," << y << " float " << isFloat;
                ASSERT_TRUE(p.r < 0.001f || p.r > 0.999f);  // single source pixels
            }
        delete area;
        delete point;
        delete board;
    }
}

TEST(DirectionalScaleStandardInputs, UnderSamplingOneIsExactAndFourIsClose)
{
    for (bool isFloat : {false, true}) {
        KImage* plate = Pattern(97, 61, isFloat);
        ToolFlow t("ZV_DirectionalScale");
        t.SetImage("Image", plate);
        t.Set("Axisangle", 30.0);
        t.Set("Sizealongaxis", 1.5);
        t.Set("KEdg", 2);
        t.Set("KUnd", 0);
        KImage* exact = t.Render();
        t.Set("KUnd", 1);
        KImage* one = t.Render();
        t.Set("KUnd", 4);
        KImage* four = t.Render();
        EXPECT_EQ(Differ(*exact, *one), "");
        // Affine on each side of the axis, so only cells that the axis crosses differ.
        int32_t off = 0;
        for (int32_t y = 0; y < 61; ++y)
            for (int32_t x = 0; x < 97; ++x) off += MaxDiff(*exact, *four, x, y, x + 1, y + 1) > 0.01f;
        EXPECT_LT(off, 97 * 61 / 40) << isFloat;
        EXPECT_LT(MaxDiff(*exact, *four, 0, 0, 16, 61), 0.01f);  // wholly behind the axis
        delete exact;
        delete one;
        delete four;
        delete plate;
    }
}

TEST(DirectionalScaleStandardInputs, WarpMaskAndEdgesReachTheProcess)
{
    for (bool isFloat : {false, true}) {
        KImage* plate = Pattern(20, 10, isFloat);
        KImage* mask = KImage::Create(20, 10, isFloat);
        for (int32_t x = 0; x < 20; ++x) mask->SetPixel(x, 0, KPixelF{0.0f, 0.0f, 0.0f, 1.0f});
        ToolFlow t("ZV_DirectionalScale");
        t.SetImage("Image", plate);
        t.SetImage("KMaW", mask);
        t.Set("Scaleall", 1);
        t.Set("Sizealongaxis", 0.5);  // column 19 reads column 28
        t.Set("KFil", 0);
        KImage* out = t.Render();
        EXPECT_EQ(MaxDiff(*out, *plate, 0, 1, 20, 10), 0.0f);  // masked out: their own pixels
        KPixel p, q;
        out->GetPixel(19, 0, p, 0);
        EXPECT_EQ(p.a, 0u);  // black outside
        delete out;
        t.Set("KEdg", 1);
        out = t.Render();
        out->GetPixel(19, 0, p, 0);
        plate->GetPixel(8, 0, q, 0);  // wrapped
        EXPECT_EQ(p.r, q.r);
        delete out;
        delete mask;
        delete plate;
    }
}

// Pattern: a source of grid, triangle and honeycomb cells with lines between,
// fills, and a numbered repeat.
#include "support.h"

using namespace zvtest;

namespace {

enum Paint { kClear, kLine, kFill1, kFill2 };

// Which colour a pixel took, by its red and alpha.
Paint PaintOf(const KPixel& p)
{
    EXPECT_TRUE(p.r == 0 || p.r == 13107 || p.r == 65535) << p.r;
    if (p.a == 0) return kClear;
    if (p.r == 65535) return kLine;
    return p.g == 26214 ? kFill1 : kFill2;
}

// 16 x 16 pixels, cells of 4 pixels from the corner, lines half a cell thick:
// of each 4 pixels only the one at 2 lies inside a cell.
struct Pattern : Tool<KEffectPosition> {
    Pattern() : Tool("ZV_Pattern")
    {
        SetPoint("Center", 0.0f, 0.0f);
        SetFloat("Size", 0.25f);
        SetFloat("Thickness", 0.5f);
    }
    // Pixel (8, 8) lands at (qx, qy) of the pattern.
    void Place(float qx, float qy)
    {
        SetPoint("Center", 0.5f - qx * 0.25f, 0.5f - qy * 0.25f);
        SetFloat("Thickness", 0.1f);
    }
    Paint At(int32_t x, int32_t y) { return PaintOf(zvtest::At<KPixel>(*Make(16, 16, false), x, y)); }
};

TEST(Pattern, GridLinesFillsCheckersTheMatrixAndNumberedCells)
{
    Pattern t;
    EXPECT_EQ(t.At(2, 2), kFill1);
    EXPECT_EQ(t.At(1, 2), kLine);  // a fraction of exactly a quarter is line
    EXPECT_EQ(t.At(6, 4), kLine);
    Img floats = t.Make(16, 16, true);
    EXPECT_EQ(zvtest::At<KPixelF>(*floats, 2, 2).b, 0.6f);
    EXPECT_EQ(zvtest::At<KPixelF>(*floats, 3, 2).g, 1.0f);
    t.SetInt("Fill", 1);
    EXPECT_EQ(t.At(6, 2), kFill2);
    EXPECT_EQ(t.At(6, 6), kFill1);
    // One change at a time: cells half as tall; cell (1, 0) turned to (-1, 1);
    // tilted by 60 degrees, cells twice as tall; half a cell along the pattern's x.
    const struct { const char* label; float value; int32_t x, y; Paint paint; } rows[] = {
        {"Aspect", 2.0f, 2, 1, kFill1}, {"Rotation", 1.5707964f, 6, 2, kFill1},
        {"Rotation X", 1.0471976f, 2, 4, kFill1}, {"Offset", 0.5f, 4, 2, kFill2}};
    for (const auto& r : rows) {
        const float before = t.Field<float>(r.label, kValueFloat);
        t.SetFloat(r.label, r.value);
        EXPECT_EQ(t.At(r.x, r.y), r.paint) << r.label;
        t.SetFloat(r.label, before);
    }
    // Numbered: Count cells each way from the one at the centre; Repeat shows Count.
    t.Apply({{"Fill", 0}, {"Repeat", 1}, {"Count", 1}});
    t.SetPoint("Center", 0.25f, 0.25f);  // cell 0 spans pixels 4 to 7
    EXPECT_EQ(t.At(6, 6), kFill1);
    EXPECT_EQ(t.At(4, 4), kLine);
    EXPECT_EQ(t.At(2, 6), kClear);
    EXPECT_EQ(t.At(10, 6), kClear);
    t.SetInt("Count", 2);
    EXPECT_EQ(t.At(10, 10), kFill1);
    EXPECT_EQ(t.At(14, 10), kClear);
    ExpectShown("ZV_Pattern", {"Count"}, {{nullptr, 0, "0"}, {"Repeat", 1, "1"}});
}

TEST(Pattern, TrianglesAndHoneycombCellsAndLines)
{
    const struct { int32_t type; float qx, qy; Paint paint; } rows[] = {
        {0, 0.0f, 0.0f, kFill2},               // all three coordinates at -1/3: an odd triangle
        {0, 0.57735027f, 1.0f / 3.0f, kFill1}, // the even triangle beside it
        {0, 0.0f, -0.35f, kLine},              // just past the first direction's line
        // Honeycomb: lines at whole coordinates, fill 2 only.
        {2, 0.0f, 0.0f, kFill2},               // a cell's centre
        {2, 0.0f, -1.0f, kLine},               // the middle of its edge
        {2, 1.0f, -1.0f, kFill2},              // the same line past the edge's end
        {2, 1.7320508f, -1.0f, kFill2},        // the next centre, on a gap of that line
    };
    Pattern t;
    t.SetInt("Fill", 1);
    for (const auto& r : rows) {
        t.SetInt("Type", r.type);
        t.Place(r.qx, r.qy);
        EXPECT_EQ(t.At(8, 8), r.paint) << r.type << " at " << r.qx << "," << r.qy;
    }
}

}  // namespace

// Pattern: a source of grid, triangle and honeycomb cells with lines between,
// fills, a numbered repeat, and the same picture from the flow, the command
// and threads.
#include "command_support.h"
#include "host/imageio.h"
#include "position_support.h"

using namespace zvposition;

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
struct Pattern : Tool {
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
    Paint At(int32_t x, int32_t y)
    {
        std::unique_ptr<KImage> img(Make(16, 16, false));
        return PaintOf(zvposition::At<KPixel>(*img, x, y));
    }
};

TEST(PatternDeclarations, ASourceWithItsControls)
{
    zvtest::ExpectInputs("ZV_Pattern", {{"Image", "absent"},
                                        {"Type", "items Triangles|Grid|Honeycomb; default 1"},
                                        {"Rotation", "control Screw; default 0"},
                                        {"Aspect", "default 1; soft 0.001..5"},
                                        {"Offset", "control Screw; default 0; soft 0..1"},
                                        {"ColorFill2Green", "default 0.6"},
                                        {"Count", "default 2; soft 1..16; visible no"}});
    ToolFlow f("ZV_Pattern");
    f.Set("Repeat", 1);
    EXPECT_TRUE(f.Visible("Count"));
}

TEST(PatternGrid, LinesFillsCheckersAndTheMatrix)
{
    Pattern t;
    EXPECT_EQ(t.At(2, 2), kFill1);
    EXPECT_EQ(t.At(1, 2), kLine);  // a fraction of exactly a quarter is line
    EXPECT_EQ(t.At(6, 4), kLine);
    std::unique_ptr<KImage> floats(t.Make(16, 16, true));
    EXPECT_EQ(At<KPixelF>(*floats, 2, 2).b, 0.6f);
    EXPECT_EQ(At<KPixelF>(*floats, 3, 2).g, 1.0f);
    t.SetInt("Fill", 1);
    EXPECT_EQ(t.At(6, 2), kFill2);
    EXPECT_EQ(t.At(6, 6), kFill1);
    // One change at a time: cells half as tall; cell (1, 0) turned to (-1, 1);
    // tilted by 60 degrees, cells twice as tall; half a cell along the pattern's x.
    const struct {
        const char* label;
        float value;
        int32_t x, y;
        Paint paint;
    } rows[] = {{"Aspect", 2.0f, 2, 1, kFill1},
                {"Rotation", 1.5707964f, 6, 2, kFill1},
                {"Rotation X", 1.0471976f, 2, 4, kFill1},
                {"Offset", 0.5f, 4, 2, kFill2}};
    for (const auto& r : rows) {
        const float before = t.Field<float>(r.label, kValueFloat);
        t.SetFloat(r.label, r.value);
        EXPECT_EQ(t.At(r.x, r.y), r.paint) << r.label;
        t.SetFloat(r.label, before);
    }
}

TEST(PatternGrid, NumberedDrawsCountCellsFromTheCenter)
{
    Pattern t;
    t.SetInt("Repeat", 1);
    t.SetInt("Count", 1);
    t.SetPoint("Center", 0.25f, 0.25f);  // cell 0 spans pixels 4 to 7
    EXPECT_EQ(t.At(6, 6), kFill1);
    EXPECT_EQ(t.At(4, 4), kLine);
    EXPECT_EQ(t.At(2, 6), kClear);
    EXPECT_EQ(t.At(10, 6), kClear);
    t.SetInt("Count", 2);
    EXPECT_EQ(t.At(10, 10), kFill1);
    EXPECT_EQ(t.At(14, 10), kClear);
}

TEST(PatternTrianglesAndHoneycomb, CellsAndLines)
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

TEST(PatternSource, FlowCommandLineAndThreads)
{
    ToolFlow f("ZV_Pattern");
    f.Set("Width", 64);
    f.Set("Height", 32);
    auto img = f.Render();
    EXPECT_EQ(img->height, 32);
    // The centre (0.5, 0.5) of a 2:1 picture is pixel (32, 16), on the lines.
    EXPECT_EQ(PaintOf(At<KPixel>(*img, 32, 16)), kLine);
    EXPECT_EQ(PaintOf(At<KPixel>(*img, 35, 19)), kFill1);

    const zvtest::TempDir dir;
    ASSERT_EQ(dir.Run("run Pattern --size 64x32 -o out.png").code, 0);
    std::unique_ptr<KImage> file(KImage::Wrap(host::ReadImage((dir.path / "out.png").string()), true));
    EXPECT_EQ(zvtest::Differ(*file, *img), "");

    Pattern t;
    t.SetInt("Type", 2);
    t.SetFloat("Rotation", 0.3f);
    ExpectThreadsAgree([&](bool isFloat, bool threaded) { return t.Make(53, 31, isFloat, threaded, 3); });
}

}  // namespace

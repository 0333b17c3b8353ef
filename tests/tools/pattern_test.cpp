#include <unistd.h>
#include <cstdlib>
#include <filesystem>
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
        Field<KPoint2>("Cent"_id) = {0.0f, 0.0f};
        Field<float>("Size"_id) = 0.25f;
        Field<float>("Thic"_id) = 0.5f;
    }
    // Pixel (8, 8) lands at (qx, qy) of the pattern.
    void Place(float qx, float qy)
    {
        Field<KPoint2>("Cent"_id) = {0.5f - qx * 0.25f, 0.5f - qy * 0.25f};
        Field<float>("Thic"_id) = 0.1f;
    }
    Paint At(int32_t x, int32_t y)
    {
        std::unique_ptr<KImage> img(Make(16, 16, false));
        return PaintOf(zvposition::At<KPixel>(*img, x, y));
    }
};

TEST(PatternDeclarations, ASourceWithItsControls)
{
    Flow f("ZV_Pattern");
    EXPECT_EQ(f.Input("Image"), nullptr);
    EXPECT_EQ(f.Input("Type")->attrs.items,
              (std::vector<std::string>{"Triangles", "Grid", "Honeycomb"}));
    EXPECT_EQ(*f.Input("Type")->attrs.defaultNumber, 1.0);
    EXPECT_EQ(f.Input("Rotation")->attrs.control, host::Control::Screw);
    EXPECT_EQ(*f.Input("Aspect")->attrs.softMin, 0.001f);
    EXPECT_EQ(f.Input("Offset")->attrs.control, host::Control::Screw);
    EXPECT_EQ(*f.Input("ColorFill2Green")->attrs.defaultNumber, 0.6f);
    EXPECT_EQ(*f.Input("Count")->attrs.softMax, 16.0);
    EXPECT_FALSE(f.Input("Count")->attrs.visible);
    f.Set("Repeat", 1);
    EXPECT_TRUE(f.Input("Count")->attrs.visible);
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
    t.Field<int32_t>("Fill"_id) = 1;
    EXPECT_EQ(t.At(6, 2), kFill2);
    EXPECT_EQ(t.At(6, 6), kFill1);
    t.Field<float>("Aspt"_id) = 2.0f;  // cells half as tall
    EXPECT_EQ(t.At(2, 1), kFill1);
    t.Field<float>("Aspt"_id) = 1.0f;
    t.Field<float>("AngZ"_id) = 1.5707964f;  // cell (1, 0) becomes cell (-1, 1)
    EXPECT_EQ(t.At(6, 2), kFill1);
    t.Field<float>("AngZ"_id) = 0.0f;
    t.Field<float>("AngX"_id) = 1.0471976f;  // tilted by 60 degrees: cells twice as tall
    EXPECT_EQ(t.At(2, 4), kFill1);
    t.Field<float>("AngX"_id) = 0.0f;
    t.Field<float>("Offs"_id) = 0.5f;  // half a cell along the pattern's x
    EXPECT_EQ(t.At(4, 2), kFill2);
}

TEST(PatternGrid, NumberedDrawsCountCellsFromTheCenter)
{
    Pattern t;
    t.Field<int32_t>("Rept"_id) = 1;
    t.Field<int32_t>("RepC"_id) = 1;
    t.Field<KPoint2>("Cent"_id) = {0.25f, 0.25f};  // cell 0 spans pixels 4 to 7
    EXPECT_EQ(t.At(6, 6), kFill1);
    EXPECT_EQ(t.At(4, 4), kLine);
    EXPECT_EQ(t.At(2, 6), kClear);
    EXPECT_EQ(t.At(10, 6), kClear);
    t.Field<int32_t>("RepC"_id) = 2;
    EXPECT_EQ(t.At(10, 10), kFill1);
    EXPECT_EQ(t.At(14, 10), kClear);
}

TEST(PatternTrianglesAndHoneycomb, CellsAndLines)
{
    Pattern t;
    t.Field<int32_t>("Type"_id) = 0;
    t.Field<int32_t>("Fill"_id) = 1;
    t.Place(0.0f, 0.0f);  // all three coordinates at -1/3: an odd triangle
    EXPECT_EQ(t.At(8, 8), kFill2);
    t.Place(0.57735027f, 1.0f / 3.0f);  // the even triangle beside it
    EXPECT_EQ(t.At(8, 8), kFill1);
    t.Place(0.0f, -0.35f);  // just past the first direction's line
    EXPECT_EQ(t.At(8, 8), kLine);

    t.Field<int32_t>("Type"_id) = 2;  // lines at whole coordinates; fill 2 only
    t.Place(0.0f, 0.0f);  // a cell's centre
    EXPECT_EQ(t.At(8, 8), kFill2);
    t.Place(0.0f, -1.0f);  // the middle of its edge
    EXPECT_EQ(t.At(8, 8), kLine);
    t.Place(1.0f, -1.0f);  // the same line past the edge's end
    EXPECT_EQ(t.At(8, 8), kFill2);
    t.Place(1.7320508f, -1.0f);  // the next centre, on a gap of that line
    EXPECT_EQ(t.At(8, 8), kFill2);
}

TEST(PatternSource, FlowCommandLineAndThreads)
{
    Flow f("ZV_Pattern");
    f.Set("Width", 64);
    f.Set("Height", 32);
    auto img = f.Render();
    ASSERT_NE(img, nullptr);
    EXPECT_EQ(img->height, 32);
    // The centre (0.5, 0.5) of a 2:1 picture is pixel (32, 16), on the lines.
    EXPECT_EQ(PaintOf(At<KPixel>(*img, 32, 16)), kLine);
    EXPECT_EQ(PaintOf(At<KPixel>(*img, 35, 19)), kFill1);

    const auto dir = std::filesystem::temp_directory_path() / ("zvpat." + std::to_string(getpid()));
    std::filesystem::create_directories(dir);
    const std::string cmd = "cd '" + dir.string() + "' && '" ZV_COMMAND
                            "' run Pattern --size 64x32 -o out.png > /dev/null 2>&1";
    ASSERT_EQ(std::system(cmd.c_str()), 0);
    std::unique_ptr<KImage> file(KImage::Wrap(host::ReadImage((dir / "out.png").string()), true));
    std::filesystem::remove_all(dir);
    EXPECT_EQ(zvtest::Differ(*file, *img), "");

    Pattern t;
    t.Field<int32_t>("Type"_id) = 2;
    t.Field<float>("AngZ"_id) = 0.3f;
    ExpectThreadsAgree([&](bool isFloat, bool threaded) { return t.Make(53, 31, isFloat, threaded, 3); });
}

}  // namespace

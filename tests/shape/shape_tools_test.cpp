// The shape tools as a user runs them: SVG files through a flow of Loader,
// sBoolean, sOffset, sRender and Saver; what each tool makes from little;
// and broken files or wrong outputs refused with one line and status 2.
#include <sys/wait.h>
#include <cmath>
#include <fstream>
#include <sstream>
#include "host/imageio.h"
#include "shape/svg.h"
#include "support.h"

namespace fs = std::filesystem;

namespace {

struct Result { int code; std::string out, err; };

class ShapeTools : public ::testing::Test {
protected:
    Result Run(const std::string& args)
    {
        const fs::path out = dir.path / ".stdout", err = dir.path / ".stderr";
        const int status = std::system(("cd '" + dir.path.string() + "' && '" ZV_COMMAND "' " + args + " > '" +
                                        out.string() + "' 2> '" + err.string() + "' < /dev/null").c_str());
        return {WEXITSTATUS(status), Slurp(out), Slurp(err)};
    }
    std::string Slurp(const fs::path& p)
    {
        std::stringstream s;
        s << std::ifstream(p).rdbuf();
        return s.str();
    }
    void Put(const std::string& name, const std::string& text) { std::ofstream(dir.path / name) << text; }
    // Area of every shape of a written file, in shape units.
    double AreaOf(const std::string& name)
    {
        const KSvgRead r = KReadSvgFile((dir.path / name).string());
        double area = 0.0;
        for (const auto& l : r.shapes->lists)
            for (KShape* s = l->First(); s; s = NextShape(s)) {
                KShapeArrayList arrays(*s);
                for (KShapeArray* a = arrays.First(); a; a = NextArray(a))
                    for (int32_t i = 0; i < a->Count(); ++i) {
                        const Vector2f p = a->points[i], q = a->points[(i + 1) % a->Count()];
                        area += 0.5 * (double(p.x) * q.y - double(q.x) * p.y);
                    }
            }
        return std::fabs(area);
    }
    const zvtest::TempDir dir;
};

const char* kSquareA = R"(<svg xmlns="http://www.w3.org/2000/svg" viewBox="0 0 200 100">
  <rect x="20" y="20" width="60" height="60" fill="#ff8000"/></svg>)";
const char* kSquareB = R"(<svg xmlns="http://www.w3.org/2000/svg" viewBox="0 0 200 100">
  <rect x="50" y="50" width="60" height="40"/></svg>)";

}  // namespace

TEST_F(ShapeTools, SvgThroughBooleanOffsetAndRenderInAFlow)
{
    Put("a.svg", kSquareA);
    Put("b.svg", kSquareB);
    // The Saver is named before the Loaders it reads from.
    Put("flow.json", R"({"tools": {
      "svg": {"tool": "Saver", "file": "out.svg", "inputs": {"Image": {"from": "grown"}}},
      "png": {"tool": "Saver", "file": "out.png", "inputs": {"Image": {"from": "render"}}},
      "union": {"tool": "sBoolean", "inputs": {"Shape1": {"from": "a"}, "Shape2": {"from": "b"}, "Type": 1}},
      "grown": {"tool": "sOffset", "inputs": {"Shape": {"from": "union"}, "Offset": 0.05}},
      "render": {"tool": "sRender", "inputs": {"Shape": {"from": "grown"}, "Width": 200, "Height": 100}},
      "a": {"tool": "Loader", "file": "a.svg"}, "b": {"tool": "Loader", "file": "b.svg"}}})");
    const Result r = Run("render flow.json");
    ASSERT_EQ(r.code, 0) << r.err;
    // The union, 0.09 + 0.06 - 0.15 x 0.15 in units of the 200-pixel width,
    // with its perimeter of 1.6 grown by 0.05, six mitred corners out and two in.
    EXPECT_NEAR(AreaOf("out.svg"), 0.1275 + 1.6 * 0.05 + 4 * 0.05 * 0.05, 1e-5);
    const std::string svg = Slurp(dir.path / "out.svg");
    EXPECT_NE(svg.find("viewBox=\"0 0 200 100\""), std::string::npos);
    EXPECT_NE(svg.find("fill=\"#ff8000\""), std::string::npos);  // the subject's fill travels
    zvtest::HostImg png(host::ReadImage((dir.path / "out.png").string()));
    ASSERT_EQ(std::make_tuple(png->Width(), png->Height()), std::make_tuple(200, 100));

    // The command line takes a shape from a file and writes one.
    const Result run = Run("run sBoolean Shape1=a.svg Shape2=b.svg Type=0 -o cut.svg");
    ASSERT_EQ(run.code, 0) << run.err;
    EXPECT_NEAR(AreaOf("cut.svg"), 0.15 * 0.15, 1e-6);
}

// Little in: sBoolean without a second shape gives empty lists, sMerge keeps
// every list, an inward offset larger than the shape gives nothing.
TEST_F(ShapeTools, WhatEachToolMakesFromLittle)
{
    Put("a.svg", kSquareA);
    Put("two.svg", R"(<svg xmlns="http://www.w3.org/2000/svg"><g><circle r="5"/></g><g><circle r="9"/></g></svg>)");
    const struct { const char* args; const char* printed; } rows[] = {
        {"run sBoolean Shape1=two.svg", "2 lists, 0 shapes, 0 nodes\n"},
        {"run sMerge Shape1=two.svg Shape2=a.svg", "3 lists, 3 shapes, 30 nodes\n"},
        {"run sOffset Shape=a.svg Sides=1 Offset=0.2", "1 list, 1 shape, 0 nodes\n"},
        {"run sOffset Shape=a.svg Sides=0 Number=2 Keeporiginal=1", "1 list, 1 shape, 20 nodes\n"},
        {"run sKill Shape=a.svg ByLength=1 LengthMaximum=0.4", "1 list, 1 shape, 4 nodes\n"},
        {"run sKill Shape=a.svg ByLength=1 LengthMaximum=0.2", "1 list, 1 shape, 0 nodes\n"},
    };
    for (const auto& row : rows) {
        const Result r = Run(row.args);
        EXPECT_EQ(std::make_tuple(r.code, r.out), std::make_tuple(0, std::string(row.printed))) << row.args << r.err;
    }
}

TEST_F(ShapeTools, BadFilesAndOutputsAreRefusedInOneLine)
{
    Put("broken.svg", "<svg><path d='M0 0 L 1'/></svg>");
    Put("a.svg", kSquareA);
    Put("flow.json", R"({"tools": {"a": {"tool": "Loader", "file": "a.svg"},
      "s": {"tool": "Saver", "file": "a.txt", "inputs": {"Image": {"from": "a"}}}}})");
    const struct { const char* args; const char* err; } rows[] = {
        {"run sOffset Shape=broken.svg -o x.svg",
         "zelvarine: SVG file broken.svg: path data \"M0 0 L 1\" breaks at character 9\n"},
        {"run sOffset Shape=a.png -o x.svg",
         "zelvarine: input Shape of sOffset takes a Shape value from a .svg file, got 'a.png'\n"},
        {"run sOffset Shape=a.svg -o x.csv",
         "zelvarine: -o x.csv: sOffset makes a Shape value, printed on standard output or written to a .txt or .json file\n"},
        {"render flow.json", "zelvarine: Saver s: a Shape value is written to .svg, .exr, .png, .tif, .tiff, .jpg, .jpeg, .dpx, not a.txt\n"},
    };
    for (const auto& row : rows) {
        const Result r = Run(row.args);
        EXPECT_EQ(std::make_tuple(r.code, r.err), std::make_tuple(2, std::string(row.err))) << row.args;
    }
    EXPECT_FALSE(fs::exists(dir.path / "x.svg"));
    EXPECT_FALSE(fs::exists(dir.path / "a.txt"));
    // Unsupported features are named once, and the rest is read.
    Put("text.svg", R"(<svg xmlns="http://www.w3.org/2000/svg"><text>a</text><text>b</text><rect width="9" height="9"/></svg>)");
    const Result r = Run("run sMerge Shape1=text.svg");
    EXPECT_EQ(std::make_tuple(r.code, r.out, r.err),
              std::make_tuple(0, std::string("1 list, 1 shape, 4 nodes\n"), std::string("warning: text.svg: left out <text>\n")));
}

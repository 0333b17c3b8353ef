// The zelvarine command run as a user would, in a temporary folder: exact
// pixels through image files, a flow over a sequence, and every kind of bad
// input (values, sizes, files, frames, outputs) giving status 2, one line
// naming the thing, and no file left behind.
#include <gtest/gtest.h>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <tuple>
#include "app/values.h"
#include "command_support.h"
#include "host/errors.h"
#include "host/image.h"
#include "host/imageio.h"
#include "host/registry.h"

namespace fs = std::filesystem;

namespace {

using Result = zvtest::CommandResult;
using zvtest::Slurp;

class CommandTest : public ::testing::Test {
protected:
    Result Run(const std::string& args) { return dir.Run(args); }

    // Files in the folder, for checking that nothing was left behind.
    std::vector<std::string> Files()
    {
        std::vector<std::string> names;
        for (auto& e : fs::directory_iterator(dir.path)) names.push_back(e.path().filename().string());
        std::sort(names.begin(), names.end());
        return names;
    }

    // A w x h image at 16 bits or in floats, its channels repeating `values`.
    template <class T> void Write(const std::string& name, std::initializer_list<T> values, int w, int h)
    {
        constexpr bool isFloat = std::is_same_v<T, float>;
        host::ImageSpec spec;
        spec.width = w;
        spec.height = h;
        spec.depth = isFloat ? host::DepthFloat32 : host::DepthInt16;
        host::Image* img = host::Image::New(spec);
        std::vector<T> v(values);
        for (int y = 0; y < h; ++y)
            for (int i = 0; i < 4 * w; ++i) {
                if constexpr (isFloat) img->RowF(y)[i] = v[(y * 4 * w + i) % v.size()];
                else img->RowW(y)[i] = v[(y * 4 * w + i) % v.size()];
            }
        host::WriteImage(*img, (dir.path / name).string(), isFloat ? host::FileDepth::Float : host::FileDepth::Int16);
        img->Recycle();
    }
    void WriteInt(const std::string& name, std::initializer_list<uint16_t> rgba, int w, int h)
    {
        Write<uint16_t>(name, rgba, w, h);
    }
    void WriteText(const std::string& name, const std::string& text) { dir.Write(name, text); }

    // Status 2, exactly one line on standard error containing `what`.
    void ExpectBadInput(const Result& r, const std::string& what)
    {
        EXPECT_EQ(r.code, 2) << r.err;
        EXPECT_EQ(std::count(r.err.begin(), r.err.end(), '\n'), 1) << r.err;
        EXPECT_NE(r.err.find(what), std::string::npos) << "wanted '" << what << "' in: " << r.err;
    }

    const zvtest::TempDir dir;
};

TEST_F(CommandTest, BrightnessOnSixteenBitPngAndFloatExrIsExact)
{
    // Opaque: PNG keeps straight colour, which is divided out and back by alpha.
    WriteInt("in.png", {1000, 40000, 65535, 65535, 2, 3, 50000, 65535}, 2, 1);
    Result r = Run("run S_1 Image=in.png Brightness=1.5 -o out.png");
    ASSERT_EQ(r.code, 0) << r.err;
    host::Image* out = host::ReadImage((dir.path / "out.png").string());
    ASSERT_FALSE(out->IsFloat());
    EXPECT_EQ(std::vector<uint16_t>(out->RowW(0), out->RowW(0) + 8),
              (std::vector<uint16_t>{1500, 60000, 65535, 65535, 3, 5, 65535, 65535}));
    out->Recycle();
    // EXR keeps values outside 0 to 1.
    Write<float>("in.exr", {2.0f, -0.5f, 0.25f, 1.0f}, 3, 2);
    r = Run("run \"Sample Brightness\" Image=in.exr Brightness=2 -o out.exr");
    ASSERT_EQ(r.code, 0) << r.err;
    out = host::ReadImage((dir.path / "out.exr").string());
    ASSERT_TRUE(out->IsFloat());
    EXPECT_EQ(out->Width(), 3);
    EXPECT_EQ(std::vector<float>(out->RowF(1), out->RowF(1) + 4), (std::vector<float>{4.0f, -1.0f, 0.5f, 1.0f}));
    out->Recycle();
}

TEST_F(CommandTest, TwoToolFlowOverASequenceWithAKeyedValue)
{
    for (int f = 1; f <= 3; ++f)
        Write<float>("plate." + std::string(3, '0') + std::to_string(f) + ".exr",
                   {0.1f * f, 0.5f, 1.0f, 1.0f}, 2, 2);
    WriteText("flow.json", R"({
      "frames": [1, 3],
      "tools": {
        "plate": { "tool": "Loader", "file": "plate.####.exr" },
        "a": { "tool": "S_1", "inputs": { "Image": { "from": "plate" },
                                          "Brightness": { "keys": { "1": 1.0, "3": 2.0 } } } },
        "b": { "tool": "Sample_Brightness", "inputs": { "Image": { "from": "a.Output" }, "Brightness": 0.5 } },
        "out": { "tool": "Saver", "file": "out.%04d.exr", "inputs": { "Image": { "from": "b" } } }
      }
    })");
    Result r = Run("render flow.json --threads 2");
    ASSERT_EQ(r.code, 0) << r.err;
    EXPECT_EQ(r.err, "");  // no progress bar when not on a terminal
    for (int f = 1; f <= 3; ++f) {
        host::Image* out = host::ReadImage((dir.path / ("out.000" + std::to_string(f) + ".exr")).string());
        const float k = 1.0f + 0.5f * (f - 1);  // the keyed brightness
        EXPECT_FLOAT_EQ(out->RowF(1)[0], 0.1f * f * k * 0.5f) << f;
        EXPECT_FLOAT_EQ(out->RowF(0)[2], k * 0.5f) << f;
        out->Recycle();
    }
    r = Run("render flow.json --frames 2-2");
    EXPECT_EQ(r.code, 0) << r.err;
}

TEST_F(CommandTest, ToolsAndInfoListWhatTheHostBuilds)
{
    Result r = Run("tools --json");
    ASSERT_EQ(r.code, 0);
    EXPECT_NE(r.out.find("\"short\": \"S_1\""), std::string::npos);
    EXPECT_NE(r.out.find("\"category\": \"Samples\""), std::string::npos);
    r = Run("info S_1 --json");
    ASSERT_EQ(r.code, 0);
    for (const char* s : {"\"id\": \"Brightness\"", "\"softMax\": 2.0", "\"page\": \"Zelvarine Controls\"",
                          "\"slots\": 1", "\"items\": [", "\"visible\": false"})
        EXPECT_NE(r.out.find(s), std::string::npos) << s;
    r = Run("info Sample_Brightness");
    ASSERT_EQ(r.code, 0);
    EXPECT_NE(r.out.find("Pre-Divide / Post-Multiply"), std::string::npos);
    EXPECT_EQ(Run("run --help").code, 0);
}

TEST_F(CommandTest, CommandLineErrorsNameTheThing)
{
    WriteInt("in.png", {1, 2, 3, 4}, 1, 1);
    WriteText("bad.png", "this is not a picture");
    ExpectBadInput(Run("run NoSuchTool -o out.png"), "unknown tool: NoSuchTool");
    ExpectBadInput(Run("run S_1 Image=in.png Sparkle=1 -o out.png"), "unknown input Sparkle");
    ExpectBadInput(Run("run S_1 Image=in.png Brightness=bright -o out.png"), "expects a number, got 'bright'");
    ExpectBadInput(Run("run S_1 Image=nothere.png -o out.png"), "file not found: nothere.png");
    ExpectBadInput(Run("run S_1 Image=bad.png -o out.png"), "cannot read image bad.png");
    ExpectBadInput(Run("run S_1 Image=in.png -o nofolder/out.png"), "nofolder");
    ExpectBadInput(Run("run S_1 Image=in.png -o in.png"), "would overwrite the input in.png");
    ExpectBadInput(Run("run S_1 Image=in.png -o out.txt"), "not an image file name");
    ExpectBadInput(Run("render missing.json"), "flow file not found: missing.json");
    ExpectBadInput(Run("run S_1 --bogus"), "bogus");
    EXPECT_EQ(Files(), (std::vector<std::string>{"bad.png", "in.png"}));
}

TEST_F(CommandTest, FlowErrorsAreFoundBeforeAnyFrameRenders)
{
    WriteInt("plate.0001.png", {1, 2, 3, 4}, 1, 1);
    WriteInt("plate.0002.png", {1, 2, 3, 4}, 1, 1);
    auto flow = [&](const std::string& tools, const std::string& frames = "[1, 2]") {
        WriteText("flow.json", "{ \"frames\": " + frames + ", \"tools\": {" + tools + "} }");
        return Run("render flow.json");
    };
    const std::string loader = R"("plate": { "tool": "Loader", "file": "plate.####.png" })";
    const std::string saver = R"("out": { "tool": "Saver", "file": "out.####.png", "inputs": { "Image": { "from": "b" } } })";
    ExpectBadInput(flow(loader + R"(, "b": { "tool": "Glow" }, )" + saver), "unknown tool: Glow");
    ExpectBadInput(flow(loader + R"(, "b": { "tool": "S_1", "inputs": { "Image": { "from": "plate" }, "Glow": 1 } }, )" + saver),
                   "unknown input Glow of tool b (see: zelvarine info \"Sample Brightness\")");
    ExpectBadInput(flow(loader + R"(, "b": { "tool": "S_1", "inputs": { "Image": { "from": "plate" }, "Brightness": "high" } }, )" + saver),
                   "input Brightness of tool b expects a number, got a text");
    ExpectBadInput(flow(loader + R"(, "b": { "tool": "S_1", "inputs": { "Image": { "from": "ghost" } } }, )" + saver),
                   "connected to a missing tool: ghost");
    ExpectBadInput(flow(R"("a": { "tool": "S_1", "inputs": { "Image": { "from": "b" } } },
                           "b": { "tool": "S_1", "inputs": { "Image": { "from": "a" } } }, )" + saver),
                   "cycle in flow");
    ExpectBadInput(flow(loader + R"(, "b": { "tool": "S_1", "inputs": { "Image": { "from": "plate" } } }, )" + saver, "[1, 3]"),
                   "missing frame 3 of");
    ExpectBadInput(flow(R"("plate": { "tool": "Loader", "file": "nothere.png" }, "b": { "tool": "S_1", "inputs": { "Image": { "from": "plate" } } }, )" + saver),
                   "file not found");
    ExpectBadInput(flow(loader + R"(, "b": { "tool": "S_1", "inputs": { "Image": { "from": "plate" } } },
                           "out": { "tool": "Saver", "file": "plate.####.png", "inputs": { "Image": { "from": "b" } } })"),
                   "would overwrite its input");
    WriteText("flow.json", "{ \"tools\": ");
    ExpectBadInput(Run("render flow.json"), "not valid JSON");
    for (auto& f : Files()) EXPECT_TRUE(f.rfind("plate.", 0) == 0 || f == "flow.json") << f;
}

TEST_F(CommandTest, AFailedFrameStopsTheRenderAndKeepsEarlierFrames)
{
    for (const char* name : {"plate.0001.png", "plate.0002.png", "plate.0003.png"})
        WriteInt(name, {1, 2000, 3, 65535, 5000, 60000, 70, 65535, 9, 10, 11, 65535}, 64, 64);
    // Frame 2's header reads but its pixels are cut off.
    const std::string whole = Slurp(dir.path / "plate.0002.png");
    std::ofstream(dir.path / "plate.0002.png", std::ios::binary) << whole.substr(0, whole.size() - 30);
    WriteText("flow.json", R"({ "frames": [1, 3], "tools": {
        "plate": { "tool": "Loader", "file": "plate.####.png" },
        "out": { "tool": "Saver", "file": "out.####.png", "inputs": { "Image": { "from": "plate" } } } } })");
    Result r = Run("render flow.json");
    ExpectBadInput(r, "frame 2");
    EXPECT_TRUE(fs::exists(dir.path / "out.0001.png"));
    EXPECT_FALSE(fs::exists(dir.path / "out.0002.png"));
    EXPECT_FALSE(fs::exists(dir.path / "out.0003.png"));
    for (auto& f : Files()) EXPECT_EQ(f.find(".tmp"), std::string::npos) << f;
}

// Rows of a command and what its one line of bad input says.
using Refusals = std::vector<std::pair<std::string, std::string>>;

TEST_F(CommandTest, ValuesAreHeldToWhatTheInputDeclares)
{
    WriteInt("in.png", {1000, 2000, 3000, 65535}, 4, 2);
    for (auto& [args, what] : Refusals{
             {"run Hue/Saturation Image=in.png LightnessAdd=nan -o o.png",
              "input LightnessAdd of Hue/Saturation takes a finite number, got nan"},
             {"run Hue/Saturation Image=in.png LightnessAdd=-inf -o o.png", "takes a finite number, got -inf"},
             {"run Hue/Saturation Image=in.png LightnessAdd=1e309 -o o.png", "takes a finite number, got inf"},
             {"run Hue/Saturation Image=in.png LightnessAdd=1e39 -o o.png", "takes a finite number, got 1e+39"},
             {"run Invert Image=in.png Type=3 -o o.png",
              "input Type of Invert takes one of 0 Color, 1 Luminance, 2 Hue, got 3"},
             {"run Invert Image=in.png Type=2.5 -o o.png", "2 Hue, got 2.5"},
             {"run Transform Image=in.png KFil=7 -o o.png", "input KFil of Transform takes one of 0 None, 1 Pixel, 2 Area, got 7"},
             {"run Invert Image=in.png KCCA=2 -o o.png", "input KCCA of Invert takes 0 (off) or 1 (on), got 2"},
             {"run Random Seed=7.5", "input Seed of Random takes a whole number from -16777216 to 16777216, got 7.5"},
             {"run Pattern --size 4x4 Center=nan,0.5 -o o.png", "input Center of Pattern takes a point of finite numbers, got nan,0.5"},
             {"run Random --time inf", "--time: inf is not a time from -16777216 to 16777216"},
             {"run Random --time 1e9", "--time: 1e+09 is not a time"},
         })
        ExpectBadInput(Run(args), what);
    auto flow = [&](const std::string& inputs) {
        WriteText("flow.json", R"({ "frames": [1, 2], "tools": {
            "p": { "tool": "Pattern", "inputs": { "Width": 4, "Height": 4, )" + inputs + R"( } },
            "out": { "tool": "Saver", "file": "out.####.png", "inputs": { "Image": { "from": "p" } } } } })");
        return Run("render flow.json");
    };
    for (auto& [inputs, what] : Refusals{
             {R"("Size": 1e999)", "flow file flow.json: number overflow parsing '1e999'"},
             {R"("Size": 1e300)", "input Size of tool p takes a finite number, got 1e+300"},
             {R"("Type": 5)", "input Type of tool p takes one of 0 Triangles, 1 Grid, 2 Honeycomb, got 5"},
             {R"("Type": { "keys": { "1": 0, "2": 4 } })", "input Type of tool p at key 2 takes one of"},
             {R"("Size": { "keys": { "nan": 0.1 } })", "input Size of tool p: key time: nan is not a time"},
             {R"("Rotation": { "keys": { "1e30": 0 } })", "key time: 1e+30 is not a time"},
         })
        ExpectBadInput(flow(inputs), what);
    EXPECT_EQ(Files(), (std::vector<std::string>{"flow.json", "in.png"}));
    // Beyond a hard limit a value is refused, not quietly changed; angles say why.
    ExpectBadInput(Run("run Pattern --size 8x6 Rotation=400 -o over.png"),
                   "input Rotation of Pattern takes 0..360, got 400: angles run from 0 to 360 degrees");
    ExpectBadInput(Run("run Transform Image=in.png KUnd=17 -o over.png"),
                   "input KUnd of Transform takes at most 16, got 17");
}

TEST_F(CommandTest, SizesAndFilesBeyondTheLimitsAreRefusedBeforeAllocating)
{
    WriteText("big.txt", "");
    fs::resize_file(dir.path / "big.txt", (16 << 20) + 1);
    WriteText("huge.ppm", "P6\n40000 40000\n255\n");  // a header, no pixels
    for (auto& [args, what] : Refusals{
             {"run Pattern --size 99999999999x1 -o p.png",
              "--size 99999999999x1: Width takes 1..32768, got 99999999999: images are 1 to 32768 pixels a side"},
             {"run Pattern --size 100000x100000 -o p.png", "Width takes 1..32768, got 100000"},
             {"run Pattern Width=100000 Height=100000 -o p.png", "input Width of Pattern takes 1..32768, got 100000"},
             {"run Pattern --size 20000x20000 -o p.png",
              "--size 20000x20000: 20000x20000 is more than 268435456 pixels (16384x16384)"},
             {"run Pattern Width=20000 Height=20000 -o p.png", "cannot make an image: 20000x20000 is more than"},
             {"run Pattern --size 4x -o p.png", "--size takes WIDTHxHEIGHT, got '4x'"},
             {"run \"From file\" Filename=/dev/zero", "file /dev/zero is not a regular file (input Filename of tool From file)"},
             {"run \"From file\" Filename=big.txt", "file big.txt is larger than 16 MiB"},
             {"run Invert Image=huge.ppm -o p.png", "cannot read image huge.ppm: 40000x40000 is larger than 32768 pixels a side"},
         })
        ExpectBadInput(Run(args), what);
}

TEST_F(CommandTest, GeneratorsMakeTheSizeAskedForOrRefuseIt)
{
    for (auto& [args, what] : Refusals{
             {"run Pattern --size 1x1 -o p.png", "--size 1x1: Height takes 2..32768, got 1: generators make images at least 2 rows high"},
             {"run Pattern --size 7x1 -o p.png", "generators make images at least 2 rows high"},
             {"run Blobs Height=1 -o p.png", "input Height of Blobs takes 2..32768, got 1: generators make images at least 2 rows high"},
             {"run Pattern --size 0x4 -o p.png", "Width takes 1..32768, got 0"},
         })
        ExpectBadInput(Run(args), what);
    for (const char* tool : {"Pattern", "Blobs"}) {
        ASSERT_EQ(Run(std::string("run ") + tool + " --size 7x2 -o p.png").code, 0) << tool;
        host::Image* img = host::ReadImage((dir.path / "p.png").string());
        EXPECT_EQ(std::make_pair(img->Width(), img->Height()), std::make_pair(7, 2)) << tool;
        img->Recycle();
    }
    EXPECT_NE(Run("info Pattern").out.find("2!..32768!"), std::string::npos);
}

TEST_F(CommandTest, PathsThatCannotBeUsedAreBadInputNotOurFault)
{
    fs::create_directory(dir.path / "folder");
    fs::create_directory_symlink("loop", dir.path / "loop");  // a link to itself
    for (auto& [args, what] : Refusals{
             {"render folder", "flow file folder is a folder"},
             {"run \"From file\" Filename=folder", "file folder is a folder"},
             {"run Invert Image=folder -o o.png", "file folder is a folder"},
             {"render loop/flow.json", "cannot read flow file loop/flow.json: Too many levels of symbolic links"},
             {"run Invert Image=loop/in.png -o o.png", "Too many levels of symbolic links"},
             {"run Pattern --size 4x4 -o loop/o.png", "Too many levels of symbolic links"},
         })
        ExpectBadInput(Run(args), what);
    if (geteuid() != 0) {  // root enters any folder
        WriteText("folder/flow.json", "{}");
        fs::permissions(dir.path / "folder", fs::perms::none);
        ExpectBadInput(Run("render folder/flow.json"), "Permission denied");
        fs::permissions(dir.path / "folder", fs::perms::owner_all);
    }
}

TEST_F(CommandTest, FrameRangesAreWholeAndBounded)
{
    auto flow = [&](const std::string& frames, const std::string& file = "out.####.png") {
        WriteText("flow.json", R"({ "frames": )" + frames + R"(, "tools": {
            "p": { "tool": "Pattern", "inputs": { "Width": 4, "Height": 4 } },
            "out": { "tool": "Saver", "file": ")" + file + R"(", "inputs": { "Image": { "from": "p" } } } } })");
    };
    flow("[1, 2]");
    for (auto& [args, what] : Refusals{
             {"render flow.json --frames 2147483647-2147483647",
              "--frames 2147483647-2147483647: frame 2147483647 is outside -16777216..16777216"},
             {"render flow.json --frames 1-2000000", "--frames 1-2000000: 2000000 frames; a render makes at most 1000000"},
             {"render flow.json --frames 1.5-2", "--frames takes A or A-B, whole frame numbers, got '1.5-2'"},
             {"render flow.json --frames 1-", "got '1-'"},
             {"render flow.json --frames 3-2", "the first frame 3 is after the last 2"},
             {"render flow.json --threads 0", "--threads takes a count from 1 to 1024, got '0'"},
             {"render flow.json --threads 99999999999", "--threads takes a count from 1 to 1024"},
         })
        ExpectBadInput(Run(args), what);
    flow("[1, 2000000000]");
    ExpectBadInput(Run("render flow.json"), "flow.json: \"frames\": frame 2000000000 is outside -16777216..16777216");
    flow("[1, 2]");
    Result r = Run("render flow.json --frames 16777216");
    EXPECT_EQ(r.code, 0) << r.err;
    EXPECT_EQ(r.out, "wrote out.16777216.png .. out.16777216.png\n");
}

TEST_F(CommandTest, OutputsAreNeverSilentlyOverwrittenOrIgnored)
{
    auto flow = [&](const std::string& frames, const std::string& savers) {
        WriteText("flow.json", R"({ "frames": )" + frames + R"(, "tools": {
            "p": { "tool": "Pattern", "inputs": { "Width": 4, "Height": 4 } }, )" + savers + "} }");
        return Run("render flow.json");
    };
    const std::string a = R"("a": { "tool": "Saver", "file": "out.####.png", "inputs": { "Image": { "from": "p" } } })";
    ExpectBadInput(flow("[1, 2]", a + R"(, "b": { "tool": "Saver", "file": "out.%04d.png", "inputs": { "Image": { "from": "p" } } })"),
                   "Savers a and b would both write out.0001.png");
    const std::string still = R"("still": { "tool": "Saver", "file": "out.png", "inputs": { "Image": { "from": "p" } } })";
    ExpectBadInput(flow("[1, 3]", still), "Saver still would write out.png over again on each of 3 frames: put # in its file name");
    EXPECT_EQ(Files(), (std::vector<std::string>{"flow.json"}));
    EXPECT_EQ(flow("[2, 2]", still).code, 0);

    ExpectBadInput(Run("run Random -o x.png"),
                   "-o x.png: Random makes a number, printed on standard output or written to a .txt or .json file");
    const Result printed = Run("run Random Seed=7 --time 12");
    ASSERT_EQ(printed.code, 0);
    ASSERT_EQ(Run("run Random Seed=7 --time 12 -o v.txt").code, 0);
    EXPECT_EQ(Slurp(dir.path / "v.txt"), printed.out);
    ASSERT_EQ(Run("run Random Seed=7 --time 12 -o v.json").code, 0);
    EXPECT_EQ(Slurp(dir.path / "v.json"), "{\n  \"Number\": " + printed.out.substr(0, printed.out.size() - 1) + "\n}\n");
}

TEST_F(CommandTest, AutoDepthKeepsTheBitsOfTheFileReadIn)
{
    host::ImageSpec spec;
    spec.width = spec.height = 2;
    host::Image* eight = host::Image::New(spec);
    for (int i = 0; i < 16; ++i) eight->RowW(i / 8)[i % 8] = 257 * (i * 16);  // 8-bit codes
    host::WriteImage(*eight, (dir.path / "in8.png").string(), host::FileDepth::Int8);
    eight->Recycle();
    WriteText("flow.json", R"({ "frames": [1, 1], "tools": {
        "plate": { "tool": "Loader", "file": "in8.png" },
        "inv": { "tool": "Invert", "inputs": { "Image": { "from": "plate" } } },
        "png": { "tool": "Saver", "file": "out.####.png", "inputs": { "Image": { "from": "inv" } } },
        "exr": { "tool": "Saver", "file": "out.####.exr", "inputs": { "Image": { "from": "plate" } } } } })");
    ASSERT_EQ(Run("render flow.json").code, 0);
    ASSERT_EQ(Run("run Invert Image=in8.png -o run.png").code, 0);
    ASSERT_EQ(Run("run Pattern --size 4x4 -o made.png").code, 0);
    for (auto [file, bits, isFloat] : {std::tuple{"out.0001.png", 8, false}, {"run.png", 8, false},
                                       {"out.0001.exr", 16, true}, {"made.png", 16, false}}) {
        host::Image* img = host::ReadImage((dir.path / file).string());
        EXPECT_EQ(img->FileBits(), bits) << file;
        EXPECT_EQ(img->IsFloat(), isFloat) << file;
        img->Recycle();
    }
}

TEST_F(CommandTest, FirstStepsGetPlainAnswers)
{
    ExpectBadInput(Run("frobnicate"), "unknown command: frobnicate");
    Result r = Run("--version");
    EXPECT_EQ(r.code, 0);
    EXPECT_EQ(r.out.rfind("zelvarine ", 0), 0u) << r.out;
    // Number and text tools list only what they use; --all shows the rest.
    r = Run("info Random");
    EXPECT_EQ(r.out.find("KCCR"), std::string::npos);
    EXPECT_EQ(r.out.find("ZVMT"), std::string::npos);
    EXPECT_EQ(r.out.find("Standard controls"), std::string::npos);
    EXPECT_NE(Run("info Random --all").out.find("KCCR"), std::string::npos);
    EXPECT_NE(Run("info Invert").out.find("Standard controls: RGBA switches, super-sampling, super-sampling filter size, "
                                          "pre-divide / post-multiply, trails, multi-threading\n"),
              std::string::npos);
    EXPECT_NE(Run("info Bend").out.find("Standard controls: RGBA switches, under-sampling, filtering, edges, "
                                        "warp mask, trails, multi-threading\n"),
              std::string::npos);
    ExpectBadInput(Run("run Hue/Saturation Sparkle=1"),
                   "unknown input Sparkle of Hue/Saturation (see: zelvarine info \"Hue/Saturation\")");
    // The README's first example keeps an opaque plate opaque.
    WriteInt("plate.png", {1000, 40000, 65535, 65535}, 2, 2);
    ASSERT_EQ(Run("run Invert Image=plate.png Type=1 KCCA=0 -o inverted.exr").code, 0);
    host::Image* out = host::ReadImage((dir.path / "inverted.exr").string());
    EXPECT_EQ(out->RowF(0)[3], 1.0f);
    out->Recycle();
}

TEST(AppValues, AmbiguousShortNameListsTheCandidates)
{
    for (const char* name : {"Twin One", "Twin Two"}) {
        host::Registration r;
        r.className = std::string("Test_") + name;
        r.name = name;
        r.shortName = "Twn";
        r.category = "Tests";
        r.hostTool = true;
        host::Registry::Get().Register(r);
    }
    try {
        app::ResolveTool("Twn");
        FAIL() << "no error";
    } catch (const host::BadInput& e) {
        EXPECT_STREQ(e.what(), "ambiguous short name Twn: Twin One (Test_Twin One), Twin Two (Test_Twin Two)");
    }
    EXPECT_EQ(app::ResolveTool("Twin Two").name, "Twin Two");
}

}  // namespace

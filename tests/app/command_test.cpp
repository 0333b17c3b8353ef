// The zelvarine command run as a user would, in a temporary folder: exact
// pixels through image files, a flow over a sequence, and every error case
// giving status 2, one line naming the thing, and no file left behind.
#include <gtest/gtest.h>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
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
                   "unknown input Glow of b");
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

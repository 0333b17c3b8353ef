// The zelvarine command run as a user would, in a temporary folder: exact
// pixels through image files, a flow over a sequence, what it lists, and every
// kind of bad input (values, sizes, files, frames, outputs) giving status 2,
// one line naming the thing, and no file left behind.
#include <sys/wait.h>
#include <sstream>
#include <tuple>
#include "app/values.h"
#include "host/errors.h"
#include "host/imageio.h"
#include "support.h"

namespace fs = std::filesystem;

namespace {

using zvtest::HostImg;

std::string Slurp(const fs::path& p)
{
    std::stringstream s;
    s << std::ifstream(p).rdbuf();
    return s.str();
}

struct Result { int code; std::string out, err; };

class CommandTest : public ::testing::Test {
protected:
    // Runs `zelvarine ARGS` in the folder with no standard input; what it printed is kept.
    Result Run(const std::string& args)
    {
        const fs::path out = dir.path / ".stdout", err = dir.path / ".stderr";
        const int status = std::system(("cd '" + dir.path.string() + "' && '" ZV_COMMAND "' " + args + " > '" +
                                        out.string() + "' 2> '" + err.string() + "' < /dev/null").c_str());
        Result r{WEXITSTATUS(status), Slurp(out), Slurp(err)};
        fs::remove(out);
        fs::remove(err);
        return r;
    }

    // Files in the folder, for checking that nothing was left behind.
    std::vector<std::string> Files()
    {
        std::vector<std::string> names;
        for (auto& e : fs::directory_iterator(dir.path)) names.push_back(e.path().filename().string());
        std::sort(names.begin(), names.end());
        return names;
    }

    // A w x h image whose channels repeat `values`: 16-bit codes, or floats.
    template <class T> void Write(const std::string& name, std::initializer_list<T> values, int w, int h)
    {
        const std::vector<T> v(values);
        HostImg img = zvtest::Make(w, h, std::is_floating_point_v<T>,
                                   [&](int x, int y, int c) { return v[(4 * (y * w + x) + c) % v.size()]; });
        host::WriteImage(*img, (dir.path / name).string(),
                         img->IsFloat() ? host::FileDepth::Float : host::FileDepth::Int16);
    }
    HostImg Read(const std::string& name) { return HostImg(host::ReadImage((dir.path / name).string())); }
    void WriteFlow(const std::string& frames, const std::string& tools)
    {
        dir.Write("flow.json", "{ \"frames\": " + frames + ", \"tools\": { " + tools + " } }");
    }
    const std::string patternSaved = R"("p": { "tool": "Pattern", "inputs": { "Width": 4, "Height": 4 } },
        "out": { "tool": "Saver", "file": "out.####.png", "inputs": { "Image": { "from": "p" } } })";

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
    Write("in.png", {1000, 40000, 65535, 65535, 2, 3, 50000, 65535}, 2, 1);
    Result r = Run("run S_1 Image=in.png Brightness=1.5 -o out.png");
    ASSERT_EQ(r.code, 0) << r.err;
    HostImg out = Read("out.png");
    ASSERT_FALSE(out->IsFloat());
    EXPECT_EQ(std::vector<uint16_t>(out->RowW(0), out->RowW(0) + 8),
              (std::vector<uint16_t>{1500, 60000, 65535, 65535, 3, 5, 65535, 65535}));
    // EXR keeps values outside 0 to 1; alpha is left alone.
    Write("in.exr", {2.0f, -0.5f, 0.25f, 0.5f}, 3, 2);
    r = Run("run \"Sample Brightness\" Image=in.exr Brightness=2 -o out.exr");
    ASSERT_EQ(r.code, 0) << r.err;
    out = Read("out.exr");
    ASSERT_TRUE(out->IsFloat());
    EXPECT_EQ(out->Width(), 3);
    EXPECT_EQ(std::vector<float>(out->RowF(1), out->RowF(1) + 4), (std::vector<float>{4.0f, -1.0f, 0.5f, 0.5f}));
}

TEST_F(CommandTest, TwoToolFlowOverASequenceWithAKeyedValue)
{
    for (int f = 1; f <= 3; ++f) Write("plate.000" + std::to_string(f) + ".exr", {0.1f * f, 0.5f, 1.0f, 1.0f}, 2, 2);
    WriteFlow("[1, 3]", R"(
        "plate": { "tool": "Loader", "file": "plate.####.exr" },
        "a": { "tool": "S_1", "inputs": { "Image": { "from": "plate" },
                                          "Brightness": { "keys": { "1": 1.0, "3": 2.0 } } } },
        "b": { "tool": "Sample_Brightness", "inputs": { "Image": { "from": "a.Output" }, "Brightness": 0.5 } },
        "out": { "tool": "Saver", "file": "out.%04d.exr", "inputs": { "Image": { "from": "b" } } })");
    Result r = Run("render flow.json --threads 2");
    ASSERT_EQ(r.code, 0) << r.err;
    EXPECT_EQ(r.err, "");  // no progress bar when not on a terminal
    for (int f = 1; f <= 3; ++f) {
        HostImg out = Read("out.000" + std::to_string(f) + ".exr");
        const float k = 1.0f + 0.5f * (f - 1);  // the keyed brightness
        EXPECT_FLOAT_EQ(out->RowF(1)[0], 0.1f * f * k * 0.5f) << f;
        EXPECT_FLOAT_EQ(out->RowF(0)[2], k * 0.5f) << f;
    }
    r = Run("render flow.json --frames 2-2");
    EXPECT_EQ(r.code, 0) << r.err;
}

// A time tool over a sequence from the command line: each output frame the
// mean of the frames from it on that exist; refusals name what was wrong.
TEST_F(CommandTest, ATimeToolRunsOverASequenceFrameByFrame)
{
    for (int f = 1; f <= 4; ++f) Write("shot.000" + std::to_string(f) + ".exr", {0.25f * f, 0.0f, 0.0f, 1.0f}, 2, 2);
    Result r = Run("run Average Image=shot.####.exr Numberofframes=2 Nonexistingframes=1 --frames 2-4 -o avg.####.exr");
    ASSERT_EQ(r.code, 0) << r.err;
    EXPECT_EQ(r.err, "");  // no progress line when not on a terminal
    const float want[] = {0.625f, 0.875f, 1.0f};  // frame 4 has no frame 5 to average with
    for (int f = 2; f <= 4; ++f) EXPECT_FLOAT_EQ(Read("avg.000" + std::to_string(f) + ".exr")->RowF(0)[0], want[f - 2]);
    EXPECT_EQ(Run("run Average Image=shot.####.exr --time 3 --cache-mb 0 -o one.exr").code, 0);
    const std::pair<const char*, const char*> rows[] = {
        {"run Average Image=shot.####.exr --frames 1-2 -o avg.exr", "would be written over again on each of 2 frames"},
        {"run Average Image=none.####.exr --frames 1-2 -o a.####.exr", "no file of the sequence none.####.exr"},
        {"run Average Image=shot.####.exr --frames 5-6 -o a.####.exr", "frame 5: Average made no image"},
        {"run Average Image=shot.####.exr --frames 2-1 -o a.####.exr", "the first frame 2 is after the last 1"},
        {"run Average Image=shot.####.exr --cache-mb -1 -o a.exr", "--cache-mb takes a whole number of megabytes"},
        {"run Average Image=shot.####.exr --depth float -o a.exr", "--depth converts single images"},
        {"run Random --frames 1-2", "--frames is for tools that make images"},
    };
    for (const auto& [args, what] : rows) ExpectBadInput(Run(args), what);
    EXPECT_FALSE(fs::exists(dir.path / "a.0005.exr"));
}

TEST_F(CommandTest, ToolsInfoAndVersionGivePlainAnswers)
{
    // What each answer holds, or with "!" does not: number and text tools
    // list only what they use; --all shows the rest.
    const std::pair<const char*, std::vector<std::string>> rows[] = {
        {"tools --json", {"\"short\": \"S_1\"", "\"category\": \"Samples\""}},
        {"info S_1 --json", {"\"id\": \"Brightness\"", "\"softMax\": 2.0", "\"page\": \"Zelvarine Controls\"",
                             "\"slots\": 1", "\"items\": [", "\"visible\": false"}},
        {"info Sample_Brightness", {"Pre-Divide / Post-Multiply"}}, {"info Pattern", {"2!..32768!"}},
        {"info Random", {"!KCCR", "!ZVMT", "!Standard controls"}}, {"info Random --all", {"KCCR"}},
        {"info Invert", {"Standard controls: RGBA switches, super-sampling, super-sampling filter size, "
                         "pre-divide / post-multiply, trails, multi-threading\n"}},
        {"info Bend", {"Standard controls: RGBA switches, under-sampling, filtering, edges, warp mask, trails, multi-threading\n"}},
    };
    for (const auto& [args, parts] : rows) {
        const Result got = Run(args);
        EXPECT_EQ(got.code, 0) << args;
        for (const std::string& part : parts) {
            const bool absent = part[0] == '!';
            EXPECT_EQ(got.out.find(part.substr(absent)) == std::string::npos, absent) << args << ": " << part;
        }
    }
    EXPECT_EQ(Run("run --help").code, 0);
    const Result version = Run("--version");
    EXPECT_EQ(version.code, 0);
    EXPECT_EQ(version.out.rfind("zelvarine ", 0), 0u) << version.out;
    // The README's first example keeps an opaque plate opaque.
    Write("plate.png", {1000, 40000, 65535, 65535}, 2, 2);
    ASSERT_EQ(Run("run Invert Image=plate.png Type=1 KCCA=0 -o inverted.exr").code, 0);
    EXPECT_EQ(Read("inverted.exr")->RowF(0)[3], 1.0f);
}

// Every kind of bad input on the command line, before anything is written:
// names, values held to what each input declares (beyond a hard limit refused,
// not quietly changed), sizes and files beyond the limits refused before
// allocating, paths that cannot be used, frame ranges, and outputs.
TEST_F(CommandTest, CommandLineErrorsNameTheThingAndLeaveNothingBehind)
{
    Write("in.png", {1000, 2000, 3000, 65535}, 4, 2);
    dir.Write("bad.png", "this is not a picture");
    dir.Write("big.txt", "");
    fs::resize_file(dir.path / "big.txt", (16 << 20) + 1);
    dir.Write("huge.ppm", "P6\n40000 40000\n255\n");  // a header, no pixels
    fs::create_directory(dir.path / "folder");
    fs::create_directory_symlink("loop", dir.path / "loop");  // a link to itself
    WriteFlow("[1, 2]", patternSaved);
    dir.Write("ragged.csv", "item,a\n0,1\n1,2,3\n");
    dir.Write("quat.json", R"({"channels":[{"name":"a","type":"Quat","values":[]}]})");
    const std::pair<const char*, const char*> rows[] = {
        {"frobnicate", "unknown command: frobnicate"},
        {"run NoSuchTool -o out.png", "unknown tool: NoSuchTool"},
        {"run S_1 Image=in.png Sparkle=1 -o out.png", "unknown input Sparkle"},
        {"run Hue/Saturation Sparkle=1", "unknown input Sparkle of Hue/Saturation (see: zelvarine info \"Hue/Saturation\")"},
        {"run S_1 Image=in.png Brightness=bright -o out.png", "expects a number, got 'bright'"},
        {"run S_1 --bogus", "bogus"},
        // Values.
        {"run Hue/Saturation Image=in.png LightnessAdd=nan -o o.png",
         "input LightnessAdd of Hue/Saturation takes a finite number, got nan"},
        {"run Hue/Saturation Image=in.png LightnessAdd=1e309 -o o.png", "takes a finite number, got inf"},
        {"run Hue/Saturation Image=in.png LightnessAdd=1e39 -o o.png", "takes a finite number, got 1e+39"},
        {"run Invert Image=in.png Type=3 -o o.png", "input Type of Invert takes one of 0 Color, 1 Luminance, 2 Hue, got 3"},
        {"run Invert Image=in.png Type=2.5 -o o.png", "2 Hue, got 2.5"},
        {"run Transform Image=in.png KFil=7 -o o.png", "input KFil of Transform takes one of 0 None, 1 Pixel, 2 Area, got 7"},
        {"run Invert Image=in.png KCCA=2 -o o.png", "input KCCA of Invert takes 0 (off) or 1 (on), got 2"},
        {"run Random Seed=7.5", "input Seed of Random takes a whole number from -16777216 to 16777216, got 7.5"},
        {"run Pattern --size 4x4 Center=nan,0.5 -o o.png", "input Center of Pattern takes a point of finite numbers, got nan,0.5"},
        {"run Pattern --size 8x6 Rotation=400 -o o.png",
         "input Rotation of Pattern takes 0..360, got 400: angles run from 0 to 360 degrees"},
        {"run Transform Image=in.png KUnd=17 -o o.png", "input KUnd of Transform takes at most 16, got 17"},
        {"run Random --time inf", "--time: inf is not a time from -16777216 to 16777216"},
        {"run Random --time 1e9", "--time: 1e+09 is not a time"},
        // Sizes.
        {"run Pattern --size 99999999999x1 -o p.png",
         "--size 99999999999x1: Width takes 1..32768, got 99999999999: images are 1 to 32768 pixels a side"},
        {"run Pattern Width=100000 Height=100000 -o p.png", "input Width of Pattern takes 1..32768, got 100000"},
        {"run Pattern --size 20000x20000 -o p.png", "--size 20000x20000: 20000x20000 is more than 268435456 pixels (16384x16384)"},
        {"run Pattern Width=20000 Height=20000 -o p.png", "cannot make an image: 20000x20000 is more than"},
        {"run Pattern --size 4x -o p.png", "--size takes WIDTHxHEIGHT, got '4x'"},
        {"run Pattern --size 0x4 -o p.png", "Width takes 1..32768, got 0"},
        {"run Pattern --size 1x1 -o p.png", "--size 1x1: Height takes 2..32768, got 1: generators make images at least 2 rows high"},
        {"run Blobs Height=1 -o p.png", "input Height of Blobs takes 2..32768, got 1: generators make images at least 2 rows high"},
        // Files and paths.
        {"run S_1 Image=nothere.png -o out.png", "file not found: nothere.png"},
        {"run S_1 Image=bad.png -o out.png", "cannot read image bad.png"},
        {"run Invert Image=huge.ppm -o p.png", "cannot read image huge.ppm: 40000x40000 is larger than 32768 pixels a side"},
        {"run \"From file\" Filename=/dev/zero", "file /dev/zero is not a regular file (input Filename of tool From file)"},
        {"run \"From file\" Filename=big.txt", "file big.txt is larger than 16 MiB"},
        {"run FrFl Filename=absent.txt", "absent.txt (input Filename"},
        {"render missing.json", "flow file not found: missing.json"},
        {"render folder", "flow file folder is a folder"},
        {"run \"From file\" Filename=folder", "file folder is a folder"},
        {"run Invert Image=folder -o o.png", "file folder is a folder"},
        {"render loop/flow.json", "cannot read flow file loop/flow.json: Too many levels of symbolic links"},
        {"run Invert Image=loop/in.png -o o.png", "Too many levels of symbolic links"},
        {"run Pattern --size 4x4 -o loop/o.png", "Too many levels of symbolic links"},
        {"run dInfo Data=ragged.csv", "ragged.csv:3:3: a row of 3 cells under a header of 2"},
        {"run dInfo Data=quat.json", "quat.json:1:33: unknown channel type \"Quat\""},
        {"run dInfo Data=in.png", "input Data of dInfo takes a Data value from a .csv, .json file, got 'in.png'"},
        // Frames and threads.
        {"render flow.json --frames 2147483647-2147483647",
         "--frames 2147483647-2147483647: frame 2147483647 is outside -16777216..16777216"},
        {"render flow.json --frames 1-2000000", "--frames 1-2000000: 2000000 frames; a render makes at most 1000000"},
        {"render flow.json --frames 1.5-2", "--frames takes A or A-B, whole frame numbers, got '1.5-2'"},
        {"render flow.json --frames 1-", "got '1-'"},
        {"render flow.json --frames 3-2", "the first frame 3 is after the last 2"},
        {"render flow.json --threads 0", "--threads takes a count from 1 to 1024, got '0'"},
        {"render flow.json --threads 99999999999", "--threads takes a count from 1 to 1024"},
        // Outputs.
        {"run S_1 Image=in.png -o nofolder/out.png", "nofolder"},
        {"run S_1 Image=in.png -o in.png", "would overwrite the input in.png"},
        {"run S_1 Image=in.png -o out.txt", "not an image file name"},
        {"run Random -o x.png", "-o x.png: Random makes a number, printed on standard output or written to a .txt or .json file"},
        // Regions: the plane and size of a slice.
        {"run rCube --slice w=1 -o s.png", "--slice takes x=, y= or z= and a number, got 'w=1'"},
        {"run rCube --slice z=nan -o s.png", "--slice takes x=, y= or z= and a number, got 'z=nan'"},
        {"run rCube --size 4x -o s.png", "--size takes WIDTHxHEIGHT, got '4x'"},
        {"run Invert Image=in.png --slice z=0 -o o.png", "--slice is for tools that make a region, and Invert makes none"},
        {"run rCube -o s.svg", "-o s.svg: rCube makes a Region value"},
    };
    for (const auto& [args, what] : rows) ExpectBadInput(Run(args), what);
    if (geteuid() != 0) {  // root enters any folder
        dir.Write("folder/flow.json", "{}");
        fs::permissions(dir.path / "folder", fs::perms::none);
        ExpectBadInput(Run("render folder/flow.json"), "Permission denied");
        fs::permissions(dir.path / "folder", fs::perms::owner_all);
        fs::remove(dir.path / "folder/flow.json");
    }
    EXPECT_EQ(Files(),
              (std::vector<std::string>{"bad.png", "big.txt", "flow.json", "folder", "huge.ppm", "in.png", "loop", "quat.json",
                                        "ragged.csv"}));
}

// A flow's errors are found before any frame renders, each naming its tool.
TEST_F(CommandTest, FlowErrorsAreFoundBeforeAnyFrameRenders)
{
    Write("plate.0001.png", {1, 2, 3, 4}, 1, 1);
    Write("plate.0002.png", {1, 2, 3, 4}, 1, 1);
    const std::string plate = R"("plate": { "tool": "Loader", "file": "plate.####.png" }, )";
    auto saver = [](const char* name, const char* file, const char* from) {
        return std::string("\"") + name + R"(": { "tool": "Saver", "file": ")" + file +
               R"(", "inputs": { "Image": { "from": ")" + from + "\" } } }";
    };
    // Sample Brightness "b", saved; a 4 x 4 Pattern "p", saved.
    auto b = [&](const std::string& inputs, const char* file = "out.####.png") {
        return R"("b": { "tool": "S_1", "inputs": { )" + inputs + " } }, " + saver("out", file, "b");
    };
    const std::string image = R"("Image": { "from": "plate" })";
    auto p = [&](const std::string& inputs, const std::string& savers = "") {
        return R"("p": { "tool": "Pattern", "inputs": { "Width": 4, "Height": 4)" + inputs + " } }, " +
               (savers.empty() ? saver("out", "out.####.png", "p") : savers);
    };
    const struct { const char* frames; std::string tools; const char* what; } rows[] = {
        {"[1, 2]", plate + R"("b": { "tool": "Glow" }, )" + saver("out", "out.####.png", "b"), "unknown tool: Glow"},
        {"[1, 2]", plate + b(image + R"(, "Glow": 1)"), "unknown input Glow of tool b (see: zelvarine info \"Sample Brightness\")"},
        {"[1, 2]", plate + b(image + R"(, "Brightness": "high")"), "input Brightness of tool b expects a number, got a text"},
        {"[1, 2]", plate + b(R"("Image": { "from": "ghost" })"), "connected to a missing tool: ghost"},
        {"[1, 2]", R"("a": { "tool": "S_1", "inputs": { "Image": { "from": "b" } } }, )" + b(R"("Image": { "from": "a" })"),
         "cycle in flow"},
        {"[1, 3]", plate + b(image), "missing frame 3 of"},
        {"[1, 2]", R"("plate": { "tool": "Loader", "file": "nothere.png" }, )" + b(image), "file not found"},
        {"[1, 2]", plate + b(image, "plate.####.png"), "would overwrite its input"},
        {"[1, 2]", p(R"(, "Size": 1e999)"), "flow file flow.json: number overflow parsing '1e999'"},
        {"[1, 2]", p(R"(, "Size": 1e300)"), "input Size of tool p takes a finite number, got 1e+300"},
        {"[1, 2]", p(R"(, "Type": 5)"), "input Type of tool p takes one of 0 Triangles, 1 Grid, 2 Honeycomb, got 5"},
        {"[1, 2]", p(R"(, "Type": { "keys": { "1": 0, "2": 4 } })"), "input Type of tool p at key 2 takes one of"},
        {"[1, 2]", p(R"(, "Size": { "keys": { "nan": 0.1 } })"), "input Size of tool p: key time: nan is not a time"},
        {"[1, 2]", p(R"(, "Rotation": { "keys": { "1e30": 0 } })"), "key time: 1e+30 is not a time"},
        {"[1, 2000000000]", p(""), "flow.json: \"frames\": frame 2000000000 is outside -16777216..16777216"},
        // Outputs are never silently overwritten or ignored.
        {"[1, 2]", p("", saver("a", "out.####.png", "p") + ", " + saver("b", "out.%04d.png", "p")),
         "Savers a and b would both write out.0001.png"},
        {"[1, 3]", p("", saver("still", "out.png", "p")),
         "Saver still would write out.png over again on each of 3 frames: put # in its file name"},
        {"[1, 1]", R"("r": { "tool": "rCube" }, )" + saver("out", "out.txt", "r"),
         "Saver out: a Region value is written to .exr, .png, .tif, .tiff, .jpg, .jpeg, .dpx, .csv, .json, not out.txt"},
    };
    for (const auto& r : rows) {
        WriteFlow(r.frames, r.tools);
        ExpectBadInput(Run("render flow.json"), r.what);
    }
    dir.Write("flow.json", "{ \"tools\": ");
    ExpectBadInput(Run("render flow.json"), "not valid JSON");
    EXPECT_EQ(Files(), (std::vector<std::string>{"flow.json", "plate.0001.png", "plate.0002.png"}));
    WriteFlow("[2, 2]", p("", saver("still", "out.png", "p")));  // one frame: no # needed
    EXPECT_EQ(Run("render flow.json").code, 0);
}

TEST_F(CommandTest, WithinTheLimitsWhatIsAskedIsMadeAndOldCodesStillWork)
{
    for (const char* tool : {"Pattern", "Blobs"}) {
        ASSERT_EQ(Run(std::string("run ") + tool + " --size 7x2 -o p.png").code, 0) << tool;
        EXPECT_EQ(std::make_pair(Read("p.png")->Width(), Read("p.png")->Height()), std::make_pair(7, 2)) << tool;
    }
    WriteFlow("[1, 2]", patternSaved);
    Result r = Run("render flow.json --frames 16777216");
    EXPECT_EQ(r.code, 0) << r.err;
    EXPECT_EQ(r.out, "wrote out.16777216.png .. out.16777216.png\n");
    // A number printed, or written to a text or JSON file.
    const Result printed = Run("run Random Seed=7 --time 12");
    ASSERT_EQ(printed.code, 0);
    ASSERT_EQ(Run("run Random Seed=7 --time 12 -o v.txt").code, 0);
    EXPECT_EQ(Slurp(dir.path / "v.txt"), printed.out);
    ASSERT_EQ(Run("run Random Seed=7 --time 12 -o v.json").code, 0);
    EXPECT_EQ(Slurp(dir.path / "v.json"), "{\n  \"Number\": " + printed.out.substr(0, printed.out.size() - 1) + "\n}\n");
    // A table prints its dump, or goes to CSV (a column per component) or JSON.
    const std::string table = "run dChC Count=2 ChannelIntegerEnable0=1 ChannelVector2Enable0=1";
    EXPECT_EQ(Run(table).out, "index [2]     int32 [1]      Integer\nposition [2]     float32 [2]      Vector2\n");
    ASSERT_EQ(Run(table + " -o t.csv").code, 0);
    EXPECT_EQ(Slurp(dir.path / "t.csv"), "item,index,position.x,position.y\n0,0,0.0,0.0\n1,0,0.0,0.0\n");
    // A table file read for a Data input comes back as the same file.
    ASSERT_EQ(Run("run dInfo Data=t.csv -o u.csv").code, 0);
    EXPECT_EQ(Slurp(dir.path / "u.csv"), Slurp(dir.path / "t.csv"));
    ASSERT_EQ(Run(table + " -o t.json").code, 0);
    EXPECT_NE(Slurp(dir.path / "t.json").find(R"({"name": "position", "type": "Vector2", "count": 2, "values": [0.0, 0.0, 0.0, 0.0]})"),
              std::string::npos);
    // A text tool prints its line.
    dir.Write("lines.txt", "first\nsecond\nthird");
    EXPECT_EQ(Run("run FrFl Filename=lines.txt Format=2 Line=2").out, "third\n");
    // The four-character codes of old flows and scripts reach the same controls.
    ASSERT_EQ(Run("run Pattern --size 8x4 -o p.exr").code, 0);
    const Result byCode = Run("run Transform Image=p.exr KFil=0 KCCA=0 Angl=10 -o a.png");
    const Result byName = Run("run Transform Image=p.exr Filtering=0 Alpha=0 Axisangle=10 -o b.png");
    ASSERT_EQ(byCode.code, 0) << byCode.err;
    ASSERT_EQ(byName.code, 0) << byName.err;
    EXPECT_EQ(Slurp(dir.path / "a.png"), Slurp(dir.path / "b.png"));
    WriteFlow("[1, 1]", R"("p": {"tool": "Pattern", "inputs": {"Width": 8, "Height": 4}},
        "i": {"tool": "Invert", "inputs": {"Image": {"from": "p"}, "KCCA": 0, "ZVMT": 0}},
        "s": {"tool": "Saver", "file": "old.####.exr", "inputs": {"Image": {"from": "i"}}})");
    const Result flow = Run("render flow.json");
    EXPECT_EQ(flow.code, 0) << flow.err;
    EXPECT_TRUE(fs::exists(dir.path / "old.0001.exr"));
}

TEST_F(CommandTest, AFailedFrameStopsTheRenderAndKeepsEarlierFrames)
{
    for (const char* name : {"plate.0001.png", "plate.0002.png", "plate.0003.png"})
        Write(name, {1, 2000, 3, 65535, 5000, 60000, 70, 65535, 9, 10, 11, 65535}, 64, 64);
    // Frame 2's header reads but its pixels are cut off.
    const std::string whole = Slurp(dir.path / "plate.0002.png");
    dir.Write("plate.0002.png", whole.substr(0, whole.size() - 30));
    WriteFlow("[1, 3]", R"("plate": { "tool": "Loader", "file": "plate.####.png" },
        "out": { "tool": "Saver", "file": "out.####.png", "inputs": { "Image": { "from": "plate" } } })");
    ExpectBadInput(Run("render flow.json"), "frame 2");
    EXPECT_EQ(Files(), (std::vector<std::string>{"flow.json", "out.0001.png", "plate.0001.png", "plate.0002.png",
                                                 "plate.0003.png"}));  // no half-written frame
}

TEST_F(CommandTest, AutoDepthKeepsTheBitsOfTheFileReadIn)
{
    HostImg eight = zvtest::Make(2, 2, false, [](int x, int y, int c) { return 257 * 16 * (8 * y + 4 * x + c); });
    host::WriteImage(*eight, (dir.path / "in8.png").string(), host::FileDepth::Int8);  // 8-bit codes
    WriteFlow("[1, 1]", R"(
        "plate": { "tool": "Loader", "file": "in8.png" },
        "inv": { "tool": "Invert", "inputs": { "Image": { "from": "plate" } } },
        "png": { "tool": "Saver", "file": "out.####.png", "inputs": { "Image": { "from": "inv" } } },
        "exr": { "tool": "Saver", "file": "out.####.exr", "inputs": { "Image": { "from": "plate" } } })");
    ASSERT_EQ(Run("render flow.json").code, 0);
    ASSERT_EQ(Run("run Invert Image=in8.png -o run.png").code, 0);
    ASSERT_EQ(Run("run Pattern --size 4x4 -o made.png").code, 0);
    for (auto [file, bits, isFloat] : {std::tuple{"out.0001.png", 8, false}, {"run.png", 8, false},
                                       {"out.0001.exr", 16, true}, {"made.png", 16, false}}) {
        EXPECT_EQ(Read(file)->FileBits(), bits) << file;
        EXPECT_EQ(Read(file)->IsFloat(), isFloat) << file;
    }
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

// Morph through a flow: no curves, one point pair moving the picture around
// it, the target warped the other way and faded in, keys between setups, SVG
// pairs, and the setups refused.
#include "app/flowfile.h"
#include "host/errors.h"
#include "support.h"

namespace {

using namespace zvtest;

host::Value SetupValue(const std::string& json, const std::string& folder = ".")
{
    return host::FindParameterClass("TorvenMarsh.ZV_MorphParameter")->parse(json, folder);
}

// A Morph over `image` with nearest filtering, so that whole moves are exact.
struct Morph : ToolFlow {
    explicit Morph(Img image) : ToolFlow("ZV_Morph", std::move(image)) { Set("Filtering", 0); }
    void Curves(const std::string& json) { flow.SetValue(node, In("Morphwarpsetup"), SetupValue(json)); }
};

// 101 x 51: a tenth of the width is 10 pixels, a fifth of the height 10 rows.
Img Plate(bool isFloat) { return Pattern(101, 51, isFloat); }

TEST(Morph, WithNoCurvesFieldHasNothingToReadAndRadialLeavesThePicture)
{
    for (bool isFloat : {false, true}) {
        Morph field(Plate(isFloat));
        Img out = field.Render();
        const Img clear = isFloat ? Solid(101, 51, KPixelF{0, 0, 0, 0}) : Solid(101, 51, KPixel{0, 0, 0, 0});
        EXPECT_EQ(Differ(*out, *clear), "") << "Field, float " << isFloat;

        Morph radial(Plate(isFloat));
        radial.Set("WarpType", 1);
        radial.Set("Radius", 0.2);
        EXPECT_EQ(Differ(*radial.Render(), *Plate(isFloat)), "") << "Radial, float " << isFloat;
    }
}

TEST(Morph, OnePointPairMovesThePictureAroundThatPoint)
{
    const Img plate = Plate(false);
    // Field: one pull, normalised, moves everything by the pair's offset,
    // 0.1 across and 0.2 up; Warp takes that part of the way.
    for (auto [warp, dx, dy] : {std::tuple{1.0, 10, 10}, {0.5, 5, 5}, {0.0, 0, 0}}) {
        Morph m(Plate(false));
        m.Curves(R"([[[0.3, 0.4, 0.4, 0.6]]])");
        m.Set("Warp", warp);
        Img out = m.Render();
        EXPECT_EQ(MaxDiff(*out, *plate, dx, dy, 101, 51, dx, dy), 0.0f) << "warp " << warp;
        if (dx > 0) {
            EXPECT_EQ(Raw(*out, dx - 1, 20), (std::array<float, 4>{})) << "black comes in at the edge";
        }
    }
    // Radial: the point itself reads from its first place; far beyond the
    // radius nothing moves.
    Morph r(Plate(false));
    r.Curves(R"([[[0.3, 0.4, 0.4, 0.6]]])");
    r.Set("WarpType", 1);
    r.Set("Radius", 0.05);
    Img out = r.Render();
    EXPECT_EQ(Raw(*out, 40, 30), Raw(*plate, 30, 20));
    EXPECT_EQ(MaxDiff(*out, *plate, 80, 0, 101, 51), 0.0f);
    EXPECT_GT(MaxDiff(*out, *plate, 35, 25, 45, 35), 0.0f);
}

TEST(Morph, TheTargetIsWarpedTheOtherWayAndFadedInBySliderOrMap)
{
    const std::string pair = R"([[[0.3, 0.4, 0.4, 0.6]]])";
    // At Warp 1 the target stands on its own curves; locked, the fade is whole.
    {
        Morph m(Plate(false));
        const Img solid = Solid(101, 51, KPixel{1000, 2000, 3000, 65535});
        m.SetImage("Morphtarget", solid.get());
        m.Curves(pair);
        EXPECT_EQ(Differ(*m.Render(), *Solid(101, 51, KPixel{1000, 2000, 3000, 65535})), "");
    }
    // Unlocked at Warp 0.5: the target moves back by half the pair's offset
    // (shown by black edges coming in on the right and top), and fades in by Fade.
    Img target = Plate(false);
    Morph m(Solid(101, 51, KPixel{0, 0, 0, 0}));
    m.SetImage("Morphtarget", target.get());
    m.Curves(pair);
    m.Set("Lockwarpandfade", 0);
    m.Set("Warp", 0.5);
    m.Set("Fade", 1.0);
    Img out = m.Render();
    EXPECT_EQ(MaxDiff(*out, *target, 0, 0, 96, 46, -5, -5), 0.0f);
    EXPECT_EQ(Raw(*out, 97, 10), (std::array<float, 4>{}));
    // Half a fade of 65535 over 0 is the integer blend's 32767; the map (left
    // half black, right white, its own size) keeps the left and takes the right.
    Morph f(Solid(101, 51, KPixel{0, 0, 0, 0}));
    const Img white = Solid(40, 20, KPixel{65535, 65535, 65535, 65535});
    f.SetImage("Morphtarget", white.get());
    f.Set("Lockwarpandfade", 0);
    f.Set("WarpType", 1);
    f.Set("Fade", 0.5);
    EXPECT_EQ(Raw(*f.Render(), 50, 25), (std::array<float, 4>{32767, 32767, 32767, 32767}));
    f.Set("FadeType", 1);
    const Img map = Made(2, 1, false, [](int32_t x, int32_t) {
        return x ? KPixel{65535, 65535, 65535, 65535} : KPixel{0, 0, 0, 65535};
    });
    f.SetImage("Fademap", map.get());
    Img mapped = f.Render();
    EXPECT_EQ(Raw(*mapped, 10, 25), (std::array<float, 4>{}));
    EXPECT_EQ(Raw(*mapped, 90, 25), (std::array<float, 4>{65535, 65535, 65535, 65535}));
}

TEST(Morph, ControlsShowByWarpTypeLockAndFadeType)
{
    ExpectShown("ZV_Morph", {"FadeType", "Fade", "Fademap", "Adherence", "Locality", "Radius"},
                {{nullptr, 0, "000110"},
                 {"Lockwarpandfade", 0, "110110"},
                 {"FadeType", 1, "101110"},
                 {"WarpType", 1, "101001"},
                 {"Lockwarpandfade", 1, "000001"}});
}

TEST(Morph, KeyedSetupsBlendPointForPoint)
{
    Morph m(Plate(false));
    host::Flow::Node& n = m.node;
    m.flow.SetValueKeys(n, m.In("Morphwarpsetup"),
                        std::map<double, host::Value>{{0.0, SetupValue(R"([[[0.3, 0.4, 0.3, 0.4]]])")},
                                                      {10.0, SetupValue(R"([[[0.3, 0.4, 0.5, 0.4]]])")}});
    EXPECT_EQ(m.In("Morphwarpsetup")->ValueAt(5.0)->ToText(), "1 curve, 1 point pair");
    EXPECT_EQ(MaxDiff(*m.Render(5.0), *Plate(false), 10, 0, 101, 51, 10, 0), 0.0f);
}

TEST(Morph, SvgPathsPairUpInOrder)
{
    const TempDir dir;
    // A 100 x 50 picture: the line at y 30 from the top is 0.4 up; the second
    // file moves it 0.1 right.
    auto svg = [&](const char* name, const std::string& paths) {
        dir.Write(name, R"(<svg xmlns="http://www.w3.org/2000/svg" viewBox="0 0 100 50">)" + paths + "</svg>");
    };
    svg("a.svg", R"(<path d="M 20 30 L 60 30"/>)");
    svg("b.svg", R"(<path d="M 30 30 L 70 30"/>)");
    Morph m(Plate(false));
    m.flow.SetValue(m.node, m.In("Morphwarpsetup"), SetupValue(R"({"svg": ["a.svg", "b.svg"]})", dir.path.string()));
    EXPECT_EQ(m.In("Morphwarpsetup")->constant->ToText(), "1 curve, 2 point pairs");
    EXPECT_EQ(MaxDiff(*m.Render(), *Plate(false), 10, 0, 101, 51, 10, 0), 0.0f);

    // A path without its pair, and a pair of different points, are refused.
    svg("c.svg", R"(<path d="M 20 30 L 60 30"/><path d="M 0 0 L 1 1"/>)");
    svg("d.svg", R"(<path d="M 20 30 L 60 30 L 60 40"/>)");
    auto refusal = [&](const std::string& json) {
        try {
            SetupValue(json, dir.path.string());
        } catch (const host::BadInput& e) {
            return std::string(e.what());
        }
        return std::string("accepted");
    };
    EXPECT_NE(refusal(R"({"svg": ["c.svg", "b.svg"]})").find("has 2 paths and"), std::string::npos);
    EXPECT_NE(refusal(R"({"svg": ["a.svg", "d.svg"]})").find("path 1 has 2 points in"), std::string::npos);
    EXPECT_NE(refusal(R"({"svg": ["a.svg", "missing.svg"]})").find("missing.svg"), std::string::npos);
}

TEST(Morph, FlowFilesRefuseMalformedAndUnblendableSetups)
{
    const TempDir dir;
    auto load = [&](const std::string& setup) {
        const std::string path = dir.Write("flow.json", R"({"tools": {"m": {"tool": "Morph", "inputs": {"Morphwarpsetup": )" +
                                                            setup + "}}}}");
        try {
            app::LoadFlowFile(path);
        } catch (const host::BadInput& e) {
            return std::string(e.what());
        }
        return std::string("accepted");
    };
    EXPECT_EQ(load(R"({"curves": [[[0.1, 0.2, 0.3, 0.4]], {"points": [[0, 0, 1, 1], [1, 1, 0, 0]], "spline": true}]})"),
              "accepted");
    EXPECT_EQ(load(R"([[[0.1, 0.2, 0.3]]])"),
              "input Morphwarpsetup of tool m: curve 1, point 1 is [x1, y1, x2, y2], four numbers, got [0.1,0.2,0.3]");
    EXPECT_EQ(load(R"([[]])"), "input Morphwarpsetup of tool m: curve 1 is a list of [x1, y1, x2, y2] points, got none");
    EXPECT_EQ(load(R"({"curve": []})"), "input Morphwarpsetup of tool m: unknown key \"curve\" (give \"curves\" or \"svg\")");
    EXPECT_EQ(load(R"({"keys": {"0": [[[0, 0, 1, 1]]], "1": [[[0, 0, 1, 1]], [[0, 0, 1, 1]]]}})"),
              "input Morphwarpsetup of tool m: keys 0 and 1 do not blend: their curves differ in number, points or "
              "spline (1 curve, 1 point pair and 2 curves, 2 point pairs)");
}

}  // namespace

// Noise: declarations and their visibility rules, cells and their seeds,
// colours by random draws and by hash, combining, depths and threads.
#include "pixel_tool_support.h"

using namespace zvpixel;

namespace {

// The reference generator seeded as the tools seed it (srand, then seed % 97
// draws thrown away); the next `n` draws, scaled to 0..1 or as integers.
std::vector<int32_t> RawDraws(int32_t seed, int n)
{
    uint32_t state = static_cast<uint32_t>(seed);
    std::vector<int32_t> out;
    for (int32_t i = -(seed % 97); i < n; ++i) {
        state = state * 1103515245u + 12345u;
        if (i >= 0) out.push_back(static_cast<int32_t>((state / 65536u) % 32768u));
    }
    return out;
}
float Draw(int32_t seed, int k = 0) { return RawDraws(seed, k + 1)[k] * 3.051851e-05f; }

uint32_t TableId(int32_t i) { return "ColR"_id + 256u * static_cast<uint32_t>(i); }

TEST(NoiseDeclarations, OrderKindsDefaultsAndItems)
{
    std::unique_ptr<host::Operator> op(host::CreateOperator(zvtest::Registered("ZV_Noise")));
    EXPECT_EQ(zvtest::FirstInputIds(*op, 12),
              (std::vector<std::string>{"RandomSeed", "RandomSeedOffset", "Base", "Howtocombine",
                                        "Channelused", "NoiseType", "Size", "SizeX", "SizeY", "Colors",
                                        "Numberofcolors", "Color1Red"}));
    zvtest::ExpectInputs(*op, {
        {"RandomSeed", "control Slider; default 0; soft 0..32768; notify no"},
        {"RandomSeedOffset", "default 0; soft 0..32768"},
        {"Base", "control MultiButton; items Position|Color; default 0; notify yes"},
        {"Howtocombine", "items Replace|Add|Substract; default 0; notify no"},
        {"Channelused", "items Red|Green|Blue|Alpha|Lumin.|Each; default 4; notify yes"},
        {"NoiseType", "items Random|Hash; default 1"},
        {"Size", "items Pixel|Grid; default 0"},
        {"SizeX", "control Slider; default 1; soft 1..-; hard -..32"},  // a hard end is not also soft
        {"SizeY", "default 1; hard -..32"},
        {"Colors", "items Random|Selected; default 0; notify yes"},
        {"Numberofcolors", "default 3; soft 1..63; notify yes"},
    });
    Tool t("ZV_Noise");
    const KParameter* p = &t.Param("Number of colors");
    for (int32_t i = 0; i < 64; ++i) {
        p = p->Next();
        ASSERT_NE(p, nullptr);
        EXPECT_EQ(p->controlKind, kControlColor);
        EXPECT_EQ(p->id, TableId(i));
        EXPECT_EQ(p->name, "Color " + std::to_string(i + 1));
    }
    EXPECT_EQ(p->Next(), nullptr);
    EXPECT_EQ(TableId(1), "ComR"_id);
}

TEST(NoiseOnChange, BaseColorsAndCountLayOutTheControls)
{
    // Chan, NoiT, Size, SizX, SizY, Type, Coun, then the 64 table colours.
    std::vector<uint32_t> order = {"Chan"_id, "NoiT"_id, "Size"_id, "SizX"_id, "SizY"_id, "Type"_id, "Coun"_id};
    for (int32_t i = 0; i < 64; ++i) order.push_back(TableId(i));
    Tool t("ZV_Noise");
    const std::string none(64, '0'), five = std::string(5, '1') + std::string(59, '0');
    const struct { uint32_t id; int32_t value; std::string shown; } rows[] = {
        {"Base"_id, 1, "1100000" + none},
        {"Base"_id, 0, "0011110" + none},
        {"Type"_id, 1, "0011111111" + std::string(61, '0')},
        {"Coun"_id, 5, "0011111" + five},
        {"Base"_id, 1, "1100000" + none},  // the table goes with Position
        {"Base"_id, 0, "0011111" + five},
        {"Chan"_id, 2, ""},                // notifies, changes no layout
    };
    for (const auto& r : rows) EXPECT_EQ(Shown(*t.effect, r.id, r.value, order), r.shown) << r.value;

    std::unique_ptr<KImage> plate(zvtest::Pattern(4, 3, true));
    Flow f("ZV_Noise", plate.get());
    zvtest::ExpectShown(f, {"Channelused", "Color1Red", "Color2Red", "Color3Red"},
                        {{"Colors", 1, "0111"}, {"Numberofcolors", 2, "0110"}, {"Base", 1, "1000"}});
}

TEST(NoisePosition, CellsSeedByCellRowAndSeed)
{
    Tool t("ZV_Noise");
    std::unique_ptr<KImage> source(zvtest::Pattern(8, 6, true));
    t.SetInt("Random Seed", 7);
    t.SetInt("Size X", 2);
    t.SetInt("Size Y", 3);
    auto out = t.Run(source.get());
    // "Pixel": 5,4 lies in cell 2,1 of an 8 wide image: seed 2 + 1 * 8 + 7.
    EXPECT_EQ(zvtest::Channels(PixelF(*out, 5, 4)),
              (std::array<float, 4>{Draw(17, 0), Draw(17, 1), Draw(17, 2), Draw(17, 3)}));
    for (int32_t y = 0; y < 6; ++y)
        for (int32_t x = 0; x < 8; ++x)
            EXPECT_EQ(PixelF(*out, x, y).g, PixelF(*out, x / 2 * 2, y / 3 * 3).g);

    // "Grid": 5,4 lies in cell 3 * 5 / 8, 2 * 4 / 6 = 1, 1; so does 3,3 but not 2,3.
    t.SetInt("Size", 1);
    t.SetInt("Size X", 3);
    t.SetInt("Size Y", 2);
    out = t.Run(source.get());
    EXPECT_EQ(PixelF(*out, 5, 4).r, Draw(16, 0));
    EXPECT_EQ(PixelF(*out, 3, 3).g, Draw(16, 1));
    EXPECT_NE(PixelF(*out, 2, 3).g, Draw(16, 1));

    // "Selected": an index drawn below Number of colors picks a table colour.
    t.SetInt("Size", 0);
    t.SetInt("Size X", 0);  // a size of 0 works as 1
    t.SetInt("Size Y", 1);
    t.SetInt("Colors", 1);
    for (int32_t i = 0; i < 3; ++i) t.Field<KColor>(TableId(i)) = {0.1f * i, 0.2f, 0.3f, 0.5f * i};
    out = t.Run(source.get());
    for (int32_t y = 0; y < 6; ++y)
        for (int32_t x = 0; x < 8; ++x)
            EXPECT_EQ(PixelF(*out, x, y).a, 0.5f * (RawDraws(x + y * 8 + 7, 1)[0] % 3)) << x << "," << y;
    t.SetInt("Number of colors", 0);  // a count out of the table stays within it
    EXPECT_EQ(PixelF(*t.Run(source.get()), 6, 2).a, 0.0f);
}

TEST(NoiseColor, HashAndRandomByChannel)
{
    std::unique_ptr<KImage> img(KImage::Create(3, 1, true));
    img->SetPixel(0, 0, KPixelF{0.25f, 0.5f, 0.75f, 1.0f});
    img->SetPixel(1, 0, KPixelF{0.25f, 0.5f, 0.75f, 1.0f});
    img->SetPixel(2, 0, KPixelF{0.25f, 0.25f, 0.75f, 0.0f});
    Tool t("ZV_Noise");
    t.SetInt("Base", 1);
    t.SetInt("Random Seed", 5);
    t.SetInt("Random Seed Offset", 3);
    // Hash: fract(sin(19.123 cos((seed + n * offset + v) * 12.13)) * 17.321),
    // v from the channel used: each its own, red in all four, or (0.75 + 0.25)
    // / 2 for Lumin. and any other value alike, green 0.5 for green.
    const KPixelF half{0.6899394989013672f, 0.01374673843383789f, 0.32348060607910156f, 0.3653249740600586f};
    const struct { int32_t channel; KPixelF want; } rows[] = {
        {5, {0.782737135887146f, 0.01374673843383789f, 0.8590621948242188f, 0.5589208602905273f}},
        {0, {0.782737135887146f, 0.826324462890625f, 0.7417516708374023f, 0.9977664947509766f}},
        {4, half}, {9, half}, {1, half},
    };
    for (const auto& r : rows) {
        t.SetInt("Channel used", r.channel);
        zvtest::ExpectNear(PixelF(*t.Run(img.get()), 0, 0), r.want, 1e-6f, std::to_string(r.channel));
    }

    // Random: seed + n * offset + value * 65535 cut; 0.5 gives 32767.
    t.SetInt("Noise Type", 0);
    t.SetInt("Channel used", 5);
    t.SetInt("Random Seed Offset", 100);
    auto out = t.Run(img.get());
    zvtest::ExpectNear(PixelF(*out, 0, 0), {Draw(5 + 16383), Draw(105 + 32767), Draw(205 + 49151), Draw(305 + 65535)},
                       1e-6f);
    EXPECT_EQ(PixelF(*out, 1, 0).g, PixelF(*out, 0, 0).g);  // alike wherever it is
    EXPECT_NE(PixelF(*out, 2, 0).g, PixelF(*out, 0, 0).g);
}

TEST(NoiseCombine, AddAndSubstractIncludeAlphaAndDoNotClip)
{
    std::unique_ptr<KImage> one(KImage::Create(1, 1, true));
    const KPixelF in{0.25f, 0.5f, 0.75f, 1.0f};
    one->SetPixel(0, 0, in);
    Tool t("ZV_Noise");
    const KPixelF drawn = PixelF(*t.Run(one.get()), 0, 0);
    EXPECT_EQ(drawn.a, Draw(0, 3));
    for (int32_t combine : {1, 2}) {
        t.SetInt("How to combine", combine);
        const KPixelF p = PixelF(*t.Run(one.get()), 0, 0);
        for (int c = 0; c < 4; ++c) EXPECT_EQ(p[c], combine == 1 ? in[c] + drawn[c] : in[c] - drawn[c]);
    }
}

TEST(NoiseDepthsAndThreads, AgreeEverywhere)
{
    std::unique_ptr<KImage> f(zvtest::Pattern(16, 9, true)), w(zvtest::Pattern(16, 9, false));
    Tool t("ZV_Noise");
    t.SetInt("How to combine", 1);
    for (int32_t base : {0, 1})
        for (int32_t type : {0, 1}) {
            t.SetInt("Base", base);
            t.SetInt("Noise Type", type);
            auto a = t.Run(f.get());
            auto b = t.Run(w.get());
            for (int32_t y = 0; y < 9; ++y)
                for (int32_t x = 0; x < 16; ++x) {
                    KPixel q;
                    b->GetPixel(x, y, q, kEdgeBlack);
                    const KPixelF p = PixelF(*a, x, y);
                    ASSERT_EQ(q.g, KFloatToInt(p.g)) << base << type;
                    ASSERT_EQ(q.a, KFloatToInt(p.a)) << base << type;
                }
        }

    // Random draws seed per pixel: the generator's state belongs to each thread.
    std::unique_ptr<KImage> plate(zvtest::Pattern(97, 61, true));
    for (int32_t base : {0, 1}) {
        Flow flow("ZV_Noise", plate.get());
        flow.Set("Base", base);
        flow.Set("NoiseType", 0);
        flow.Set("RandomSeed", 123);
        flow.Set("RandomSeedOffset", 45);
        EXPECT_EQ(flow.ThreadsAgree(), "") << base;
    }
}

}  // namespace

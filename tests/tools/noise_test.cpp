// Noise: the controls base, colours and count show, cells and their seeds,
// colours by random draws and by hash, combining, and the integer depth.
#include "framework/numeric.h"
#include "support.h"

using namespace zvtest;

namespace {

// The k-th draw after seeding as the tools seed; the shared generator stands
// checked against the reference sequence.
float Draw(int32_t seed, int k = 0)
{
    KRandomSeed(seed);
    for (int i = 0; i < k; ++i) KRandom(1.0f);
    return KRandom(1.0f);
}

uint32_t TableId(int32_t i) { return "ColR"_id + 256u * static_cast<uint32_t>(i); }

TEST(Noise, BaseColorsAndCountLayOutTheControls)
{
    // Chan, NoiT, Size, SizX, SizY, Type, Coun, then the 64 table colours; the channel answers nothing.
    std::vector<std::string> ids = {"Chan", "NoiT", "Size", "SizX", "SizY", "Type", "Coun"};
    for (int32_t i = 1; i <= 64; ++i) ids.push_back("Color" + std::to_string(i) + "Red");
    const std::string none(64, '0'), five = std::string(5, '1') + std::string(59, '0');
    ExpectShown("ZV_Noise", ids,
                {{"Base", 1, "1100000" + none}, {"Base", 0, "0011110" + none},
                 {"Type", 1, "0011111111" + std::string(61, '0')}, {"Coun", 5, "0011111" + five},
                 {"Base", 1, "1100000" + none},  // the table goes with Position
                 {"Base", 0, "0011111" + five}, {"Chan", 2, "0011111" + five}});
}

TEST(Noise, CellsSeedByCellRowAndSeed)
{
    Tool<KEffectPixel> t("ZV_Noise");
    Img source = Pattern(8, 6, true);
    t.Apply({{"Random Seed", 7}, {"Size X", 2}, {"Size Y", 3}});
    Img out = t.Run(source.get());
    // "Pixel": 5,4 lies in cell 2,1 of an 8 wide image: seed 2 + 1 * 8 + 7.
    EXPECT_EQ(Channels(At<KPixelF>(*out, 5, 4)), (std::array<float, 4>{Draw(17, 0), Draw(17, 1), Draw(17, 2), Draw(17, 3)}));
    EXPECT_EQ(At<KPixelF>(*out, 4, 3).g, At<KPixelF>(*out, 5, 5).g);
    // "Grid": 5,4 lies in cell 3 * 5 / 8, 2 * 4 / 6 = 1, 1; so does 3,3 but not 2,3.
    t.Apply({{"Size", 1}, {"Size X", 3}, {"Size Y", 2}});
    out = t.Run(source.get());
    EXPECT_EQ(At<KPixelF>(*out, 5, 4).r, Draw(16, 0));
    EXPECT_EQ(At<KPixelF>(*out, 3, 3).g, Draw(16, 1));
    EXPECT_NE(At<KPixelF>(*out, 2, 3).g, Draw(16, 1));
    // "Selected": an index drawn below Number of colors picks a table colour.
    t.Apply({{"Size", 0}, {"Size X", 0}, {"Size Y", 1}, {"Colors", 1}});  // a size of 0 works as 1
    for (int32_t i = 0; i < 3; ++i) t.Field<KColor>(TableId(i)) = {0.1f * i, 0.2f, 0.3f, 0.5f * i};
    out = t.Run(source.get());
    for (int32_t y = 0; y < 6; ++y)
        for (int32_t x = 0; x < 8; ++x) {
            KRandomSeed(x + y * 8 + 7);
            EXPECT_EQ(At<KPixelF>(*out, x, y).a, 0.5f * KRandomInt(3)) << x << "," << y;
        }
    t.SetInt("Number of colors", 0);  // a count out of the table stays within it
    EXPECT_EQ(At<KPixelF>(*t.Run(source.get()), 6, 2).a, 0.0f);
}

TEST(Noise, HashAndRandomByChannelAndCombined)
{
    Img img = Row<KPixelF>({{0.25f, 0.5f, 0.75f, 1.0f}, {0.25f, 0.5f, 0.75f, 1.0f}, {0.25f, 0.25f, 0.75f, 0.0f}});
    Tool<KEffectPixel> t("ZV_Noise");
    t.Apply({{"Base", 1}, {"Random Seed", 5}, {"Random Seed Offset", 3}});
    // Hash: fract(sin(19.123 cos((seed + n * offset + v) * 12.13)) * 17.321),
    // v from the channel used: each its own, red in all four, or (0.75 + 0.25)
    // / 2 for Lumin. and any other value alike, green 0.5 for green.
    const KPixelF half{0.6899394989013672f, 0.01374673843383789f, 0.32348060607910156f, 0.3653249740600586f};
    const struct { int32_t channel; KPixelF want; } rows[] = {
        {5, {0.782737135887146f, 0.01374673843383789f, 0.8590621948242188f, 0.5589208602905273f}},
        {0, {0.782737135887146f, 0.826324462890625f, 0.7417516708374023f, 0.9977664947509766f}},
        {4, half}, {9, half}, {1, half}};
    for (const auto& r : rows) {
        t.SetInt("Channel used", r.channel);
        ExpectNear(At<KPixelF>(*t.Run(img.get()), 0, 0), r.want, 1e-6f, std::to_string(r.channel));
    }
    // Random: seed + n * offset + value * 65535 cut; 0.5 gives 32767.
    t.Apply({{"Noise Type", 0}, {"Channel used", 5}, {"Random Seed Offset", 100}});
    Img out = t.Run(img.get());
    ExpectNear(At<KPixelF>(*out, 0, 0), {Draw(5 + 16383), Draw(105 + 32767), Draw(205 + 49151), Draw(305 + 65535)}, 1e-6f);
    EXPECT_EQ(At<KPixelF>(*out, 1, 0).g, At<KPixelF>(*out, 0, 0).g);  // alike wherever it is
    EXPECT_NE(At<KPixelF>(*out, 2, 0).g, At<KPixelF>(*out, 0, 0).g);
    // Add and Substract include alpha and do not clip.
    Tool<KEffectPixel> p("ZV_Noise");
    const KPixelF in{0.25f, 0.5f, 0.75f, 1.0f}, drawn = At<KPixelF>(*p.Run(Row<KPixelF>({in}).get()), 0, 0);
    EXPECT_EQ(drawn.a, Draw(0, 3));
    for (int32_t combine : {1, 2}) {
        p.SetInt("How to combine", combine);
        const KPixelF q = At<KPixelF>(*p.Run(Row<KPixelF>({in}).get()), 0, 0);
        for (int c = 0; c < 4; ++c) EXPECT_EQ(q[c], combine == 1 ? in[c] + drawn[c] : in[c] - drawn[c]);
    }
}

TEST(Noise, IntegerIsTheFloatResultConvertedAndDrawsAreThreadSafe)
{
    Img f = Pattern(16, 9, true), w = Pattern(16, 9, false), converted(KImage::Create(16, 9, false));
    Tool<KEffectPixel> t("ZV_Noise");
    t.SetInt("How to combine", 1);
    for (int32_t base : {0, 1})
        for (int32_t type : {0, 1}) {
            t.Apply({{"Base", base}, {"Noise Type", type}});
            converted->CopyFrom(*t.Run(f.get()));  // by the float-to-integer rule
            EXPECT_EQ(Differ(*t.Run(w.get()), *converted), "") << base << type;
        }
    // Random draws seed per pixel: the generator's state belongs to each thread.
    ToolFlow flow("ZV_Noise", Pattern(97, 61, true));
    flow.Set("NoiseType", 0);
    EXPECT_EQ(flow.ThreadsAgree(), "");
}

}  // namespace

// Noise: declarations and their visibility rules, cells and their seeds,
// colours by random draws and by hash, combining, depths and threads.
#include <cctype>
#include <cmath>
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
    Tool t("ZV_Noise");
    const struct {
        const char* id;
        int32_t control;
        float def;
        uint32_t flags;
    } rows[] = {
        {"RandomSeed", kControlSlider, 0, 0}, {"RandomSeedOffset", kControlSlider, 0, 0},
        {"Base", kControlMultiButton, 0, 1},  {"Howtocombine", kControlMultiButton, 0, 0},
        {"Channelused", kControlMultiButton, 4, 1}, {"NoiseType", kControlMultiButton, 1, 0},
        {"Size", kControlMultiButton, 0, 0},  {"SizeX", kControlSlider, 1, 2048},
        {"SizeY", kControlSlider, 1, 2048},   {"Colors", kControlMultiButton, 0, 1},
        {"Numberofcolors", kControlSlider, 3, 1}};
    KParameter* p = t.effect->inputs();
    for (const auto& r : rows) {
        ASSERT_NE(p, nullptr);
        std::string id;  // the host id is the label's letters
        for (char c : p->name)
            if (std::isalnum(static_cast<unsigned char>(c))) id += c;
        EXPECT_EQ(id, r.id);
        EXPECT_EQ(p->controlKind, r.control) << r.id;
        EXPECT_EQ(p->defaultValue, r.def) << r.id;
        EXPECT_EQ(p->flags, r.flags) << r.id;
        p = p->Next();
    }
    for (int32_t i = 0; i < 64; ++i, p = p->Next()) {
        ASSERT_NE(p, nullptr);
        EXPECT_EQ(p->controlKind, kControlColor);
        EXPECT_EQ(p->id, TableId(i));
        EXPECT_EQ(p->name, "Color " + std::to_string(i + 1));
    }
    EXPECT_EQ(p, nullptr);
    EXPECT_EQ(TableId(1), "ComR"_id);
    EXPECT_EQ(*t.In("RandomSeedOffset").attrs.softMax, 32768.0);
    EXPECT_EQ(t.In("Howtocombine").attrs.items,
              (std::vector<std::string>{"Replace", "Add", "Substract"}));
    EXPECT_EQ(t.In("Channelused").attrs.items,
              (std::vector<std::string>{"Red", "Green", "Blue", "Alpha", "Lumin.", "Each"}));
    EXPECT_EQ(t.In("Colors").attrs.items, (std::vector<std::string>{"Random", "Selected"}));
    EXPECT_EQ(*t.In("Numberofcolors").attrs.softMax, 63.0);
    EXPECT_EQ(*t.In("SizeX").attrs.hardMax, 32.0);
}

// The visibility messages of one change as 0 and 1, in the order sent:
// Chan, NoiT, Size, SizX, SizY, Type, Coun, then the 64 table colours.
std::string Shown(KEffect& effect, uint32_t id, int32_t value)
{
    KMessageValue v;
    v.intValue = value;
    std::unique_ptr<KMessageList> list(effect.OnChange(id, v));
    const uint32_t order[] = {"Chan"_id, "NoiT"_id, "Size"_id, "SizX"_id,
                              "SizY"_id, "Type"_id, "Coun"_id};
    std::string shown;
    int32_t i = 0;
    for (KMessage* m = list->First(); m; m = static_cast<KMessage*>(m->next), ++i) {
        EXPECT_EQ(m->target, i < 7 ? order[i] : TableId(i - 7)) << i;
        shown += m->value.intValue > 0 ? '1' : '0';
    }
    return shown;
}

TEST(NoiseOnChange, BaseColorsAndCountLayOutTheControls)
{
    Tool t("ZV_Noise");
    const std::string none(64, '0'), five = std::string(5, '1') + std::string(59, '0');
    EXPECT_EQ(Shown(*t.effect, "Base"_id, 1), "1100000" + none);
    EXPECT_EQ(Shown(*t.effect, "Base"_id, 0), "0011110" + none);
    EXPECT_EQ(Shown(*t.effect, "Type"_id, 1), "0011111111" + std::string(61, '0'));
    EXPECT_EQ(Shown(*t.effect, "Coun"_id, 5), "0011111" + five);
    EXPECT_EQ(Shown(*t.effect, "Base"_id, 1), "1100000" + none);  // the table goes with Position
    EXPECT_EQ(Shown(*t.effect, "Base"_id, 0), "0011111" + five);
    EXPECT_EQ(Shown(*t.effect, "Chan"_id, 2), "");  // notifies, changes no layout

    std::unique_ptr<KImage> plate(zvtest::Pattern(4, 3, true));
    Flow f("ZV_Noise", plate.get());
    f.Set("Colors", 1);
    f.Set("Numberofcolors", 2);
    EXPECT_TRUE(f.Visible("Color2Red"));
    EXPECT_FALSE(f.Visible("Color3Red"));
    f.Set("Base", 1);
    EXPECT_TRUE(f.Visible("Channelused"));
    EXPECT_FALSE(f.Visible("Color1Red"));
}

TEST(NoisePosition, CellsSeedByCellRowAndSeed)
{
    Tool t("ZV_Noise");
    std::unique_ptr<KImage> source(zvtest::Pattern(8, 6, true));
    t.Field<int32_t>("Seed"_id) = 7;
    t.Field<int32_t>("SizX"_id) = 2;
    t.Field<int32_t>("SizY"_id) = 3;
    auto out = t.Run(source.get());
    // "Pixel": 5,4 lies in cell 2,1 of an 8 wide image: seed 2 + 1 * 8 + 7.
    const KPixelF p = PixelF(*out, 5, 4);
    EXPECT_EQ(p.r, Draw(17, 0));
    EXPECT_EQ(p.b, Draw(17, 2));
    EXPECT_EQ(p.a, Draw(17, 3));
    for (int32_t y = 0; y < 6; ++y)
        for (int32_t x = 0; x < 8; ++x)
            EXPECT_EQ(PixelF(*out, x, y).g, PixelF(*out, x / 2 * 2, y / 3 * 3).g);

    // "Grid": 5,4 lies in cell 3 * 5 / 8, 2 * 4 / 6 = 1, 1; so does 3,3 but not 2,3.
    t.Field<int32_t>("Size"_id) = 1;
    t.Field<int32_t>("SizX"_id) = 3;
    t.Field<int32_t>("SizY"_id) = 2;
    out = t.Run(source.get());
    EXPECT_EQ(PixelF(*out, 5, 4).r, Draw(16, 0));
    EXPECT_EQ(PixelF(*out, 3, 3).g, Draw(16, 1));
    EXPECT_NE(PixelF(*out, 2, 3).g, Draw(16, 1));

    // "Selected": an index drawn below Number of colors picks a table colour.
    t.Field<int32_t>("Size"_id) = 0;
    t.Field<int32_t>("SizX"_id) = 0;  // a size of 0 works as 1
    t.Field<int32_t>("SizY"_id) = 1;
    t.Field<int32_t>("Type"_id) = 1;
    for (int32_t i = 0; i < 3; ++i) t.Field<KColor>(TableId(i)) = {0.1f * i, 0.2f, 0.3f, 0.5f * i};
    out = t.Run(source.get());
    for (int32_t y = 0; y < 6; ++y)
        for (int32_t x = 0; x < 8; ++x) {
            const int32_t i = RawDraws(x + y * 8 + 7, 1)[0] % 3;
            EXPECT_EQ(PixelF(*out, x, y).a, 0.5f * i) << x << "," << y;
        }
    t.Field<int32_t>("Coun"_id) = 0;  // a count out of the table stays within it
    EXPECT_EQ(PixelF(*t.Run(source.get()), 6, 2).a, 0.0f);
}

TEST(NoiseColor, HashAndRandomByChannel)
{
    std::unique_ptr<KImage> img(KImage::Create(3, 1, true));
    img->SetPixel(0, 0, KPixelF{0.25f, 0.5f, 0.75f, 1.0f});
    img->SetPixel(1, 0, KPixelF{0.25f, 0.5f, 0.75f, 1.0f});
    img->SetPixel(2, 0, KPixelF{0.25f, 0.25f, 0.75f, 0.0f});
    Tool t("ZV_Noise");
    t.Field<int32_t>("Base"_id) = 1;
    t.Field<int32_t>("Seed"_id) = 5;
    t.Field<int32_t>("SeOf"_id) = 3;
    auto expect = [&](const float (&v)[4]) {
        const KPixelF p = PixelF(*t.Run(img.get()), 0, 0);
        const float got[4] = {p.r, p.g, p.b, p.a};
        for (int c = 0; c < 4; ++c) EXPECT_NEAR(got[c], v[c], 1e-6f) << c;
    };
    // Hash: fract(sin(19.123 cos((seed + n * offset + v) * 12.13)) * 17.321).
    t.Field<int32_t>("Chan"_id) = 5;  // each channel for itself
    expect({0.782737135887146f, 0.01374673843383789f, 0.8590621948242188f, 0.5589208602905273f});
    t.Field<int32_t>("Chan"_id) = 0;  // red in all four
    expect({0.782737135887146f, 0.826324462890625f, 0.7417516708374023f, 0.9977664947509766f});
    const float half[4] = {0.6899394989013672f, 0.01374673843383789f, 0.32348060607910156f,
                           0.3653249740600586f};
    for (int32_t channel : {4, 9, 1}) {  // (0.75 + 0.25) / 2, any other value alike; green 0.5
        t.Field<int32_t>("Chan"_id) = channel;
        expect(half);
    }

    // Random: seed + n * offset + value * 65535 cut; 0.5 gives 32767.
    t.Field<int32_t>("NoiT"_id) = 0;
    t.Field<int32_t>("Chan"_id) = 5;
    t.Field<int32_t>("SeOf"_id) = 100;
    auto out = t.Run(img.get());
    expect({Draw(5 + 16383), Draw(105 + 32767), Draw(205 + 49151), Draw(305 + 65535)});
    EXPECT_EQ(PixelF(*out, 1, 0).g, PixelF(*out, 0, 0).g);  // alike wherever it is
    EXPECT_NE(PixelF(*out, 2, 0).g, PixelF(*out, 0, 0).g);
}

TEST(NoiseCombine, AddAndSubstractIncludeAlphaAndDoNotClip)
{
    std::unique_ptr<KImage> one(KImage::Create(1, 1, true));
    one->SetPixel(0, 0, KPixelF{0.25f, 0.5f, 0.75f, 1.0f});
    Tool t("ZV_Noise");
    const KPixelF drawn = PixelF(*t.Run(one.get()), 0, 0);
    EXPECT_EQ(drawn.a, Draw(0, 3));
    t.Field<int32_t>("Comb"_id) = 1;
    KPixelF p = PixelF(*t.Run(one.get()), 0, 0);
    EXPECT_EQ(p.r, 0.25f + drawn.r);
    EXPECT_EQ(p.a, 1.0f + drawn.a);
    t.Field<int32_t>("Comb"_id) = 2;
    p = PixelF(*t.Run(one.get()), 0, 0);
    EXPECT_EQ(p.b, 0.75f - drawn.b);
    EXPECT_EQ(p.a, 1.0f - drawn.a);
}

TEST(NoiseDepthsAndThreads, AgreeEverywhere)
{
    std::unique_ptr<KImage> f(zvtest::Pattern(16, 9, true)), w(zvtest::Pattern(16, 9, false));
    Tool t("ZV_Noise");
    t.Field<int32_t>("Comb"_id) = 1;
    for (int32_t base : {0, 1})
        for (int32_t type : {0, 1}) {
            t.Field<int32_t>("Base"_id) = base;
            t.Field<int32_t>("NoiT"_id) = type;
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

// Generate: the controls each Type shows, every pattern on pixels computed
// apart from this code, time, maps, bases, alpha, and the integer depth.
#include "support.h"

using namespace zvtest;

namespace {

TEST(Generate, TypeShowsItsControls)
{
    // No other change answers: Base leaves them as they are.
    ExpectShown("ZV_Generate", {"Iter", "IteM", "Ampl", "AmpM", "Deta", "DetM", "Nois", "NoiM", "Smoo", "SmoM", "OutT"},
                {{"Type", 1, "11001100000"}, {"Type", 0, "00000000000"}, {"Type", 5, "00001111000"},
                 {"Type", 6, "00000000000"}, {"Type", 11, "11001100000"}, {"Type", 12, "11001100000"},
                 {"Type", 14, "00000000000"}, {"Type", 15, "11110000000"}, {"Type", 17, "00001111000"},
                 {"Type", 18, "00000000111"}, {"Base", 1, "00000000111"}, {"Type", 19, "00000000000"}});
}

// An 8 x 6 float pattern with square pixels, picture aspect 4/3, and every
// part of the position matrix and of the time away from its default.
struct Turned : Tool<KEffectPixel> {
    Img source = Pattern(8, 6, true);
    Turned() : Tool("ZV_Generate")
    {
        for (auto [id, v] : {std::pair{"Scal"_id, 5.0f}, {"Size"_id, 1.25f}, {"Aspt"_id, 0.8f}, {"AngZ"_id, 0.3f},
                             {"Time"_id, 0.7f}, {"TSpe"_id, 1.5f}, {"TOff"_id, 0.1f}})
            Field<float>(id) = v;
        Field<KPoint2>("Cent"_id) = {0.4f, 0.3f};
    }
    Img Of(int32_t type)
    {
        Field<int32_t>("Type"_id) = type;
        return Run(source.get());
    }
};

TEST(Generate, EveryTypeOnTwoPixels)
{
    // The grey times the source alpha at 3,2 and at 6,5.
    const float alpha32 = 0.990829348564148f, alpha65 = 0.9777370691299438f;
    const struct { int32_t type; float at32, at65; } greys[] = {
        {1, 0.08567473292350769f, 0.807639479637146f},    // Concrete
        {5, 0.5350428819656372f, 0.6450298428535461f},    // Fluid
        {6, 0.5142573714256287f, 0.6349734663963318f},    // FBM
        {11, 0.5180456638336182f, 18.780561447143555f},   // Perlin: nothing clips
        {12, 0.2783537209033966f, 0.35168206691741943f},  // Plasma
        {14, 0.6823858022689819f, 0.5942978858947754f},   // Simplex
        {15, 0.6216205358505249f, 0.6287240982055664f},   // Slabrie
        {17, 0.5584364533424377f, 0.7989559173583984f},   // Water
        {18, 0.3236299157142639f, 0.8004504442214966f},   // Worley
    };
    auto expect = [](const KImage& img, int32_t x, int32_t y, KPixelF want) {
        const KPixelF p = At<KPixelF>(img, x, y);
        for (int c = 0; c < 3; ++c) EXPECT_NEAR(p[c], want[c], 1e-6f * std::fmax(1.0f, std::fabs(want[c]))) << x << "," << y;
        EXPECT_EQ(p.a, want.a);
    };
    Turned g;
    for (const auto& e : greys) {
        Img out = g.Of(e.type);
        expect(*out, 3, 2, {e.at32, e.at32, e.at32, alpha32});
        expect(*out, 6, 5, {e.at65, e.at65, e.at65, alpha65});
    }
    g.Field<int32_t>("OutT"_id) = 1;
    Img colour = g.Of(18);
    expect(*colour, 3, 2, {0.7702810168266296f, 0.9322673082351685f, -0.01152633223682642f, alpha32});
    expect(*colour, 6, 5, {0.6672683358192444f, 0.7504474520683289f, 0.020965883508324623f, alpha65});
    // Items without an algorithm, and indices beyond the list, draw Concrete.
    Img concrete = g.Of(1);
    for (int32_t type : {0, 2, 3, 4, 7, 8, 9, 10, 13, 16, 19, 20, -1}) EXPECT_EQ(Differ(*g.Of(type), *concrete), "") << type;
}

TEST(Generate, TimeAlphaBaseAndScale)
{
    Turned g;
    // t = Speed * Time + Offset; the render's own time plays no part.
    auto timing = [&g](float speed, float time, float offset) {
        g.Field<float>("TSpe"_id) = speed, g.Field<float>("Time"_id) = time, g.Field<float>("TOff"_id) = offset;
    };
    timing(2.0f, 0.5f, 0.25f);
    Img before = g.Of(17);
    timing(1.0f, 0.0f, 1.25f);
    EXPECT_EQ(Differ(*RunEffect(*g.effect, g.source.get(), {.time = 12.0f, .depth = 2}, false), *before), "");
    // Post-multiplied: alpha is the source's and scales the colour; else alpha is 1.
    g.Field<bool>("PMBA"_id) = false;
    const KPixelF m = At<KPixelF>(*before, 5, 1), s = At<KPixelF>(*g.Of(17), 5, 1);
    EXPECT_EQ(s.a, 1.0f);
    EXPECT_EQ(m.a, At<KPixelF>(*g.source, 5, 1).a);
    EXPECT_EQ(m.g, s.g * m.a);
    // "Pixel Value": red and green are the position, so equal colours draw alike;
    // "Both" adds them to the position, and black adds nothing.
    Img flat = Solid(8, 6, KPixelF{0.3f, 0.6f, 0.0f, 1.0f});
    g.Field<int32_t>("Base"_id) = 1;
    Img byValue = g.Run(flat.get());
    EXPECT_EQ(At<KPixelF>(*byValue, 7, 5).r, At<KPixelF>(*byValue, 0, 0).r);
    g.source = Img(KImage::Create(8, 6, true));
    g.Field<int32_t>("Base"_id) = 2;
    Img both = g.Of(17);
    g.Field<int32_t>("Base"_id) = 0;
    EXPECT_EQ(Differ(*both, *g.Of(17)), "");
    // A Scale of 0 is raised to 1.1920929e-07: Simplex stays at its origin's 0.5.
    g.Field<float>("Scal"_id) = 0.0f;
    timing(1.0f, 0.0f, 0.0f);
    Img still = g.Of(14);
    for (int32_t y = 0; y < 6; ++y)
        for (int32_t x = 0; x < 8; ++x) EXPECT_NEAR(At<KPixelF>(*still, x, y).r, 0.5f, 1e-5f);
}

TEST(Generate, ConnectedMapsMultiplyTheirValue)
{
    Turned g;
    Img half = Solid(8, 6, KPixelF{0.5f, 0.0f, 0.0f, 1.0f}), ones = Solid(4, 3, KPixelF{1.0f, 0.0f, 0.0f, 1.0f});
    // A map of one half against its value halved by hand.
    const struct { int32_t type; uint32_t value, map; } rows[] = {
        {1, "Deta"_id, "DetM"_id}, {15, "Ampl"_id, "AmpM"_id}, {17, "Nois"_id, "NoiM"_id},
        {18, "Smoo"_id, "SmoM"_id}, {14, "TSpe"_id, "TSpM"_id}, {11, "ScaM"_id, "ScaM"_id}};
    for (const auto& r : rows) {
        g.Field<int32_t>("Type"_id) = r.type;
        Img plain = g.Of(r.type);
        if (r.value != r.map) g.Field<float>(r.value) *= 2.0f;
        g.Field<KImage*>(r.map) = half.get();  // a Scale Map is never read
        EXPECT_EQ(Differ(*g.Of(r.type), *plain), "") << r.type;
        if (r.value != r.map) g.Field<float>(r.value) *= 0.5f;
        g.Field<KImage*>(r.map) = nullptr;
    }
    g.Field<int32_t>("Iter"_id) = 2;
    Img two = g.Of(12);
    g.Field<int32_t>("Iter"_id) = 4;
    g.Field<KImage*>("IteM"_id) = half.get();
    EXPECT_EQ(Differ(*g.Of(12), *two), "");
    // A 4 x 3 map of ones over 8 x 6 reads 0 beyond it: no rounds there.
    // Concrete then gives sqrt(8) * 2 / 15, Slabrie 1.
    g.Field<bool>("PMBA"_id) = false;
    for (int32_t type : {1, 15}) {
        g.Field<KImage*>("IteM"_id) = nullptr;
        Img plain = g.Of(type);
        g.Field<KImage*>("IteM"_id) = ones.get();
        Img mapped = g.Of(type);
        const float none = type == 1 ? sqrtf(8.0f) * 2.0f * 0.06666667f : 1.0f;
        for (int32_t y = 0; y < 6; ++y)
            for (int32_t x = 0; x < 8; ++x)
                EXPECT_EQ(At<KPixelF>(*mapped, x, y).r, x < 4 && y < 3 ? At<KPixelF>(*plain, x, y).r : none) << type;
    }
    g.Field<KImage*>("IteM"_id) = nullptr;
}

TEST(Generate, IntegerIsTheFloatResultConverted)
{
    Turned g;
    Img wide = Pattern(8, 6, false), converted(KImage::Create(8, 6, false));
    for (int32_t type : {1, 5, 6, 11, 12, 14, 15, 17, 18}) {
        converted->CopyFrom(*g.Of(type));  // by the float-to-integer rule
        EXPECT_EQ(Differ(*g.Run(wide.get()), *converted), "") << type;
    }
}

}  // namespace

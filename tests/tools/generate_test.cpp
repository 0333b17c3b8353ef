// Generate: the controls each Type shows, every pattern on pixels computed
// apart from this code, time, maps, bases, alpha, and the integer depth.
#include "support.h"

using namespace zvtest;

namespace {

TEST(Generate, TypeShowsItsControls)
{
    // Visibility sent on a Type change, in this order.
    const std::vector<uint32_t> order = {"Iter"_id, "IteM"_id, "Ampl"_id, "AmpM"_id, "Deta"_id, "DetM"_id,
                                         "Nois"_id, "NoiM"_id, "Smoo"_id, "SmoM"_id, "OutT"_id};
    Tool<KEffectPixel> t("ZV_Generate");
    const std::pair<int32_t, const char*> cases[] = {
        {0, "00000000000"},  {1, "11001100000"},  {5, "00001111000"},  {6, "00000000000"},
        {11, "11001100000"}, {12, "11001100000"}, {14, "00000000000"}, {15, "11110000000"},
        {17, "00001111000"}, {18, "00000000111"}, {19, "00000000000"}, {25, "00000000000"}};
    for (const auto& [type, shown] : cases) EXPECT_EQ(t.Shown("Type"_id, type, order), shown) << type;
    EXPECT_EQ(t.Shown("Base"_id, 1, order), "");  // the only change answered is Type's
    EXPECT_EQ(t.Shown("PMBA"_id, 0, order), "");
}

// An 8 x 6 float pattern with square pixels, picture aspect 4/3, and every
// part of the position matrix and of the time away from its default.
struct Turned {
    Tool<KEffectPixel> t{"ZV_Generate"};
    Img source = Pattern(8, 6, true);
    Turned()
    {
        t.Field<float>("Scal"_id) = 5.0f;
        t.Field<float>("Size"_id) = 1.25f;
        t.Field<float>("Aspt"_id) = 0.8f;
        t.Field<float>("AngZ"_id) = 0.3f;
        t.Field<KPoint2>("Cent"_id) = {0.4f, 0.3f};
        t.Field<float>("Time"_id) = 0.7f;
        t.Field<float>("TSpe"_id) = 1.5f;
        t.Field<float>("TOff"_id) = 0.1f;
    }
    Img Run(int32_t type)
    {
        t.Field<int32_t>("Type"_id) = type;
        return t.Run(source.get());
    }
    // Two settings that must render alike.
    void ExpectSame(const std::function<void()>& a, const std::function<void()>& b,
                    const char* what)
    {
        a();
        auto first = t.Run(source.get());
        b();
        EXPECT_EQ(Differ(*first, *t.Run(source.get())), "") << what;
    }
};

constexpr float kAlpha32 = 0.990829348564148f;  // source alpha at 3,2
constexpr float kAlpha65 = 0.9777370691299438f;  // and at 6,5

void ExpectPixel(const KImage& img, int32_t x, int32_t y, const float (&rgb)[3], float alpha)
{
    const KPixelF p = At<KPixelF>(img, x, y);
    const float got[3] = {p.r, p.g, p.b};
    for (int c = 0; c < 3; ++c)
        EXPECT_NEAR(got[c], rgb[c], 1e-6f * std::fmax(1.0f, std::fabs(rgb[c]))) << x << "," << y;
    EXPECT_EQ(p.a, alpha);
}

TEST(Generate, EveryTypeOnTwoPixels)
{
    // The grey times the source alpha at 3,2 and at 6,5.
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
    Turned g;
    for (const auto& e : greys) {
        auto out = g.Run(e.type);
        ExpectPixel(*out, 3, 2, {e.at32, e.at32, e.at32}, kAlpha32);
        ExpectPixel(*out, 6, 5, {e.at65, e.at65, e.at65}, kAlpha65);
    }
    g.t.Field<int32_t>("OutT"_id) = 1;
    auto colour = g.Run(18);
    ExpectPixel(*colour, 3, 2, {0.7702810168266296f, 0.9322673082351685f, -0.01152633223682642f},
                kAlpha32);
    ExpectPixel(*colour, 6, 5, {0.6672683358192444f, 0.7504474520683289f, 0.020965883508324623f},
                kAlpha65);
    // Items without an algorithm, and indices beyond the list, draw Concrete.
    auto concrete = g.Run(1);
    for (int32_t type : {0, 2, 3, 4, 7, 8, 9, 10, 13, 16, 19, 20, -1})
        EXPECT_EQ(Differ(*g.Run(type), *concrete), "") << type;
}

TEST(Generate, TimeScaleAlphaAndBase)
{
    Turned g;
    auto timing = [&g](float speed, float time, float offset) {
        g.t.Field<float>("TSpe"_id) = speed;
        g.t.Field<float>("Time"_id) = time;
        g.t.Field<float>("TOff"_id) = offset;
    };
    // t = Speed * Time + Offset; the render's own time plays no part.
    for (int32_t type : {1, 5, 11, 17, 18}) {
        g.t.Field<int32_t>("Type"_id) = type;
        g.ExpectSame([&] { timing(2.0f, 0.5f, 0.25f); }, [&] { timing(1.0f, 0.0f, 1.25f); }, "t");
        KRenderSettings later = Settings(true);
        later.time = 12.0f;
        EXPECT_EQ(Differ(*RunEffect(*g.t.effect, g.source.get(), later, false), *g.t.Run(g.source.get())), "") << type;
    }

    // Post-multiplied: alpha is the source's and scales the colour; else alpha is 1.
    auto multiplied = g.Run(17);
    g.t.Field<bool>("PMBA"_id) = false;
    auto straight = g.Run(17);
    const KPixelF m = At<KPixelF>(*multiplied, 5, 1), s = At<KPixelF>(*straight, 5, 1);
    EXPECT_EQ(s.a, 1.0f);
    EXPECT_EQ(m.a, At<KPixelF>(*g.source, 5, 1).a);
    EXPECT_EQ(m.g, s.g * m.a);

    // "Pixel Value": red and green are the position, so equal colours draw alike;
    // "Both" adds them to the position, and black adds nothing.
    Img flat(KImage::Create(8, 6, true));
    for (int32_t y = 0; y < 6; ++y)
        for (int32_t x = 0; x < 8; ++x) flat->SetPixel(x, y, KPixelF{0.3f, 0.6f, float(x), 1.0f});
    g.t.Field<int32_t>("Base"_id) = 1;
    auto byValue = g.t.Run(flat.get());
    EXPECT_EQ(At<KPixelF>(*byValue, 7, 5).r, At<KPixelF>(*byValue, 0, 0).r);
    EXPECT_NE(At<KPixelF>(*straight, 7, 5).r, At<KPixelF>(*straight, 0, 0).r);
    g.source.reset(KImage::Create(8, 6, true));
    g.ExpectSame([&] { g.t.Field<int32_t>("Base"_id) = 0; },
                 [&] { g.t.Field<int32_t>("Base"_id) = 2; }, "both");

    // A Scale of 0 is raised to 1.1920929e-07: Simplex stays at its origin's 0.5.
    g.t.Field<float>("Scal"_id) = 0.0f;
    timing(1.0f, 0.0f, 0.0f);
    auto still = g.Run(14);
    for (int32_t y = 0; y < 6; ++y)
        for (int32_t x = 0; x < 8; ++x) EXPECT_NEAR(At<KPixelF>(*still, x, y).r, 0.5f, 1e-5f);
}

TEST(Generate, ConnectedMapsMultiplyTheirValue)
{
    Turned g;
    Img half = Solid(8, 6, KPixelF{0.5f, 0.0f, 0.0f, 1.0f});
    auto lend = [&g](uint32_t map, KImage* img) { g.t.Field<KImage*>(map) = img; };
    // A map of one half against its value halved by hand: all halve exactly.
    for (int32_t type : {1, 11, 12, 15}) {
        g.t.Field<int32_t>("Type"_id) = type;
        g.ExpectSame([&] { g.t.Field<int32_t>("Iter"_id) = 2; },
                     [&] { g.t.Field<int32_t>("Iter"_id) = 4, lend("IteM"_id, half.get()); },
                     "iterations");
        lend("IteM"_id, nullptr);
    }
    const struct {
        int32_t type;
        uint32_t value, map;
    } floats[] = {{1, "Deta"_id, "DetM"_id},  {5, "Deta"_id, "DetM"_id},  {11, "Deta"_id, "DetM"_id},
                  {12, "Deta"_id, "DetM"_id}, {17, "Deta"_id, "DetM"_id}, {15, "Ampl"_id, "AmpM"_id},
                  {5, "Nois"_id, "NoiM"_id},  {17, "Nois"_id, "NoiM"_id}, {18, "Smoo"_id, "SmoM"_id},
                  {14, "TSpe"_id, "TSpM"_id}};
    for (const auto& c : floats) {
        g.t.Field<int32_t>("Type"_id) = c.type;
        const float before = g.t.Field<float>(c.value);
        g.ExpectSame([&] { g.t.Field<float>(c.value) = 0.75f; },
                     [&] { g.t.Field<float>(c.value) = 1.5f, lend(c.map, half.get()); }, "float");
        lend(c.map, nullptr);
        g.t.Field<float>(c.value) = before;
    }

    // A Scale Map is never read, nor a map whose control the pattern lacks.
    Img black = Solid(8, 6, KPixelF{0.0f, 0.0f, 0.0f, 1.0f});
    for (int32_t type : {1, 5, 6, 11, 12, 14, 15, 17, 18}) {
        g.t.Field<int32_t>("Type"_id) = type;
        g.ExpectSame([] {}, [&] { lend("ScaM"_id, black.get()); }, "scale map");
        lend("ScaM"_id, nullptr);
    }
    const uint32_t others[] = {"IteM"_id, "AmpM"_id, "DetM"_id, "NoiM"_id, "SmoM"_id};
    g.t.Field<int32_t>("Type"_id) = 14;
    g.ExpectSame([] {}, [&] { for (uint32_t m : others) lend(m, black.get()); }, "simplex");
    for (uint32_t m : others) lend(m, nullptr);

    // A 4 x 3 map of ones over 8 x 6 reads 0 beyond it: no rounds there.
    // Concrete then gives sqrt(8) * 2 / 15, Slabrie 1 and Perlin (0 - 1) squared.
    Img ones = Solid(4, 3, KPixelF{1.0f, 0.0f, 0.0f, 1.0f});
    g.t.Field<bool>("PMBA"_id) = false;
    for (int32_t type : {1, 15, 11}) {
        auto plain = g.Run(type);
        lend("IteM"_id, ones.get());
        auto mapped = g.Run(type);
        lend("IteM"_id, nullptr);
        const float none = type == 1 ? sqrtf(8.0f) * 2.0f * 0.06666667f : 1.0f;
        for (int32_t y = 0; y < 6; ++y)
            for (int32_t x = 0; x < 8; ++x)
                EXPECT_EQ(At<KPixelF>(*mapped, x, y).r, x < 4 && y < 3 ? At<KPixelF>(*plain, x, y).r : none)
                    << type << " at " << x << "," << y;
    }
}

TEST(Generate, IntegerIsTheFloatResultConverted)
{
    Turned g;
    Img wide = Pattern(8, 6, false);
    for (int32_t type : {1, 5, 6, 11, 12, 14, 15, 17, 18}) {
        auto f = g.Run(type);
        auto w = g.t.Run(wide.get());
        for (int32_t y = 0; y < 6; ++y)
            for (int32_t x = 0; x < 8; ++x) {
                const KPixel q = At<KPixel>(*w, x, y);
                const KPixelF p = At<KPixelF>(*f, x, y);
                ASSERT_EQ(q.r, KFloatToInt(p.r)) << type;
                ASSERT_EQ(q.a, KFloatToInt(p.a)) << type;
            }
    }
}

}  // namespace

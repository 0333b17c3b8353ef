// Generate: declarations, the controls each Type shows, every pattern on
// pixels computed apart from this code, maps, bases, alpha, depths, threads.
#include <cmath>
#include <functional>
#include "pixel_tool_support.h"

using namespace zvpixel;

namespace {

TEST(GenerateDeclarations, OrderKindsDefaultsLimitsAndItems)
{
    Tool t("ZV_Generate");
    struct Row {
        uint32_t id;
        int32_t control;
        float def, lo, hi;
        uint32_t flags;
    };
    constexpr int32_t kImage = kControlImageInput, kSlider = kControlSlider;
    const Row rows[] = {
        {"Base"_id, kControlMultiButton, 0, 0, 0, 1}, {"Type"_id, kControlCombo, 0, 0, 0, 1},
        {"Defa"_id, kControlButton, 0, 0, 0, 0},      {"Scal"_id, kSlider, 16, 0, 100, 2048},
        {"ScaM"_id, kImage, 0, 0, 0, 0},              {"Iter"_id, kSlider, 4, 1, 10, 2048},
        {"IteM"_id, kImage, 0, 0, 0, 0},              {"Ampl"_id, kSlider, 0.679f, -1, 1, 3072},
        {"AmpM"_id, kImage, 0, 0, 0, 0},              {"Deta"_id, kSlider, 4, -1, 1, 3072},
        {"DetM"_id, kImage, 0, 0, 0, 0},              {"Nois"_id, kSlider, 1, -1, 1, 3072},
        {"NoiM"_id, kImage, 0, 0, 0, 0},              {"Smoo"_id, kSlider, 0.679f, -1, 1, 3072},
        {"SmoM"_id, kImage, 0, 0, 0, 0},              {"PMBA"_id, kControlCheckbox, 1, 0, 0, 1},
        {"OutT"_id, kControlMultiButton, 0, 0, 0, 0}, {"Timi"_id, kControlBeginNest, 0, 0, 0, 0},
        {"Time"_id, kSlider, 0, -5, 5, 3072},         {"TSpe"_id, kSlider, 1, 0, 5, 3072},
        {"TSpM"_id, kImage, 0, 0, 0, 0},              {"TOff"_id, kSlider, 0, -1, 1, 3072},
        {0, kControlEndNest, 0, 0, 0, 0},             {"Posi"_id, kControlBeginNest, 0, 0, 0, 0},
        {"Cent"_id, kControlPoint, 0, 0, 0, 4},       {"Size"_id, kSlider, 1, 0, 10, 2048},
        {"AngZ"_id, kControlAngle, 0, 0, 0, 50331652}, {"Aspt"_id, kSlider, 1, 0.001f, 5, 2048},
        {0, kControlEndNest, 0, 0, 0, 0},
    };
    KParameter* p = t.effect->inputs();
    for (const Row& r : rows) {
        ASSERT_NE(p, nullptr);
        EXPECT_EQ(p->id, r.id) << p->name;
        EXPECT_EQ(p->controlKind, r.control) << p->name;
        EXPECT_EQ(p->flags, r.flags) << p->name;
        EXPECT_EQ(p->defaultValue, r.def) << p->name;  // Detail's 4 lies beyond its limits
        if (r.control == kSlider) {
            EXPECT_EQ(p->minimum, r.lo) << p->name;
            EXPECT_EQ(p->maximum, r.hi) << p->name;
        }
        p = p->Next();
    }
    EXPECT_EQ(p, nullptr);
    EXPECT_EQ(t.effect->inputList.Find("AngZ"_id)->angleUnit, 1);
    zvtest::ExpectInputs("ZV_Generate",
                         {{"Base", "items Position|Pixel Value (RG is UV)|Both"},
                          {"Type", "items - Cells|Concrete|- Clouds|- Crawling|- Flow|Fluid|FBM|- Fractal|"
                                   "- Francis|- Frederic|- Marble|Perlin|Plasma|- Ridged|Simplex|Slabrie|"
                                   "- Value|Water|Worley|- Wood"},
                          {"OutputType", "items Mono|Color"},
                          {"ScaleMap", "type Image"},
                          {"Width", "absent"}});  // not a source
}

TEST(GenerateOnChange, TypeShowsItsControls)
{
    // Visibility sent on a Type change, in this order.
    const std::vector<uint32_t> order = {"Iter"_id, "IteM"_id, "Ampl"_id, "AmpM"_id, "Deta"_id, "DetM"_id,
                                         "Nois"_id, "NoiM"_id, "Smoo"_id, "SmoM"_id, "OutT"_id};
    Tool t("ZV_Generate");
    const std::pair<int32_t, const char*> cases[] = {
        {0, "00000000000"},  {1, "11001100000"},  {5, "00001111000"},  {6, "00000000000"},
        {11, "11001100000"}, {12, "11001100000"}, {14, "00000000000"}, {15, "11110000000"},
        {17, "00001111000"}, {18, "00000000111"}, {19, "00000000000"}, {25, "00000000000"}};
    for (const auto& [type, shown] : cases) EXPECT_EQ(Shown(*t.effect, "Type"_id, type, order), shown) << type;
    EXPECT_EQ(Shown(*t.effect, "Base"_id, 1, order), "");  // the only change answered is Type's
    EXPECT_EQ(Shown(*t.effect, "PMBA"_id, 0, order), "");

    std::unique_ptr<KImage> plate(zvtest::Pattern(4, 3, true));
    Flow f("ZV_Generate", plate.get());
    zvtest::ExpectShown(f, {"IterationsMap", "SmoothnessMap", "OutputType"}, {{"Type", 18, "011"}, {"Type", 15, "100"}});
}

// An 8 x 6 float pattern with square pixels, picture aspect 4/3, and every
// part of the position matrix and of the time away from its default.
struct Turned {
    Tool t{"ZV_Generate"};
    std::unique_ptr<KImage> source{zvtest::Pattern(8, 6, true)};
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
    std::unique_ptr<KImage> Run(int32_t type)
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
        EXPECT_EQ(zvtest::Differ(*first, *t.Run(source.get())), "") << what;
    }
};

constexpr float kAlpha32 = 0.990829348564148f;  // source alpha at 3,2
constexpr float kAlpha65 = 0.9777370691299438f;  // and at 6,5

void ExpectPixel(const KImage& img, int32_t x, int32_t y, const float (&rgb)[3], float alpha)
{
    const KPixelF p = PixelF(img, x, y);
    const float got[3] = {p.r, p.g, p.b};
    for (int c = 0; c < 3; ++c)
        EXPECT_NEAR(got[c], rgb[c], 1e-6f * std::fmax(1.0f, std::fabs(rgb[c]))) << x << "," << y;
    EXPECT_EQ(p.a, alpha);
}

TEST(GeneratePatterns, EveryTypeOnTwoPixels)
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
        EXPECT_EQ(zvtest::Differ(*g.Run(type), *concrete), "") << type;
}

TEST(GenerateParameters, TimeScaleAlphaAndBase)
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
        KRenderSettings later = zvtest::Settings(true);
        later.time = 12.0f;
        std::unique_ptr<KImage> out(zvtest::RunEffect(*g.t.effect, g.source.get(), later, false));
        EXPECT_EQ(zvtest::Differ(*out, *g.t.Run(g.source.get())), "") << type;
    }

    // Post-multiplied: alpha is the source's and scales the colour; else alpha is 1.
    auto multiplied = g.Run(17);
    g.t.Field<bool>("PMBA"_id) = false;
    auto straight = g.Run(17);
    const KPixelF m = PixelF(*multiplied, 5, 1), s = PixelF(*straight, 5, 1);
    EXPECT_EQ(s.a, 1.0f);
    EXPECT_EQ(m.a, PixelF(*g.source, 5, 1).a);
    EXPECT_EQ(m.g, s.g * m.a);

    // "Pixel Value": red and green are the position, so equal colours draw alike;
    // "Both" adds them to the position, and black adds nothing.
    std::unique_ptr<KImage> flat(KImage::Create(8, 6, true));
    for (int32_t y = 0; y < 6; ++y)
        for (int32_t x = 0; x < 8; ++x) flat->SetPixel(x, y, KPixelF{0.3f, 0.6f, float(x), 1.0f});
    g.t.Field<int32_t>("Base"_id) = 1;
    auto byValue = g.t.Run(flat.get());
    EXPECT_EQ(PixelF(*byValue, 7, 5).r, PixelF(*byValue, 0, 0).r);
    EXPECT_NE(PixelF(*straight, 7, 5).r, PixelF(*straight, 0, 0).r);
    g.source.reset(KImage::Create(8, 6, true));
    g.ExpectSame([&] { g.t.Field<int32_t>("Base"_id) = 0; },
                 [&] { g.t.Field<int32_t>("Base"_id) = 2; }, "both");

    // A Scale of 0 is raised to 1.1920929e-07: Simplex stays at its origin's 0.5.
    g.t.Field<float>("Scal"_id) = 0.0f;
    timing(1.0f, 0.0f, 0.0f);
    auto still = g.Run(14);
    for (int32_t y = 0; y < 6; ++y)
        for (int32_t x = 0; x < 8; ++x) EXPECT_NEAR(PixelF(*still, x, y).r, 0.5f, 1e-5f);
}

TEST(GenerateMaps, ConnectedMapsMultiplyTheirValue)
{
    Turned g;
    std::unique_ptr<KImage> half = Constant(8, 6, 0.5f);
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
    std::unique_ptr<KImage> black = Constant(8, 6, 0.0f);
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
    std::unique_ptr<KImage> ones = Constant(4, 3, 1.0f);
    g.t.Field<bool>("PMBA"_id) = false;
    for (int32_t type : {1, 15, 11}) {
        auto plain = g.Run(type);
        lend("IteM"_id, ones.get());
        auto mapped = g.Run(type);
        lend("IteM"_id, nullptr);
        const float none = type == 1 ? sqrtf(8.0f) * 2.0f * 0.06666667f : 1.0f;
        for (int32_t y = 0; y < 6; ++y)
            for (int32_t x = 0; x < 8; ++x)
                EXPECT_EQ(PixelF(*mapped, x, y).r, x < 4 && y < 3 ? PixelF(*plain, x, y).r : none)
                    << type << " at " << x << "," << y;
    }
}

TEST(GenerateDepths, IntegerIsTheFloatResultConverted)
{
    Turned g;
    std::unique_ptr<KImage> wide(zvtest::Pattern(8, 6, false));
    for (int32_t type : {1, 5, 6, 11, 12, 14, 15, 17, 18}) {
        auto f = g.Run(type);
        auto w = g.t.Run(wide.get());
        for (int32_t y = 0; y < 6; ++y)
            for (int32_t x = 0; x < 8; ++x) {
                KPixel q;
                w->GetPixel(x, y, q, kEdgeBlack);
                const KPixelF p = PixelF(*f, x, y);
                ASSERT_EQ(q.r, KFloatToInt(p.r)) << type;
                ASSERT_EQ(q.a, KFloatToInt(p.a)) << type;
            }
    }
}

TEST(GenerateFlow, ThreadsAndSerialRunsAgree)
{
    std::unique_ptr<KImage> large(zvtest::Pattern(64, 40, true));
    for (int32_t type : {1, 5, 12, 15, 18}) {
        Flow big("ZV_Generate", large.get());
        big.Set("Type", type);
        big.Set("Scale", 6);
        EXPECT_EQ(big.ThreadsAgree(), "") << type;
    }
}

}  // namespace

#include "colour_support.h"

using namespace zvcolour;

namespace {

struct ColorTool : Tool {
    ColorTool() : Tool("ZV_Color") {}
    void Set(int32_t type, KColor c)
    {
        Field<int32_t>("InTy"_id) = type;
        Field<KColor>("ColR"_id) = c;
    }
};

TEST(ColorDeclarations, WhiteReplaceOnItsPage)
{
    ColorTool t;
    EXPECT_EQ(t.In("ColorRed").page, "Color");
    EXPECT_EQ(t.In("ColorRed").label, "Color");
    EXPECT_EQ(*t.In("ColorAlpha").attrs.defaultNumber, 1.0);
    EXPECT_EQ(t.In("Type").attrs.items,
              (std::vector<std::string>{"Replace", "Add", "Subtract", "Multiply", "Divide"}));
    EXPECT_EQ(t.effect->inputList.Find("ColR"_id)->id4, "ColA"_id);
}

TEST(ColorFloat, TypesOnEveryComponent)
{
    ColorTool t;
    const KPixelF p{0.25f, 0.3f, 1.0f, 0.5f};
    t.Set(0, {0.5f, 0.0f, 2.0f, 0.0f});
    KPixelF o = t.Run(p);
    EXPECT_EQ(o.b, 2.0f);
    EXPECT_EQ(o.a, 0.0f);
    t.Set(1, {0.5f, 0.0f, 2.0f, 0.25f});
    o = t.Run(p);
    EXPECT_EQ(o.r, 0.75f);
    EXPECT_EQ(o.b, 3.0f);  // no clipping
    EXPECT_EQ(o.a, 0.75f);
    t.Set(2, {0.5f, 0.0f, 2.0f, 0.25f});
    EXPECT_EQ(t.Run(p).r, -0.25f);
    t.Set(3, {0.5f, 0.0f, 2.0f, 0.25f});
    o = t.Run(p);
    EXPECT_EQ(o.r, 0.125f);
    EXPECT_EQ(o.a, 0.125f);
    // A zero component divides by one: that channel stays.
    t.Set(4, {0.5f, 0.0f, 2.0f, 0.0f});
    o = t.Run(p);
    EXPECT_EQ(o.r, 0.5f);
    EXPECT_EQ(o.g, 0.3f);
    EXPECT_EQ(o.b, 0.5f);
    EXPECT_EQ(o.a, 0.5f);
    t.Set(9, {0.5f, 0.0f, 2.0f, 0.0f});  // unknown type
    EXPECT_EQ(t.Run(p).g, 0.3f);
}

TEST(ColorInteger, ClippedIntegerArithmetic)
{
    ColorTool t;
    const KPixel p{40000, 100, 0, 65535};
    const KColor c{0.5f, 0.0f, 1.5f, 0.0f};  // 32767, 0, 65535, 0
    t.Set(0, c);
    KPixel o = t.Run(p);
    EXPECT_EQ(o.r, 32767u);
    EXPECT_EQ(o.b, 65535u);
    t.Set(1, c);
    o = t.Run(p);
    EXPECT_EQ(o.r, 65535u);
    EXPECT_EQ(o.g, 100u);
    EXPECT_EQ(o.b, 65535u);
    t.Set(2, c);
    o = t.Run(p);
    EXPECT_EQ(o.r, 7233u);
    EXPECT_EQ(o.b, 0u);
    t.Set(3, c);
    o = t.Run(p);
    EXPECT_EQ(o.r, 19999u);  // 40000 * 32767 / 65535, truncated
    EXPECT_EQ(o.a, 0u);
    // Divide works on the integer values; a zero component leaves the channel.
    t.Set(4, c);
    o = t.Run(KPixel{65534, 1234, 65535, 500});
    EXPECT_EQ(o.r, 2u);
    EXPECT_EQ(o.g, 1234u);
    EXPECT_EQ(o.b, 1u);
    EXPECT_EQ(o.a, 500u);
    // The colour reaches integers through double: code 30000 comes out 29999.
    t.Set(0, {KIntToFloat(30000), -1.0f, 0.0f, 0.0f});
    o = t.Run(p);
    EXPECT_EQ(o.r, 29999u);
    EXPECT_EQ(o.g, 0u);
}

TEST(ColorFlow, ColourFromTheHost)
{
    Flow f("ZV_Color", Row<KPixel>({{1, 2, 3, 4}}));
    f.Set("ColorGreen", 0.5);
    f.Set("Type", 3);
    const KPixel o = f.Render<KPixel>()[0];
    EXPECT_EQ(o.r, 1u);
    EXPECT_EQ(o.g, 0u);  // 2 * 32767 / 65535
    EXPECT_EQ(o.a, 4u);
}

}  // namespace

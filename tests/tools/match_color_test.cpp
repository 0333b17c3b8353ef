#include "colour_support.h"

using namespace zvcolour;

namespace {

struct MatchTool : Tool {
    MatchTool() : Tool("ZV_MatchColor") {}
    void Row(uint32_t row, KColor is, KColor should, int32_t type = 0)
    {
        Field<KColor>("CSR0"_id + row) = is;
        Field<KColor>("CDR0"_id + row) = should;
        Field<int32_t>("CTy0"_id + row) = type;
    }
    void Colors(int32_t value) { Field<int32_t>("CoNu"_id) = value; }
};

TEST(MatchColorDeclarations, RowsOfGreys)
{
    MatchTool t;
    EXPECT_EQ(t.In("Numberofcolors").attrs.items,
              (std::vector<std::string>{"Single", "Low and High", "Low, Mid && High"}));
    EXPECT_EQ(*t.In("Numberofcolors").attrs.defaultNumber, 2.0);
    EXPECT_TRUE(t.In("Numberofcolors").attrs.notify);
    EXPECT_EQ(t.In("Highlightsmatch").attrs.items,
              (std::vector<std::string>{"Full color", "Color tint", "Luminance"}));
    EXPECT_EQ(*t.In("Whatitis2Blue").attrs.defaultNumber, 0.5);
    EXPECT_EQ(*t.In("Whatitshouldbe3Red").attrs.defaultNumber, 1.0);
    EXPECT_EQ(*t.In("Whatitshouldbe3Alpha").attrs.defaultNumber, 0.0);
    EXPECT_EQ(t.In("Whatitshouldbe3Red").label, "What it should be 3");
    EXPECT_NE(t.effect->inputList.Find("CDR2"_id), nullptr);
}

TEST(MatchColorSingle, FloatBlueFollowsAlphaIntegerBlueDoesNot)
{
    MatchTool t;
    t.Colors(0);
    t.Row(0, {0.125f, 0.25f, 0.375f, 0.0f}, {0.25f, 0.5f, 0.625f, 0.0f});
    const KPixelF f = t.Run(KPixelF{0.5f, 0.5f, 0.75f, 0.25f});
    EXPECT_EQ(f.r, 0.625f);
    EXPECT_EQ(f.g, 0.75f);
    EXPECT_EQ(f.b, 0.5f);  // from alpha 0.25, not from blue 0.75
    EXPECT_EQ(f.a, 0.25f);
    // The table runs over x = i / 65536 and scales by 65536.
    const KPixel i = t.Run(KPixel{32768, 16384, 49152, 12345});
    EXPECT_EQ(i.r, 40960u);
    EXPECT_EQ(i.g, 32768u);
    EXPECT_EQ(i.b, 65535u);  // from blue: 1.0, clipped
    EXPECT_EQ(i.a, 12345u);
}

TEST(MatchColorRows, TintAndLuminanceMoveTheWantedColour)
{
    MatchTool t;
    t.Colors(0);
    const KColor is{0.25f, 0.25f, 0.25f, 1.0f}, should{0.75f, 0.5f, 0.25f, 1.0f};
    t.Row(0, is, should, 1);  // keeps the hue, takes the source's average
    KPixelF f = t.Run(KPixelF{0.25f, 0.25f, 0.25f, 0.25f});
    EXPECT_NEAR(f.r, 0.5f, 1e-6f);
    EXPECT_NEAR(f.g, 0.25f, 1e-6f);
    t.Row(0, is, should, 2);  // keeps the source colour, takes the wanted average
    f = t.Run(KPixelF{0.25f, 0.25f, 0.25f, 0.25f});
    EXPECT_NEAR(f.r, 0.5f, 1e-6f);
    EXPECT_NEAR(f.g, 0.5f, 1e-6f);
}

TEST(MatchColorThree, GammaThroughTheMidAndAlphaCleared)
{
    MatchTool t;
    // The defaults map each grey to itself.
    KPixelF f = t.Run(KPixelF{0.25f, 0.5f, 0.75f, 0.8f});
    EXPECT_FLOAT_EQ(f.r, 0.25f);
    EXPECT_FLOAT_EQ(f.b, 0.75f);
    EXPECT_EQ(f.a, 0.0f);
    KPixel i = t.Run(KPixel{1000, 2000, 65535, 777});
    EXPECT_EQ(i.r, 1000u);
    EXPECT_EQ(i.b, 65535u);
    EXPECT_EQ(i.a, 777u);
    // A mid of 0.25 wanted as 0.5: gamma 0.5, a square root.
    t.Row(1, {0.25f, 0.25f, 0.25f, 0.0f}, {0.5f, 0.5f, 0.5f, 0.0f});
    f = t.Run(KPixelF{0.0625f, 0.25f, 1.0f, 1.0f});
    EXPECT_EQ(f.r, 0.25f);
    EXPECT_EQ(f.g, 0.5f);
    EXPECT_EQ(f.b, 1.0f);
    i = t.Run(KPixel{16384, 4096, 0, 5});
    EXPECT_EQ(i.r, 32768u);
    EXPECT_EQ(i.g, 16384u);
    EXPECT_EQ(i.b, 0u);
    // A mid not strictly inside its span keeps the curve straight.
    t.Row(1, {0.0f, 0.25f, 0.25f, 0.0f}, {0.5f, 0.5f, 0.5f, 0.0f});
    f = t.Run(KPixelF{0.0625f, 0.0625f, 0.0625f, 1.0f});
    EXPECT_EQ(f.r, 0.0625f);
    EXPECT_EQ(f.g, 0.25f);
    // Two colours: linear between low and high, the mid row unread.
    t.Colors(1);
    t.Row(2, {1.0f, 1.0f, 1.0f, 0.0f}, {0.5f, 0.5f, 0.5f, 0.0f});
    f = t.Run(KPixelF{0.5f, 0.5f, 0.5f, 0.5f});
    EXPECT_EQ(f.r, 0.25f);
    EXPECT_EQ(f.a, 0.5f);
}

TEST(MatchColorChange, RowsFollowTheNumberOfColors)
{
    Flow f("ZV_MatchColor", zvcolour::Row<KPixel>({{0, 0, 0, 0}}));
    f.Set("Numberofcolors", 0);
    for (const char* id : {"Midtonesmatch", "Whatitis2Red", "Whatitshouldbe2Red", "Highlightsmatch",
                           "Whatitis3Red", "Whatitshouldbe3Red"})
        EXPECT_FALSE(f.Visible(id)) << id;
    EXPECT_TRUE(f.Visible("Whatitis1Red"));
    f.Set("Numberofcolors", 1);
    EXPECT_FALSE(f.Visible("Whatitis2Red"));
    EXPECT_TRUE(f.Visible("Highlightsmatch"));
    EXPECT_TRUE(f.Visible("Whatitshouldbe3Red"));
    f.Set("Numberofcolors", 2);
    EXPECT_TRUE(f.Visible("Midtonesmatch"));
}

}  // namespace

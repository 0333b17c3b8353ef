// Match Color: one, two or three greys mapped to wanted colours through a
// table, tint and luminance matching, and the rows shown by the count.
#include "colour_support.h"

using namespace zvcolour;
using zvtest::Channels;

namespace {

struct MatchTool : Tool {
    MatchTool() : Tool("ZV_MatchColor") {}
    void Row(uint32_t row, KColor is, KColor should, int32_t type = 0)
    {
        Field<KColor>("CSR0"_id + row) = is;
        Field<KColor>("CDR0"_id + row) = should;
        Field<int32_t>("CTy0"_id + row) = type;
    }
    void Colors(int32_t value) { SetInt("Number of colors", value); }
};

TEST(MatchColorDeclarations, RowsOfGreys)
{
    zvtest::ExpectInputs("ZV_MatchColor",
                         {{"Numberofcolors", "items Single|Low and High|Low, Mid && High; default 2; notify yes"},
                          {"Highlightsmatch", "items Full color|Color tint|Luminance; default 0"},
                          {"Whatitis2Blue", "default 0.5"},
                          {"Whatitshouldbe3Red", "default 1; label What it should be 3"},
                          {"Whatitshouldbe3Alpha", "default 0"}});
}

TEST(MatchColorSingle, FloatBlueFollowsAlphaIntegerBlueDoesNot)
{
    MatchTool t;
    t.Colors(0);
    t.Row(0, {0.125f, 0.25f, 0.375f, 0.0f}, {0.25f, 0.5f, 0.625f, 0.0f});
    // From alpha 0.25, not from blue 0.75.
    EXPECT_EQ(Channels(t.Run(KPixelF{0.5f, 0.5f, 0.75f, 0.25f})), Channels(KPixelF{0.625f, 0.75f, 0.5f, 0.25f}));
    // The table runs over x = i / 65536 and scales by 65536; blue from blue, 1.0 clipped.
    EXPECT_EQ(Channels(t.Run(KPixel{32768, 16384, 49152, 12345})), Channels(KPixel{40960, 32768, 65535, 12345}));
}

TEST(MatchColorRows, TintAndLuminanceMoveTheWantedColour)
{
    MatchTool t;
    t.Colors(0);
    const KColor is{0.25f, 0.25f, 0.25f, 1.0f}, should{0.75f, 0.5f, 0.25f, 1.0f};
    // Tint keeps the hue and takes the source's average; luminance keeps the
    // source colour and takes the wanted average.
    const float green[] = {0.25f, 0.5f};
    for (int32_t type : {1, 2}) {
        t.Row(0, is, should, type);
        const KPixelF f = t.Run(KPixelF{0.25f, 0.25f, 0.25f, 0.25f});
        EXPECT_NEAR(f.r, 0.5f, 1e-6f) << type;
        EXPECT_NEAR(f.g, green[type - 1], 1e-6f) << type;
    }
}

TEST(MatchColorThree, GammaThroughTheMidAndAlphaCleared)
{
    MatchTool t;
    // The defaults map each grey to itself; float alpha is cleared, integer alpha kept.
    KPixelF f = t.Run(KPixelF{0.25f, 0.5f, 0.75f, 0.8f});
    EXPECT_FLOAT_EQ(f.r, 0.25f);
    EXPECT_FLOAT_EQ(f.b, 0.75f);
    EXPECT_EQ(f.a, 0.0f);
    EXPECT_EQ(Channels(t.Run(KPixel{1000, 2000, 65535, 777})), Channels(KPixel{1000, 2000, 65535, 777}));
    // A mid of 0.25 wanted as 0.5: gamma 0.5, a square root.
    t.Row(1, {0.25f, 0.25f, 0.25f, 0.0f}, {0.5f, 0.5f, 0.5f, 0.0f});
    EXPECT_EQ(Channels(t.Run(KPixelF{0.0625f, 0.25f, 1.0f, 1.0f})), Channels(KPixelF{0.25f, 0.5f, 1.0f, 0.0f}));
    EXPECT_EQ(Channels(t.Run(KPixel{16384, 4096, 0, 5})), Channels(KPixel{32768, 16384, 0, 5}));
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
    zvtest::ExpectShown(f, {"Whatitis1Red", "Midtonesmatch", "Whatitis2Red", "Whatitshouldbe2Red", "Highlightsmatch",
                            "Whatitis3Red", "Whatitshouldbe3Red"},
                        {{"Numberofcolors", 0, "1000000"}, {"Numberofcolors", 1, "1000111"},
                         {"Numberofcolors", 2, "1111111"}});
}

}  // namespace

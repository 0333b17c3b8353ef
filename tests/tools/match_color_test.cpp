// Match Color: one, two or three greys mapped to wanted colours through a
// table, tint and luminance matching, and the rows shown by the count.
#include "support.h"

using namespace zvtest;

namespace {

struct MatchTool : Tool<KEffectColor> {
    MatchTool() : Tool("ZV_MatchColor") {}
    void Row(uint32_t row, KColor is, KColor should, int32_t type = 0)
    {
        Field<KColor>("CSR0"_id + row) = is;
        Field<KColor>("CDR0"_id + row) = should;
        Field<int32_t>("CTy0"_id + row) = type;
    }
};

TEST(MatchColor, SingleColourTintAndLuminance)
{
    MatchTool t;
    t.SetInt("Number of colors", 0);
    t.Row(0, {0.125f, 0.25f, 0.375f, 0.0f}, {0.25f, 0.5f, 0.625f, 0.0f});
    // Float blue follows alpha 0.25, not blue 0.75.
    EXPECT_EQ(Channels(t.Run(KPixelF{0.5f, 0.5f, 0.75f, 0.25f})), Channels(KPixelF{0.625f, 0.75f, 0.5f, 0.25f}));
    // The table runs over x = i / 65536 and scales by 65536; blue from blue, 1.0 clipped.
    EXPECT_EQ(Channels(t.Run(KPixel{32768, 16384, 49152, 12345})), Channels(KPixel{40960, 32768, 65535, 12345}));
    // Tint keeps the hue and takes the source's average; luminance keeps the
    // source colour and takes the wanted average.
    for (int32_t type : {1, 2}) {
        t.Row(0, {0.25f, 0.25f, 0.25f, 1.0f}, {0.75f, 0.5f, 0.25f, 1.0f}, type);
        const KPixelF f = t.Run(KPixelF{0.25f, 0.25f, 0.25f, 0.25f});
        EXPECT_NEAR(f.r, 0.5f, 1e-6f) << type;
        EXPECT_NEAR(f.g, type == 1 ? 0.25f : 0.5f, 1e-6f) << type;
    }
}

TEST(MatchColor, ThreeColoursBendThroughTheMidTwoAreStraightAndTheCountShowsRows)
{
    MatchTool t;
    // The defaults map each grey to itself; float alpha is cleared, integer alpha kept.
    ExpectNear(t.Run(KPixelF{0.25f, 0.5f, 0.75f, 0.8f}), {0.25f, 0.5f, 0.75f, 0.0f}, 1e-7f);
    EXPECT_EQ(Channels(t.Run(KPixel{1000, 2000, 65535, 777})), Channels(KPixel{1000, 2000, 65535, 777}));
    // A mid of 0.25 wanted as 0.5: gamma 0.5, a square root.
    t.Row(1, {0.25f, 0.25f, 0.25f, 0.0f}, {0.5f, 0.5f, 0.5f, 0.0f});
    EXPECT_EQ(Channels(t.Run(KPixelF{0.0625f, 0.25f, 1.0f, 1.0f})), Channels(KPixelF{0.25f, 0.5f, 1.0f, 0.0f}));
    EXPECT_EQ(Channels(t.Run(KPixel{16384, 4096, 0, 5})), Channels(KPixel{32768, 16384, 0, 5}));
    // A mid not strictly inside its span keeps the curve straight.
    t.Row(1, {0.0f, 0.25f, 0.25f, 0.0f}, {0.5f, 0.5f, 0.5f, 0.0f});
    EXPECT_EQ(Channels(t.Run(KPixelF{0.0625f, 0.0625f, 0.0625f, 1.0f})), Channels(KPixelF{0.0625f, 0.25f, 0.25f, 0.0f}));
    // Two colours: linear between low and high, the mid row unread.
    t.SetInt("Number of colors", 1);
    t.Row(2, {1.0f, 1.0f, 1.0f, 0.0f}, {0.5f, 0.5f, 0.5f, 0.0f});
    EXPECT_EQ(Channels(t.Run(KPixelF{0.5f, 0.5f, 0.5f, 0.5f})), Channels(KPixelF{0.25f, 0.25f, 0.25f, 0.5f}));
    ExpectShown("ZV_MatchColor", {"Whatitis1Red", "Midtonesmatch", "Whatitis2Red", "Whatitshouldbe2Red",
                                  "Highlightsmatch", "Whatitis3Red", "Whatitshouldbe3Red"},
                {{"Numberofcolors", 0, "1000000"}, {"Numberofcolors", 1, "1000111"}, {"Numberofcolors", 2, "1111111"}});
}

}  // namespace

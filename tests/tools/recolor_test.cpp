// Recolor: the first exact match of the colour pairs winning (alpha included)
// within the tolerance, other pixels kept or cleared, and the count showing
// its pairs.
#include "support.h"

using namespace zvtest;

namespace {

struct RecolorTool : Tool<KEffectColor> {
    RecolorTool() : Tool("ZV_Recolor") { SetFloat("Tolerance", 0.0f); }
    void Pair(uint32_t n, KColor from, KColor to)
    {
        Field<KColor>("CoFr"_id + 256 * n) = from;  // a pair's ids lie 256 above the last
        Field<KColor>("CoTo"_id + 256 * n) = to;
    }
};

const KColor kGreen{0.0f, 1.0f, 0.0f, 0.5f};

TEST(Recolor, FirstPairWinsAlphaIncluded)
{
    RecolorTool t;
    t.Pair(0, {0.5f, 0.5f, 0.5f, 1.0f}, {1.0f, 0.0f, 0.0f, 1.0f});
    t.Pair(1, {0.5f, 0.5f, 0.5f, 1.0f}, kGreen);
    t.Pair(2, {0.2f, 0.2f, 0.2f, 0.0f}, kGreen);
    const std::vector<KPixelF> in = {{0.5f, 0.5f, 0.5f, 0.25f}, {0.5f, 0.5f, 0.5001f, 1.0f}, {0.2f, 0.2f, 0.2f, 0.0f}};
    std::vector<KPixelF> out = t.Run(in);
    EXPECT_EQ(Channels(out[0]), Channels(KPixelF{1, 0, 0, 1}));
    EXPECT_EQ(Channels(out[1]), Channels(in[1]));  // not exact: kept
    EXPECT_EQ(Channels(out[2]), Channels(KPixelF{0, 1, 0, 0.5f}));
    t.SetFloat("Tolerance", 0.001f);
    EXPECT_EQ(Channels(t.Run(in)[1]), Channels(KPixelF{1, 0, 0, 1}));
    t.SetInt("Number of colors", 2);  // pairs at or past the count are not walked
    EXPECT_EQ(Channels(t.Run(in)[2]), Channels(in[2]));
}

TEST(Recolor, ClearInBothDepths)
{
    RecolorTool t;
    t.Pair(0, {KIntToFloat(32768), 0.0f, 0.0f, 0.0f}, kGreen);
    t.SetInt("Other Pixels", 1);
    const std::vector<KPixel> out = t.Run(std::vector<KPixel>{{32768, 0, 0, 1}, {32769, 0, 0, 65535}});
    EXPECT_EQ(Channels(out[0]), Channels(KPixel{0, 65535, 0, 32767}));  // 0.5 through the conversion
    EXPECT_EQ(Channels(out[1]), Channels(KPixel{}));
    EXPECT_EQ(Channels(t.Run(KPixelF{0.3f, 0.3f, 0.3f, 1.0f})), Channels(KPixelF{}));
}

TEST(Recolor, CountShowsItsPairs)
{
    ExpectShown("ZV_Recolor", {"ColorFrom5Red", "ColorTo5Red", "ColorFrom6Red", "ColorTo63Red", "ColorFrom64Red", "ColorTo64Red"},
                {{"Numberofcolors", 5, "110000"}, {"Numberofcolors", 63, "111100"}});
}

}  // namespace

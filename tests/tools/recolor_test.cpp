// Recolor: sixty-four colour pairs, the first exact match winning (alpha
// included) within the tolerance, other pixels kept or cleared, and the count
// showing its pairs.
#include "colour_support.h"

using namespace zvcolour;
using zvtest::Channels;

namespace {

constexpr uint32_t kStep = 256;

struct RecolorTool : Tool {
    RecolorTool() : Tool("ZV_Recolor") {}
    void Pair(uint32_t n, KColor from, KColor to)
    {
        Field<KColor>("CoFr"_id + kStep * n) = from;
        Field<KColor>("CoTo"_id + kStep * n) = to;
    }
};

const KColor kGrey{0.5f, 0.5f, 0.5f, 1.0f};
const KColor kRed{1.0f, 0.0f, 0.0f, 1.0f};
const KColor kGreen{0.0f, 1.0f, 0.0f, 0.5f};

TEST(RecolorDeclarations, SixtyFourPairs)
{
    zvtest::ExpectInputs("ZV_Recolor", {{"PreDividePostMultiply", "page Recolor"},
                                        {"Tolerance", "default 0.01; hard -..0.1"},
                                        {"OtherPixels", "items Keep|Clear; default 0; notify yes"},
                                        {"Numberofcolors", "integer yes; default 3; soft 1..63"},
                                        {"ColorFrom64Red", "label Color From 64"},
                                        {"ColorTo2Red", "label Color To 2"}});
    RecolorTool t;
    const KParameter* last = t.effect->inputList.Find("CoTo"_id + 63 * kStep);
    ASSERT_NE(last, nullptr);
    EXPECT_EQ(last->id, 1131385967u - kStep);
    EXPECT_EQ(last->Next(), nullptr);
}

TEST(RecolorMatch, FirstPairWinsAlphaIncluded)
{
    RecolorTool t;
    t.Pair(0, kGrey, kRed);
    t.Pair(1, kGrey, kGreen);
    t.Pair(2, {0.2f, 0.2f, 0.2f, 0.0f}, kGreen);
    t.SetFloat("Tolerance", 0.0f);
    const std::vector<KPixelF> in = {
        {0.5f, 0.5f, 0.5f, 0.25f}, {0.5f, 0.5f, 0.5001f, 1.0f}, {0.2f, 0.2f, 0.2f, 0.0f}};
    std::vector<KPixelF> out = t.Run(in);
    EXPECT_EQ(Channels(out[0]), Channels(KPixelF{1, 0, 0, 1}));
    EXPECT_EQ(Channels(out[1]), Channels(in[1]));  // not exact: kept
    EXPECT_EQ(Channels(out[2]), Channels(KPixelF{0, 1, 0, 0.5f}));
    t.SetFloat("Tolerance", 0.001f);
    EXPECT_EQ(Channels(t.Run(in)[1]), Channels(KPixelF{1, 0, 0, 1}));
    t.SetInt("Number of colors", 2);  // pairs at or past the count are not walked
    EXPECT_EQ(Channels(t.Run(in)[2]), Channels(in[2]));
}

TEST(RecolorMatch, ClearInBothDepths)
{
    RecolorTool t;
    t.Pair(0, {KIntToFloat(32768), 0.0f, 0.0f, 0.0f}, kGreen);
    t.SetFloat("Tolerance", 0.0f);
    t.SetInt("Other Pixels", 1);
    const std::vector<KPixel> out =
        t.Run(std::vector<KPixel>{{32768, 0, 0, 1}, {32769, 0, 0, 65535}}, true);
    EXPECT_EQ(Channels(out[0]), Channels(KPixel{0, 65535, 0, 32767}));  // 0.5 through the conversion
    EXPECT_EQ(Channels(out[1]), Channels(KPixel{}));
    EXPECT_EQ(Channels(t.Run(KPixelF{0.3f, 0.3f, 0.3f, 1.0f})), Channels(KPixelF{}));
}

TEST(RecolorChange, CountShowsItsPairs)
{
    Flow f("ZV_Recolor", Row<KPixel>({{0, 0, 0, 0}}));
    zvtest::ExpectShown(f, {"ColorFrom5Red", "ColorTo5Red", "ColorFrom6Red", "ColorTo63Red", "ColorFrom64Red", "ColorTo64Red"},
                        {{"Numberofcolors", 5, "110000"}, {"Numberofcolors", 63, "111100"}});
}

}  // namespace

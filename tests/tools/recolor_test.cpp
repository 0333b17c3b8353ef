#include "colour_support.h"

using namespace zvcolour;

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
    RecolorTool t;
    EXPECT_EQ(*t.In("Tolerance").attrs.defaultNumber, 0.01f);
    EXPECT_EQ(*t.In("Tolerance").attrs.hardMax, 0.1f);
    EXPECT_EQ(t.In("OtherPixels").attrs.items, (std::vector<std::string>{"Keep", "Clear"}));
    EXPECT_TRUE(t.In("Numberofcolors").attrs.integer);
    EXPECT_EQ(*t.In("Numberofcolors").attrs.softMax, 63.0);
    EXPECT_EQ(t.In("PreDividePostMultiply").page, "Recolor");
    EXPECT_EQ(t.In("ColorFrom64Red").label, "Color From 64");
    EXPECT_EQ(t.In("ColorTo2Red").label, "Color To 2");
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
    t.Field<float>("Tole"_id) = 0.0f;
    const std::vector<KPixelF> in = {
        {0.5f, 0.5f, 0.5f, 0.25f}, {0.5f, 0.5f, 0.5001f, 1.0f}, {0.2f, 0.2f, 0.2f, 0.0f}};
    std::vector<KPixelF> out = t.Run(in);
    EXPECT_EQ(out[0].r, 1.0f);
    EXPECT_EQ(out[0].a, 1.0f);
    EXPECT_EQ(out[1].b, 0.5001f);  // not exact: kept
    EXPECT_EQ(out[2].g, 1.0f);
    EXPECT_EQ(out[2].a, 0.5f);
    t.Field<float>("Tole"_id) = 0.001f;
    EXPECT_EQ(t.Run(in)[1].r, 1.0f);
    // Pairs at or past the count are not walked.
    t.Field<int32_t>("Coun"_id) = 2;
    out = t.Run(in);
    EXPECT_EQ(out[2].g, 0.2f);
}

TEST(RecolorMatch, ClearInBothDepths)
{
    RecolorTool t;
    t.Pair(0, {KIntToFloat(32768), 0.0f, 0.0f, 0.0f}, kGreen);
    t.Field<float>("Tole"_id) = 0.0f;
    t.Field<int32_t>("Othe"_id) = 1;
    const std::vector<KPixel> out =
        t.Run(std::vector<KPixel>{{32768, 0, 0, 1}, {32769, 0, 0, 65535}}, true);
    EXPECT_EQ(out[0].g, 65535u);
    EXPECT_EQ(out[0].a, 32767u);  // 0.5 through the pixel conversion
    EXPECT_EQ(out[1].r, 0u);
    EXPECT_EQ(out[1].a, 0u);
    const KPixelF f = t.Run(KPixelF{0.3f, 0.3f, 0.3f, 1.0f});
    EXPECT_EQ(f.r, 0.0f);
    EXPECT_EQ(f.a, 0.0f);
}

TEST(RecolorChange, CountShowsItsPairs)
{
    Flow f("ZV_Recolor", Row<KPixel>({{0, 0, 0, 0}}));
    f.Set("Numberofcolors", 5);
    EXPECT_TRUE(f.Visible("ColorFrom5Red"));
    EXPECT_TRUE(f.Visible("ColorTo5Red"));
    EXPECT_FALSE(f.Visible("ColorFrom6Red"));
    EXPECT_FALSE(f.Visible("ColorTo64Red"));
    f.Set("Numberofcolors", 63);
    EXPECT_TRUE(f.Visible("ColorTo63Red"));
    EXPECT_FALSE(f.Visible("ColorFrom64Red"));
}

}  // namespace

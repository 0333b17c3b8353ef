// Hue/Saturation: neutral settings copy, greys stay grey, hue turns, colorize,
// saturation and lightness, and lanes against one pixel at a time.
#include "support.h"

using namespace zvtest;

namespace {

struct HueTool : Tool<KEffectColor> {
    HueTool() : Tool("ZV_HueSaturation") {}
    float& Hue() { return Field<float>("sHue"_id); }
};

TEST(HueSaturation, NeutralCopiesBitForBitAndGreysStayGrey)
{
    HueTool t;
    for (bool isFloat : {false, true}) {
        Img in = Pattern(37, 5, isFloat);
        if (isFloat) in->SetPixel(3, 2, KPixelF{-0.5f, 1.75f, 0.3f, 2.0f});
        EXPECT_EQ(Differ(*in, *t.Run(in.get())), "") << isFloat;
    }
    t.Field<float>("sSaM"_id) = 1.7f;
    for (float hue : {-0.9f, 0.25f, 0.5f, 1.0f}) {
        t.Hue() = hue;
        EXPECT_EQ(Channels(t.Run(KPixelF{0.4f, 0.4f, 0.4f, 1.0f})), Channels(KPixelF{0.4f, 0.4f, 0.4f, 1.0f})) << hue;
    }
    // Integers go back through double, which takes 30000 to 29999 and 257 to 256.
    const std::vector<KPixel> out = t.Run(std::vector<KPixel>{{30000, 30000, 30000, 65535}, {257, 257, 257, 0}});
    EXPECT_EQ(Channels(out[0]), Channels(KPixel{29999, 29999, 29999, 65535}));
    EXPECT_EQ(out[1].b, 256u);
}

TEST(HueSaturation, HueTurnColorizeSaturationAndLightness)
{
    HueTool t;
    t.Hue() = 1.0f / 3.0f;  // red to green
    ExpectNear(t.Run(KPixelF{1.0f, 0.0f, 0.0f, 1.0f}), {0.0f, 1.0f, 0.0f, 1.0f}, 1e-6f);
    EXPECT_EQ(Channels(t.Run(KPixel{65535, 0, 0, 65535})), Channels(KPixel{0, 65535, 0, 65535}));
    // Colorize takes the hue alone: green goes to cyan as red does.
    t.Hue() = 0.5f;
    t.Field<bool>("cCol"_id) = true;
    ExpectNear(t.Run(KPixelF{0.0f, 0.5f, 0.0f, 1.0f}), {0.0f, 0.5f, 0.5f, 1.0f}, 1e-6f);
    // Saturation to zero leaves lightness; the lightness add reaches alpha.
    t.Field<bool>("cCol"_id) = false;
    t.Field<float>("sSaM"_id) = 0.0f;
    t.Field<float>("sLig"_id) = 0.25f;
    const KPixelF f = t.Run(KPixelF{1.0f, 0.0f, 0.0f, 0.5f});
    EXPECT_EQ(f.r, 0.75f);
    EXPECT_EQ(f.b, 0.75f);
    EXPECT_EQ(f.a, 0.75f);
    EXPECT_EQ(t.Run(KPixel{65535, 0, 0, 65535}).a, 65535u);  // clipped
}

TEST(HueSaturation, LanesEqualOneAtATime)
{
    const struct { float hue, satMul, satAdd, lightMul, lightAdd; bool colorize; } settings[] = {
        {0.3f, 1.0f, 0.0f, 1.0f, 0.0f, false}, {-0.8f, 1.6f, -0.2f, 0.7f, 0.1f, false},
        {0.5f, 0.0f, 0.3f, 1.9f, -0.4f, true}, {1.0f / 3.0f, 2.0f, 1.0f, 0.0f, 0.9f, false}};
    HueTool t;
    for (const auto& c : settings) {
        t.Hue() = c.hue;
        t.Field<float>("sSaM"_id) = c.satMul;
        t.Field<float>("sSat"_id) = c.satAdd;
        t.Field<float>("sLiM"_id) = c.lightMul;
        t.Field<float>("sLig"_id) = c.lightAdd;
        t.Field<bool>("cCol"_id) = c.colorize;
        SCOPED_TRACE(c.hue);
        ExpectRowsEqualOneAtATime(t);
    }
}

}  // namespace

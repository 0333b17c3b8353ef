// Hue/Saturation: neutral settings copy, greys stay grey, hue turns, colorize,
// saturation and lightness, and lanes against one pixel at a time.
#include "support.h"

using namespace zvtest;

TEST(HueSaturation, NeutralCopiesGreysStayGreyHueTurnsColorizeAndLightness)
{
    Tool<KEffectColor> t("ZV_HueSaturation");
    for (bool isFloat : {false, true}) {
        Img in = Pattern(37, 5, isFloat);
        if (isFloat) in->SetPixel(3, 2, KPixelF{-0.5f, 1.75f, 0.3f, 2.0f});
        EXPECT_EQ(Differ(*in, *t.Run(in.get())), "") << isFloat;
    }
    for (double hue : {-0.9, 0.25, 0.5, 1.0}) {
        t.Apply({{"Saturation Multiply", 1.7}, {"Hue", hue}});
        EXPECT_EQ(Channels(t.Run(KPixelF{0.4f, 0.4f, 0.4f, 1.0f})), Channels(KPixelF{0.4f, 0.4f, 0.4f, 1.0f})) << hue;
    }
    // Integers go back through double, which takes 30000 to 29999 and 257 to 256.
    const std::vector<KPixel> out = t.Run(std::vector<KPixel>{{30000, 30000, 30000, 65535}, {257, 257, 257, 0}});
    EXPECT_EQ(Channels(out[0]), Channels(KPixel{29999, 29999, 29999, 65535}));
    EXPECT_EQ(out[1].b, 256u);
    t.Apply({{"Saturation Multiply", 1}, {"Hue", 1.0 / 3.0}});  // red to green
    ExpectNear(t.Run(KPixelF{1.0f, 0.0f, 0.0f, 1.0f}), {0.0f, 1.0f, 0.0f, 1.0f}, 1e-6f);
    EXPECT_EQ(Channels(t.Run(KPixel{65535, 0, 0, 65535})), Channels(KPixel{0, 65535, 0, 65535}));
    t.Apply({{"Hue", 0.5}, {"Colorize", 1}});  // the hue alone: green goes to cyan as red does
    ExpectNear(t.Run(KPixelF{0.0f, 0.5f, 0.0f, 1.0f}), {0.0f, 0.5f, 0.5f, 1.0f}, 1e-6f);
    // Saturation to zero leaves lightness; the lightness add reaches alpha, clipped in integers.
    t.Apply({{"Colorize", 0}, {"Saturation Multiply", 0}, {"Lightness Add", 0.25}});
    EXPECT_EQ(Channels(t.Run(KPixelF{1.0f, 0.0f, 0.0f, 0.5f})), Channels(KPixelF{0.75f, 0.75f, 0.75f, 0.75f}));
    EXPECT_EQ(t.Run(KPixel{65535, 0, 0, 65535}).a, 65535u);
}

TEST(HueSaturation, LanesEqualOneAtATime)
{
    const std::vector<Setting> settings[] = {
        {{"Hue", 0.3}},
        {{"Hue", -0.8}, {"Saturation Multiply", 1.6}, {"Saturation Add", -0.2}, {"Lightness Multiply", 0.7}, {"Lightness Add", 0.1}},
        {{"Hue", 0.5}, {"Saturation Multiply", 0}, {"Saturation Add", 0.3}, {"Lightness Multiply", 1.9}, {"Lightness Add", -0.4},
         {"Colorize", 1}},
        {{"Hue", 1.0 / 3.0}, {"Saturation Multiply", 2}, {"Saturation Add", 1}, {"Lightness Multiply", 0}, {"Lightness Add", 0.9},
         {"Colorize", 0}}};
    Tool<KEffectColor> t("ZV_HueSaturation");
    for (const auto& s : settings) {
        t.Apply(s);
        SCOPED_TRACE(s[0].x);
        ExpectRowsEqualOneAtATime(t);
    }
}

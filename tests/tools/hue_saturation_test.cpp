#include <cstring>
#include <memory>
#include "colour_support.h"

using namespace zvcolour;

namespace {

struct HueTool : Tool {
    HueTool() : Tool("ZV_HueSaturation") {}
    float& Hue() { return Field<float>("sHue"_id); }
};

TEST(HueSaturationDeclarations, LimitsAndFlags)
{
    HueTool t;
    EXPECT_EQ(t.In("Hue").page, "Hue/Saturation");
    EXPECT_EQ(*t.In("Hue").attrs.hardMin, -1.0);
    EXPECT_EQ(*t.In("Hue").attrs.hardMax, 1.0);
    EXPECT_EQ(*t.In("SaturationMultiply").attrs.defaultNumber, 1.0);
    EXPECT_EQ(*t.In("SaturationMultiply").attrs.softMin, 0.0);  // only the top is hard
    EXPECT_EQ(*t.In("SaturationMultiply").attrs.hardMax, 2.0);
    EXPECT_FALSE(t.In("SaturationMultiply").attrs.hardMin.has_value());
    EXPECT_EQ(*t.In("LightnessAdd").attrs.hardMin, -1.0);
    EXPECT_EQ(t.In("Colorize").attrs.control, host::Control::Checkbox);
    EXPECT_EQ(t.effect->inputList.Find("sLiM"_id)->flags, 2048u);
    EXPECT_EQ(t.effect->inputList.Find("sSat"_id)->flags, 3072u);
}

TEST(HueSaturationNeutral, CopiesBitForBit)
{
    HueTool t;
    for (bool isFloat : {false, true}) {
        std::unique_ptr<KImage> in(zvtest::Pattern(37, 5, isFloat));
        if (isFloat) in->SetPixel(3, 2, KPixelF{-0.5f, 1.75f, 0.3f, 2.0f});
        std::unique_ptr<KImage> out(
            zvtest::RunEffect(*t.effect, in.get(), zvtest::Settings(isFloat), true));
        EXPECT_EQ(zvtest::Differ(*in, *out), "") << isFloat;
    }
}

TEST(HueSaturationGrey, StaysGreyUnderAnyHue)
{
    HueTool t;
    t.Field<float>("sSaM"_id) = 1.7f;
    for (float hue : {-0.9f, 0.25f, 0.5f, 1.0f}) {
        t.Hue() = hue;
        const KPixelF f = t.Run(KPixelF{0.4f, 0.4f, 0.4f, 1.0f});
        EXPECT_EQ(f.r, 0.4f) << hue;
        EXPECT_EQ(f.g, 0.4f);
        EXPECT_EQ(f.b, 0.4f);
        EXPECT_EQ(f.a, 1.0f);
    }
    // Integers go back through double, which takes 30000 to 29999 and 257 to 256.
    t.Hue() = 0.5f;
    const std::vector<KPixel> out = t.Run(std::vector<KPixel>{{30000, 30000, 30000, 65535},
                                                              {257, 257, 257, 0}});
    EXPECT_EQ(out[0].r, 29999u);
    EXPECT_EQ(out[0].g, 29999u);
    EXPECT_EQ(out[0].b, 29999u);
    EXPECT_EQ(out[0].a, 65535u);
    EXPECT_EQ(out[1].b, 256u);
}

TEST(HueSaturationColour, HueTurnColorizeAndAlpha)
{
    HueTool t;
    t.Hue() = 1.0f / 3.0f;  // red to green
    KPixelF f = t.Run(KPixelF{1.0f, 0.0f, 0.0f, 1.0f});
    EXPECT_NEAR(f.r, 0.0f, 1e-6f);
    EXPECT_EQ(f.g, 1.0f);
    EXPECT_NEAR(f.b, 0.0f, 1e-6f);
    KPixel i = t.Run(KPixel{65535, 0, 0, 65535});
    EXPECT_EQ(i.r, 0u);
    EXPECT_EQ(i.g, 65535u);
    EXPECT_EQ(i.b, 0u);
    // Colorize takes the hue alone: green goes to cyan as red does.
    t.Hue() = 0.5f;
    t.Field<bool>("cCol"_id) = true;
    f = t.Run(KPixelF{0.0f, 0.5f, 0.0f, 1.0f});
    EXPECT_NEAR(f.r, 0.0f, 1e-6f);
    EXPECT_NEAR(f.g, 0.5f, 1e-6f);
    EXPECT_NEAR(f.b, 0.5f, 1e-6f);
    // Saturation to zero leaves lightness; the lightness add reaches alpha.
    t.Field<bool>("cCol"_id) = false;
    t.Field<float>("sSaM"_id) = 0.0f;
    t.Field<float>("sLig"_id) = 0.25f;
    f = t.Run(KPixelF{1.0f, 0.0f, 0.0f, 0.5f});
    EXPECT_EQ(f.r, 0.75f);
    EXPECT_EQ(f.b, 0.75f);
    EXPECT_EQ(f.a, 0.75f);
    i = t.Run(KPixel{65535, 0, 0, 65535});
    EXPECT_EQ(i.a, 65535u);  // clipped
}

// Rows run four, eight or thirty-two pixels at a time; each must come out as the same pixel alone.
TEST(HueSaturationLanes, RowsEqualOneAtATime)
{
    struct Setting {
        float hue, satMul, satAdd, lightMul, lightAdd;
        bool colorize;
    };
    const Setting settings[] = {{0.3f, 1.0f, 0.0f, 1.0f, 0.0f, false},
                                {-0.8f, 1.6f, -0.2f, 0.7f, 0.1f, false},
                                {0.5f, 0.0f, 0.3f, 1.9f, -0.4f, true},
                                {1.0f / 3.0f, 2.0f, 1.0f, 0.0f, 0.9f, false}};
    HueTool t;
    for (const Setting& c : settings) {
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

TEST(HueSaturationFlow, SaturationFromTheHost)
{
    Flow f("ZV_HueSaturation", Row<KPixelF>({{0.25f, 0.5f, 0.75f, 1.0f}}));
    f.Set("SaturationMultiply", 0.0);
    const KPixelF o = f.Render<KPixelF>()[0];
    EXPECT_EQ(o.r, 0.5f);
    EXPECT_EQ(o.b, 0.5f);
}

}  // namespace

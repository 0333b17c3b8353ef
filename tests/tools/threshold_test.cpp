#include "colour_support.h"

using namespace zvcolour;

namespace {

struct ThresholdTool : Tool {
    ThresholdTool() : Tool("ZV_Threshold") {}
    void Ramp(float threshold, float softness, float repeat, bool pingPong)
    {
        Field<float>("ThRe"_id) = threshold;
        Field<float>("SoRe"_id) = softness;
        Field<float>("ReRe"_id) = repeat;
        Field<bool>("RePR"_id) = pingPong;
    }
};

TEST(ThresholdDeclarations, HiddenChannelsAndHardLimits)
{
    ThresholdTool t;
    EXPECT_EQ(t.In("Channelusedasthreshold").attrs.items,
              (std::vector<std::string>{"Red", "Green", "Blue", "Alpha", "Lumin.", "Each"}));
    EXPECT_EQ(*t.In("Channelusedasthreshold").attrs.defaultNumber, 4.0);
    EXPECT_EQ(*t.In("Lockthresholdforallcolorchannels").attrs.defaultNumber, 1.0);
    EXPECT_TRUE(t.In("Lockthresholdforallcolorchannels").attrs.notify);
    EXPECT_TRUE(t.In("Threshold").attrs.visible);
    EXPECT_FALSE(t.In("ThresholdAlpha").attrs.visible);
    EXPECT_EQ(*t.In("ThresholdGreen").attrs.softMax, 1.0);
    // Softness per channel starts visible; repeat and ping-pong do not.
    EXPECT_TRUE(t.In("SoftnessBlue").attrs.visible);
    EXPECT_EQ(*t.In("SoftnessBlue").attrs.hardMax, 1.0);
    EXPECT_FALSE(t.In("RepeatGreen").attrs.visible);
    EXPECT_FALSE(t.In("PingpongAlpha").attrs.visible);
    EXPECT_EQ(*t.In("RepeatAlpha").attrs.hardMax, 5.0);
    EXPECT_EQ(t.effect->inputList.Find("RePA"_id)->controlKind, kControlCheckbox);
}

TEST(ThresholdRamp, SoftnessZeroStepsJustAboveTheThreshold)
{
    ThresholdTool t;
    t.Field<int32_t>("ThCh"_id) = 5;  // each channel its own
    KPixelF f = t.Run(KPixelF{0.5f, 0.50001f, 0.4f, 1.0f});
    EXPECT_EQ(f.r, 0.0f);  // exactly at the threshold
    EXPECT_EQ(f.g, 1.0f);
    EXPECT_EQ(f.b, 0.0f);
    EXPECT_EQ(f.a, 1.0f);
    const KPixel i = t.Run(KPixel{32767, 32768, 0, 65535});
    EXPECT_EQ(i.r, 0u);
    EXPECT_EQ(i.g, 65535u);
    EXPECT_EQ(i.a, 65535u);
}

TEST(ThresholdRamp, RepeatZeroIsBlackAndInvertWhite)
{
    ThresholdTool t;
    t.Ramp(0.5f, 0.0f, 0.0f, false);
    const KPixelF f = t.Run(KPixelF{1.0f, 1.0f, 1.0f, 1.0f});
    EXPECT_EQ(f.r, 0.0f);
    EXPECT_EQ(f.a, 0.0f);
    t.Field<bool>("Inve"_id) = true;
    const KPixel i = t.Run(KPixel{65535, 65535, 65535, 65535});
    EXPECT_EQ(i.r, 65535u);
    EXPECT_EQ(i.a, 65535u);
}

TEST(ThresholdRamp, SawAndPingPongInBothDepths)
{
    ThresholdTool t;
    t.Field<int32_t>("ThCh"_id) = 5;
    // Ramp from 0.25 to 0.75, twice over.
    const std::vector<KPixelF> f = {{0.5f, 0.625f, 0.6875f, 0.25f}, {0.75f, 0.5f, 0.5f, 0.5f}};
    t.Ramp(0.5f, 0.5f, 2.0f, false);
    std::vector<KPixelF> out = t.Run(f);
    EXPECT_EQ(out[0].r, 0.0f);  // t = 1 wraps
    EXPECT_EQ(out[0].g, 0.5f);
    EXPECT_EQ(out[0].b, 0.75f);
    EXPECT_EQ(out[0].a, 0.0f);
    EXPECT_EQ(out[1].r, 1.0f);  // end of a whole repeat is 1
    t.Ramp(0.5f, 0.5f, 2.0f, true);
    out = t.Run(f, true);
    EXPECT_EQ(out[0].r, 1.0f);
    EXPECT_EQ(out[0].g, 0.5f);
    EXPECT_EQ(out[0].b, 0.25f);  // folded back
    EXPECT_EQ(out[1].r, 0.0f);   // two ping-pongs end where they began
    t.Ramp(0.5f, 0.5f, 1.5f, true);
    EXPECT_EQ(t.Run(f)[1].r, 0.5f);

    const std::vector<KPixel> i = {{40960, 45056, 36864, 65535}};
    t.Ramp(0.5f, 0.5f, 2.0f, false);
    KPixel o = t.Run(i)[0];
    EXPECT_EQ(o.r, 32769u);
    EXPECT_EQ(o.g, 49153u);
    EXPECT_EQ(o.b, 16385u);
    EXPECT_EQ(o.a, 65535u);
    t.Ramp(0.5f, 0.5f, 2.0f, true);
    o = t.Run(i)[0];
    EXPECT_EQ(o.r, 32765u);
    EXPECT_EQ(o.g, 16381u);
    EXPECT_EQ(o.b, 49149u);
    EXPECT_EQ(o.a, 0u);
}

TEST(ThresholdSources, SelectorLuminanceAndLocks)
{
    ThresholdTool t;
    t.Field<int32_t>("ThCh"_id) = 3;
    KPixelF f = t.Run(KPixelF{0.0f, 0.0f, 0.0f, 0.75f});
    EXPECT_EQ(f.r, 1.0f);
    EXPECT_EQ(f.b, 1.0f);
    // Lumin.: half of greatest plus least; in integers the sum halved, truncated.
    t.Field<int32_t>("ThCh"_id) = 4;
    t.Field<float>("ThRe"_id) = 3.4e-5f;  // between codes 2 and 2.5
    EXPECT_EQ(t.Run(KPixel{1, 4, 2, 0}).r, 0u);
    EXPECT_EQ(t.Run(KPixelF{KIntToFloat(1), KIntToFloat(4), KIntToFloat(2), 0.0f}).r, 1.0f);
    // Unlocked thresholds differ per channel; locked, the first serves all.
    t.Field<int32_t>("ThCh"_id) = 5;
    t.Field<float>("ThRe"_id) = 0.5f;
    t.Field<float>("ThGr"_id) = 0.9f;
    f = t.Run(KPixelF{0.6f, 0.6f, 0.6f, 0.6f});
    EXPECT_EQ(f.g, 1.0f);
    t.Field<bool>("ThLo"_id) = false;
    f = t.Run(KPixelF{0.6f, 0.6f, 0.6f, 0.6f});
    EXPECT_EQ(f.r, 1.0f);
    EXPECT_EQ(f.g, 0.0f);
    EXPECT_EQ(f.b, 1.0f);
    t.Field<float>("ReAl"_id) = 0.0f;  // alpha's repeat counts only when unlocked
    EXPECT_EQ(t.Run(KPixelF{0.6f, 0.6f, 0.6f, 0.6f}).a, 1.0f);
    t.Field<bool>("ReLo"_id) = false;
    EXPECT_EQ(t.Run(KPixelF{0.6f, 0.6f, 0.6f, 0.6f}).a, 0.0f);
}

TEST(ThresholdChange, LocksShowTheirRows)
{
    Flow f("ZV_Threshold", Row<KPixel>({{0, 0, 0, 0}}));
    f.Set("Lockthresholdforallcolorchannels", 0);
    EXPECT_TRUE(f.Visible("ThresholdGreen"));
    EXPECT_TRUE(f.Visible("ThresholdAlpha"));
    EXPECT_FALSE(f.Visible("RepeatBlue"));
    EXPECT_FALSE(f.Visible("SoftnessGreen"));  // the host told the tool its locks at creation
    f.Set("LockSoftnessforallcolorchannels", 0);
    f.Set("LockSoftnessforallcolorchannels", 1);
    EXPECT_FALSE(f.Visible("SoftnessGreen"));
    EXPECT_TRUE(f.Visible("Softness"));
    f.Set("LockRepeatforallcolorchannels", 0);
    for (const char* id : {"RepeatGreen", "PingpongGreen", "RepeatBlue", "PingpongBlue",
                           "RepeatAlpha", "PingpongAlpha"})
        EXPECT_TRUE(f.Visible(id)) << id;
    f.Set("Lockthresholdforallcolorchannels", 1);
    EXPECT_FALSE(f.Visible("ThresholdBlue"));
}

TEST(ThresholdFlow, KeyedThresholdOverTwoFrames)
{
    Flow f("ZV_Threshold", Row<KPixelF>({{0.3f, 0.3f, 0.3f, 1.0f}, {0.7f, 0.7f, 0.7f, 1.0f}}));
    f.flow.SetKeys(f.node, f.Input("Threshold"), {{1.0, 0.2}, {3.0, 0.8}});
    std::vector<KPixelF> one = f.Render<KPixelF>(1.0);
    EXPECT_EQ(one[0].r, 1.0f);
    EXPECT_EQ(one[1].r, 1.0f);
    std::vector<KPixelF> three = f.Render<KPixelF>(3.0);
    EXPECT_EQ(three[0].r, 0.0f);
    EXPECT_EQ(three[1].g, 0.0f);
    EXPECT_EQ(f.Render<KPixelF>(2.0)[1].b, 1.0f);  // 0.5 halfway
}

}  // namespace

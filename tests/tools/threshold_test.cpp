// Threshold: the step and its soft ramp, repeated saw-tooth or ping-pong, the
// source channel, the locks and their rows, and lanes against one pixel at a time.
#include "support.h"

using namespace zvtest;

namespace {

struct ThresholdTool : Tool<KEffectColor> {
    ThresholdTool() : Tool("ZV_Threshold") {}
    void Ramp(float threshold, float softness, float repeat, bool pingPong)
    {
        Field<float>("ThRe"_id) = threshold;
        Field<float>("SoRe"_id) = softness;
        Field<float>("ReRe"_id) = repeat;
        Field<bool>("RePR"_id) = pingPong;
    }
};

TEST(Threshold, StepJustAboveTheThresholdRepeatZeroAndInvert)
{
    ThresholdTool t;
    t.SetInt("Channel used as threshold", 5);  // each channel its own
    // Exactly at the threshold is below it.
    EXPECT_EQ(Channels(t.Run(KPixelF{0.5f, 0.50001f, 0.4f, 1.0f})), Channels(KPixelF{0, 1, 0, 1}));
    EXPECT_EQ(Channels(t.Run(KPixel{32767, 32768, 0, 65535})), Channels(KPixel{0, 65535, 0, 65535}));
    t.Ramp(0.5f, 0.0f, 0.0f, false);  // no repeat: black, inverted white
    EXPECT_EQ(Channels(t.Run(KPixelF{1, 1, 1, 1})), Channels(KPixelF{0, 0, 0, 0}));
    t.SetBool("Invert", true);
    EXPECT_EQ(Channels(t.Run(KPixel{65535, 65535, 65535, 65535})), Channels(KPixel{65535, 65535, 65535, 65535}));
}

TEST(Threshold, SawAndPingPongInBothDepths)
{
    ThresholdTool t;
    t.SetInt("Channel used as threshold", 5);
    // Ramp from 0.25 to 0.75, twice over: a whole repeat ends on 1 and t = 1
    // wraps; folded back, two ping-pongs end where they began.
    const std::vector<KPixelF> f = {{0.5f, 0.625f, 0.6875f, 0.25f}, {0.75f, 0.5f, 0.5f, 0.5f}};
    const struct { float repeat; bool pingPong; KPixelF f0; float f1r; KPixel i0; } rows[] = {
        {2.0f, false, {0.0f, 0.5f, 0.75f, 0.0f}, 1.0f, {32769, 49153, 16385, 65535}},
        {2.0f, true, {1.0f, 0.5f, 0.25f, 0.0f}, 0.0f, {32765, 16381, 49149, 0}},
        {1.5f, true, {}, 0.5f, {}},
    };
    for (const auto& r : rows) {
        t.Ramp(0.5f, 0.5f, r.repeat, r.pingPong);
        const std::vector<KPixelF> out = t.Run(f);
        if (r.repeat == 2.0f) {
            EXPECT_EQ(Channels(out[0]), Channels(r.f0)) << r.pingPong;
            EXPECT_EQ(Channels(t.Run(KPixel{40960, 45056, 36864, 65535})), Channels(r.i0)) << r.pingPong;
        }
        EXPECT_EQ(out[1].r, r.f1r) << r.repeat << " " << r.pingPong;
    }
}

TEST(Threshold, SelectorLuminanceAndLocks)
{
    ThresholdTool t;
    t.SetInt("Channel used as threshold", 3);
    EXPECT_EQ(Channels(t.Run(KPixelF{0.0f, 0.0f, 0.0f, 0.75f})), Channels(KPixelF{1, 1, 1, 1}));
    // Lumin.: half of greatest plus least; in integers the sum halved, truncated.
    t.SetInt("Channel used as threshold", 4);
    t.Field<float>("ThRe"_id) = 3.4e-5f;  // between codes 2 and 2.5
    EXPECT_EQ(t.Run(KPixel{1, 4, 2, 0}).r, 0u);
    EXPECT_EQ(t.Run(KPixelF{KIntToFloat(1), KIntToFloat(4), KIntToFloat(2), 0.0f}).r, 1.0f);
    // Unlocked thresholds differ per channel; locked, the first serves all.
    t.SetInt("Channel used as threshold", 5);
    t.Field<float>("ThRe"_id) = 0.5f;
    t.Field<float>("ThGr"_id) = 0.9f;
    const KPixelF grey{0.6f, 0.6f, 0.6f, 0.6f};
    EXPECT_EQ(t.Run(grey).g, 1.0f);
    t.SetBool("Lock threshold for all color channels", false);
    EXPECT_EQ(Channels(t.Run(grey)), Channels(KPixelF{1, 0, 1, 1}));
    t.Field<float>("ReAl"_id) = 0.0f;  // alpha's repeat counts only when unlocked
    EXPECT_EQ(t.Run(grey).a, 1.0f);
    t.SetBool("Lock Repeat for all color channels", false);
    EXPECT_EQ(t.Run(grey).a, 0.0f);
}

// Each source, both ramp shapes, a hard step and unlocked rows.
TEST(Threshold, LanesEqualOneAtATime)
{
    ThresholdTool t;
    for (int32_t source : {4, 5, 0, 3}) {
        t.Field<int32_t>("ThCh"_id) = source;
        t.Ramp(0.4f, source == 0 ? 0.0f : 0.3f, 2.5f, source != 5);
        t.Field<bool>("Inve"_id) = source == 3;
        t.Field<bool>("ReLo"_id) = source != 5;
        SCOPED_TRACE(source);
        ExpectRowsEqualOneAtATime(t);
    }
}

TEST(Threshold, LocksShowTheirRows)
{
    // The host told the tool its locks at creation: only the first row shows.
    ExpectShown("ZV_Threshold", {"ThresholdGreen", "ThresholdBlue", "ThresholdAlpha", "Softness", "SoftnessGreen",
                                 "RepeatGreen", "PingpongGreen", "RepeatBlue", "RepeatAlpha", "PingpongAlpha"},
                {{nullptr, 0, "0001000000"},
                 {"Lockthresholdforallcolorchannels", 0, "1111000000"},
                 {"LockSoftnessforallcolorchannels", 0, "1111100000"},
                 {"LockSoftnessforallcolorchannels", 1, "1111000000"},
                 {"LockRepeatforallcolorchannels", 0, "1111011111"},
                 {"Lockthresholdforallcolorchannels", 1, "0001011111"}});
}

}  // namespace

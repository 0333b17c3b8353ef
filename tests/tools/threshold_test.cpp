// Threshold: the step and its soft ramp, repeated saw-tooth or ping-pong, the
// source channel, the locks and their rows, and lanes against one pixel at a time.
#include "support.h"

using namespace zvtest;

TEST(Threshold, StepRampRepeatAndPingPongInBothDepths)
{
    Tool<KEffectColor> t("ZV_Threshold");
    t.Apply({{"Channel used as threshold", 5}});  // each channel its own
    // Exactly at the threshold is below it.
    EXPECT_EQ(Channels(t.Run(KPixelF{0.5f, 0.50001f, 0.4f, 1.0f})), Channels(KPixelF{0, 1, 0, 1}));
    EXPECT_EQ(Channels(t.Run(KPixel{32767, 32768, 0, 65535})), Channels(KPixel{0, 65535, 0, 65535}));
    // Ramp from 0.25 to 0.75, twice over: a whole repeat ends on 1 and t = 1
    // wraps; folded back, two ping-pongs end where they began.
    const struct { float repeat; bool pingPong; KPixelF f0; float f1r; KPixel i0; } rows[] = {
        {2.0f, false, {0.0f, 0.5f, 0.75f, 0.0f}, 1.0f, {32769, 49153, 16385, 65535}},
        {2.0f, true, {1.0f, 0.5f, 0.25f, 0.0f}, 0.0f, {32765, 16381, 49149, 0}},
        {1.5f, true, {}, 0.5f, {}},
    };
    for (const auto& r : rows) {
        t.Apply({{"Softness", 0.5}, {"Repeat", r.repeat}, {"Ping-pong", double(r.pingPong)}});
        const std::vector<KPixelF> out = t.Run(std::vector<KPixelF>{{0.5f, 0.625f, 0.6875f, 0.25f}, {0.75f, 0.5f, 0.5f, 0.5f}});
        if (r.repeat == 2.0f) {
            EXPECT_EQ(Channels(out[0]), Channels(r.f0)) << r.pingPong;
            EXPECT_EQ(Channels(t.Run(KPixel{40960, 45056, 36864, 65535})), Channels(r.i0)) << r.pingPong;
        }
        EXPECT_EQ(out[1].r, r.f1r) << r.repeat << " " << r.pingPong;
    }
    t.Apply({{"Softness", 0}, {"Repeat", 0}, {"Ping-pong", 0}});  // no repeat: black, inverted white
    EXPECT_EQ(Channels(t.Run(KPixelF{1, 1, 1, 1})), Channels(KPixelF{0, 0, 0, 0}));
    t.Apply({{"Invert", 1}});
    EXPECT_EQ(Channels(t.Run(KPixel{65535, 65535, 65535, 65535})), Channels(KPixel{65535, 65535, 65535, 65535}));
}

TEST(Threshold, SelectorLuminanceLocksAndTheirRows)
{
    Tool<KEffectColor> t("ZV_Threshold");
    t.Apply({{"Channel used as threshold", 3}});
    EXPECT_EQ(Channels(t.Run(KPixelF{0.0f, 0.0f, 0.0f, 0.75f})), Channels(KPixelF{1, 1, 1, 1}));
    // Lumin.: half of greatest plus least; in integers the sum halved, truncated.
    t.Apply({{"Channel used as threshold", 4}, {"Threshold", 3.4e-5}});  // between codes 2 and 2.5
    EXPECT_EQ(t.Run(KPixel{1, 4, 2, 0}).r, 0u);
    EXPECT_EQ(t.Run(KPixelF{KIntToFloat(1), KIntToFloat(4), KIntToFloat(2), 0.0f}).r, 1.0f);
    // Unlocked thresholds differ per channel; locked, the first serves all.
    t.Apply({{"Channel used as threshold", 5}, {"Threshold", 0.5}, {"Threshold Green", 0.9}});
    const KPixelF grey{0.6f, 0.6f, 0.6f, 0.6f};
    EXPECT_EQ(t.Run(grey).g, 1.0f);
    t.Apply({{"Lock threshold for all color channels", 0}});
    EXPECT_EQ(Channels(t.Run(grey)), Channels(KPixelF{1, 0, 1, 1}));
    t.Field<float>("ReAl"_id) = 0.0f;  // alpha's repeat counts only when unlocked
    EXPECT_EQ(t.Run(grey).a, 1.0f);
    t.Apply({{"Lock Repeat for all color channels", 0}});
    EXPECT_EQ(t.Run(grey).a, 0.0f);
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

// Each source, both ramp shapes, a hard step and unlocked rows.
TEST(Threshold, LanesEqualOneAtATime)
{
    Tool<KEffectColor> t("ZV_Threshold");
    for (int32_t source : {4, 5, 0, 3}) {
        t.Apply({{"Channel used as threshold", double(source)}, {"Threshold", 0.4}, {"Softness", source == 0 ? 0.0 : 0.3},
                 {"Repeat", 2.5}, {"Ping-pong", double(source != 5)}, {"Invert", double(source == 3)},
                 {"Lock Repeat for all color channels", double(source != 5)}});
        SCOPED_TRACE(source);
        ExpectRowsEqualOneAtATime(t);
    }
}

// The render road through KTool: transfer rules, input construction per
// family, change messages, frame times and trails.
#include "support.h"

using namespace zvtest;

namespace {

// Declares one parameter of most kinds and keeps what arrives.
struct KEffectProbe : KEffectColor {
    KEffectProbe()
    {
        inputList.AddSlider(&count, 0, "Count", "Cnt "_id, 0, -10, 10);
        inputList.AddSlider(&amount, 0.5f, "Amount (soft)", "Amnt"_id, kFlagNotify, 0.0, 1.0);
        inputList.AddAngle(&radians, 0.0f, "Angle", "Angl"_id, 0, 1);
        inputList.AddAngle(&degrees, 0.0f, "Turn", "Turn"_id, 0, 0);
        inputList.AddCheckbox(&flag, false, "Flag", "Flag"_id, kFlagNotify, 0);
        inputList.AddPoint(&centre, {0.5f, 0.5f}, "Center", "Cent"_id, 0, 0);
        inputList.AddPoint(&scaled, {0.5f, 0.5f}, "Scaled", "Scal"_id, 0, 2);
        inputList.AddPoint(&shifted, {0.5f, 0.5f}, "Shifted", "Shif"_id, 0, 4);
        inputList.AddTransform(&xf, KTransformValue{}, "Xf", "Xfrm"_id, 0, 0);
        inputList.AddStandard(&std5, 0, kStdSuperSample, 0);
        inputList.AddStandard(&stdColor, 0, kStdColorSpace, 0);
        inputList.AddTextEdit(&note, "hello", "Note", "Note"_id, 0, 2);
    }
    void ProcessColor(KPixelF& out, const KPixelF& in) override { out = in; }
    KMessageList OnChange(uint32_t id, const KMessageValue& v) override
    {
        KMessageList list;
        if (id == "Flag"_id) {
            list.Add(kMessageVisible, "Cnt "_id, v.intValue > 0 ? 0.0f : 1.0f);
            list.Add(kMessageLabel, "Amnt"_id, std::string("Strength"));
            list.Add(kMessageValue, "Cnt "_id, 7.0f);
        }
        return list;
    }

    int32_t count;
    float amount, radians, degrees;
    bool flag;
    KPoint2 centre, scaled, shifted;
    KTransformValue xf;
    int32_t std5, stdColor;
    std::string note;
};

// The probe in a flow over a 4 x 3 float plate with square pixels: picture aspect 4/3.
struct Probe : ToolFlow {
    Img plate = Pattern(4, 3, true);
    KEffectProbe& effect = *static_cast<KEffectProbe*>(EffectOf(node.op.get()));
    Probe() : ToolFlow(Local<KEffectProbe>("Probe")) { SetImage("Image", plate.get()); }
};

TEST(BridgeTransfer, ValuesRoundAndConvertByKind)
{
    // Where each input lands in the probe; a kind-5 standard reads super-sampling too.
    auto field = [](const KEffectProbe& e, const std::string& id) -> double {
        if (id == "KSup") {
            EXPECT_EQ(e.std5, e.settings.superSampling);
        }
        const std::map<std::string, double> at = {
            {"Count", e.count}, {"Angle", e.radians}, {"Turn", e.degrees}, {"KCoS", e.stdColor},
            {"KSup", e.settings.superSampling}, {"Flag", e.flag}, {"XfType", e.xf.type}, {"XfRotationZ", e.xf.rotateZ},
            {"XfRotationOrder", e.xf.rotationOrder}};
        return at.at(id);
    };
    const struct { const char* id; double value, want; } rows[] = {
        // Integers round half away from zero; angles are negated, in radians or
        // left in degrees by their unit; standard inputs truncate with their bias.
        {"Count", 2.5, 3}, {"Count", -2.5, -3}, {"Count", 0.49, 0}, {"Angle", 90, double(-90.0f * 0.017453292f)},
        {"Turn", 30, -30}, {"KCoS", 2.9999999, 3}, {"KCoS", 2.99, 2},
        // Super sampling items; a transform's type counts a half, a checkbox does not.
        {"KSup", 5, 8}, {"KSup", 6, 16}, {"KSup", 2, 3}, {"Flag", 0.5, 0}, {"XfType", 0.5, 1},
        {"XfRotationZ", 90, double(static_cast<float>(90.0 * 0.017453292519943295))},
        {"XfRotationOrder", 4, 4}, {"XfRotationOrder", 5, 5},
    };
    Probe p;
    for (const auto& r : rows) {
        p.Set(r.id, r.value);
        p.Render();
        // Radians go through float: within a few of its steps.
        const bool radians = std::string(r.id) == "Angle" || std::string(r.id) == "XfRotationZ";
        EXPECT_NEAR(field(p.effect, r.id), r.want, radians ? 5e-7 : 0.0) << r.id << " = " << r.value;
    }
    p.flow.requestFlags = host::kRequestQuick;  // quick renders neither super-sample nor filter
    p.Render();
    EXPECT_EQ(std::tie(p.effect.settings.superSampling, p.effect.settings.filter, p.effect.settings.quick),
              std::make_tuple(1, 0, true));
}

TEST(BridgeTransfer, PointsConvertByUnitAndChannelSwitchesReachTheProcess)
{
    Probe p;
    p.Apply({{"Scaled", 0.5, 0.5}, {"Shifted", 0.75, 0.25}, {"KCCG", 0}});
    Img out = p.Render();
    EXPECT_EQ(std::vector<float>({p.effect.centre.x, p.effect.scaled.x, p.effect.scaled.y, p.effect.shifted.x}),
              std::vector<float>({0.5f, 2.0f, 1.5f, 0.25f}));
    EXPECT_FLOAT_EQ(p.effect.shifted.y, -0.25f / (4.0f / 3.0f));
    EXPECT_EQ(p.effect.note, "hello");
    EXPECT_FALSE(p.effect.settings.green);
    EXPECT_EQ(Differ(*out, *p.plate), "");  // green switched off passes the image through
}

TEST(BridgeConstruction, ColourToolInputs)
{
    Probe p;
    const host::Operator& op = *p.node.op;
    for (const char* id : {"KCCB", "KCCA", "KSuS", "PDPM", "KTra", "KTrR", "ZVMT", "KCoS", "XfPositionX", "XfRotationOrder",
                           "XfScaleLock", "XfType", "XfPosition", "XfAspectType"})
        EXPECT_NE(op.FindInput(id), nullptr) << id;
    ExpectInputs(op, {{"Amount", "name Amount (soft)"},  // the id stops at "("
                      {"KCCR", "page Zelvarine Controls"}, {"KSup", "items 1x1|2x2|3x3|4x4|5x5|8x8|16x16"},
                      {"KTrF", "visible no"}, {"Image", "link 1"}, {"Count", "integer yes; soft -10..10"},
                      {"Angle", "control Screw; hard 0..360"}, {"KUnd", "absent"}, {"KFil", "absent"},
                      {"KEdg", "absent"}, {"KMaW", "absent"}, {"Width", "absent"}});
    EXPECT_EQ(*op.FindInput("KTrF")->attrs.defaultNumber, 0.95);
    EXPECT_EQ(op.MainOutput()->id, "Output");
}

// A warp, a position effect with a colour and a source, never rendered: only
// the inputs their families are built with count.
class KEffectTurn : public KEffectWarp {
    bool InverseMap(KPosition&, const KPosition&) override { return false; }
};
struct KEffectSpot : KEffectPosition {
    KEffectSpot() { inputList.AddColor(&tint, {1.0f, 0.5f, 0.25f, 1.0f}, "Tint", "TntR"_id, 0); }
    KColor tint;
};
class KEffectDots : public KEffectPixel {
    bool HasFeature(int32_t code) override { return code == kFeatureSource; }
};

TEST(BridgeConstruction, WarpPositionAndSourceInputs)
{
    ExpectInputs(*ToolFlow(Local<KEffectTurn>("Turn")).node.op,
                 {{"Image", "present"}, {"KUnd", "integer yes"}, {"KFil", "items None|Pixel|Area"}, {"KEdg", "present"},
                  {"KMaW", "present"}, {"KCCA", "present"}, {"KSup", "absent"}});
    ExpectInputs(*ToolFlow(Local<KEffectSpot>("Spot")).node.op,
                 {{"KSup", "present"}, {"PDPM", "present"}, {"KSuS", "absent"}, {"TintRed", "label Tint"},
                  {"TintGreen", "member 1"}, {"TintBlue", "default 0.25"}, {"TintAlpha", "group 11"}});
    ExpectInputs(*ToolFlow(Local<KEffectDots, ZV_SourceOperator>("Dots")).node.op,
                 {{"Image", "absent"}, {"PDPM", "absent"}, {"KTra", "absent"}, {"Width", "present"},
                  {"Height", "default 1080"}});
}

TEST(BridgeNotify, MessagesReachVisibilityLabelsAndValues)
{
    Probe p;
    auto* op = p.node.op.get();
    ExpectInputs(*op, {{"Count", "visible yes"}});
    p.Set("Flag", 1.0);
    ExpectInputs(*op, {{"Count", "visible no"}, {"Amount", "label Strength"}});
    EXPECT_EQ(NumberOf(op->FindInput("Count")->ValueAt(0)), 7.0);
    p.Set("Flag", 0.0);
    ExpectInputs(*op, {{"Count", "visible yes"}});

    auto labels = [op] { return op->FindInput("KCCR")->label + op->FindInput("KCCG")->label + op->FindInput("KCCB")->label; };
    p.Set("KCoS", 5.0);
    EXPECT_EQ(labels(), "HSV");
    p.Set("KCoS", 9.0);  // above 7: left alone
    EXPECT_EQ(labels(), "HSV");

    p.Set("KTra", 1.0);
    ExpectInputs(*op, {{"KTrF", "visible yes"}, {"KTrR", "visible yes"}});
}

// Wants the frame before and a slot it does not need; averages what arrives.
struct KEffectEcho : KEffectThreads {
    KEffectEcho()
    {
        AllocFrames(3);
        // A late input is what turns the early pass on.
        inputList.AddSlider(&mix, 1.0f, "Mix", "Mix "_id, kFlagLate, 0.0, 1.0);
    }
    float mix;
    int32_t GetFrameTimes(int32_t, float time, float* times) override
    {
        if (times) {
            times[0] = time;
            times[1] = time - 1.0f;
            times[2] = 1e10f;
        }
        return 3;
    }
    int32_t GetJobCount(int32_t) override { return height; }
    void ProcessJob(int32_t, int32_t y, KImage* source, KImage* target) override
    {
        for (int32_t x = 0; x < width; ++x)
            target->SetPixel(x, y, KPixelF{At<KPixelF>(*frames[0], x, y).r, At<KPixelF>(*frames[1], x, y).r,
                                           frames[2] ? 1.0f : 0.0f, 1.0f});
    }
};

// Its colour is the request time in tenths: a time-varying upstream.
struct KEffectClock : KEffectPixel {
    bool HasFeature(int32_t code) override { return code == kFeatureSource; }
    void ProcessPixelFloat(KPixelF& out, int32_t, int32_t, KImage*) override
    {
        out = {settings.time / 10.0f, 0.0f, 0.0f, 1.0f};
    }
};

TEST(BridgeRender, TwoFrameRequestFollowsFrameTimes)
{
    ToolFlow echo(Local<KEffectEcho>("Echo"));
    auto& clock = echo.flow.Add("clock", Local<KEffectClock, ZV_SourceOperator>("Clock"));
    echo.flow.SetValue(clock, In(clock, "Width"), host::MakeNumber(3));
    echo.flow.SetValue(clock, In(clock, "Height"), host::MakeNumber(2));
    dynamic_cast<host::SourceOperator*>(clock.op.get())->floatDepth = true;
    host::Input* input = echo.In("Input");
    EXPECT_EQ(input->attrs.slots, 3);
    echo.flow.Connect(echo.node, input, clock, clock.op->MainOutput());
    const KPixelF px = At<KPixelF>(*echo.Render(5.0), 0, 1);
    // Slots asked at t + 0.0001: the clock saw 5.0001 and 4.0001; the 1e10 slot arrives empty.
    EXPECT_EQ(Channels(px), Channels(KPixelF{5.0001f / 10.0f, 4.0001f / 10.0f, 0.0f, 1.0f}));
    // The bridge's one call for it: a time per slot, none for the 1e10 slot.
    const auto wanted = ToolOf(echo.node.op.get())->FramesWantedAt(5.0f);
    ASSERT_EQ(wanted.size(), 1u);
    EXPECT_EQ(wanted[0].input, input);
    EXPECT_EQ(wanted[0].times, (std::vector<std::optional<double>>{5.0, 4.0, std::nullopt}));
}

TEST(BridgeRender, TrailsCarryAcrossRendersUntilReset)
{
    ToolFlow f(Local<KEffectProbe>("Probe"));
    Img white = Solid(2, 2, KPixel{65535, 65535, 65535, 65535}), black = Solid(2, 2, KPixel{});
    f.Apply({{"KTra", 1}, {"KTrF", 0.5}});
    auto render = [&](const Img& in, double t) {
        f.SetImage("Image", in.get());
        return At<KPixel>(*f.Render(t), 0, 0).r;
    };
    f.flow.StartRender();
    EXPECT_EQ(render(white, 1), 65535u);
    // Transparent black over the white trail faded by half.
    EXPECT_EQ(render(black, 2), KScaleInt(65535, uint32_t(0.5f * 65535.5f)));
    f.Set("KTrR", 1);
    EXPECT_EQ(render(black, 3), 0u);
    EXPECT_EQ(render(white, 4), 65535u);
    f.flow.StartRender();  // a new run starts its trail anew
    EXPECT_EQ(render(black, 5), 0u);
}

}  // namespace

// The render road through KTool: transfer rules, input construction per
// family, change messages, frame times, trails, threads, and flows.
#include <gtest/gtest.h>
#include <cmath>
#include "bridge/operator.h"
#include "host/flow.h"
#include "host/image.h"
#include "support.h"

using namespace zvtest;

namespace {

// Declares one parameter of most kinds and keeps what arrives.
class KEffectProbe : public KEffectColor {
public:
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

template <class Effect, class Base = ZV_ThreadedOperator>
host::Registration Local(const char* name)
{
    host::Registration r;
    r.className = name;
    r.name = name;
    r.creator = [] { return static_cast<host::Operator*>(new Base(std::make_unique<Effect>())); };
    return r;
}

template <class Effect> Effect& EffectOf(host::Flow::Node& node)
{
    return *static_cast<Effect*>(static_cast<ZV_Operator<host::ThreadedOperator>*>(node.op.get())->Effect());
}

// A constant image as an input value.
host::Value ImageValue(KImage* img) { return host::MakeImage(img->HostImage()); }

struct ProbeFlow {
    host::Registration reg = Local<KEffectProbe>("Probe");
    host::Flow flow;
    host::Flow::Node& node = flow.Add("probe", reg);
    KEffectProbe& effect = EffectOf<KEffectProbe>(node);
    Img plate = Pattern(4, 3, true);
    ProbeFlow() { flow.SetValue(node, In(node, "Image"), ImageValue(plate.get())); }
    host::Value Render(double time = 1.0)
    {
        flow.BeginFrame();
        return flow.Evaluate(node, node.op->FindOutput("Output"), time);
    }
    void Set(const char* id, double v) { flow.SetValue(node, In(node, id), host::MakeNumber(v)); }
};

TEST(BridgeTransfer, ValuesRoundAndConvertByKind)
{
    using Get = double (*)(const KEffectProbe&);
    const struct { const char* id; double value; Get get; double want; } rows[] = {
        // Integers round half away from zero.
        {"Count", 2.5, +[](const KEffectProbe& e) { return double(e.count); }, 3},
        {"Count", -2.5, +[](const KEffectProbe& e) { return double(e.count); }, -3},
        {"Count", 0.49, +[](const KEffectProbe& e) { return double(e.count); }, 0},
        // Angles are negated, in radians or left in degrees by their unit.
        {"Angle", 90, +[](const KEffectProbe& e) { return double(e.radians); }, double(-90.0f * 0.017453292f)},
        {"Turn", 30, +[](const KEffectProbe& e) { return double(e.degrees); }, -30},
        // Standard inputs truncate with their bias.
        {"KCoS", 2.9999999, +[](const KEffectProbe& e) { return double(e.stdColor); }, 3},
        {"KCoS", 2.99, +[](const KEffectProbe& e) { return double(e.stdColor); }, 2},
        // Super sampling items, read by a kind-5 standard too.
        {"KSup", 5, +[](const KEffectProbe& e) { return double(e.settings.superSampling); }, 8},
        {"KSup", 5, +[](const KEffectProbe& e) { return double(e.std5); }, 8},
        {"KSup", 6, +[](const KEffectProbe& e) { return double(e.settings.superSampling); }, 16},
        {"KSup", 2, +[](const KEffectProbe& e) { return double(e.settings.superSampling); }, 3},
        // A transform's type counts a half, a checkbox does not.
        {"Flag", 0.5, +[](const KEffectProbe& e) { return double(e.flag); }, 0},
        {"XfType", 0.5, +[](const KEffectProbe& e) { return double(e.xf.type); }, 1},
        {"XfRotationZ", 90, +[](const KEffectProbe& e) { return double(e.xf.rotateZ); },
         double(static_cast<float>(90.0 * 0.017453292519943295))},
        {"XfRotationOrder", 4, +[](const KEffectProbe& e) { return double(e.xf.rotationOrder); }, 4},
        {"XfRotationOrder", 5, +[](const KEffectProbe& e) { return double(e.xf.rotationOrder); }, 5},
    };
    ProbeFlow p;
    for (const auto& r : rows) {
        p.Set(r.id, r.value);
        p.Render();
        // Radians go through float: within a few of its steps.
        const bool radians = std::string(r.id) == "Angle" || std::string(r.id) == "XfRotationZ";
        EXPECT_NEAR(r.get(p.effect), r.want, radians ? 5e-7 : 0.0) << r.id << " = " << r.value;
    }
    p.flow.requestFlags = host::kRequestQuick;  // quick renders neither super-sample nor filter
    p.Render();
    EXPECT_EQ(p.effect.settings.superSampling, 1);
    EXPECT_EQ(p.effect.settings.filter, 0);
    EXPECT_TRUE(p.effect.settings.quick);
}

TEST(BridgeTransfer, PointsConvertByUnitAndChannelSwitchesReachTheProcess)
{
    ProbeFlow p;  // a 4 x 3 source with square pixels: picture aspect 4/3
    p.flow.SetValue(p.node, In(p.node, "Scaled"), host::MakePoint(0.5, 0.5));
    p.flow.SetValue(p.node, In(p.node, "Shifted"), host::MakePoint(0.75, 0.25));
    p.Set("KCCG", 0.0);
    host::Value out = p.Render();
    EXPECT_EQ(std::vector<float>({p.effect.centre.x, p.effect.scaled.x, p.effect.scaled.y, p.effect.shifted.x}),
              std::vector<float>({0.5f, 2.0f, 1.5f, 0.25f}));
    EXPECT_FLOAT_EQ(p.effect.shifted.y, -0.25f / (4.0f / 3.0f));
    EXPECT_EQ(p.effect.note, "hello");
    EXPECT_FALSE(p.effect.settings.green);
    EXPECT_EQ(Differ(*Img(KImage::Wrap(static_cast<const host::ImageValue*>(out.get())->image, false)), *p.plate), "");
}

TEST(BridgeConstruction, ColourToolInputs)
{
    ProbeFlow p;
    const host::Operator& op = *p.node.op;
    for (const char* id : {"KCCB", "KCCA", "KSuS", "PDPM", "KTra", "KTrR", "ZVMT", "KCoS", "XfPositionX", "XfRotationOrder",
                           "XfScaleLock", "XfType", "XfPosition", "XfAspectType"})
        EXPECT_NE(op.FindInput(id), nullptr) << id;
    zvtest::ExpectInputs(op, {{"Amount", "name Amount (soft)"},  // the id stops at "("
                              {"KCCR", "page Zelvarine Controls"},
                              {"KSup", "items 1x1|2x2|3x3|4x4|5x5|8x8|16x16"},
                              {"KTrF", "visible no"},
                              {"Image", "link 1"},
                              {"Count", "integer yes; soft -10..10"},
                              {"Angle", "control Screw; hard 0..360"},
                              {"KUnd", "absent"}, {"KFil", "absent"}, {"KEdg", "absent"},
                              {"KMaW", "absent"}, {"Width", "absent"}});
    EXPECT_EQ(*op.FindInput("KTrF")->attrs.defaultNumber, 0.95);
    EXPECT_EQ(op.MainOutput()->id, "Output");
}

class KEffectTurn : public KEffectWarp {
public:
    bool InverseMap(KPosition& out, const KPosition& in) override
    {
        out = {1.0f - in.x, in.y};
        return true;
    }
};

class KEffectSpot : public KEffectPosition {
public:
    KEffectSpot() { inputList.AddColor(&tint, {1.0f, 0.5f, 0.25f, 1.0f}, "Tint", "TntR"_id, 0); }
    void ProcessPosition(KPositionPixel& out, const KPositionPixel& in, const KPosition& p) override
    {
        out = in;
        out.r = p.x * tint.r;
    }
    KColor tint;
};

class KEffectDots : public KEffectPixel {
public:
    bool HasFeature(int32_t code) override { return code == kFeatureSource; }
    void ProcessPixelFloat(KPixelF& out, int32_t x, int32_t y, KImage*) override
    {
        out = {float(x & 1), float(y & 1), 0.0f, 1.0f};
    }
};

TEST(BridgeConstruction, WarpPositionAndSourceInputs)
{
    host::Flow flow;
    auto warpReg = Local<KEffectTurn>("Turn");
    auto posReg = Local<KEffectSpot>("Spot");
    auto srcReg = Local<KEffectDots, ZV_SourceOperator>("Dots");
    zvtest::ExpectInputs(*flow.Add("w", warpReg).op, {{"Image", "present"}, {"KUnd", "integer yes"},
                                                      {"KFil", "items None|Pixel|Area"}, {"KEdg", "present"},
                                                      {"KMaW", "present"}, {"KCCA", "present"}, {"KSup", "absent"}});
    zvtest::ExpectInputs(*flow.Add("p", posReg).op, {{"KSup", "present"}, {"PDPM", "present"}, {"KSuS", "absent"},
                                                     {"TintRed", "label Tint"}, {"TintGreen", "member 1"},
                                                     {"TintBlue", "default 0.25"}, {"TintAlpha", "group 11"}});
    zvtest::ExpectInputs(*flow.Add("s", srcReg).op, {{"Image", "absent"}, {"PDPM", "absent"}, {"KTra", "absent"},
                                                     {"Width", "present"}, {"Height", "default 1080"}});
}

TEST(BridgeNotify, MessagesReachVisibilityLabelsAndValues)
{
    ProbeFlow p;
    auto* op = p.node.op.get();
    host::Input* count = op->FindInput("Count");
    EXPECT_TRUE(count->attrs.visible);
    p.Set("Flag", 1.0);
    EXPECT_FALSE(count->attrs.visible);
    EXPECT_EQ(op->FindInput("Amount")->label, "Strength");
    EXPECT_EQ(static_cast<const host::Number*>(count->ValueAt(0).get())->value, 7.0);
    p.Set("Flag", 0.0);
    EXPECT_TRUE(count->attrs.visible);

    auto labels = [op] { return op->FindInput("KCCR")->label + op->FindInput("KCCG")->label + op->FindInput("KCCB")->label; };
    p.Set("KCoS", 5.0);
    EXPECT_EQ(labels(), "HSV");
    p.Set("KCoS", 9.0);  // above 7: left alone
    EXPECT_EQ(labels(), "HSV");

    p.Set("KTra", 1.0);
    EXPECT_TRUE(op->FindInput("KTrF")->attrs.visible);
    EXPECT_TRUE(op->FindInput("KTrR")->attrs.visible);
}

// Wants the frame before and a slot it does not need; averages what arrives.
class KEffectEcho : public KEffectThreads {
public:
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
        for (int32_t x = 0; x < width; ++x) {
            target->SetPixel(x, y, KPixelF{At<KPixelF>(*frames[0], x, y).r, At<KPixelF>(*frames[1], x, y).r,
                                           frames[2] ? 1.0f : 0.0f, 1.0f});
        }
    }
};

// Its colour is the request time in tenths: a time-varying upstream.
class KEffectClock : public KEffectPixel {
public:
    bool HasFeature(int32_t code) override { return code == kFeatureSource; }
    void ProcessPixelFloat(KPixelF& out, int32_t, int32_t, KImage*) override
    {
        out = {settings.time / 10.0f, 0.0f, 0.0f, 1.0f};
    }
};

TEST(BridgeRender, TwoFrameRequestFollowsFrameTimes)
{
    host::Flow flow;
    auto clockReg = Local<KEffectClock, ZV_SourceOperator>("Clock");
    auto echoReg = Local<KEffectEcho>("Echo");
    auto& clock = flow.Add("clock", clockReg);
    auto& echo = flow.Add("echo", echoReg);
    flow.SetValue(clock, In(clock, "Width"), host::MakeNumber(3));
    flow.SetValue(clock, In(clock, "Height"), host::MakeNumber(2));
    dynamic_cast<host::SourceOperator*>(clock.op.get())->floatDepth = true;
    host::Input* input = In(echo, "Input");
    EXPECT_EQ(input->attrs.slots, 3);
    flow.Connect(echo, input, clock, clock.op->MainOutput());
    flow.BeginFrame();
    host::Value v = flow.Evaluate(echo, echo.op->MainOutput(), 5.0);
    auto* img = static_cast<const host::ImageValue*>(v.get())->image;
    ASSERT_NE(img, nullptr);
    const float* px = img->RowF(1);
    // Slots asked at t + 0.0001: the clock saw 5.0001 and 4.0001.
    EXPECT_FLOAT_EQ(px[0], 5.0001f / 10.0f);
    EXPECT_FLOAT_EQ(px[1], 4.0001f / 10.0f);
    EXPECT_EQ(px[2], 0.0f);  // the 1e10 slot arrives empty
    // The bridge's one call for it: a time per slot, none for the 1e10 slot.
    const auto wanted = static_cast<ZV_ThreadedOperator*>(echo.op.get())->Tool().FramesWantedAt(5.0f);
    ASSERT_EQ(wanted.size(), 1u);
    EXPECT_EQ(wanted[0].input, input);
    EXPECT_EQ(wanted[0].times, (std::vector<std::optional<double>>{5.0, 4.0, std::nullopt}));
}

TEST(BridgeRender, TrailsCarryAcrossRendersUntilReset)
{
    host::Flow flow;
    auto reg = Local<KEffectProbe>("Probe");
    auto& node = flow.Add("probe", reg);
    Img white = Solid(2, 2, KPixel{65535, 65535, 65535, 65535}), black = Solid(2, 2, KPixel{});
    flow.SetValue(node, In(node, "KTra"), host::MakeNumber(1));
    flow.SetValue(node, In(node, "KTrF"), host::MakeNumber(0.5));
    auto render = [&](const Img& in, double t) {
        flow.SetValue(node, In(node, "Image"), ImageValue(in.get()));
        flow.BeginFrame();
        host::Value v = flow.Evaluate(node, node.op->MainOutput(), t);
        return uint32_t(static_cast<const host::ImageValue*>(v.get())->image->RowW(0)[0]);
    };
    flow.StartRender();
    EXPECT_EQ(render(white, 1), 65535u);
    // Transparent black over the white trail faded by half.
    EXPECT_EQ(render(black, 2), KScaleInt(65535, uint32_t(0.5f * 65535.5f)));
    flow.SetValue(node, In(node, "KTrR"), host::MakeNumber(1));
    EXPECT_EQ(render(black, 3), 0u);
    EXPECT_EQ(render(white, 4), 65535u);
    flow.StartRender();  // a new run starts its trail anew
    EXPECT_EQ(render(black, 5), 0u);
}

TEST(BridgeFlow, OneToolsImageFeedsAnother)
{
    host::Flow flow;
    auto srcReg = Local<KEffectDots, ZV_SourceOperator>("Dots");
    auto warpReg = Local<KEffectTurn>("Turn");
    auto& dots = flow.Add("dots", srcReg);
    auto& turn = flow.Add("turn", warpReg);
    flow.SetValue(dots, In(dots, "Width"), host::MakeNumber(4));
    flow.SetValue(dots, In(dots, "Height"), host::MakeNumber(2));
    flow.Connect(turn, In(turn, "Image"), dots, dots.op->MainOutput());
    EXPECT_EQ(flow.FindCycle(), "");
    flow.BeginFrame();
    host::Value v = flow.Evaluate(turn, turn.op->MainOutput(), 0.0);
    auto* img = static_cast<const host::ImageValue*>(v.get())->image;
    ASSERT_NE(img, nullptr);
    EXPECT_EQ(img->Width(), 4);
    // Dots put red on odd columns; the mirror moves column 3 to 0.
    EXPECT_EQ(img->RowW(0)[0], 65535);
    EXPECT_LE(img->RowW(0)[4], 1);  // 1 - 1/3 in floats lands a hair off column 2

    flow.Connect(dots, In(dots, "Width"), turn, turn.op->MainOutput());
    EXPECT_FALSE(flow.FindCycle().empty());
}

}  // namespace

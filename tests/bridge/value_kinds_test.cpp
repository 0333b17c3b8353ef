// Values between tools: every kind an entry carries goes from one tool to the
// next in a flow unchanged, and a kind without an entry stops registration.
#include "bridge/value_kinds.h"
#include "data/effect_data.h"
#include "support.h"

using namespace zvtest;

namespace {

// Takes a value of every kind that enters a tool into a bound field, and
// gives one of every kind that leaves a tool, a second image among them; its
// image passes on.
struct KEffectRelay : KEffectColor {
    KEffectRelay()
    {
        inputList.AddSlider(&in.number, 0.0f, "Number", "Numb"_id, 0, 0.0, 1.0);
        inputList.AddTextEdit(&in.text, "", "Words", "Word"_id, 0, 1);
        inputList.AddPoint(&in.point, {0.5f, 0.5f}, "Where", "Wher"_id, 0, 0);
        inputList.AddImageInput(&other, "Other", "Othr"_id, 0);
        outputList.AddNumberOutput(&out.number, "Number", 1, 0);
        outputList.AddTextOutput(&out.text, "Words", 2, 0);
        outputList.AddPointOutput(&out.point, "Where", 3, 0);
        outputList.AddImageOutput(&second, "Second", 4, 0);
    }
    ~KEffectRelay() override { delete second; }
    void ProcessColor(KPixelF& o, const KPixelF& i) override { o = i; }
    void FinishRender() override
    {
        seen = other ? Differ(*other, *Pattern(3, 2, false)) : "no image";
        out = {0.1f, "über, \"quoted\"", {0.3f, -7.25f}};  // 0.1f, not a double: it stays single precision
        delete second;
        second = Pattern(3, 2, false).release();
    }
    struct Values { float number = 0.0f; std::string text; KPoint2 point; } in, out;
    KImage *other = nullptr, *second = nullptr;
    std::string seen;
};

// An input of a kind no entry carries (14 is no ValueKind).
struct KEffectStrangeTaker : KEffectColor {
    KEffectStrangeTaker() { inputList.AddShapeInput(&shapes, "Outline", "Outl"_id, 0)->valueKind = 14; }
    void ProcessColor(KPixelF& out, const KPixelF& in) override { out = in; }
    ShapeListVector* shapes = nullptr;
};

// A plug-in kind as a later value type adds it: its own host class, carrying
// here only a token that stands for the value.
struct TokenValue : host::Parameter {
    explicit TokenValue(uintptr_t t) : token(t) {}
    host::DataType Type() const override { return host::DataType::Custom; }
    std::string TypeId() const override { return "Test.Token"; }
    std::string ToText() const override { return std::to_string(token); }
    uintptr_t token;
};

struct KEffectTokens : KEffectColor {
    KEffectTokens()
    {
        inputList.AddRegion3DInput(&in, "Token in", "TokI"_id, 0);
        outputList.AddRegion3DOutput(&out, "Token out", 5, 0);
    }
    void ProcessColor(KPixelF& o, const KPixelF& i) override { o = i; }
    void FinishRender() override
    {
        out = reinterpret_cast<KRegion3D*>(reinterpret_cast<uintptr_t>(in) + 1);  // never dereferenced
    }
    KRegion3D* in = nullptr;
    KRegion3D* out = nullptr;
};

}  // namespace

TEST(BridgeValueKinds, EveryCarriedKindCrossesAFlowUnchanged)
{
    Img plate = Pattern(3, 2, true);
    ToolFlow f(Local<KEffectRelay>("Relay"));
    auto& a = f.flow.Add("a", Local<KEffectRelay>("Relay"));
    f.flow.SetValue(a, In(a, "Image"), host::MakeImage(plate->HostImage()));
    f.flow.Connect(f.node, f.In("Image"), a, a.op->FindOutput("Output"));
    const struct { const char* in; const char* out; host::DataType type; } wires[] = {
        {"Number", "Number", host::DataType::Number}, {"Words", "Words", host::DataType::Text},
        {"Where", "Where", host::DataType::Point}, {"Other", "Second", host::DataType::Image}};
    for (const auto& w : wires) {
        const host::Output* out = a.op->FindOutput(w.out);
        ASSERT_NE(out, nullptr) << w.out;
        EXPECT_EQ(out->dataType, w.type) << w.out;
        f.flow.Connect(f.node, f.In(w.in), a, out);
    }
    Img main = f.Render(1.0);
    auto& got = *static_cast<KEffectRelay*>(EffectOf(f.node.op.get()));
    EXPECT_EQ(std::tie(got.in.number, got.in.text, got.in.point.x, got.in.point.y),
              std::make_tuple(0.1f, std::string("über, \"quoted\""), 0.3f, -7.25f));
    EXPECT_EQ(got.seen, "");  // the second image arrived pixel for pixel
    EXPECT_EQ(Differ(*main, *plate), "");  // and the main image went through the chain untouched
}

TEST(BridgeValueKinds, AKindWithoutAnEntryIsRefusedByName)
{
    KEffectStrangeTaker strange;
    EXPECT_EQ(KValueKindProblem(strange),
              "input \"Outline\" takes a value, which no value kind carries into a tool yet");
    KEffectRelay relay;
    EXPECT_EQ(KValueKindProblem(relay), "");
}

TEST(BridgeValueKinds, APluginKindPlugsInWithOneEntry)
{
    // The token stands in the regions' place for this test only.
    struct Restore {
        KValueKind saved = *KFindValueKind(kValueRegion3D);
        ~Restore() { KAddValueKind(saved); }
    } restore;
    KAddValueKind({.valueKind = kValueRegion3D, .dataType = host::DataType::Custom, .typeId = "Test.Token",
                   .outputId = "Output",
                   .read = [](const host::Parameter* v, void* field) {
                       auto* t = dynamic_cast<const TokenValue*>(v);
                       *static_cast<KRegion3D**>(field) = reinterpret_cast<KRegion3D*>(t ? t->token : 100);
                   },
                   .write = [](const void* field) -> host::Value {
                       const auto* region = *static_cast<KRegion3D* const*>(field);
                       return std::make_shared<TokenValue>(reinterpret_cast<uintptr_t>(region));
                   },
                   .name = "Token", .extensions = {".tok"}, .options = {}});
    // The host knows it by name, for info and for the files it writes.
    EXPECT_EQ(host::TypeName(host::DataType::Custom, "Test.Token"), "Token");
    EXPECT_EQ(host::FindParameterClass("Test.Token")->extensions, std::vector<std::string>{".tok"});

    // Three tools in a chain: nothing in gives 100, each adds one.
    const host::Registration& reg = Local<KEffectTokens>("Tokens");
    host::Flow flow;
    Img plate = Pattern(2, 2, true);
    // Beside the image "Output", the kind's fixed id takes the next free name.
    auto tokenOut = [](host::Flow::Node& n) { return n.op->FindOutput("Output2"); };
    host::Flow::Node* previous = nullptr;
    for (const char* name : {"a", "b", "c"}) {
        auto& n = flow.Add(name, reg);
        flow.SetValue(n, n.op->FindInput("Image"), host::MakeImage(plate->HostImage()));
        ASSERT_EQ(n.op->FindInput("Tokenin")->attrs.typeId, "Test.Token");
        ASSERT_EQ(tokenOut(n)->typeId, "Test.Token");
        if (previous) flow.Connect(n, n.op->FindInput("Tokenin"), *previous, tokenOut(*previous));
        previous = &n;
    }
    flow.BeginFrame();
    host::Value v = flow.Evaluate(*previous, tokenOut(*previous), 1.0);
    ASSERT_NE(dynamic_cast<const TokenValue*>(v.get()), nullptr);
    EXPECT_EQ(v->ToText(), "103");
}

// Each adds a channel to what arrives; nothing connected arrives as an empty table.
struct KEffectTableStep : KEffectData {
    KEffectTableStep() { AddDataInput(); }
    std::unique_ptr<KDataTable> Compute() override
    {
        auto out = input->Clone();
        out->Add(KDataChannel::Create("step", kDataVector3, static_cast<int32_t>(input->ChannelCount()) + 1));
        if (input->ChannelCount()) input->Channel(0)->name = "changed";  // its own copy: upstream keeps its name
        return out;
    }
};

TEST(BridgeValueKinds, TablesTravelAsCopiesNamedData)
{
    const host::Registration& reg = Local<KEffectTableStep>("Step");
    host::Flow flow;
    auto& a = flow.Add("a", reg);
    auto& b = flow.Add("b", reg);
    EXPECT_EQ(host::TypeName(a.op->FindOutput("Output")->dataType, a.op->FindOutput("Output")->typeId), "Data");
    flow.Connect(b, b.op->FindInput("Data"), a, a.op->FindOutput("Output"));
    flow.BeginFrame();
    host::Value v = flow.Evaluate(b, b.op->FindOutput("Output"), 1.0);
    ASSERT_NE(v, nullptr);
    EXPECT_EQ(v->ToText(), "step [1]     float32 [3]      Vector3\nstep [2]     float32 [3]      Vector3\n");
    // b wrote into its own copy of a's table: a's result is untouched.
    host::Value first = flow.Evaluate(a, a.op->FindOutput("Output"), 1.0);
    EXPECT_EQ(first->ToText(), "step [1]     float32 [3]      Vector3\n");
}

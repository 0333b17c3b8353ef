// What holds for every registered tool, checked once over the registry, so a
// tool is covered from the moment it registers: its catalogue entry, every
// value kind carried, input names of its own made from the labels, declared
// defaults read back from the host within their ranges; image tools render
// odd sizes down to one pixel in both depths, finite, alike on one thread, two
// and none, and through a flow as their effect driven directly; number and
// text tools give defined values at any time, through a flow as from their effect;
// tools with a table input treat channels of every type alike both ways.
#include <cctype>
#include <set>
#include "bridge/catalogue.h"
#include "bridge/value_kinds.h"
#include "data/table.h"
#include "support.h"

using namespace zvtest;

namespace {

// Registered tools whose main output is an image, or those whose is not.
std::vector<std::string> Classes(bool images)
{
    std::vector<std::string> names;
    for (const host::Registration& r : host::Registry::Get().All()) {
        if (r.hostTool) continue;
        std::unique_ptr<host::Operator> op(r.creator());
        const host::Output* main = op->MainOutput();
        if ((main && main->dataType == host::DataType::Image) == images) names.push_back(r.className);
    }
    return names;
}

std::string Named(const testing::TestParamInfo<std::string>& info) { return info.param; }

// Declared defaults a tool keeps outside its limits.
const std::set<std::pair<std::string, std::string>> kDefaultsBeyondTheirLimits = {
    {"ZV_Generate", "Detail"}, {"ZV_DataSetConstant", "Integer"}, {"ZV_DataSetRamp", "Integer Minimum"},
    {"ZV_DataSetRandom", "Integer Minimum"}, {"ZV_Spiral", "Angle End"},
    {"ZV_ShapeSpiral", "Angle End"}};

// The registration matches the catalogue; every value kind has an entry.
// Every control has a name of its own, made from its label and never a
// counter a user cannot predict, and its old four-character code reaches
// exactly it. Every host input tied to a declaration starts from the declared
// default, which the fresh effect's field holds too, within the hard limits,
// the slider's range and the item list.
void ExpectWellDeclared(const std::string& className)
{
    const host::Registration& r = Registered(className);
    const KCatalogueEntry* e = KCatalogueFind(className);
    ASSERT_NE(e, nullptr) << className << " is not in the catalogue";
    EXPECT_EQ(std::tie(r.name, r.shortName, r.category, r.help, r.registryType),
              std::make_tuple(e->name, e->shortName, e->category, e->help, 3));
    std::unique_ptr<host::Operator> op(host::CreateOperator(r));
    EXPECT_EQ(KValueKindProblem(*EffectOf(op.get())), "");
    std::set<std::string> names;
    for (auto& in : op->Inputs()) {
        SCOPED_TRACE(in->name);
        EXPECT_TRUE(names.insert(in->id).second) << "two controls named " << in->id;
        ASSERT_FALSE(in->id.empty());
        for (char c : in->id) EXPECT_TRUE(std::isalnum(static_cast<unsigned char>(c)) || c == '_');
        const std::string label = KHostId(in->name), rest = in->id.substr(std::min(label.size(), in->id.size()));
        if (!label.empty()) {
            EXPECT_EQ(in->id.rfind(label, 0), 0u) << in->id;
            EXPECT_FALSE(!rest.empty() && std::isdigit(static_cast<unsigned char>(rest[0])) &&
                         !std::isdigit(static_cast<unsigned char>(label.back())))
                << in->id;
        }
        if (!in->alias.empty()) {
            EXPECT_EQ(op->FindInput(in->alias), in.get()) << in->alias;
        }
    }
    for (KInput* k = ToolOf(op.get())->inputs.First(); k; k = k->Next()) {
        const KParameter& p = *k->parameter;
        const host::InputAttrs& a = k->hostInput->attrs;
        const host::Value now = k->hostInput->ValueAt(0.0);
        SCOPED_TRACE(className + " " + k->hostInput->id);
        if (p.valueKind == kValuePoint) {
            const auto& f = *static_cast<const KPoint2*>(p.field);
            const auto* pt = dynamic_cast<const host::Point*>(now.get());
            ASSERT_TRUE(a.defaultPoint && pt);
            EXPECT_EQ(*a.defaultPoint, std::make_pair(double(p.defaultPoint.x), double(p.defaultPoint.y)));
            EXPECT_EQ(std::make_pair(double(f.x), double(f.y)), *a.defaultPoint);
            EXPECT_EQ(std::make_pair(pt->x, pt->y), *a.defaultPoint);
            continue;
        }
        if (p.valueKind == kValueText) {
            EXPECT_EQ(a.defaultText.value_or("<none>"), p.defaultText);
            EXPECT_EQ(*static_cast<const std::string*>(p.field), p.defaultText);
            continue;
        }
        const int s = k->subIndex;
        float declared = p.defaultValue, field;
        switch (p.valueKind) {
        case kValueFloat: field = *static_cast<const float*>(p.field); break;
        case kValueInteger: field = float(*static_cast<const int32_t*>(p.field)); break;
        case kValueBoolean: field = *static_cast<const bool*>(p.field); break;
        case kValueColor: declared = (&p.defaultColor.r)[s], field = (&static_cast<const KColor*>(p.field)->r)[s]; break;
        case kValueRange: {
            const auto* r = static_cast<const KRange2*>(p.field);
            declared = s ? p.defaultRange.high : p.defaultRange.low, field = s ? r->high : r->low;
            break;
        }
        default: continue;  // images, transforms: nothing of their own to start from
        }
        EXPECT_EQ(field, declared);
        ASSERT_TRUE(a.defaultNumber);
        const double d = *a.defaultNumber;
        EXPECT_EQ(d, double(declared));
        EXPECT_EQ(NumberOf(now), d);
        if (!kDefaultsBeyondTheirLimits.count({className, p.name})) {
            EXPECT_GE(d, std::max(a.hardMin.value_or(d), a.softMin.value_or(d)));
            EXPECT_LE(d, std::min(a.hardMax.value_or(d), a.softMax.value_or(d)));
        }
        if (!a.items.empty()) {
            EXPECT_LT(d, double(a.items.size()));
        }
    }
}

// Fields as the bridge leaves them at the declared defaults: angles arrive
// negated, in radians for unit 1; points move into their unit on `picture`.
void AsTheBridgeLeavesThem(KEffect& e, const KImage& picture, bool source)
{
    const float aspect = picture.PictureAspect();
    for (KParameter* p = e.inputs(); p; p = p->Next()) {
        if (p->controlKind == kControlAngle) {
            float& f = *static_cast<float*>(p->field);
            f = p->angleUnit == 1 ? -f * 0.017453292f : -f;
        }
        if (p->valueKind != kValuePoint) continue;
        KPoint2& pt = *static_cast<KPoint2*>(p->field);
        if (p->pointUnit == 1) pt.y = (1.0f / aspect) * pt.y;
        if (p->pointUnit == 2) pt = {pt.x * float(picture.width), pt.y * float(picture.height)};
        if (source) continue;  // a source's offsets stay unshifted
        if (p->pointUnit == 3) pt = {pt.x - 0.5f, pt.y - 0.5f};
        if (p->pointUnit == 4) pt = {pt.x - 0.5f, (pt.y - 0.5f) / aspect};
    }
}

// A pattern plate; in floats with values outside 0..1 and a clear pixel,
// which are finite input too.
Img Plate(int32_t w, int32_t h, bool isFloat)
{
    Img plate = Pattern(w, h, isFloat);
    if (isFloat) {
        plate->SetPixel(0, 0, KPixelF{-0.5f, 1.75f, 0.3f, 2.0f});
        plate->SetPixel(w - 1, h - 1, KPixelF{0.5f, 0.25f, 1.0f, 0.0f});
    }
    return plate;
}

class ImageTool : public testing::TestWithParam<std::string> {
protected:
    // The tool in a flow at w x h: a source told its size and depth, any other
    // fed a plate.
    std::unique_ptr<ToolFlow> InFlow(int32_t w, int32_t h, bool isFloat)
    {
        auto f = std::make_unique<ToolFlow>(GetParam());
        if (auto* s = dynamic_cast<host::SourceOperator*>(f->node.op.get())) {
            s->floatDepth = isFloat;
            f->Set("Width", w);
            f->Set("Height", h);
        } else {
            f->kept = Plate(w, h, isFloat);
            f->SetImage(ToolOf(f->node.op.get())->imageInput->id, f->kept.get());
        }
        return f;
    }
    // The same through the effect alone, fields as the bridge leaves them.
    Img Direct(int32_t w, int32_t h, bool isFloat)
    {
        Tool<KEffectImage> t(GetParam());
        const bool source = t.effect->HasFeature(kFeatureSource);
        Img plate = source ? Img(KImage::Create(w, std::max(h, 2), isFloat)) : Plate(w, h, isFloat);
        AsTheBridgeLeavesThem(*t.effect, *plate, source);
        // A tool that asks for other frames gets the plate in each slot it
        // wants, as a flow gives an unconnected input's image at any time.
        if (const int32_t n = t.effect->GetFrameTimes(0, 0.0f, nullptr); n > 1) {
            std::vector<float> times(n);
            t.effect->GetFrameTimes(0, 0.0f, times.data());
            for (int32_t i = 0; i < n; ++i)
                if (times[i] != 1e10f) t.Image().frames[i].reset(KImage::Wrap(plate->HostImage(), false));
        }
        return source ? t.Make(w, std::max(h, 2), isFloat, true) : t.Run(plate.get(), true);
    }
};

class ValueTool : public testing::TestWithParam<std::string> {};
class TableTool : public testing::TestWithParam<std::string> {};

// Registered tools with a table among their inputs.
std::vector<std::string> TableClasses()
{
    std::vector<std::string> names;
    for (const std::string& name : Classes(false)) {
        Tool<> t(name);
        for (KParameter* p = t.effect->inputs(); p; p = p->Next())
            if (p->valueKind == kValueData) {
                names.push_back(name);
                break;
            }
    }
    return names;
}

// Defaults, then each size and depth: its geometry, finite pixels and the
// effect's own; then threads.
TEST_P(ImageTool, DefaultsSizesDepthsAndThreads)
{
    ExpectWellDeclared(GetParam());
    for (bool isFloat : {false, true}) {
        for (auto [w, h] : {std::pair{1, 1}, {1, 2}, {3, 1}, {7, 5}, {33, 17}}) {
            SCOPED_TRACE(testing::Message() << w << "x" << h << (isFloat ? " float" : " int16"));
            std::unique_ptr<ToolFlow> f = InFlow(w, h, isFloat);
            Img out = f->Render();
            ASSERT_NE(out, nullptr);
            EXPECT_EQ(out->width, w);
            EXPECT_EQ(out->height, f->kept ? h : std::max(h, 2));  // sources make two rows at least
            EXPECT_EQ(out->IsFloat(), isFloat);
            for (int32_t y = 0; isFloat && y < out->height; ++y)
                for (int32_t x = 0; x < 4 * out->width; ++x)
                    ASSERT_TRUE(std::isfinite(out->RowF(y)[x])) << "channel " << x % 4 << " of " << x / 4 << "," << y;
            EXPECT_EQ(Differ(*out, *Direct(w, h, isFloat)), "") << "flow against the effect alone";
        }
        EXPECT_EQ(InFlow(33, 17, isFloat)->ThreadsAgree(), "") << "float " << isFloat;
    }
}

TEST_P(ValueTool, DefaultsAndValuesAtAnyTime)
{
    ExpectWellDeclared(GetParam());
    ToolFlow f(GetParam());
    Tool<> direct(GetParam());
    AsTheBridgeLeavesThem(*direct.effect, *Img(KImage::Create(16, 9, false)), true);
    for (double t : {0.0, 1.0, 7.5, -3.0, 1000.0}) {
        f.flow.BeginFrame();
        direct.Run(static_cast<float>(t));
        for (KOutput* o = direct.effect->outputs(); o; o = o->Next()) {
            const std::string id = static_cast<host::Output*>(o->hostOutput)->id;
            const host::Value v = f.flow.Evaluate(f.node, f.node.op->FindOutput(id), t);
            SCOPED_TRACE(id + " at " + std::to_string(t));
            if (o->valueKind == kValueFloat) {
                EXPECT_TRUE(std::isfinite(NumberOf(v)));
            }
            // Whatever its kind, the flow hands over what the effect made.
            ASSERT_NE(v, nullptr);
            EXPECT_EQ(v->ToText(), KFindValueKind(o->valueKind)->write(o->field)->ToText());
        }
    }
}

// A table's dump and every stored number, for comparing tables whole.
std::string Content(const KDataTable* t)
{
    if (!t) return "<none>";
    std::string text = t->Dump();
    for (size_t c = 0; c < t->ChannelCount(); ++c) {
        for (int32_t v : t->Channel(c)->ints) text += " " + std::to_string(v);
        for (float v : t->Channel(c)->floats) text += " " + testing::PrintToString(v);
        text += "\n";
    }
    return text;
}

// Tools with a table input, given channels of every type: finite numbers, the
// same through a flow as from the effect, and the given table left as it was.
TEST_P(TableTool, ChannelsOfEveryType)
{
    KDataTable table;
    int32_t count = 5;
    for (int32_t type : {kDataBool, kDataInteger, kDataFloat, kDataVector2, kDataVector3, kDataColor, kDataText}) {
        auto c = KDataChannel::Create("c" + std::to_string(type), type, count--);
        for (size_t i = 0; i < c->ints.size(); ++i) c->ints[i] = int32_t(i % 2);
        for (size_t i = 0; i < c->floats.size(); ++i) c->floats[i] = float(i) * 0.37f - 1.0f;
        table.Add(std::move(c));
    }
    const std::string before = Content(&table);
    ToolFlow f(GetParam());
    Tool<> direct(GetParam());
    const KValueKind& kind = *KFindValueKind(kValueData);
    KDataTable* lent = &table;
    int32_t fed = 0;
    for (KInput* k = ToolOf(f.node.op.get())->inputs.First(); k; k = k->Next())
        if (k->parameter->valueKind == kValueData) {
            f.flow.SetValue(f.node, k->hostInput, kind.write(&lent));
            *static_cast<KDataTable**>(direct.Param(k->parameter->name).field) = table.Clone().release();
            ++fed;
        }
    ASSERT_GT(fed, 0);
    // A tool that reads its table only when asked to is asked to.
    if (KParameter* enable = direct.effect->inputList.Find("DEna"_id)) {
        *static_cast<bool*>(enable->field) = true;
        f.Set("DataEnable", 1);
    }
    direct.Run(0.0f);
    f.flow.BeginFrame();
    const host::Value v = f.flow.Evaluate(f.node, f.node.op->FindOutput("Output"), 0.0);
    const KOutput* out = direct.effect->outputs();
    if (out->valueKind != kValueData) {
        // Another kind made from the table: the flow hands over what the effect made.
        ASSERT_NE(v, nullptr);
        EXPECT_EQ(v->ToText(), KFindValueKind(out->valueKind)->write(out->field)->ToText());
        EXPECT_EQ(Content(&table), before);
        for (KParameter* p = direct.effect->inputs(); p; p = p->Next())
            if (p->valueKind == kValueData) kind.release(p->field);
        return;
    }
    KDataTable* got = nullptr;
    kind.read(v.get(), &got);
    const KDataTable* made = *static_cast<KDataTable**>(direct.Output());
    EXPECT_EQ(Content(got), Content(made));
    for (size_t c = 0; got && c < got->ChannelCount(); ++c)
        for (float x : got->Channel(c)->floats) EXPECT_TRUE(std::isfinite(x)) << got->Channel(c)->name;
    EXPECT_EQ(Content(&table), before);
    kind.release(&got);
    for (KParameter* p = direct.effect->inputs(); p; p = p->Next())
        if (p->valueKind == kValueData) kind.release(p->field);
}

// Declarations whose words or limits a tidy rewrite would lose: spellings
// and names kept as the user sees them, ids cut at "(", odd pages, limits
// hard at one end only, and the codes of old flows as aliases.
TEST(RegisteredTools, InputsKeepTheirOddities)
{
    const struct { const char *tool, *id, *props; } rows[] = {
        {"ZV_Noise", "Howtocombine", "items Replace|Add|Substract"},
        {"ZV_Noise", "SizeX", "soft 1..-; hard -..32"},  // a hard end is not also soft
        {"ZV_MatchColor", "Numberofcolors", "items Single|Low and High|Low, Mid && High"},
        {"ZV_Generate", "Base", "items Position|Pixel Value (RG is UV)|Both"},
        {"ZV_Generate", "Type", "items - Cells|Concrete|- Clouds|- Crawling|- Flow|Fluid|FBM|- Fractal|- Francis|"
                                "- Frederic|- Marble|Perlin|Plasma|- Ridged|Simplex|Slabrie|- Value|Water|Worley|- Wood"},
        {"ZV_Gradient", "Negativesignedfull", "name Negative                   signed                   full"},
        {"ZV_LensDistortion", "Pincorners", "name Pin corners (only if center is centered)"},
        {"ZV_HueSaturation", "SaturationMultiply", "soft 0..-; hard -..2"},
        {"ZV_Remap", "TypeInput", "page Shuffle"},
        {"ZV_NumberColorSwitchboard", "Color34Red", "name Color  3 4Red; label Color  3 4"},
        {"ZV_NumberBeat", "CombinevalueconnecttoanotherBeatorso", "label Combine value, connect to another Beat or so)"},
        {"ZV_TextFromFile", "Format", "items Each line a frame|Startframe and text|Line on frame..."},
        {"ZV_Shuffle", "Amount", "control Screw; integer no"},
        // Labels that differ only in parentheses; a seed without a code of its own.
        {"ZV_TextFormula", "Leadingzeros", "name Leading zero's (number values)"},
        {"ZV_TextFormula", "Leadingzerospointvalues", "name Leading zero's (point values)"},
        {"ZV_Shuffle", "RandomSeed", "alias -"},
        // Standard controls: readable names, their old codes as aliases.
        {"ZV_Transform", "Red", "alias KCCR"}, {"ZV_Transform", "Alpha", "alias KCCA"},
        {"ZV_Transform", "Undersampleresolution", "alias KUnd"}, {"ZV_Transform", "Filtering", "alias KFil"},
        {"ZV_Transform", "Edges", "alias KEdg"}, {"ZV_Transform", "WarpMask", "alias KMaW"},
        {"ZV_Transform", "Domultithreading", "alias ZVMT"}, {"ZV_Transform", "Trails", "alias KTra"},
        {"ZV_Transform", "Axisangle", "alias Angl"},
    };
    for (const auto& r : rows) {
        std::unique_ptr<host::Operator> op(host::CreateOperator(Registered(r.tool)));
        EXPECT_EQ(Describe(op->FindInput(r.id), r.props), r.props) << r.tool << " " << r.id;
    }
}

INSTANTIATE_TEST_SUITE_P(Registered, ImageTool, testing::ValuesIn(Classes(true)), Named);
INSTANTIATE_TEST_SUITE_P(Registered, ValueTool, testing::ValuesIn(Classes(false)), Named);
INSTANTIATE_TEST_SUITE_P(Registered, TableTool, testing::ValuesIn(TableClasses()), Named);

}  // namespace

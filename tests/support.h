// Shared helpers of the tests: images by pattern or colour, comparison, a
// registered tool driven through its effect or through a flow, and the host's
// view of its inputs.
#pragma once
#include <gtest/gtest.h>
#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <initializer_list>
#include <map>
#include <memory>
#include <stdexcept>
#include <unistd.h>
#include <string>
#include <vector>
#include "bridge/operator.h"
#include "framework/lanes.h"
#include "framework/process.h"
#include "host/flow.h"
#include "host/image.h"
#include "host/registry.h"
#include "host/threads.h"
#include "raster/image.h"

namespace zvtest {

using Img = std::unique_ptr<KImage>;
template <class P> constexpr bool kIsFloat = std::is_same_v<P, KPixelF>;

// A registered tool's registration; the tests name tools by class.
inline const host::Registration& Registered(const std::string& className)
{
    const host::Registration* r = host::Registry::Get().FindClass(className);
    if (!r) throw std::runtime_error("not registered: " + className);
    return *r;
}

// A deterministic pattern with every channel distinct and alpha varying.
inline KPixel PatternPixel(int32_t x, int32_t y)
{
    return {(x * 977u + y * 131u) % 65536u, (x * 313u + y * 1709u + 1000u) % 65536u, (x * 59u * y + 40000u) % 65536u,
            65535u - (x * 29u + y * 257u) % 40000u};
}

// A pixel's four channels, so that whole pixels compare and print at once.
inline std::array<uint32_t, 4> Channels(const KPixel& p) { return {p.r, p.g, p.b, p.a}; }
inline std::array<float, 4> Channels(const KPixelF& p) { return {p.r, p.g, p.b, p.a}; }

// Every channel within `tol`; a tolerance of 0 asks for the exact value.
inline void ExpectNear(const KPixelF& got, const KPixelF& want, float tol, const std::string& what = "")
{
    for (int c = 0; c < 4; ++c) EXPECT_NEAR(got[c], want[c], tol) << what << " channel " << c;
}

// A w x h image in either depth whose pixel x, y is at(x, y).
template <class F> Img Made(int32_t w, int32_t h, bool isFloat, F at, float pixelAspect = 1.0f)
{
    Img img(KImage::Create(w, h, isFloat, pixelAspect, 1.0f));
    for (int32_t y = 0; y < h; ++y)
        for (int32_t x = 0; x < w; ++x) img->SetPixel(x, y, at(x, y));
    return img;
}
inline Img Pattern(int32_t w, int32_t h, bool isFloat, float pixelAspect = 1.0f)
{
    return Made(w, h, isFloat, PatternPixel, pixelAspect);
}
// Every pixel `p`, or one row of the given pixels, in the depth of their kind.
template <class P> Img Solid(int32_t w, int32_t h, const P& p)
{
    return Made(w, h, kIsFloat<P>, [&](int32_t, int32_t) { return p; });
}
template <class P> Img Row(const std::vector<P>& pixels)
{
    return Made(int32_t(pixels.size()), 1, kIsFloat<P>, [&](int32_t x, int32_t) { return pixels[x]; });
}

template <class P> P At(const KImage& img, int32_t x, int32_t y)
{
    P p;
    img.GetPixel(x, y, p, kEdgeBlack);
    return p;
}

template <class P> std::vector<P> Pixels(const KImage& img)
{
    std::vector<P> out(img.width);
    for (int32_t x = 0; x < img.width; ++x) out[x] = At<P>(img, x, 0);
    return out;
}

// The stored channels of a pixel, 16-bit codes or floats as they are; zero
// outside the image.
inline std::array<float, 4> Raw(const KImage& img, int32_t x, int32_t y)
{
    std::array<float, 4> r{};
    if (x < 0 || y < 0 || x >= img.width || y >= img.height) return r;
    for (int c = 0; c < 4; ++c)
        r[c] = img.IsFloat() ? img.RowF(y)[4 * x + c] : static_cast<float>(img.RowW(y)[4 * x + c]);
    return r;
}

// Exact comparison of the stored pixels; returns a description of the first difference.
inline std::string Differ(const KImage& a, const KImage& b)
{
    if (a.width != b.width || a.height != b.height || a.IsFloat() != b.IsFloat())
        return "geometry or depth differs";
    for (int32_t y = 0; y < a.height; ++y)
        for (int32_t x = 0; x < a.width; ++x)
            if (Raw(a, x, y) != Raw(b, x, y)) return "pixel " + std::to_string(x) + "," + std::to_string(y);
    return "";
}

// Largest difference of any channel, in float units, between a's pixel x, y and
// b's pixel x - dx, y - dy, over columns x0..x1-1 and rows y0..y1-1.
inline float MaxDiff(const KImage& a, const KImage& b, int32_t x0, int32_t y0, int32_t x1, int32_t y1,
                     int32_t dx = 0, int32_t dy = 0)
{
    float worst = 0.0f;
    for (int32_t y = y0; y < y1; ++y)
        for (int32_t x = x0; x < x1; ++x) {
            const KPixelF p = At<KPixelF>(a, x, y), q = At<KPixelF>(b, x - dx, y - dy);
            for (int c = 0; c < 4; ++c) worst = std::max(worst, std::fabs(p[c] - q[c]));
        }
    return worst;
}

constexpr int32_t Depth(bool isFloat) { return isFloat ? 2 : 1; }
inline KRenderSettings Settings(bool isFloat) { return {.depth = Depth(isFloat)}; }

// Lends images to a time tool's frame slots in order, as the bridge fills them
// from its input; null leaves a slot without a frame. Each run gives them back.
inline void LendFrames(KEffectImage& effect, std::initializer_list<const KImage*> images)
{
    int32_t i = 0;
    for (const KImage* img : images) effect.frames[i++].reset(img ? KImage::Wrap(img->HostImage(), false) : nullptr);
}

// Runs an effect of an image family over `source` into a new image like it;
// a source effect (no source) makes `target` from itself.
inline Img RunEffect(KEffectImage& effect, KImage* source, const KRenderSettings& s, bool threaded, Img target = nullptr)
{
    KImage* made = source && !target ? source->CreateLike() : target.release();
    effect.settings = s;
    std::unique_ptr<KProcessImage> process(KCreateProcess(&effect, source ? source : made, &made, s));
    if (threaded) KRunPasses(*process, host::DoMultiProcess);
    else process->Run();
    process.reset();
    return Img(made);
}

// The bridge inside a registered tool's operator, and its effect.
inline KTool* ToolOf(host::Operator* op)
{
    if (auto* t = dynamic_cast<ZV_ThreadedOperator*>(op)) return &t->Tool();
    if (auto* s = dynamic_cast<ZV_SourceOperator*>(op)) return &s->Tool();
    return nullptr;
}
inline KEffect* EffectOf(host::Operator* op) { return ToolOf(op) ? ToolOf(op)->effect : nullptr; }

// A tool of a test's own, known to flows but not to the registry.
template <class Effect, class Base = ZV_ThreadedOperator> const host::Registration& Local(const char* name)
{
    static const host::Registration r = [name] {
        host::Registration made;
        made.className = made.name = name;
        made.creator = [] { return static_cast<host::Operator*>(new Base(std::make_unique<Effect>())); };
        return made;
    }();
    return r;
}

// A value by label: a number (an angle in degrees), or a point when y is given.
struct Setting {
    template <class X, class Y = double>
    Setting(const char* l, X vx, Y vy = NAN) : label(l), x(static_cast<double>(vx)), y(static_cast<double>(vy)) {}
    const char* label;
    double x, y;
};

// A registered tool's effect driven without a request: fields are written
// through its declarations, as the bridge leaves them (angles negated in
// radians, points already in their unit). Image fields lent by a test must
// be given back (set to null) before the tool goes.
template <class E = KEffect> class Tool {
public:
    explicit Tool(const std::string& className) : op(Registered(className).creator())
    {
        effect = dynamic_cast<E*>(EffectOf(op.get()));
        if (!effect) throw std::runtime_error("not of the expected family: " + className);
    }

    // The control with this label; pages and group heads are passed over.
    KParameter& Param(const std::string& label) const
    {
        for (KParameter* p = effect->inputs(); p; p = p->Next())
            if (p->name == label && p->controlKind != kControlPage && p->controlKind != kControlBeginNest) return *p;
        throw std::runtime_error("no parameter " + label);
    }
    template <class T> T& Field(const std::string& label, int32_t kind) const
    {
        KParameter& p = Param(label);
        if (p.valueKind != kind) throw std::runtime_error("another kind of value: " + label);
        return *static_cast<T*>(p.field);
    }
    // The field of the declaration with this id.
    template <class T> T& Field(uint32_t id) const
    {
        KParameter* p = effect->inputList.Find(id);
        if (!p) throw std::runtime_error("no declaration with that id");
        return *static_cast<T*>(p->field);
    }
    // A number control's value, whatever the kind of its field; an angle in
    // degrees, as the host shows it, arrives negated (in radians for unit 1).
    void Set(const std::string& label, double v)
    {
        KParameter& p = Param(label);
        const float f = static_cast<float>(p.controlKind == kControlAngle ? -v : v);
        if (p.valueKind == kValueFloat) *static_cast<float*>(p.field) = p.angleUnit == 1 ? f * 0.017453292f : f;
        else if (p.valueKind == kValueInteger) *static_cast<int32_t*>(p.field) = static_cast<int32_t>(v);
        else if (p.valueKind == kValueBoolean) *static_cast<bool*>(p.field) = v != 0.0;
        else throw std::runtime_error("not a number: " + label);
    }
    void SetFloat(const std::string& label, float v) { Field<float>(label, kValueFloat) = v; }
    void SetInt(const std::string& label, int32_t v) { Field<int32_t>(label, kValueInteger) = v; }
    void SetBool(const std::string& label, bool v) { Field<bool>(label, kValueBoolean) = v; }
    void SetText(const std::string& label, const std::string& v) { Field<std::string>(label, kValueText) = v; }
    void SetPoint(const std::string& label, float x, float y) { Field<KPoint2>(label, kValuePoint) = {x, y}; }
    void SetColor(const std::string& label, KColor c) { Field<KColor>(label, kValueColor) = c; }
    void Apply(const std::vector<Setting>& settings)
    {
        for (const Setting& v : settings) std::isnan(v.y) ? Set(v.label, v.x) : SetPoint(v.label, float(v.x), float(v.y));
    }

    // An image family: the source through the process into a new image.
    Img Run(KImage* source, bool threaded = false)
    {
        return RunEffect(Image(), source, Settings(source->IsFloat()), threaded);
    }
    // A source: the zeroed target is its own source.
    Img Make(int32_t w, int32_t h, bool isFloat, bool threaded = false)
    {
        return RunEffect(Image(), nullptr, Settings(isFloat), threaded, Img(KImage::Create(w, h, isFloat)));
    }
    // A row of pixels through the process, and one pixel alone.
    template <class P> std::vector<P> Run(const std::vector<P>& pixels, bool threaded = false)
    {
        return Pixels<P>(*Run(Row(pixels).get(), threaded));
    }
    template <class P> P Run(const P& pixel) { return Run(std::vector<P>{pixel})[0]; }

    // A number or text tool at `time`, and its outputs.
    void Run(float time)
    {
        effect->settings.time = time;
        effect->FinishRender();
    }
    void* Output(int32_t index = 0) const
    {
        KOutput* o = effect->outputs();
        while (o && index--) o = o->Next();
        if (!o) throw std::runtime_error("no such output");
        return o->field;
    }
    float Number(int32_t index = 0) const { return *static_cast<float*>(Output(index)); }
    float At(float time)
    {
        Run(time);
        return Number();
    }
    const std::string& Text() const { return *static_cast<std::string*>(Output()); }
    // The text output after setting the input labelled `label` to `text`.
    std::string Of(const std::string& label, const std::string& text, float time = 0.0f)
    {
        SetText(label, text);
        Run(time);
        return Text();
    }

    KEffectImage& Image() const { return dynamic_cast<KEffectImage&>(*static_cast<KEffect*>(effect)); }  // or throws

    std::unique_ptr<host::Operator> op;
    E* effect = nullptr;
};

// A colour effect's rows, run four, eight or thirty-two pixels at a time, must
// come out as each pixel alone, bit for bit, in both depths and at every lane
// width: over greys, ties, primaries, hue sector edges and values outside 0..1.
inline void ExpectRowsEqualOneAtATime(Tool<KEffectColor>& t)
{
    std::vector<KPixelF> pixels = {
        {0.4f, 0.4f, 0.4f, 1.0f}, {1.0f, 0.0f, 0.0f, 0.5f}, {0.0f, 1.0f, 0.0f, 1.0f},
        {0.0f, 0.0f, 1.0f, 0.0f}, {0.7f, 0.7f, 0.2f, 1.0f}, {0.2f, 0.7f, 0.7f, 1.0f},
        {0.7f, 0.2f, 0.7f, 1.0f}, {-0.5f, 1.75f, 0.3f, 2.0f}, {0.0f, 0.0f, 0.0f, 0.0f},
        {1.0f, 1.0f, 1.0f, 1.0f}, {1.0f, 0.5f, 0.0f, 1.0f}, {1.0f, 0.0f, 1.0f / 6.0f, 1.0f},
    };
    uint32_t seed = 12345;
    auto next = [&] {
        seed = seed * 1103515245u + 12345u;
        return static_cast<float>((seed >> 8) & 0xFFFF) / 52000.0f - 0.1f;
    };
    while (pixels.size() < 403) pixels.push_back({next(), next(), next(), next()});
    const std::vector<KPixel> codes = Pixels<KPixel>(*Row(pixels));
    for (int width : {32, 8, 4}) {
        KLimitLaneWidth(width);  // the AVX-512 and AVX2 builds where the processor has them
        const std::vector<KPixelF> row = t.Run(pixels);
        const std::vector<KPixel> rowInt = t.Run(codes);
        for (size_t i = 0; i < pixels.size(); ++i) {
            KPixelF one;
            t.effect->ProcessColor(one, pixels[i]);
            KPixel oneInt;
            t.effect->ProcessColorInt(oneInt, codes[i]);
            ASSERT_EQ(std::memcmp(&row[i], &one, sizeof one), 0) << "float " << i << " at " << width;
            ASSERT_EQ(std::memcmp(&rowInt[i], &oneInt, sizeof oneInt), 0) << "int " << i << " at " << width;
        }
    }
    KLimitLaneWidth(kLaneWidthMost);
}

// A registered tool in a flow. Each render is a copy the test owns; an image
// handed over with ownership lives as long as the flow.
class ToolFlow {
public:
    explicit ToolFlow(const host::Registration& tool, KImage* image = nullptr) : node(flow.Add("tool", tool))
    {
        if (image) SetImage("Image", image);
    }
    explicit ToolFlow(const std::string& className, KImage* image = nullptr) : ToolFlow(Registered(className), image) {}
    ToolFlow(const std::string& className, Img image) : ToolFlow(className, image.get()) { kept = std::move(image); }

    host::Input* In(const std::string& id) const
    {
        host::Input* in = node.op->FindInput(id);
        if (!in) throw std::runtime_error("no input " + id);
        return in;
    }
    void Set(const std::string& id, double v) { flow.SetValue(node, In(id), host::MakeNumber(v)); }
    void SetPoint(const std::string& id, double x, double y) { flow.SetValue(node, In(id), host::MakePoint(x, y)); }
    // Values by host input id: numbers, or points when y is given.
    void Apply(const std::vector<Setting>& settings)
    {
        for (const Setting& v : settings) std::isnan(v.y) ? Set(v.label, v.x) : SetPoint(v.label, v.x, v.y);
    }
    void SetImage(const std::string& id, KImage* image)
    {
        flow.SetValue(node, In(id), host::MakeImage(image->HostImage()));
    }
    bool Visible(const std::string& id) const { return In(id)->attrs.visible; }

    // The main output at `time`; null when there is no image.
    Img Render(double time = 0.0)
    {
        flow.BeginFrame();
        host::Value v = flow.Evaluate(node, node.op->MainOutput(), time);
        auto* out = dynamic_cast<const host::ImageValue*>(v.get());
        if (!out || !out->image) return nullptr;
        return Img(Img(KImage::Wrap(out->image, false))->Clone());
    }

    // Renders on one thread, on two, and serially; empty when all three agree.
    std::string ThreadsAgree()
    {
        host::SetThreadCount(1);
        Img one = Render();
        host::SetThreadCount(2);
        Img two = Render();
        host::SetThreadCount(0);
        Set("ZVMT", 0);
        Img serial = Render();
        Set("ZVMT", 1);
        const std::string a = Differ(*one, *two), b = Differ(*one, *serial);
        return a.empty() && b.empty() ? "" : "two threads: " + a + "; serial: " + b;
    }

    Img kept;
    host::Flow flow;
    host::Flow::Node& node;
};

inline host::Input* In(host::Flow::Node& n, const char* id)
{
    host::Input* in = n.op->FindInput(id);
    EXPECT_NE(in, nullptr) << id;
    return in;
}
inline double NumberOf(const host::Value& v)
{
    auto* n = dynamic_cast<const host::Number*>(v.get());
    EXPECT_NE(n, nullptr);
    return n ? n->value : -1.0;
}
inline std::string TextOf(const host::Value& v)
{
    auto* t = dynamic_cast<const host::Text*>(v.get());
    EXPECT_NE(t, nullptr);
    return t ? t->value : std::string("<none>");
}

// Steps of changes through the host: after each, which of `ids` it shows, as
// 1 and 0 in their order. A step without an input only looks.
struct ShownRow { const char* set; double value; std::string shown; };
inline void ExpectShown(const std::string& className, const std::vector<std::string>& ids,
                        std::initializer_list<ShownRow> rows)
{
    ToolFlow f(className);
    for (const ShownRow& r : rows) {
        if (r.set) f.Set(r.set, r.value);
        std::string shown;
        for (const std::string& id : ids) shown += f.Visible(id) ? '1' : '0';
        EXPECT_EQ(shown, r.shown) << (r.set ? r.set : "as created") << " " << r.value;
    }
}

// The properties of a host input that `props` names, in its own form:
// "key value" pairs joined by "; ", e.g. "control Screw; default 0; soft -1..1".
// "present" and "absent" ask only whether there is such an input.
inline std::string Describe(const host::Input* in, const std::string& props)
{
    if (props == "absent" || props == "present" || !in) return in ? "present" : "absent";
    const host::InputAttrs& a = in->attrs;
    // Numbers as the shortest text that reads back; float values as floats, so 0.01f shows as 0.01.
    auto num = [](const std::optional<double>& v) {
        if (!v) return std::string("-");
        char buf[32];
        const float f = static_cast<float>(*v);
        auto r = double(f) == *v ? std::to_chars(buf, buf + 32, f, std::chars_format::fixed)
                                 : std::to_chars(buf, buf + 32, *v, std::chars_format::fixed);
        return std::string(buf, r.ptr);
    };
    std::string items;
    for (size_t i = 0; i < a.items.size(); ++i) items.append(i ? "|" : "").append(a.items[i]);
    const std::map<std::string, std::string> all = {
        {"name", in->name}, {"label", in->label}, {"page", in->page}, {"control", host::ControlName(a.control)},
        {"type", host::DataTypeName(a.dataType)}, {"default", num(a.defaultNumber)},
        {"soft", num(a.softMin) + ".." + num(a.softMax)}, {"hard", num(a.hardMin) + ".." + num(a.hardMax)},
        {"items", items}, {"integer", a.integer ? "yes" : "no"}, {"visible", a.visible ? "yes" : "no"},
        {"group", std::to_string(a.group)}, {"member", std::to_string(a.member)}, {"link", std::to_string(a.linkNumber)},
        {"alias", in->alias.empty() ? "-" : in->alias}};
    std::string out;
    for (size_t start = 0, end = 0; end != std::string::npos; start = end + 2) {
        end = props.find("; ", start);
        const std::string part = props.substr(start, end - start), key = part.substr(0, part.find(' '));
        const auto v = all.find(key);
        out.append(out.empty() ? "" : "; ").append(key).append(" ").append(v == all.end() ? "<unknown key>" : v->second);
    }
    return out;
}

// Each input, by id, as the host shows it.
inline void ExpectInputs(const host::Operator& op, std::initializer_list<std::pair<const char*, std::string>> rows)
{
    for (const auto& [id, props] : rows) EXPECT_EQ(Describe(op.FindInput(id), props), props) << id;
}

// Host images that recycle themselves, blank or filled channel by channel.
struct Recycle {
    void operator()(host::Image* i) const { i->Recycle(); }
};
using HostImg = std::unique_ptr<host::Image, Recycle>;

inline HostImg Blank(int w, int h, bool isFloat, std::vector<int> aux = {})
{
    return HostImg(host::Image::New(
        {.width = w, .height = h, .depth = isFloat ? host::DepthFloat32 : host::DepthInt16, .aux = std::move(aux)}));
}

// A w x h image with channel c of pixel x, y set to fn(x, y, c).
template <typename Fn> HostImg Make(int w, int h, bool isFloat, Fn fn, std::vector<int> aux = {})
{
    HostImg img = Blank(w, h, isFloat, std::move(aux));
    for (int y = 0; y < h; ++y)
        for (int x = 0; x < w; ++x)
            for (int c = 0; c < 4; ++c) {
                if (isFloat) img->RowF(y)[x * 4 + c] = static_cast<float>(fn(x, y, c));
                else img->RowW(y)[x * 4 + c] = static_cast<uint16_t>(fn(x, y, c));
            }
    return img;
}

// A folder of the running test's own, removed with it; tests may run side by side.
struct TempDir {
    TempDir()
        : path(std::filesystem::temp_directory_path() /
               ("zv." + std::to_string(getpid()) + "." + ::testing::UnitTest::GetInstance()->current_test_info()->name()))
    {
        std::filesystem::remove_all(path);
        std::filesystem::create_directories(path);
    }
    ~TempDir() { std::filesystem::remove_all(path); }
    // Writes `text` as it stands to a file of the folder; gives its full name.
    std::string Write(const std::string& name, const std::string& text) const
    {
        std::ofstream(path / name, std::ios::binary) << text;
        return (path / name).string();
    }
    std::filesystem::path path;
};

}  // namespace zvtest

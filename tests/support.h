// Shared helpers of the tests: pattern images, comparison, the two runners.
#pragma once
#include <gtest/gtest.h>
#include <array>
#include <charconv>
#include <cstdint>
#include <functional>
#include <initializer_list>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>
#include "bridge/operator.h"
#include "framework/process.h"
#include "host/flow.h"
#include "host/image.h"
#include "host/registry.h"
#include "host/threads.h"
#include "raster/image.h"

namespace zvtest {

// A registered tool's registration; the tests name tools by class.
inline const host::Registration& Registered(const char* className)
{
    const host::Registration* r = host::Registry::Get().FindClass(className);
    if (!r) throw std::runtime_error(std::string("not registered: ") + className);
    return *r;
}

// A deterministic pattern with every channel distinct and alpha varying.
inline KPixel PatternPixel(int32_t x, int32_t y)
{
    uint32_t r = (x * 977u + y * 131u) % 65536u;
    uint32_t g = (x * 313u + y * 1709u + 1000u) % 65536u;
    uint32_t b = (x * 59u * y + 40000u) % 65536u;
    uint32_t a = 65535u - (x * 29u + y * 257u) % 40000u;
    return {r, g, b, a};
}

// A pixel's four channels, so that whole pixels compare and print at once.
inline std::array<uint32_t, 4> Channels(const KPixel& p) { return {p.r, p.g, p.b, p.a}; }
inline std::array<float, 4> Channels(const KPixelF& p) { return {p.r, p.g, p.b, p.a}; }

// Every channel within `tol`; a tolerance of 0 asks for the exact value.
inline void ExpectNear(const KPixelF& got, const KPixelF& want, float tol, const std::string& what = "")
{
    for (int c = 0; c < 4; ++c) EXPECT_NEAR(got[c], want[c], tol) << what << " channel " << c;
}

inline KImage* Pattern(int32_t w, int32_t h, bool isFloat)
{
    KImage* img = KImage::Create(w, h, isFloat);
    for (int32_t y = 0; y < h; ++y)
        for (int32_t x = 0; x < w; ++x) {
            KPixel p = PatternPixel(x, y);
            if (isFloat) {
                KPixelF f;
                KToFloat(p, f);
                img->SetPixel(x, y, f);
            } else {
                img->SetPixel(x, y, p);
            }
        }
    return img;
}

// Exact comparison of the stored pixels; returns a description of the first difference.
inline std::string Differ(const KImage& a, const KImage& b)
{
    if (a.width != b.width || a.height != b.height || a.IsFloat() != b.IsFloat())
        return "geometry or depth differs";
    for (int32_t y = 0; y < a.height; ++y)
        for (int32_t x = 0; x < a.width; ++x)
            for (int c = 0; c < 4; ++c) {
                bool same = a.IsFloat() ? a.RowF(y)[4 * x + c] == b.RowF(y)[4 * x + c]
                                        : a.RowW(y)[4 * x + c] == b.RowW(y)[4 * x + c];
                if (!same)
                    return "pixel " + std::to_string(x) + "," + std::to_string(y) + " channel " +
                           std::to_string(c);
            }
    return "";
}

inline void Threaded(int32_t jobs, const std::function<void(int32_t)>& job)
{
    host::DoMultiProcess(jobs, job);
}

// Runs an effect of an image family over source into a new target like it.
inline KImage* RunEffect(KEffectImage& effect, KImage* source, const KRenderSettings& s,
                         bool threaded)
{
    KImage* target = source->CreateLike();
    effect.settings = s;
    std::unique_ptr<KProcessImage> process = KCreateProcess(&effect, source, &target, s);
    if (threaded) KRunPasses(*process, Threaded);
    else process->Run();
    return target;
}

inline KRenderSettings Settings(bool isFloat)
{
    KRenderSettings s;
    s.depth = isFloat ? 2 : 1;
    return s;
}

// The effect inside a registered tool's operator.
inline KEffect* EffectOf(host::Operator* op)
{
    if (auto* t = dynamic_cast<ZV_ThreadedOperator*>(op)) return t->Effect();
    if (auto* s = dynamic_cast<ZV_SourceOperator*>(op)) return s->Effect();
    return nullptr;
}

// A registered tool's effect driven without a request: fields are written
// through its declarations, as the bridge leaves them.
template <class E = KEffect> class EffectDriver {
public:
    explicit EffectDriver(const char* className) : op(Registered(className).creator())
    {
        effect = dynamic_cast<E*>(EffectOf(op.get()));
        if (!effect) throw std::runtime_error(std::string("not of the expected family: ") + className);
    }

    // The control with this label; pages are passed over.
    KParameter& Param(const std::string& label) const
    {
        for (KParameter* p = effect->inputs(); p; p = p->Next())
            if (p->name == label && p->controlKind != kControlPage) return *p;
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
    // The host input with this id.
    const host::Input& In(const char* id) const
    {
        const host::Input* in = op->FindInput(id);
        if (!in) throw std::runtime_error(std::string("no input ") + id);
        return *in;
    }
    // A number control's value, whatever the kind of its field.
    void Set(const std::string& label, double v)
    {
        KParameter& p = Param(label);
        if (p.valueKind == kValueFloat) *static_cast<float*>(p.field) = static_cast<float>(v);
        else if (p.valueKind == kValueInteger) *static_cast<int32_t*>(p.field) = static_cast<int32_t>(v);
        else if (p.valueKind == kValueBoolean) *static_cast<bool*>(p.field) = v != 0.0;
        else throw std::runtime_error("not a number: " + label);
    }
    void SetFloat(const std::string& label, float v) { Field<float>(label, kValueFloat) = v; }
    void SetInt(const std::string& label, int32_t v) { Field<int32_t>(label, kValueInteger) = v; }
    void SetBool(const std::string& label, bool v) { Field<bool>(label, kValueBoolean) = v; }
    void SetText(const std::string& label, const std::string& v)
    {
        Field<std::string>(label, kValueText) = v;
    }
    void SetPoint(const std::string& label, float x, float y)
    {
        Field<KPoint2>(label, kValuePoint) = {x, y};
    }
    void SetColor(const std::string& label, KColor c) { Field<KColor>(label, kValueColor) = c; }
    // An angle control's value in degrees, as the bridge hands it over.
    void SetDegrees(const std::string& label, float degrees)
    {
        Field<float>(label, kValueFloat) = -degrees * 0.017453292f;
    }

    std::unique_ptr<host::Operator> op;
    E* effect = nullptr;
};

// A registered tool in a flow. Each render is a copy the test owns; an image
// handed over with ownership lives as long as the flow.
class ToolFlow {
public:
    explicit ToolFlow(const char* className, KImage* image = nullptr)
        : node(flow.Add("tool", Registered(className)))
    {
        if (image) SetImage("Image", image);
    }
    ToolFlow(const char* className, std::unique_ptr<KImage> image)
        : ToolFlow(className, image.get())
    {
        kept = std::move(image);
    }

    host::Input* In(const char* id) const
    {
        host::Input* in = node.op->FindInput(id);
        if (!in) throw std::runtime_error(std::string("no input ") + id);
        return in;
    }
    void Set(const char* id, double v) { flow.SetValue(node, In(id), host::MakeNumber(v)); }
    void SetPoint(const char* id, double x, double y)
    {
        flow.SetValue(node, In(id), host::MakePoint(x, y));
    }
    void SetImage(const char* id, KImage* image)
    {
        flow.SetValue(node, In(id), host::MakeImage(image->HostImage()));
    }
    bool Visible(const char* id) const { return In(id)->attrs.visible; }

    // The main output at `time`; null when there is no image.
    std::unique_ptr<KImage> Render(double time = 0.0)
    {
        flow.BeginFrame();
        host::Value v = flow.Evaluate(node, node.op->MainOutput(), time);
        auto* out = dynamic_cast<const host::ImageValue*>(v.get());
        if (!out || !out->image) return nullptr;
        std::unique_ptr<KImage> view(KImage::Wrap(out->image, false));
        return std::unique_ptr<KImage>(view->Clone());
    }

    // Renders on one thread, on two, and serially; empty when all three agree.
    std::string ThreadsAgree()
    {
        host::SetThreadCount(1);
        std::unique_ptr<KImage> one = Render();
        host::SetThreadCount(2);
        std::unique_ptr<KImage> two = Render();
        host::SetThreadCount(0);
        Set("ZVMT", 0);
        std::unique_ptr<KImage> serial = Render();
        Set("ZVMT", 1);
        const std::string a = Differ(*one, *two), b = Differ(*one, *serial);
        return a.empty() && b.empty() ? "" : "two threads: " + a + "; serial: " + b;
    }

    std::unique_ptr<KImage> kept;
    host::Flow flow;
    host::Flow::Node& node;
};

// Steps of changes through the host: after each, which of `ids` it shows, as
// 1 and 0 in their order. A step without an input only looks.
struct ShownRow {
    const char* set;
    double value;
    const char* shown;
};
inline void ExpectShown(ToolFlow& f, const std::vector<const char*>& ids, std::initializer_list<ShownRow> rows)
{
    for (const ShownRow& r : rows) {
        if (r.set) f.Set(r.set, r.value);
        std::string shown;
        for (const char* id : ids) shown += f.Visible(id) ? '1' : '0';
        EXPECT_EQ(shown, r.shown) << (r.set ? r.set : "as created") << " " << r.value;
    }
}

// A number as the shortest text that reads back to it; values that are
// floats are written as floats, so 0.01f shows as 0.01.
inline std::string Num(double v)
{
    char buf[32];
    const float f = static_cast<float>(v);
    auto r = static_cast<double>(f) == v
                 ? std::to_chars(buf, buf + sizeof buf, f, std::chars_format::fixed)
                 : std::to_chars(buf, buf + sizeof buf, v, std::chars_format::fixed);
    return std::string(buf, r.ptr);
}

// The properties of a host input that `props` names, in its own form:
// "key value" pairs joined by "; ", e.g. "control Screw; default 0; soft -1..1".
// Keys: name, label, page, control, type, default, point, text, soft, hard,
// items, integer, visible, notify, nest, group, member, link, lines, slots.
// "present" and "absent" ask only whether there is such an input.
inline std::string Describe(const host::Input* in, const std::string& props)
{
    if (props == "absent" || props == "present" || !in) return in ? "present" : "absent";
    const host::InputAttrs& a = in->attrs;
    auto opt = [](const std::optional<double>& v) { return v ? Num(*v) : std::string("-"); };
    auto yes = [](bool b) { return std::string(b ? "yes" : "no"); };
    std::string out;
    for (size_t start = 0; start < props.size();) {
        size_t end = props.find("; ", start);
        if (end == std::string::npos) end = props.size();
        const std::string part = props.substr(start, end - start);
        const std::string key = part.substr(0, part.find(' '));
        std::string v;
        if (key == "name") v = in->name;
        else if (key == "label") v = in->label;
        else if (key == "page") v = in->page;
        else if (key == "control") v = host::ControlName(a.control);
        else if (key == "type") v = host::DataTypeName(a.dataType);
        else if (key == "default") v = opt(a.defaultNumber);
        else if (key == "point")
            v = a.defaultPoint ? Num(a.defaultPoint->first) + "," + Num(a.defaultPoint->second) : "-";
        else if (key == "text") v = a.defaultText ? '"' + *a.defaultText + '"' : "-";
        else if (key == "soft") v = opt(a.softMin) + ".." + opt(a.softMax);
        else if (key == "hard") v = opt(a.hardMin) + ".." + opt(a.hardMax);
        else if (key == "items")
            for (size_t i = 0; i < a.items.size(); ++i) v.append(i ? "|" : "").append(a.items[i]);
        else if (key == "integer") v = yes(a.integer);
        else if (key == "visible") v = yes(a.visible);
        else if (key == "notify") v = yes(a.notify);
        else if (key == "nest") v = yes(a.nest);
        else if (key == "group") v = std::to_string(a.group);
        else if (key == "member") v = std::to_string(a.member);
        else if (key == "link") v = std::to_string(a.linkNumber);
        else if (key == "lines") v = std::to_string(a.controlParam);
        else if (key == "slots") v = std::to_string(a.slots);
        else v = "<unknown key>";
        out.append(out.empty() ? "" : "; ").append(key).append(" ").append(v);
        start = end + 2;
    }
    return out;
}

struct InputRow {
    std::string id, props;
};

// Each row's input as the host shows it.
inline void ExpectInputs(const host::Operator& op, std::initializer_list<InputRow> rows)
{
    for (const InputRow& r : rows) EXPECT_EQ(Describe(op.FindInput(r.id), r.props), r.props) << r.id;
}

// The same for a registered tool as the host creates it, its notifications sent.
inline void ExpectInputs(const char* className, std::initializer_list<InputRow> rows)
{
    std::unique_ptr<host::Operator> op(host::CreateOperator(Registered(className)));
    ExpectInputs(*op, rows);
}

// The ids of the first n inputs, in the order the host lists them.
inline std::vector<std::string> FirstInputIds(const host::Operator& op, size_t n)
{
    std::vector<std::string> ids;
    for (auto& in : op.Inputs())
        if (ids.size() < n) ids.push_back(in->id);
    return ids;
}

// The first inputs of a registered tool are `ids`, in order, all on `page`.
inline void ExpectLeadingInputs(const char* className, const std::string& page,
                                const std::vector<std::string>& ids)
{
    std::unique_ptr<host::Operator> op(host::CreateOperator(Registered(className)));
    EXPECT_EQ(FirstInputIds(*op, ids.size()), ids) << className;
    for (size_t i = 0; i < ids.size() && i < op->Inputs().size(); ++i)
        EXPECT_EQ(op->Inputs()[i]->page, page) << ids[i];
}

}  // namespace zvtest

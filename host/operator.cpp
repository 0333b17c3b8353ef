#include "host/operator.h"
#include <cmath>
#include <iterator>
#include <limits>
#include "host/errors.h"
#include "host/limits.h"
#include "host/registry.h"
#include "host/threads.h"

namespace host {

const char* ControlName(Control control)
{
    switch (control) {
    case Control::None: return "";
    case Control::Slider: return "Slider";
    case Control::Screw: return "Screw";
    case Control::Checkbox: return "Checkbox";
    case Control::Button: return "Button";
    case Control::MultiButton: return "MultiButton";
    case Control::Combo: return "Combo";
    case Control::Color: return "Color";
    case Control::Range: return "Range";
    case Control::Offset: return "Offset";
    case Control::File: return "File";
    case Control::TextEdit: return "TextEdit";
    case Control::Label: return "Label";
    case Control::Image: return "Image";
    case Control::Spline: return "Spline";
    }
    return "";
}

namespace {

template <class V, class Lerp> V Interpolate(const std::map<double, V>& keys, double t, Lerp lerp)
{
    auto hi = keys.lower_bound(t);
    if (hi == keys.begin()) return hi->second;
    if (hi == keys.end()) return std::prev(hi)->second;
    auto lo = std::prev(hi);
    double f = (t - lo->first) / (hi->first - lo->first);
    return lerp(lo->second, hi->second, f);
}

}  // namespace

double ConformNumber(const Input& input, double v, const std::string& what)
{
    const InputAttrs& a = input.attrs;
    const std::string got = ", got " + Number(v).ToText();
    if (!(std::fabs(v) <= std::numeric_limits<float>::max()))
        throw BadInput(what + " takes a finite number" + got);
    const bool whole = v == std::floor(v);
    if ((a.control == Control::MultiButton || a.control == Control::Combo) && !a.items.empty()) {
        if (whole && v >= 0.0 && v < static_cast<double>(a.items.size())) return v;
        std::string list;
        for (size_t i = 0; i < a.items.size(); ++i) list += (i ? ", " : "") + std::to_string(i) + " " + a.items[i];
        throw BadInput(what + " takes one of " + list + got);
    }
    if (a.control == Control::Checkbox && v != 0.0 && v != 1.0)
        throw BadInput(what + " takes 0 (off) or 1 (on)" + got);
    const std::string wholeNumbers = " takes a whole number from -16777216 to 16777216";
    if (a.integer && !whole) throw BadInput(what + wholeNumbers + got);
    const bool below = a.hardMin && v < *a.hardMin, above = a.hardMax && v > *a.hardMax;
    if (below || above) {
        // Refused rather than clamped: a value quietly changed is a render nobody asked for.
        const std::string lo = a.hardMin ? Number(*a.hardMin).ToText() : "", hi = a.hardMax ? Number(*a.hardMax).ToText() : "";
        const std::string range = a.hardMin && a.hardMax ? lo + ".." + hi : a.hardMin ? "at least " + lo : "at most " + hi;
        throw BadInput(what + " takes " + range + got + (a.hardReason.empty() ? "" : ": " + a.hardReason));
    }
    if (a.integer && std::fabs(v) > kMaxWhole) throw BadInput(what + wholeNumbers + got);
    return v;
}

Value Conform(const Input& input, Value value, const std::string& what)
{
    if (auto* n = dynamic_cast<const Number*>(value.get())) return MakeNumber(ConformNumber(input, n->value, what));
    if (auto* p = dynamic_cast<const Point*>(value.get())) {
        const float most = std::numeric_limits<float>::max();
        if (!(std::fabs(p->x) <= most && std::fabs(p->y) <= most))
            throw BadInput(what + " takes a point of finite numbers, got " + p->ToText());
    }
    return value;
}

Value Input::Default() const
{
    if (attrs.defaultPoint) return MakePoint(attrs.defaultPoint->first, attrs.defaultPoint->second);
    if (attrs.defaultText) return MakeText(*attrs.defaultText);
    if (attrs.defaultNumber) return MakeNumber(*attrs.defaultNumber);
    if (attrs.dataType == DataType::Number) return MakeNumber(0.0);
    if (attrs.dataType == DataType::Point) return MakePoint(0.5, 0.5);
    if (attrs.dataType == DataType::Text) return MakeText("");
    return nullptr;
}

Value Input::ValueAt(double time) const
{
    if (!keys.numbers.empty())
        return MakeNumber(Interpolate(keys.numbers, time,
                                      [](double a, double b, double f) { return a + (b - a) * f; }));
    if (!keys.points.empty()) {
        auto p = Interpolate(keys.points, time, [](auto a, auto b, double f) {
            return std::make_pair(a.first + (b.first - a.first) * f,
                                  a.second + (b.second - a.second) * f);
        });
        return MakePoint(p.first, p.second);
    }
    if (!keys.values.empty()) {
        const ParameterClass* c = FindParameterClass(attrs.typeId);
        return Interpolate(keys.values, time, [&](const Value& a, const Value& b, double f) {
            return c && c->interpolate && a && b ? c->interpolate(*a, *b, f) : a;
        });
    }
    if (constant) return constant;
    return Default();
}

Request::Slot& Request::At(const Input* input, int slot) { return slots_[{input, slot}]; }

const Request::Slot* Request::Find(const Input* input, int slot) const
{
    auto it = slots_.find({input, slot});
    return it == slots_.end() ? nullptr : &it->second;
}

Value Request::GetInputData(const Input* input, int slot) const
{
    const Slot* s = Find(input, slot);
    return s ? s->value : nullptr;
}

void Request::SetInputData(const Input* input, Value value, int slot)
{
    Slot& s = At(input, slot);
    s.value = std::move(value);
    s.stated = true;
}

bool Request::IsStated(const Input* input, int slot) const
{
    const Slot* s = Find(input, slot);
    return s && s->stated;
}

void Request::SetInputTime(const Input* input, double time, int slot) { At(input, slot).time = time; }

std::optional<double> Request::InputTime(const Input* input, int slot) const
{
    const Slot* s = Find(input, slot);
    return s ? s->time : std::nullopt;
}

void Request::SetOutputData(const Output* output, Value value) { outputs_[output] = std::move(value); }

Value Request::GetOutputData(const Output* output) const
{
    auto it = outputs_.find(output);
    return it == outputs_.end() ? nullptr : it->second;
}

void Operator::AddControlPage(const std::string& name)
{
    page_ = name;
    pages_.push_back(name);
    nests_.clear();
}

Input* Operator::BeginControlNest(const std::string& name, const std::string& id)
{
    InputAttrs attrs;
    attrs.nest = true;
    attrs.external = false;
    Input* head = AddInput(name, id, attrs);
    nests_.push_back(name);
    return head;
}

void Operator::EndControlNest()
{
    if (!nests_.empty()) nests_.pop_back();
}

Input* Operator::AddInput(const std::string& name, const std::string& id, const InputAttrs& attrs)
{
    auto input = std::make_unique<Input>();
    input->id = id;
    input->name = name;
    input->label = name;
    input->page = page_;
    input->attrs = attrs;
    input->owner = this;
    input->index = static_cast<int>(inputs_.size());
    inputs_.push_back(std::move(input));
    return inputs_.back().get();
}

Output* Operator::AddOutput(const std::string& name, const std::string& id, DataType type,
                            int linkNumber, const std::string& typeId)
{
    auto output = std::make_unique<Output>();
    output->id = id;
    output->name = name;
    output->dataType = type;
    output->typeId = typeId;
    output->linkNumber = linkNumber;
    output->owner = this;
    outputs_.push_back(std::move(output));
    return outputs_.back().get();
}

Input* Operator::FindInput(const std::string& id) const
{
    for (auto& in : inputs_)
        if (in->id == id) return in.get();
    if (id.empty()) return nullptr;
    for (auto& in : inputs_)
        if (in->alias == id) return in.get();
    return nullptr;
}

Output* Operator::FindOutput(const std::string& id) const
{
    for (auto& out : outputs_)
        if (out->id == id) return out.get();
    return nullptr;
}

Output* Operator::MainOutput() const
{
    for (auto& out : outputs_)
        if (out->linkNumber == 1) return out.get();
    return outputs_.empty() ? nullptr : outputs_.front().get();
}

namespace {
bool SameValue(const Parameter* a, const Parameter* b)
{
    if (!a || !b) return a == b;
    if (a->Type() != b->Type()) return false;
    switch (a->Type()) {
    case DataType::Number:
        return static_cast<const Number*>(a)->value == static_cast<const Number*>(b)->value;
    case DataType::Point: {
        auto* p = static_cast<const Point*>(a);
        auto* q = static_cast<const Point*>(b);
        return p->x == q->x && p->y == q->y;
    }
    case DataType::Text:
        return static_cast<const Text*>(a)->value == static_cast<const Text*>(b)->value;
    default:
        return a == b;
    }
}
}  // namespace

void Operator::SetInputValue(Input* input, Value value, double time)
{
    Value before = input->ValueAt(time);
    if (input->HasKeys() && value) {
        if (auto* n = dynamic_cast<const Number*>(value.get())) input->keys.numbers[time] = n->value;
        else if (auto* p = dynamic_cast<const Point*>(value.get()))
            input->keys.points[time] = {p->x, p->y};
        else if (!input->keys.values.empty()) input->keys.values[time] = value;
        else input->constant = value;
    } else {
        input->constant = value;
    }
    // A change answered by another change stops once nothing changes, or at a
    // depth no sensible tool reaches.
    if (SameValue(before.get(), value.get()) || notifyDepth_ > 8) return;
    ++notifyDepth_;
    NotifyChanged(input, value.get(), time);
    --notifyDepth_;
}

void Operator::DoMultiProcess(Request&, int jobs)
{
    host::DoMultiProcess(jobs, [this](int job) { MultiProcess(job); });
}

Operator* CreateOperator(const Registration& registration)
{
    Operator* op = registration.creator();
    op->registration = &registration;
    for (auto& in : op->Inputs())
        if (in->attrs.notify) op->NotifyChanged(in.get(), in->ValueAt(0.0).get(), 0.0);
    return op;
}

SourceOperator::SourceOperator()
{
    InputAttrs size;
    size.control = Control::Slider;
    size.integer = true;
    size.hardMin = 1.0;
    size.hardMax = static_cast<double>(kMaxImageSide);
    size.hardReason = "images are 1 to 32768 pixels a side";
    size.softMin = 1.0;
    size.softMax = 4096.0;
    size.defaultNumber = 1920.0;
    widthInput = AddInput("Width", "Width", size);
    size.hardMin = 2.0;
    size.softMin = 2.0;
    size.hardReason = "generators make images at least 2 rows high, and at most 32768";
    size.defaultNumber = 1080.0;
    heightInput = AddInput("Height", "Height", size);
    output = AddOutput("Output", "Output", DataType::Image, 1);
}

}  // namespace host

#include "data/data_math.h"
#include <cmath>
#include "framework/registration.h"

namespace {

// The first component of element i as a float: the float, else the integer, else 0.
struct Reader {
    const KDataChannel& c;
    float At(int32_t i) const
    {
        if (c.floatComponents) return c.floats[size_t(i) * c.floatComponents];
        if (c.intComponents) return float(c.ints[size_t(i)]);
        return 0.0f;
    }
};

enum Op { kNone, kAdd, kSubtract, kMultiply, kDivide, kPower, kMod };

// r = op(r, v) over the first n elements; v = (x + add) * multiply. One loop
// per operation and storage, so that the compiler can vectorise each.
template <class Load>
void Combine(float* r, int32_t n, int32_t op, float add, float mul, Load x)
{
    switch (op) {
    case kNone: for (int32_t i = 0; i < n; ++i) r[i] = (x(i) + add) * mul; break;
    case kAdd: for (int32_t i = 0; i < n; ++i) r[i] = r[i] + (x(i) + add) * mul; break;
    case kSubtract: for (int32_t i = 0; i < n; ++i) r[i] = r[i] - (x(i) + add) * mul; break;
    case kMultiply: for (int32_t i = 0; i < n; ++i) r[i] = (x(i) + add) * mul * r[i]; break;
    case kDivide:
        for (int32_t i = 0; i < n; ++i) {
            const float v = (x(i) + add) * mul;
            r[i] = r[i] / (v != 0.0f ? v : 1.0f);
        }
        break;
    case kPower: for (int32_t i = 0; i < n; ++i) r[i] = std::pow(r[i], (x(i) + add) * mul); break;
    default:
        for (int32_t i = 0; i < n; ++i) {
            const float v = (x(i) + add) * mul;
            r[i] = r[i] >= 0.0f ? std::fmod(r[i], v) : std::fmod(r[i], v) + v;
        }
        break;
    }
}

}  // namespace

KEffectDataMath::KEffectDataMath()
{
    AddDataInput();
    inputList.AddLabel("Data Math", 0, 0);
    inputList.AddTextEdit(&resultName, "result", "Channel Name Result (out)", "CNam"_id, 0, 1);
    for (int32_t k = 0; k < 8; ++k) {
        const std::string n = std::to_string(k + 1), value = "Value " + n;
        const char digit = char('1' + k);
        // "Value 4 Multiply" shares the code of "Value 1 Multiply", as saved flows have it.
        const char mulDigit = k == 3 ? '1' : digit;
        Value& v = values[size_t(k)];
        inputList.BeginNest(value.c_str(), "Val0"_id + uint32_t(k + 1), 0);
        inputList.AddTextEdit(&v.name, ("value" + n).c_str(), ("Channel Name " + value + " (in)").c_str(),
                              "CNa0"_id + uint32_t(k + 1), 0, 1);
        inputList.AddSlider(&v.add, 0.0f, (value + " Add").c_str(),
                            (uint32_t('V') << 24) | (uint32_t(digit) << 16) | ("Ad"_id), 0, -10.0, 10.0);
        inputList.AddSlider(&v.multiply, 1.0f, (value + " Multiply").c_str(),
                            (uint32_t('V') << 24) | (uint32_t(mulDigit) << 16) | ("Mu"_id), 0, -5.0, 5.0);
        inputList.AddCheckbox(&v.override, false, (value + " Override Channel").c_str(),
                              (uint32_t('V') << 24) | (uint32_t(digit) << 16) | ("Ov"_id), 0, 0);
        inputList.EndNest();
        if (k < 7)
            inputList.AddMultiButton(&operations[size_t(k)], 1, ("Operation " + n).c_str(),
                                     "Ope0"_id + uint32_t(k + 1), 0,
                                     {"None", "Add", "Subtr", "Mult", "Div", "Power", "Mod", "[end]"});
    }
}

std::unique_ptr<KDataTable> KEffectDataMath::Compute()
{
    // A table without channels gives one without channels, not a lone result.
    if (!input || !input->ChannelCount()) return std::make_unique<KDataTable>();
    std::array<KDataChannel*, 8> found{};
    for (size_t k = 0; k < values.size(); ++k) found[k] = input->FindAny(values[k].name, kDataAny);
    // The result is the input's channels; those an override will write are
    // copied first, so that the result keeps their old values, and the rest
    // are passed on as they are.
    auto table = std::make_unique<KDataTable>();
    table->tag = input->tag;
    for (size_t i = 0; i < input->ChannelCount(); ++i) {
        bool written = false;
        for (size_t k = 0; k < values.size(); ++k) written = written || (values[k].override && found[k] == input->Channel(i));
        if (written) table->Add(input->Channel(i)->Clone());
        else table->AddShared(*input, i);
    }
    // The override writes into the tool's own copy of the input, which the
    // combination below then reads.
    for (size_t k = 0; k < values.size(); ++k) {
        const Value& v = values[k];
        KDataChannel* c = found[k];
        if (!c || !v.override) continue;
        const Reader x{*c};
        for (int32_t i = 0; i < c->count; ++i) {
            const float y = (x.At(i) + v.add) * v.multiply;
            if (c->floatComponents) c->floats[size_t(i) * c->floatComponents] = y;
            else if (c->intComponents) c->ints[size_t(i)] = static_cast<int32_t>(y + 0.5f);
        }
    }
    if (!KDataNameUsable(resultName)) return table;

    auto result = KDataChannel::Create(resultName, kDataFloat, input->minimumCount);
    int32_t op = kNone;
    for (size_t k = 0; k < values.size(); ++k) {
        const KDataChannel* c = found[k];
        if (!c) continue;
        const Value& v = values[k];
        const int32_t n = std::min(result->count, c->count);
        float* r = result->floats.data();
        if (c->floatComponents) {
            const float* f = c->floats.data();
            const size_t stride = size_t(c->floatComponents);
            // Fixed strides for the common types, so that the loads vectorise.
            if (stride == 1) Combine(r, n, op, v.add, v.multiply, [f](int32_t i) { return f[i]; });
            else if (stride == 3) Combine(r, n, op, v.add, v.multiply, [f](int32_t i) { return f[size_t(i) * 3]; });
            else Combine(r, n, op, v.add, v.multiply, [f, stride](int32_t i) { return f[size_t(i) * stride]; });
        } else if (c->intComponents) {
            const int32_t* s = c->ints.data();
            Combine(r, n, op, v.add, v.multiply, [s](int32_t i) { return float(s[i]); });
        } else {
            Combine(r, n, op, v.add, v.multiply, [](int32_t) { return 0.0f; });
        }
        if (k < operations.size()) op = operations[k];
    }
    table->Add(std::move(result));
    return table;
}

ZV_TOOL(KEffectDataMath, ZV_DataMath);

// Helpers of the number and text tool tests: a tool made through the registry
// and driven directly (fields written through its declarations, FinishRender
// at a time), values read from a flow, and the time hash computed apart.
#pragma once
#include <gtest/gtest.h>
#include <cstdint>
#include <string>
#include <vector>
#include "support.h"

namespace zvvalue {

using zvtest::Registered;

// A tool's effect, without a request: the host-free driver.
class Tool : public zvtest::EffectDriver<> {
public:
    explicit Tool(const char* className) : EffectDriver(className) {}

    void Run(float time)
    {
        effect->settings.time = time;
        effect->FinishRender();
    }
    KOutput& Output(int32_t index = 0) const
    {
        KOutput* o = effect->outputs();
        for (int32_t i = 0; i < index && o; ++i) o = o->Next();
        if (!o) throw std::runtime_error("no output " + std::to_string(index));
        return *o;
    }
    float Number(int32_t index = 0) const { return *static_cast<float*>(Output(index).field); }
    // The first number output, evaluated at `time`.
    float At(float time)
    {
        Run(time);
        return Number();
    }
    const std::string& Text() const { return *static_cast<std::string*>(Output(0).field); }
    // The text output after setting the input labelled `label` to `text`.
    std::string Of(const std::string& label, const std::string& text, float time = 0.0f)
    {
        SetText(label, text);
        Run(time);
        return Text();
    }
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

// The four-character codes of the declared values, pages and nests left out.
inline std::vector<uint32_t> ValueCodes(const KEffect& effect)
{
    std::vector<uint32_t> codes;
    for (KParameter* p = effect.inputs(); p; p = p->Next())
        if (p->valueKind != kValueNone) codes.push_back(p->id);
    return codes;
}

// The time hash written out from its definition: the C standard's reference
// generator seeded with trunc(time * 10 + seed), seed % 97 values thrown away,
// the next one scaled by the single-precision 3.051851e-05.
inline float Noise(float time, int32_t seed)
{
    const uint32_t s = static_cast<uint32_t>(static_cast<double>(time) * 10.0 + seed);
    uint32_t state = s;
    auto next = [&state] {
        state = state * 1103515245u + 12345u;
        return (state / 65536u) % 32768u;
    };
    for (int32_t i = static_cast<int32_t>(s) % 97; i > 0; --i) next();
    return static_cast<float>(next()) * 3.051851e-05f;
}

}  // namespace zvvalue

// Helpers of the data tools' tests: tables written out by hand, and a
// registered data tool computed on one.
#pragma once
#include <initializer_list>
#include "data/effect_data.h"
#include "support.h"

namespace zvtest {

// A channel with the given ints (Bool, Integer) or interleaved floats.
inline std::unique_ptr<KDataChannel> Channel(const std::string& name, int32_t type,
                                             std::initializer_list<float> values)
{
    auto probe = KDataChannel::Create(name, type, 1);
    const int32_t per = std::max(probe->intComponents + probe->floatComponents, 1);
    auto c = KDataChannel::Create(name, type, int32_t(values.size()) / per);
    if (c->intComponents) c->ints.assign(values.begin(), values.end());
    else c->floats.assign(values.begin(), values.end());
    return c;
}

// The tool's table made from `in`, which the tool may change as its own copy.
inline std::unique_ptr<KDataTable> Computed(Tool<KEffectData>& tool, KDataTable& in)
{
    tool.Field<KDataTable*>("Data", kValueData) = &in;
    auto out = tool.effect->Compute();
    tool.Field<KDataTable*>("Data", kValueData) = nullptr;
    return out;
}

inline std::vector<float> Floats(const KDataTable& t, const std::string& name)
{
    const KDataChannel* c = t.FindAny(name, kDataAny);
    return c ? c->floats : std::vector<float>{};
}
inline std::vector<int32_t> Ints(const KDataTable& t, const std::string& name)
{
    const KDataChannel* c = t.FindAny(name, kDataAny);
    return c ? c->ints : std::vector<int32_t>{};
}

}  // namespace zvtest
